#include "SubscriptionSettingsStore.h"

#include "ConsumerSettings.h"
#include "EngineNames.h"
#include "HandleGuard.h"
#include "SettingsEditorRules.h"
#include "commonUtils.h"
#include "editorLogging.h"

#include <QStringList>

using EngineNames::kNewsClass;

using quillon::Handle;

namespace {
const QString &kOutlook = EngineNames::kOutlookConsumer;
const QString kMedia = QStringLiteral("MEDIACONSUMER");
const QString kEngine = QStringLiteral("ENGINE");

const QString kUpdateFreq = QStringLiteral("UPDATEFREQ");
const QString kDeleteRead = QStringLiteral("DELETEREAD");
const QString kDeleteUnread = QStringLiteral("DELETEUNREAD");
const QString kUser = QStringLiteral("USER");
const QString kPassword = QStringLiteral("PASSWORD");
const QString kUrl = QStringLiteral("URL");
const QString kAutoDownload = QStringLiteral("EnableAutoDownload");
const QString kFolderTitle = QStringLiteral("FOLDERTITLE");
const QString kStoreLocation = QStringLiteral("StoreLocationOption");
const QString kSpecificFolder = QStringLiteral("StoreLocationSpecificFolder");
const QString kSpecificFolderId = QStringLiteral("StoreLocationSpecificFolder_folderID");
const QString kNamedFolder = QStringLiteral("StoreInNamedFolder");
const QString kMovedInConfig = QStringLiteral("SubMovedInConfig");
const QString kArticleTheme = QStringLiteral("Article_Theme");

QString FlagText(const QString &text)
{
    return BoolToText(TextToBool(text));
}
} // namespace

qint32 SubscriptionSettingsStore::EngineTime(const QString &key, qint32 fallback)
{
    const qint32 seconds =
        TextToInt(GetConsumerSetting(m_client, key, QString::number(fallback), kEngine, QString()));
    return seconds > 0 ? seconds : fallback;
}

EngineTimeDefaults SubscriptionSettingsStore::ReadTimeDefaults()
{
    const EngineTimeDefaults fallback;
    return {EngineTime(kUpdateFreq, fallback.updateFreq), EngineTime(kDeleteRead, fallback.deleteRead),
            EngineTime(kDeleteUnread, fallback.deleteUnread)};
}

SubscriptionTabValues SubscriptionSettingsStore::ReadSubscriptionTab(const QList<qint32> &ids)
{
    const QString enclosureDefault =
        GetConsumerSetting(m_client, kAutoDownload, QStringLiteral("0"), kMedia, QStringLiteral("Settings"));
    QList<qint32> updateFreq, deleteRead, deleteUnread;
    QStringList users, passwords, enclosures;
    for (const qint32 id : ids) {
        HandleGuard bag(m_client, m_client.GetItemBag(kNewsClass, id, 0));
        updateFreq << m_client.GetLongValue(bag.get(), kUpdateFreq);
        deleteRead << m_client.GetLongValue(bag.get(), kDeleteRead);
        deleteUnread << m_client.GetLongValue(bag.get(), kDeleteUnread);
        users << m_client.GetStringValue(bag.get(), kUser);
        passwords << m_client.GetStringValue(bag.get(), kPassword);
        enclosures << FlagText(GetConsumerSetting(m_client, kAutoDownload, enclosureDefault, kMedia,
                                                  SubscriptionSpecificsSection(id)));
    }
    using CommonValues::Common;
    return {Common(updateFreq), Common(deleteRead), Common(deleteUnread),
            Common(users),      Common(passwords),  Common(enclosures)};
}

OutlookTabValues SubscriptionSettingsStore::ReadOutlookTab(const QList<qint32> &ids)
{
    const QString themeDefault = GetConsumerSetting(m_client, kArticleTheme, QStringLiteral("Default"),
                                                    kOutlook, EngineNames::kOutlookDefaults);
    const KeyDefaults keys = {{kStoreLocation, SettingsEditorRules::kStoreInParentFolder},
                              {kSpecificFolder, QString()},
                              {kSpecificFolderId, QString()},
                              {kNamedFolder, QStringLiteral("1")},
                              {kArticleTheme, themeDefault}};
    QStringList locations, folders, folderIds, namedFolders, themes;
    for (const qint32 id : ids) {
        const QHash<QString, QString> values = ReadSettings(kOutlook, SubscriptionSpecificsSection(id), keys);
        const bool specific = values.value(kStoreLocation) == SettingsEditorRules::kStoreInSpecificFolder;
        locations << (specific ? SettingsEditorRules::kStoreInSpecificFolder
                               : SettingsEditorRules::kStoreInParentFolder);
        folders << values.value(kSpecificFolder);
        folderIds << values.value(kSpecificFolderId);
        namedFolders << FlagText(values.value(kNamedFolder));
        themes << values.value(kArticleTheme);
    }
    using CommonValues::Common;
    OutlookTabValues common{Common(locations), Common(folders), Common(folderIds), Common(namedFolders),
                            Common(themes)};
    // Subscriptions in different specific folders do not share a location.
    if (common.storeLocation == SettingsEditorRules::kStoreInSpecificFolder &&
        common.specificFolder == CommonValues::kNothingCommonText)
        common.storeLocation = CommonValues::kNothingCommonText;
    return common;
}

