#include "DocumentRequests.h"

#include "AddressResolver.h"
#include "ArticleText.h"
#include "CoreLogging.h"
#include "EngineMessages.h"
#include "FeedParser.h"
#include "ItemBags.h"
#include "OpmlParser.h"
#include "OutlineBags.h"
#include "ReaderImporterRegistry.h"

#include <QPointer>

namespace quillon {

DocumentRequests::DocumentRequests(const std::unique_ptr<FeedFetcher> &fetcher,
                                   const AddressResolver &resolver, const ReaderImporterRegistry &importers,
                                   EngineMessenger messenger)
    : m_fetcher(fetcher), m_resolver(resolver), m_importers(importers), m_messenger(std::move(messenger))
{
}

void DocumentRequests::preview(qint32 session, qint32 callbackId, const QString &address)
{
    const Asker asker{session, callbackId, address};
    fetchThen(asker, [this, asker](const FetchResult &result) { answerPreview(asker, result); });
}

void DocumentRequests::fetchOpml(qint32 session, qint32 callbackId, const QString &address)
{
    const Asker asker{session, callbackId, address};
    if (m_importers.find(address)) {
        answerImporter(asker);
        return;
    }
    fetchThen(asker, [this, asker](const FetchResult &result) { answerOpml(asker, result); });
}

void DocumentRequests::fetchThen(const Asker &asker, std::function<void(const FetchResult &)> next)
{
    const FeedAddress::Resolved resolved = m_resolver.resolve(asker.address);
    if (!resolved.ok()) {
        fail(asker, QStringLiteral("Error: ") + resolved.error);
        return;
    }
    FetchRequest request;
    request.url = resolved.url;
    QPointer<DocumentRequests> self(this);
    m_fetcher->fetch(request, [self, asker, next = std::move(next)](const FetchResult &result) {
        if (!self)
            return;
        if (!result.ok())
            self->fail(asker, result.describe());
        else
            next(result);
    });
}

void DocumentRequests::answerPreview(const Asker &asker, const FetchResult &result)
{
    const ParsedFeed feed = FeedParser::parse(result.body, result.contentType, result.finalUrl);
    if (!feed.ok() && feed.items.isEmpty()) {
        fail(asker, QStringLiteral("Error: ") + feed.errorText);
        return;
    }
    auto payload = PropertyBag::create();
    payload->set(QStringLiteral("PREFLIGHT_DETAILS"), ItemBags::previewDetails(feed, asker.address));
    m_messenger.toCallback(asker.session, asker.callbackId,
                           EngineMessages::message(QStringLiteral("PreviewResult"), payload));
}

void DocumentRequests::answerOpml(const Asker &asker, const FetchResult &result)
{
    OpmlDocument document = OpmlParser::parse(result.body, result.contentType);
    if (document.error == ParseError::UnknownFormat)
        document = feedAsOutline(result, asker.address);
    if (!document.ok() && document.outlines.isEmpty()) {
        fail(asker, QStringLiteral("Error: ") + document.errorText);
        return;
    }
    auto payload = PropertyBag::create();
    payload->setText(QStringLiteral("URL"), asker.address);
    payload->setText(QStringLiteral("TITLE"), document.title);
    payload->set(QStringLiteral("SubscriptionList"), OutlineBags::tree(document.outlines, result.finalUrl));
    if (!document.ok())
        payload->setText(QStringLiteral("ERROR"), document.errorText);
    m_messenger.toCallback(asker.session, asker.callbackId,
                           EngineMessages::message(QStringLiteral("OPMLResult"), payload));
}

OpmlDocument DocumentRequests::feedAsOutline(const FetchResult &result, const QString &address)
{
    // A feed chosen for import stands for a list of one.
    OpmlDocument document;
    const ParsedFeed feed = FeedParser::parse(result.body, result.contentType, result.finalUrl);
    if (feed.error == ParseError::UnknownFormat || feed.error == ParseError::Empty) {
        document.error = ParseError::UnknownFormat;
        document.errorText = QStringLiteral("The document is neither an outline list nor a feed.");
        return document;
    }
    OpmlOutline outline;
    outline.title = ArticleText::plain(feed.title);
    outline.text = outline.title;
    outline.description = ArticleText::plain(feed.description);
    outline.xmlUrl = address;
    outline.htmlUrl = feed.link;
    outline.type = QStringLiteral("rss");
    document.title = outline.title;
    document.outlines.append(outline);
    return document;
}

void DocumentRequests::answerImporter(const Asker &asker)
{
    const ReaderImporter *importer = m_importers.find(asker.address);
    if (!importer->available()) {
        fail(asker,
             QStringLiteral("No subscriptions of %1 were found on this computer").arg(importer->title()));
        return;
    }
    auto payload = PropertyBag::create();
    payload->setText(QStringLiteral("URL"), asker.address);
    payload->setText(QStringLiteral("TITLE"), importer->title());
    payload->set(QStringLiteral("SubscriptionList"), OutlineBags::tree(importer->subscriptions()));
    m_messenger.toCallback(asker.session, asker.callbackId,
                           EngineMessages::message(QStringLiteral("OPMLResult"), payload));
}

void DocumentRequests::fail(const Asker &asker, const QString &error)
{
    qCInfo(lcCore).noquote() << "cannot serve" << asker.address << "-" << error;
    BagPtr failure = EngineMessages::failure(error);
    failure->setText(QStringLiteral("URL"), asker.address);
    m_messenger.toCallback(asker.session, asker.callbackId, failure);
}

} // namespace quillon
