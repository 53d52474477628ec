#include "MediaSettings.h"

#include "HandleGuard.h"
#include "NetworkSettingKeys.h"
#include "PropertyBag.h"

#include <algorithm>

namespace {
// Key and its value when neither section holds one.
const QList<QPair<QString, QString>> kKeys = {
    {QStringLiteral("EnableAutoDownload"), QStringLiteral("0")},
    {QStringLiteral("PromptForAutoDownload"), QStringLiteral("1")},
    {QStringLiteral("StoreMusicInMyMusic"), QStringLiteral("1")},
    {QStringLiteral("StoreVideosInMyVideos"), QStringLiteral("1")},
    {QStringLiteral("StorePicturesInMyPictures"), QStringLiteral("1")},
    {QStringLiteral("OrganizeBySubscriptionTitle"), QStringLiteral("1")},
    {QStringLiteral("OverwriteFiles"), QStringLiteral("0")},
    {QStringLiteral("EnablePodcasting"), QStringLiteral("0")},
    {QStringLiteral("PodcastFilesToThisApp"), QStringLiteral("itunes")},
    {QStringLiteral("PlaceIntoPlaylist"), QStringLiteral("0")},
    {QStringLiteral("PlaylistNamingMode"), QStringLiteral("1")},
    {QStringLiteral("PlaylistFolderTitle"), QString()},
    {QStringLiteral("EnableAutoDelete"), QStringLiteral("0")},
    {QStringLiteral("KeepNewestFiles"), QStringLiteral("0")}};

enum Key {
    EnableAutoDownload,
    PromptForAutoDownload,
    StoreMusic,
    StoreVideos,
    StorePictures,
    Organize,
    Overwrite,
    Podcasting,
    PodcastApp,
    Playlist,
    PlaylistNaming,
    PlaylistTitle,
    AutoDelete,
    KeepNewest
};
} // namespace

QString MediaSettings::section(qint32 subscriptionId)
{
    return QStringLiteral("SubscriptionSpecifics_%1").arg(subscriptionId);
}

QStringList MediaSettings::read(const QString &section, const QList<QPair<QString, QString>> &keys)
{
    HandleGuard bag(m_client, m_client.NewBag());
    for (const auto &[key, fallback] : keys)
        m_client.SetStringValue(bag.get(), key, fallback);
    HandleGuard values(m_client, m_client.GetSettings(QLatin1String(kConsumer), section, bag.get()));
    QStringList result;
    for (const auto &key : keys)
        result.append(m_client.GetStringValue(values.get(), key.first));
    return result;
}

MediaChoices MediaSettings::choices(qint32 subscriptionId)
{
    QList<QPair<QString, QString>> unset;
    for (const auto &key : kKeys)
        unset.append({key.first, quillon::kMissingText});
    const QStringList own = read(section(subscriptionId), unset);
    const QStringList general = read(QStringLiteral("Settings"), kKeys);
    const auto value = [&](Key key) {
        return own.at(key) != quillon::kMissingText ? own.at(key) : general.at(key);
    };
    const auto flag = [&](Key key) { return MediaChoices::isTrue(value(key)); };

    MediaChoices c;
    c.download = MediaChoices::decide(own.at(EnableAutoDownload), general.at(EnableAutoDownload),
                                      general.at(PromptForAutoDownload));
    c.storeMusic = flag(StoreMusic);
    c.storeVideos = flag(StoreVideos);
    c.storePictures = flag(StorePictures);
    c.organizeBySubscription = flag(Organize);
    c.overwrite = flag(Overwrite);
    c.podcasting = flag(Podcasting);
    c.podcastApp = value(PodcastApp);
    c.playlist = flag(Playlist);
    c.playlistNamedAutomatically = value(PlaylistNaming).trimmed() == QLatin1String("1");
    c.playlistTitle = quillon::presentText(value(PlaylistTitle)).trimmed();
    c.autoDelete = flag(AutoDelete);
    c.keepNewest = std::max(0, value(KeepNewest).toInt());
    return c;
}

bool MediaSettings::hasOwnAnswer(qint32 subscriptionId)
{
    const QStringList own =
        read(section(subscriptionId), {{QStringLiteral("EnableAutoDownload"), quillon::kMissingText}});
    return own.first() != quillon::kMissingText;
}

void MediaSettings::reportProgress(qint32 subscriptionId, const QString &text)
{
    HandleGuard bag(m_client, m_client.NewBag());
    m_client.SetStringValue(bag.get(), QStringLiteral("DownloadStatus"), text);
    m_client.SetSettings(QLatin1String(kConsumer), section(subscriptionId), bag.get());
}

quillon::NetworkSettings MediaSettings::network()
{
    namespace K = quillon::NetworkSettingKeys;
    QList<QPair<QString, QString>> keys;
    for (const K::Default &d : K::kDefaults)
        keys.append({d.key, quillon::kMissingText});
    HandleGuard bag(m_client, m_client.NewBag());
    for (const auto &[key, fallback] : keys)
        m_client.SetStringValue(bag.get(), key, fallback);
    HandleGuard values(m_client, m_client.GetSettings(K::kConsumer, K::kSection, bag.get()));
    return quillon::NetworkSettings::read([&](const QString &key) -> std::optional<QString> {
        const QString value = m_client.GetStringValue(values.get(), key);
        return value == quillon::kMissingText ? std::nullopt : std::optional<QString>(value);
    });
}