QHash<QString, QString> SubscriptionSettingsStore::ReadSettings(const QString &consumerId,
                                                                const QString &section,
                                                                const KeyDefaults &keys)
{
    HandleGuard request(m_client, m_client.NewBag());
    for (const auto &[key, defaultValue] : keys)
        m_client.SetStringValue(request.get(), key, defaultValue);
    HandleGuard answer(m_client, m_client.GetSettings(consumerId, section, request.get()));
    QHash<QString, QString> values;
    for (const auto &[key, defaultValue] : keys)
        values.insert(key, answer.isValid() ? m_client.GetStringValue(answer.get(), key) : defaultValue);
    return values;
}

void SubscriptionSettingsStore::WriteSubscriptionTab(qint32 id, const SubscriptionTabEdits &edits)
{
    const QString section = SubscriptionSpecificsSection(id);
    if (edits.folderTitle)
        SetConsumerSetting(m_client, kOutlook, section, kFolderTitle, *edits.folderTitle);
    if (edits.enclosure != CommonValues::kNothingCommonText)
        SetConsumerSetting(m_client, kMedia, section, kAutoDownload, edits.enclosure);

    HandleGuard bag(m_client, m_client.NewBag());
    bool anything = false;
    const auto setLong = [&](const QString &name, const std::optional<qint32> &value) {
        if (value) {
            m_client.SetLongValue(bag.get(), name, *value);
            anything = true;
        }
    };
    const auto setText = [&](const QString &name, const std::optional<QString> &value) {
        if (value) {
            m_client.SetStringValue(bag.get(), name, *value);
            anything = true;
        }
    };
    setLong(kUpdateFreq, edits.updateFreq);
    setLong(kDeleteRead, edits.deleteRead);
    setLong(kDeleteUnread, edits.deleteUnread);
    setText(kUser, edits.user);
    setText(kPassword, edits.password);
    setText(kUrl, edits.url);
    // An update also makes the feed due, so an apply that changes nothing here sends none.
    if (anything)
        m_client.UpdateItem(kNewsClass, id, bag.get());
}

void SubscriptionSettingsStore::WriteOutlookTab(qint32 id, const OutlookTabEdits &edits)
{
    HandleGuard bag(m_client, m_client.NewBag());
    bool anything = false;
    if (edits.storeLocation) {
        m_client.SetStringValue(bag.get(), kStoreLocation, *edits.storeLocation);
        m_client.SetStringValue(bag.get(), kSpecificFolder, edits.specificFolder);
        m_client.SetStringValue(bag.get(), kSpecificFolderId, edits.specificFolderId);
        if (edits.namedFolder)
            m_client.SetStringValue(bag.get(), kNamedFolder, *edits.namedFolder);
        m_client.SetStringValue(bag.get(), kMovedInConfig, QStringLiteral("1"));
        anything = true;
    }
    if (edits.articleTheme != CommonValues::kNothingCommonText) {
        m_client.SetStringValue(bag.get(), kArticleTheme, edits.articleTheme);
        anything = true;
    }
    if (anything)
        m_client.SetSettings(kOutlook, SubscriptionSpecificsSection(id), bag.get());
}

QString SubscriptionSettingsStore::SearchUrlText(const SearchUrl &search)
{
    HandleGuard bag(m_client, m_client.NewBag());
    m_client.SetStringValue(bag.get(), QStringLiteral("guid"), search.guid);
    m_client.SetStringValue(bag.get(), QStringLiteral("keywords"), search.keywords);
    if (!search.limit.isEmpty())
        m_client.SetStringValue(bag.get(), QStringLiteral("limit"), search.limit);
    return m_client.BagToText(bag.get());
}

void SubscriptionSettingsStore::RequestSearchSources(const quillon::CallbackPtr &callback)
{
    HandleGuard request(m_client, m_client.NewBag());
    m_client.SetStringValue(request.get(), QStringLiteral("REQUEST"), QStringLiteral("LIST"));
    m_client.SetStringValue(request.get(), QStringLiteral("LIST"), QStringLiteral("SEARCHSOURCES"));
    m_client.SubmitRequest(request.get(), callback);
}
