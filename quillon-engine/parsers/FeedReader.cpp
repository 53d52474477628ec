#include "FeedReader.h"

#include "FeedDateParser.h"
#include "LinkResolver.h"

#include "XmlPullReader.h"

namespace quillon {

namespace {

const QString kAtom10 = QStringLiteral("http://www.w3.org/2005/Atom");
const QString kAtom03 = QStringLiteral("http://purl.org/atom/ns#");
const QString kRss10 = QStringLiteral("http://purl.org/rss/1.0/");
const QString kRss090 = QStringLiteral("http://my.netscape.com/rdf/simple/0.9/");
const QString kDc = QStringLiteral("http://purl.org/dc/elements/1.1/");
const QString kDcTerms = QStringLiteral("http://purl.org/dc/terms/");
const QString kContent = QStringLiteral("http://purl.org/rss/1.0/modules/content/");
const QString kXhtml = QStringLiteral("http://www.w3.org/1999/xhtml");
const QString kMedia = QStringLiteral("http://search.yahoo.com/mrss/");
const QString kRdf = QStringLiteral("http://www.w3.org/1999/02/22-rdf-syntax-ns#");
const QString kXml = QStringLiteral("http://www.w3.org/XML/1998/namespace");

// "2.0" -> "rss20", "0.91" -> "rss091"
QString rssFormat(QStringView version)
{
    QString format = QStringLiteral("rss");
    for (QChar c : version) {
        if (c.isDigit())
            format.append(c);
    }
    return format;
}

qint64 lengthOf(QStringView text)
{
    bool ok = false;
    const qint64 length = text.trimmed().toLongLong(&ok);
    return ok && length >= 0 ? length : -1;
}

bool looksLikeWebAddress(const QString &text)
{
    return text.startsWith(u"http://", Qt::CaseInsensitive) ||
           text.startsWith(u"https://", Qt::CaseInsensitive);
}

void addEnclosure(QList<ParsedEnclosure> &enclosures, ParsedEnclosure enclosure)
{
    if (enclosure.url.isEmpty())
        return;
    for (const ParsedEnclosure &known : enclosures) {
        if (known.url == enclosure.url)
            return; // the same file offered twice (enclosure and media:content)
    }
    enclosures.append(std::move(enclosure));
}

} // namespace

bool FeedReader::read(const QUrl &documentBase)
{
    m_rootNamespace = m_xml.namespaceUri().toString();
    const QUrl base = baseOf(documentBase);
    const QStringView name = m_xml.name();
    if (name == u"rss") {
        m_feed.format = rssFormat(m_xml.attributes().value(u"version"));
        readRss(base);
    } else if (name == u"RDF") {
        m_feed.format = QStringLiteral("rss10");
        readRdf(base);
    } else if (name == u"feed") {
        const bool atom03 = m_rootNamespace == kAtom03 || m_xml.attributes().value(u"version") == u"0.3";
        m_atom10 = m_rootNamespace == kAtom10 || !atom03;
        m_feed.format = m_rootNamespace == kAtom10 ? QStringLiteral("atom10")
                        : atom03                   ? QStringLiteral("atom03")
                                                   : QStringLiteral("atom");
        readAtomFeed(base);
    } else {
        return false;
    }
    return true;
}

FeedReader::Vocab FeedReader::vocab() const
{
    const QStringView ns = m_xml.namespaceUri();
    if (ns.isEmpty() || ns == m_rootNamespace || ns == kRss10 || ns == kRss090)
        return Vocab::Core;
    if (ns == kDc)
        return Vocab::Dc;
    if (ns == kContent)
        return Vocab::Content;
    if (ns == kAtom10 || ns == kAtom03)
        return Vocab::Atom;
    if (ns == kMedia || ns == QStringView(kMedia).chopped(1))
        return Vocab::Media;
    if (ns == kXhtml)
        return Vocab::Xhtml;
    if (ns == kDcTerms)
        return Vocab::DcTerms;
    if (ns == kRdf)
        return Vocab::Rdf;
    return Vocab::Other;
}

QUrl FeedReader::baseOf(const QUrl &parent) const
{
    const QStringView xmlBase = m_xml.attributes().value(kXml, u"base");
    return xmlBase.isEmpty() ? parent : LinkResolver::childBase(parent, xmlBase);
}

QString FeedReader::plainText()
{
    return m_xml.readElementText().trimmed();
}

QDateTime FeedReader::dateText()
{
    return FeedDateParser::parse(m_xml.readElementText());
}

ParsedText FeedReader::rssText(TextConstructReader::Mode mode, const QUrl &base)
{
    TextConstructReader::Options options;
    options.mode = mode;
    options.base = base;
    return TextConstructReader::read(m_xml, options);
}

ParsedText FeedReader::atomText(const QUrl &base)
{
    const XmlAttributes attributes = m_xml.attributes();
    return TextConstructReader::read(m_xml, m_atom10 ? TextConstructReader::atom10Options(attributes, base)
                                                     : TextConstructReader::atom03Options(attributes, base));
}

void FeedReader::addItem(ParsedItem &&item)
{
    m_feed.items.append(std::move(item));
}

// RSS 0.9x and 2.0: items normally sit in the channel, but some feeds put them beside it.
void FeedReader::readRss(const QUrl &base)
{
    readChannelAndItems(base, false);
}

// RSS 1.0 and 0.90: channel and items are siblings under rdf:RDF.
void FeedReader::readRdf(const QUrl &base)
{
    readChannelAndItems(base, true);
}

void FeedReader::readChannelAndItems(const QUrl &base, bool rdf)
{
    while (m_xml.readNextStartElement()) {
        if (rdf && m_xml.namespaceUri() == kRss090)
            m_feed.format = QStringLiteral("rss090");
        const QUrl childBase = baseOf(base);
        if (vocab() == Vocab::Core && m_xml.name() == u"channel")
            readChannel(childBase);
        else if (vocab() == Vocab::Core && m_xml.name() == u"item")
            readRssItem(childBase);
        else
            m_xml.skipCurrentElement();
    }
}

void FeedReader::readChannel(const QUrl &base)
{
    while (m_xml.readNextStartElement())
        readChannelChild(baseOf(base));
}

void FeedReader::readChannelChild(const QUrl &base)
{
    using Mode = TextConstructReader::Mode;
    const Vocab v = vocab();
    const QStringView name = m_xml.name();
    if (v == Vocab::Core && name == u"item") {
        readRssItem(base);
    } else if (v == Vocab::Core && name == u"title") {
        m_feed.title = rssText(Mode::Plain, base);
    } else if (v == Vocab::Core && name == u"link") {
        m_feed.link = LinkResolver::resolve(base, plainText());
    } else if (v == Vocab::Core && name == u"description") {
        m_feed.description = rssText(Mode::Html, base);
    } else if (v == Vocab::Core && name == u"pubDate") {
        m_feed.published = dateText();
    } else if (v == Vocab::Core && name == u"lastBuildDate") {
        m_feed.updated = dateText();
    } else if (v == Vocab::Dc && name == u"title" && m_feed.title.value.isEmpty()) {
        m_feed.title = rssText(Mode::Plain, base);
    } else if (v == Vocab::Dc && name == u"description" && m_feed.description.value.isEmpty()) {
        m_feed.description = rssText(Mode::Html, base);
    } else if (v == Vocab::Dc && name == u"date" && !m_feed.updated.isValid()) {
        m_feed.updated = dateText();
    } else if (v == Vocab::Atom && name == u"link") {
        QString alternate;
        bool preferred = false;
        readAtomLink(base, alternate, m_feed.links, preferred, nullptr);
        if (m_feed.link.isEmpty())
            m_feed.link = alternate;
    } else {
        m_xml.skipCurrentElement(); // image and textInput carry titles and links of their own
    }
}

void FeedReader::readRssItem(const QUrl &base)
{
    ParsedItem item;
    item.guid = m_xml.attributes().value(kRdf, u"about").trimmed().toString();
    bool guidIsPermaLink = true;
    while (m_xml.readNextStartElement()) {
        if (vocab() == Vocab::Core && m_xml.name() == u"guid") {
            const QStringView permaLink = m_xml.attributes().value(u"isPermaLink").trimmed();
            guidIsPermaLink = permaLink.compare(u"false", Qt::CaseInsensitive) != 0;
        }
        readRssItemChild(item, baseOf(base));
    }
    if (m_xml.hasError())
        return; // an item cut off by the error is not trusted
    finishRssItem(item, guidIsPermaLink);
    addItem(std::move(item));
}

void FeedReader::readRssItemChild(ParsedItem &item, const QUrl &base)
{
    const bool handled =
        vocab() == Vocab::Core ? readRssCoreChild(item, base) : readRssModuleChild(item, base);
    if (!handled)
        m_xml.skipCurrentElement(); // source, image, comments, unknown modules
}

bool FeedReader::readRssCoreChild(ParsedItem &item, const QUrl &base)
{
    using Mode = TextConstructReader::Mode;
    const QStringView name = m_xml.name();
    if (name == u"title") {
        item.title = rssText(Mode::Plain, base);
    } else if (name == u"link") {
        item.link = LinkResolver::resolve(base, plainText());
    } else if (name == u"guid") {
        item.guid = plainText();
    } else if (name == u"description" || name == u"summary") {
        readRssSummary(item, base);
    } else if (name == u"fullitem") {
        readRssContent(item, Mode::Html, base);
    } else if (name == u"pubDate") {
        item.published = dateText();
    } else if (name == u"author") {
        const QString author = plainText();
        if (item.author.isEmpty())
            item.author = author;
    } else if (name == u"enclosure") {
        const XmlAttributes a = m_xml.attributes();
        addEnclosure(item.enclosures,
                     {LinkResolver::resolve(base, a.value(u"url")), a.value(u"type").trimmed().toString(),
                      lengthOf(a.value(u"length")), QString()});
        m_xml.skipCurrentElement();
    } else {
        return false;
    }
    return true;
}

bool FeedReader::readRssModuleChild(ParsedItem &item, const QUrl &base)
{
    using Mode = TextConstructReader::Mode;
    const Vocab v = vocab();
    const QStringView name = m_xml.name();
    if (v == Vocab::Content && name == u"encoded") {
        readRssContent(item, Mode::Html, base);
    } else if (v == Vocab::Xhtml && (name == u"body" || name == u"div")) {
        readRssContent(item, Mode::Xhtml, base);
    } else if (v == Vocab::Dc && name == u"creator") {
        const QString author = plainText();
        if (item.author.isEmpty())
            item.author = author;
    } else if (v == Vocab::Dc && name == u"title" && item.title.value.isEmpty()) {
        item.title = rssText(Mode::Plain, base);
    } else if (v == Vocab::Dc && name == u"description" && item.summary.value.isEmpty()) {
        item.summary = rssText(Mode::Html, base);
    } else if ((v == Vocab::Dc && name == u"date") || (v == Vocab::DcTerms && name == u"modified")) {
        item.updated = dateText();
    } else if (v == Vocab::DcTerms && (name == u"issued" || name == u"created") &&
               !item.published.isValid()) {
        item.published = dateText();
    } else if (v == Vocab::Media) {
        readMedia(item, base);
    } else if (v == Vocab::Atom && name == u"link") {
        QString alternate;
        bool preferred = false;
        readAtomLink(base, alternate, item.links, preferred, &item.enclosures);
        if (item.link.isEmpty())
            item.link = alternate;
    } else {
        return false;
    }
    return true;
}

// content:encoded, fullitem and xhtml:body: the full text, whichever comes.
void FeedReader::readRssContent(ParsedItem &item, TextConstructReader::Mode mode, const QUrl &base)
{
    ParsedText content = rssText(mode, base);
    if (!content.value.isEmpty())
        item.content = std::move(content);
}

// <description> and the non-standard <summary>: the first is the summary; a second one is
// kept as the full content when there is no other.
void FeedReader::readRssSummary(ParsedItem &item, const QUrl &base)
{
    ParsedText text = rssText(TextConstructReader::Mode::Html, base);
    if (item.summary.value.isEmpty())
        item.summary = std::move(text);
    else if (item.content.value.isEmpty())
        item.content = std::move(text);
}

void FeedReader::finishRssItem(ParsedItem &item, bool guidIsPermaLink)
{
    if (item.link.isEmpty() && guidIsPermaLink && looksLikeWebAddress(item.guid))
        item.link = item.guid;
}

// media:content alone or inside media:group (groups do not nest).
void FeedReader::readMedia(ParsedItem &item, const QUrl &base)
{
    auto readContent = [this, &item](const QUrl &contentBase) {
        const XmlAttributes a = m_xml.attributes();
        addEnclosure(item.enclosures,
                     {LinkResolver::resolve(contentBase, a.value(u"url")),
                      a.value(u"type").trimmed().toString(), lengthOf(a.value(u"fileSize")), QString()});
        m_xml.skipCurrentElement();
    };
    if (m_xml.name() == u"content") {
        readContent(base);
    } else if (m_xml.name() == u"group") {
        while (m_xml.readNextStartElement()) {
            if (vocab() == Vocab::Media && m_xml.name() == u"content")
                readContent(baseOf(base));
            else
                m_xml.skipCurrentElement();
        }
    } else {
        m_xml.skipCurrentElement();
    }
}

void FeedReader::readAtomFeed(const QUrl &base)
{
    bool linkPreferred = false;
    while (m_xml.readNextStartElement())
        readAtomFeedChild(baseOf(base), linkPreferred);
}

void FeedReader::readAtomFeedChild(const QUrl &base, bool &linkPreferred)
{
    const QStringView name = m_xml.name();
    if (vocab() != Vocab::Core) {
        m_xml.skipCurrentElement();
    } else if (name == u"entry") {
        readAtomEntry(base);
    } else if (name == u"title") {
        m_feed.title = atomText(base);
    } else if (name == u"subtitle" || name == u"tagline") {
        m_feed.description = atomText(base);
    } else if (name == u"link") {
        readAtomLink(base, m_feed.link, m_feed.links, linkPreferred, nullptr);
    } else if (name == u"id") {
        m_feed.id = plainText();
    } else if (name == u"updated" || name == u"modified") {
        m_feed.updated = dateText();
    } else if (name == u"published" || name == u"issued") {
        m_feed.published = dateText();
    } else {
        m_xml.skipCurrentElement();
    }
}

void FeedReader::readAtomEntry(const QUrl &base)
{
    ParsedItem item;
    bool linkPreferred = false;
    while (m_xml.readNextStartElement())
        readAtomEntryChild(item, baseOf(base), linkPreferred);
    if (m_xml.hasError())
        return;
    addItem(std::move(item));
}

void FeedReader::readAtomEntryChild(ParsedItem &item, const QUrl &base, bool &linkPreferred)
{
    const Vocab v = vocab();
    const QStringView name = m_xml.name();
    if (v == Vocab::Core && name == u"title") {
        item.title = atomText(base);
    } else if (v == Vocab::Core && name == u"summary") {
        item.summary = atomText(base);
    } else if (v == Vocab::Core && name == u"content") {
        item.content = atomText(base);
    } else if (v == Vocab::Core && name == u"id") {
        item.guid = plainText();
    } else if (v == Vocab::Core && name == u"link") {
        readAtomLink(base, item.link, item.links, linkPreferred, &item.enclosures);
    } else if (v == Vocab::Core && (name == u"published" || name == u"issued")) {
        item.published = dateText();
    } else if (v == Vocab::Core && name == u"created" && !item.published.isValid()) {
        item.published = dateText();
    } else if (v == Vocab::Core && (name == u"updated" || name == u"modified")) {
        item.updated = dateText();
    } else if ((v == Vocab::Core && name == u"author") || (v == Vocab::Dc && name == u"creator")) {
        const QString author = v == Vocab::Core ? readAtomPerson() : plainText();
        if (item.author.isEmpty())
            item.author = author;
    } else if (v == Vocab::Dc && name == u"date" && !item.updated.isValid()) {
        item.updated = dateText();
    } else if (v == Vocab::Media) {
        readMedia(item, base);
    } else {
        m_xml.skipCurrentElement(); // source carries another feed's title and links
    }
}

// Any link goes to the list; rel="alternate" (the default) is the permalink, preferring an HTML
// page over other media types; rel="enclosure" is an attachment.
void FeedReader::readAtomLink(const QUrl &base, QString &link, QStringList &links, bool &preferred,
                              QList<ParsedEnclosure> *enclosures)
{
    const XmlAttributes a = m_xml.attributes();
    m_xml.skipCurrentElement();
    const QString href = LinkResolver::resolve(base, a.value(u"href"));
    if (href.isEmpty())
        return;
    links.append(href);
    QString rel = a.value(u"rel").trimmed().toString().toLower();
    if (rel.isEmpty())
        rel = QStringLiteral("alternate");
    const QString type = a.value(u"type").trimmed().toString();
    if (rel == u"alternate") {
        const bool htmlPage = type.isEmpty() || type == u"text/html" || type == u"application/xhtml+xml";
        if (link.isEmpty() || (htmlPage && !preferred)) {
            link = href;
            preferred = htmlPage;
        }
    } else if (rel == u"enclosure" && enclosures) {
        addEnclosure(*enclosures, {href, type, lengthOf(a.value(u"length")), QString()});
    }
}

QString FeedReader::readAtomPerson()
{
    QString name;
    QString email;
    while (m_xml.readNextStartElement()) {
        if (m_xml.name() == u"name")
            name = plainText();
        else if (m_xml.name() == u"email")
            email = plainText();
        else
            m_xml.skipCurrentElement();
    }
    return name.isEmpty() ? email : name;
}

} // namespace quillon
