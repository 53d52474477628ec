#pragma once

#include "SubscribeClient.h"

#include <QList>
#include <QString>
#include <QStringList>

// The weblog records: "ENGINE" settings in sections "Publishing_settings_1", "_2", ... with no
// gaps. The first number whose "blog_name" is unset ends the list; a deleted record keeps its
// number with the title "DELETED", so later numbers never change.
namespace PublishingUtils {

struct WeblogRecord
{
    qint32 number = 0;
    QString value;
};

// For each live record in number order, the value of key; only the records taking part in
// quick publishing when enabledOnly. Engine failures propagate as quillon::EngineError.
[[nodiscard]] QList<WeblogRecord> EnumerateWeblogRecords(quillon::SubscribeClient &client, bool enabledOnly,
                                                         const QString &key);
[[nodiscard]] QStringList EnumerateWeblogs(quillon::SubscribeClient &client, bool enabledOnly,
                                           const QString &key);
// The number a new record gets: the first free one after every record, deleted ones included.
[[nodiscard]] qint32 NextRecordNumber(quillon::SubscribeClient &client);

[[nodiscard]] QString RecordValue(quillon::SubscribeClient &client, qint32 number, const QString &key,
                                  const QString &defaultValue = QString());
void SetRecordValue(quillon::SubscribeClient &client, qint32 number, const QString &key,
                    const QString &value);
// Marks the record deleted; its number stays taken.
void DeleteWeblog(quillon::SubscribeClient &client, qint32 number);

// Everything a record holds; blogId is the account's number for the weblog, which posting needs.
struct WeblogSettings
{
    QString title;
    QString user;
    QString password; // empty: asked for at posting
    qint32 publisher = 0;
    QString postUrl;
    QString blogUrl;
    QString blogId;
    bool enabled = true;
    QString api; // the interface posts go through, as the service names it; empty: by publisher
};

// Writes a new record after the last used number and returns that number.
qint32 AddWeblog(quillon::SubscribeClient &client, const WeblogSettings &settings);
[[nodiscard]] WeblogSettings ReadWeblog(quillon::SubscribeClient &client, qint32 number);

// The name shown for a "publisher" code: 0 "Other", 1 "TypePad", 2 "Blogger", 3 "LiveJournal".
[[nodiscard]] QString ServiceName(qint32 code);

} // namespace PublishingUtils
