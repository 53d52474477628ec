#include "PodcastingUI.h"

#include "EngineError.h"
#include "ui_PodcastingUI.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcPodcasting, "corvell.options.podcasting")

namespace {
const QString kEnable = QStringLiteral("EnableAutoDownload");
const QString kPrompt = QStringLiteral("PromptForAutoDownload");
const QString kAutoDelete = QStringLiteral("EnableAutoDelete");

FieldBinding Flag(const char *control, SettingStore &store, const char *key, const char *byDefault)
{
    return {.control = QLatin1String(control),
            .store = &store,
            .key = QLatin1String(key),
            .defaultValue = QLatin1String(byDefault),
            .codec = FieldCodec::Flag};
}
} // namespace

PodcastingUI::PodcastingUI(QWidget *parent) : ConfigPage(parent), ui(std::make_unique<Ui::PodcastingUI>())
{
    ui->setupUi(this);
    Bind({
        Flag("chkStoreMusic", m_media, "StoreMusicInMyMusic", "1"),
        Flag("chkStoreVideo", m_media, "StoreVideosInMyVideos", "1"),
        Flag("chkStorePictures", m_media, "StorePicturesInMyPictures", "1"),
        Flag("chkOrginizeFilesBySub", m_media, "OrganizeBySubscriptionTitle", "1"),
        Flag("chkOverwrite", m_media, "OverwriteFiles", "0"),
        Flag("chkPodcast", m_media, "EnablePodcasting", "0"),
        {.control = QStringLiteral("cboPodcast"),
         .store = &m_media,
         .key = QStringLiteral("PodcastFilesToThisApp"),
         .defaultValue = QStringLiteral("itunes"),
         .codec = FieldCodec::ChoiceText,
         .choices = {QStringLiteral("itunes"), QStringLiteral("windowsmedia")}},
        Flag("chkPutInPlayList", m_media, "PlaceIntoPlaylist", "0"),
        {.control = QStringLiteral("optStoreInAutoFolder"),
         .store = &m_media,
         .key = QStringLiteral("PlaylistNamingMode"),
         .defaultValue = QStringLiteral("1"),
         .codec = FieldCodec::ChoiceText,
         .choices = {QStringLiteral("1"), QStringLiteral("2")},
         .options = {QStringLiteral("optStoreInAutoFolder"), QStringLiteral("optStoreInNamedFolder")}},
        {.control = QStringLiteral("txtStoreInNamedFolder"),
         .store = &m_media,
         .key = QStringLiteral("PlaylistFolderTitle"),
         .codec = FieldCodec::Text},
        Flag("chkMakeBookmark", m_media, "MakeBookmarkable", "0"),
        {.control = QStringLiteral("spnKeepNewestFiles"),
         .store = &m_media,
         .key = QStringLiteral("KeepNewestFiles"),
         .defaultValue = QStringLiteral("0"),
         .codec = FieldCodec::Number},
    });
    for (QRadioButton *option : {ui->OptAlwaysDownload, ui->optNeverDownload, ui->OptPromptDownload})
        connect(option, &QRadioButton::toggled, this, [this](bool on) {
            if (on)
                FieldChanged();
        });
    for (QAbstractButton *control : {static_cast<QAbstractButton *>(ui->chkPodcast),
                                     static_cast<QAbstractButton *>(ui->chkPutInPlayList),
                                     static_cast<QAbstractButton *>(ui->optStoreInNamedFolder)})
        connect(control, &QAbstractButton::toggled, this, &PodcastingUI::ShowDependents);
    LoadValues();
}

PodcastingUI::~PodcastingUI() = default;

void PodcastingUI::FieldsLoaded()
{
    try {
        const SettingStore::Values stored = m_media.Read(
            {{kEnable, QStringLiteral("0")}, {kPrompt, QStringLiteral("1")}, {kAutoDelete, "0"}});
        // Asking wins over the general answer; the enclosure question clears it once answered for all.
        if (stored.value(kPrompt) == QLatin1String("1"))
            ui->OptPromptDownload->setChecked(true);
        else if (stored.value(kEnable) == QLatin1String("1"))
            ui->OptAlwaysDownload->setChecked(true);
        else
            ui->optNeverDownload->setChecked(true);
        m_autoDelete = stored.value(kAutoDelete);
    } catch (const quillon::EngineError &error) {
        qCWarning(lcPodcasting) << "the download choice was not read:" << error.message();
    }
    ShowDependents();
}

void PodcastingUI::Apply()
{
    ConfigPage::Apply();
    if (Dirty())
        return;
    const bool always = ui->OptAlwaysDownload->isChecked();
    const bool prompt = ui->OptPromptDownload->isChecked();
    try {
        m_media.Write({{kEnable, always ? QStringLiteral("1") : QStringLiteral("0")},
                       {kPrompt, prompt ? QStringLiteral("1") : QStringLiteral("0")},
                       {kAutoDelete, m_autoDelete}});
    } catch (const quillon::EngineError &error) {
        qCWarning(lcPodcasting) << "the download choice was not stored:" << error.message();
        SetDirty(true);
    }
}

void PodcastingUI::ShowDependents()
{
    ui->cboPodcast->setEnabled(ui->chkPodcast->isChecked());
    ui->chkPutInPlayList->setEnabled(ui->chkPodcast->isChecked());
    const bool playlist = ui->chkPodcast->isChecked() && ui->chkPutInPlayList->isChecked();
    ui->optStoreInAutoFolder->setEnabled(playlist);
    ui->optStoreInNamedFolder->setEnabled(playlist);
    ui->txtStoreInNamedFolder->setEnabled(playlist && ui->optStoreInNamedFolder->isChecked());
}
