#pragma once

#include "EngineMessenger.h"
#include "FeedFetcher.h"
#include "PropertyBag.h"

#include <QObject>

#include <memory>

namespace quillon {

class AddressResolver;
class ReaderImporterRegistry;
struct OpmlDocument;

// The requests that fetch a document once without subscribing: the preview of a feed
// (RequestPreview) and the outline list of a directory, an OPML file or another reader
// (REQUEST "FETCHOPML"). Each is answered once at the callback given with it.
class DocumentRequests : public QObject
{
    Q_OBJECT
public:
    DocumentRequests(const std::unique_ptr<FeedFetcher> &fetcher, const AddressResolver &resolver,
                     const ReaderImporterRegistry &importers, EngineMessenger messenger);

    void preview(qint32 session, qint32 callbackId, const QString &address);
    void fetchOpml(qint32 session, qint32 callbackId, const QString &address);

private:
    struct Asker
    {
        qint32 session = 0;
        qint32 callbackId = 0;
        QString address;
    };

    // Fetches what the address names and hands the bytes on, or answers the failure.
    void fetchThen(const Asker &asker, std::function<void(const FetchResult &)> next);
    void answerPreview(const Asker &asker, const FetchResult &result);
    void answerOpml(const Asker &asker, const FetchResult &result);
    void answerImporter(const Asker &asker);
    [[nodiscard]] static OpmlDocument feedAsOutline(const FetchResult &result, const QString &address);
    void fail(const Asker &asker, const QString &error);

    const std::unique_ptr<FeedFetcher> &m_fetcher;
    const AddressResolver &m_resolver;
    const ReaderImporterRegistry &m_importers;
    EngineMessenger m_messenger;
};

} // namespace quillon
