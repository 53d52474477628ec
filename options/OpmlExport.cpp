#include "OpmlExport.h"

#include "EngineNames.h"
#include "HandleGuard.h"
#include "PropertyBag.h"

#include <QDateTime>
#include <QHash>
#include <QLocale>
#include <QSaveFile>
#include <QXmlStreamWriter>

#include <memory>
#include <vector>

namespace {

// One folder: its sub-folders in the order they first appear, then its feeds.
struct Folder
{
    QString name;
    std::vector<std::unique_ptr<Folder>> folders;
    QHash<QString, Folder *> byName;
    QList<const OpmlExport::Subscription *> feeds;

    Folder &Child(const QString &childName)
    {
        if (Folder *found = byName.value(childName))
            return *found;
        folders.push_back(std::make_unique<Folder>());
        folders.back()->name = childName;
        byName.insert(childName, folders.back().get());
        return *folders.back();
    }
};

bool HasValue(const QString &text)
{
    return !text.isEmpty() && text != quillon::kMissingText;
}

void WriteFolder(QXmlStreamWriter &xml, const Folder &folder)
{
    for (const auto &child : folder.folders) {
        xml.writeStartElement(QStringLiteral("outline"));
        xml.writeAttribute(QStringLiteral("text"), child->name);
        xml.writeAttribute(QStringLiteral("title"), child->name);
        WriteFolder(xml, *child);
        xml.writeEndElement();
    }
    for (const OpmlExport::Subscription *feed : folder.feeds) {
        const QString title = HasValue(feed->title) ? feed->title : feed->url;
        xml.writeEmptyElement(QStringLiteral("outline"));
        xml.writeAttribute(QStringLiteral("type"), QStringLiteral("rss"));
        xml.writeAttribute(QStringLiteral("text"), title);
        xml.writeAttribute(QStringLiteral("title"), title);
        xml.writeAttribute(QStringLiteral("xmlUrl"), feed->url);
    }
}

} // namespace

QList<OpmlExport::Subscription> OpmlExport::ReadSubscriptions(quillon::SubscribeClient &client)
{
    QList<Subscription> subscriptions;
    HandleGuard ids(client, client.ListConsumerItems(QStringLiteral("*"), EngineNames::kNewsClass));
    const qint32 count = client.ListCount(ids.get());
    subscriptions.reserve(count);
    for (qint32 i = 0; i < count; ++i) {
        HandleGuard item(client,
                         client.GetItemBag(EngineNames::kNewsClass, client.ListLong(ids.get(), i), 0));
        if (!item.isValid())
            continue;
        const QString category = client.GetStringValue(item.get(), QStringLiteral("CATEGORY"));
        subscriptions.append({client.GetStringValue(item.get(), QStringLiteral("TITLE")),
                              client.GetStringValue(item.get(), QStringLiteral("URL")),
                              HasValue(category) ? category : QString()});
    }
    return subscriptions;
}

QByteArray OpmlExport::Document(const QString &title, const QList<Subscription> &subscriptions)
{
    Folder top;
    for (const Subscription &subscription : subscriptions) {
        Folder *folder = &top;
        for (const QString &name : subscription.category.split(QStringLiteral("~~~"), Qt::SkipEmptyParts))
            folder = &folder->Child(name);
        folder->feeds.append(&subscription);
    }
    QByteArray document;
    QXmlStreamWriter xml(&document);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("opml"));
    xml.writeAttribute(QStringLiteral("version"), QStringLiteral("2.0"));
    xml.writeStartElement(QStringLiteral("head"));
    xml.writeTextElement(QStringLiteral("title"), title);
    xml.writeTextElement(QStringLiteral("dateCreated"),
                         QLocale::c().toString(QDateTime::currentDateTimeUtc(),
                                               QStringLiteral("ddd, dd MMM yyyy hh:mm:ss 'GMT'")));
    xml.writeEndElement();
    xml.writeStartElement(QStringLiteral("body"));
    WriteFolder(xml, top);
    xml.writeEndDocument();
    return document;
}

QString OpmlExport::Write(const QString &path, const QString &title, const QList<Subscription> &subscriptions)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return file.errorString();
    file.write(Document(title, subscriptions));
    if (!file.commit())
        return file.errorString();
    return QString();
}
