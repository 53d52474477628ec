#include "PublishingUtils.h"

#include "ConsumerSettings.h"
#include "commonUtils.h"

namespace PublishingUtils {

namespace {
const QString kEngine = QStringLiteral("ENGINE");
const QString kTitleKey = QStringLiteral("blog_name");
const QString kDeleted = QStringLiteral("DELETED");
// Where a record was never written its title reads as this default: the end of the list.
const QString kFree = QStringLiteral("-237237");
// The loop's guard: a number the list never reaches in practice.
constexpr qint32 kLastNumber = 237235;

template <typename Visit> qint32 WalkRecords(quillon::SubscribeClient &client, Visit visit)
{
    qint32 number = 1;
    for (; number <= kLastNumber; ++number) {
        const QString title = RecordValue(client, number, kTitleKey, kFree);
        if (title == kFree)
            break;
        if (title != kDeleted)
            visit(number);
    }
    return number;
}
} // namespace

QString RecordValue(quillon::SubscribeClient &client, qint32 number, const QString &key,
                    const QString &defaultValue)
{
    return GetConsumerSetting(client, key, defaultValue, kEngine, PublishingSettingsSection(number));
}

void SetRecordValue(quillon::SubscribeClient &client, qint32 number, const QString &key, const QString &value)
{
    SetConsumerSetting(client, kEngine, PublishingSettingsSection(number), key, value);
}

QList<WeblogRecord> EnumerateWeblogRecords(quillon::SubscribeClient &client, bool enabledOnly,
                                           const QString &key)
{
    QList<WeblogRecord> records;
    WalkRecords(client, [&](qint32 number) {
        const QString value = RecordValue(client, number, key);
        if (!enabledOnly ||
            TextToBool(RecordValue(client, number, QStringLiteral("enabled"), BoolToText(true))))
            records.append({number, value});
    });
    return records;
}

QStringList EnumerateWeblogs(quillon::SubscribeClient &client, bool enabledOnly, const QString &key)
{
    QStringList values;
    for (const WeblogRecord &record : EnumerateWeblogRecords(client, enabledOnly, key))
        values.append(record.value);
    return values;
}

qint32 NextRecordNumber(quillon::SubscribeClient &client)
{
    return WalkRecords(client, [](qint32) {});
}

void DeleteWeblog(quillon::SubscribeClient &client, qint32 number)
{
    SetRecordValue(client, number, kTitleKey, kDeleted);
}

qint32 AddWeblog(quillon::SubscribeClient &client, const WeblogSettings &settings)
{
    const qint32 number = NextRecordNumber(client);
    // The title last: until it is written the number still reads as free.
    const QList<std::pair<QString, QString>> values = {
        {QStringLiteral("user"), settings.user},
        {QStringLiteral("password"), settings.password},
        {QStringLiteral("publisher"), QString::number(settings.publisher)},
        {QStringLiteral("service.post"), settings.postUrl},
        {QStringLiteral("blogUrl"), settings.blogUrl},
        {QStringLiteral("blog_id"), settings.blogId},
        {QStringLiteral("enabled"), BoolToText(settings.enabled)},
        {QStringLiteral("api"), settings.api},
        {kTitleKey, settings.title}};
    for (const auto &[key, value] : values)
        SetRecordValue(client, number, key, value);
    return number;
}

WeblogSettings ReadWeblog(quillon::SubscribeClient &client, qint32 number)
{
    const auto value = [&](const QString &key, const QString &defaultValue = QString()) {
        return RecordValue(client, number, key, defaultValue);
    };
    return {value(kTitleKey),
            value(QStringLiteral("user")),
            value(QStringLiteral("password")),
            TextToInt(value(QStringLiteral("publisher"))),
            value(QStringLiteral("service.post")),
            value(QStringLiteral("blogUrl")),
            value(QStringLiteral("blog_id"), QStringLiteral("1")),
            TextToBool(value(QStringLiteral("enabled"), BoolToText(true))),
            value(QStringLiteral("api"))};
}

QString ServiceName(qint32 code)
{
    static const QStringList names = {QStringLiteral("Other"), QStringLiteral("TypePad"),
                                      QStringLiteral("Blogger"), QStringLiteral("LiveJournal")};
    return code >= 0 && code < names.size() ? names.at(code) : names.first();
}

} // namespace PublishingUtils
