#pragma once

#include "ParsedFeed.h"
#include "TextConstructReader.h"

#include <QUrl>

namespace quillon {

class XmlPullReader;

// Walks one feed document element by element and fills a ParsedFeed. RSS 0.9x/2.0, RSS 1.0
// (RDF) and Atom 0.3/1.0 share the walk; the root element decides the format. Elements of
// unknown vocabularies are skipped, so that their titles and links never override the feed's.
// Stops where the reader reports an error; items finished before then are kept.
class FeedReader
{
public:
    FeedReader(XmlPullReader &xml, ParsedFeed &feed) : m_xml(xml), m_feed(feed) {}

    // Expects the reader on the root element. Returns false when the root is not a feed.
    bool read(const QUrl &documentBase);

private:
    enum class Vocab { Core, Atom, Dc, DcTerms, Content, Xhtml, Media, Rdf, Other };

    [[nodiscard]] Vocab vocab() const;
    [[nodiscard]] QUrl baseOf(const QUrl &parent) const;
    [[nodiscard]] QString plainText();
    [[nodiscard]] QDateTime dateText();
    [[nodiscard]] ParsedText rssText(TextConstructReader::Mode mode, const QUrl &base);
    [[nodiscard]] ParsedText atomText(const QUrl &base);

    void readRss(const QUrl &base);
    void readRdf(const QUrl &base);
    void readChannelAndItems(const QUrl &base, bool rdf);
    void readChannel(const QUrl &base);
    void readChannelChild(const QUrl &base);
    void readRssItem(const QUrl &base);
    void readRssItemChild(ParsedItem &item, const QUrl &base);
    bool readRssCoreChild(ParsedItem &item, const QUrl &base);
    bool readRssModuleChild(ParsedItem &item, const QUrl &base);
    void readRssContent(ParsedItem &item, TextConstructReader::Mode mode, const QUrl &base);
    void readRssSummary(ParsedItem &item, const QUrl &base);
    void finishRssItem(ParsedItem &item, bool guidIsPermaLink);
    void readMedia(ParsedItem &item, const QUrl &base);

    void readAtomFeed(const QUrl &base);
    void readAtomFeedChild(const QUrl &base, bool &linkPreferred);
    void readAtomEntry(const QUrl &base);
    void readAtomEntryChild(ParsedItem &item, const QUrl &base, bool &linkPreferred);
    void readAtomLink(const QUrl &base, QString &link, QStringList &links, bool &preferred,
                      QList<ParsedEnclosure> *enclosures);
    [[nodiscard]] QString readAtomPerson();

    void addItem(ParsedItem &&item);

    XmlPullReader &m_xml;
    ParsedFeed &m_feed;
    QString m_rootNamespace;
    bool m_atom10 = false;
};

} // namespace quillon
