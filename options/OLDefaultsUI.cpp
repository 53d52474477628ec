#include "OLDefaultsUI.h"

#include "EngineClientBag.h"
#include "EngineError.h"
#include "EngineNames.h"
#include "FormControls.h"
#include "LocalSettings.h"
#include "RegistrySettings.h"
#include "StandardDialogs.h"
#include "frmCreatePST.h"
#include "ui_OLDefaultsUI.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcOutlookDefaults, "corvell.options.outlookdefaults")

namespace {
const QString kTopFolder = QStringLiteral("TopFolderTitle");
const QString kTopFolderId = kTopFolder + QStringLiteral("_folderID");
const QString kSubPlacement = QStringLiteral("RadioSubPlacement");

FieldBinding Choice(const char *control, SettingStore &store, const char *key, const char *byDefault,
                    const char *help)
{
    return {.control = QLatin1String(control),
            .store = &store,
            .key = QLatin1String(key),
            .defaultValue = QLatin1String(byDefault),
            .codec = FieldCodec::ChoiceIndex,
            .hotHelp = QLatin1String(help)};
}
} // namespace

OLDefaultsUI::OLDefaultsUI(QWidget *parent)
    : ConfigPage(parent), ui(std::make_unique<Ui::OLDefaultsUI>()),
      m_outlook(EngineNames::kOutlookConsumer, EngineNames::kOutlookDefaults)
{
    ui->setupUi(this);
    // Indexes and defaults are the ones mail delivery acts on (FolderDefaults).
    Bind({
        {.control = "chkSubFolderName",
         .store = &m_outlook,
         .key = kSubPlacement,
         .defaultValue = "0",
         .codec = FieldCodec::Flag,
         .hotHelp = "Put new subscriptions inside a folder of this name."},
        {.control = "txtSubFolderName",
         .store = &m_outlook,
         .key = "SubFolderTitle",
         .defaultValue = "Corvell for Outlook",
         .hotHelp = "The folder that holds the subscriptions' folders."},
        Choice("cboOutlookMove", m_outlook, "SubMovedInOutlook", "0",
               "What delivery does when you move a subscription's folder in your mail program."),
        Choice("cboOutlookDelete", m_outlook, "SubDeletedInOutlook", "0",
               "What delivery does when you delete a subscription's folder in your mail program."),
        Choice("cboConfigMove", m_outlook, "SubMovedInConfig", "0",
               "What happens to delivered articles when you move a subscription here."),
        Choice("cboConfigDelete", m_outlook, "SubDeletedInConfig", "2",
               "What happens to delivered articles when you stop delivering a subscription here."),
        {.control = "sliderOutlookYeild",
         .store = &m_outlook,
         .key = "OutlookYeildSlider",
         .defaultValue = "5",
         .codec = FieldCodec::Number,
         .hotHelp = "How much delivery gives way to your mail program."},
        {.control = "optDefaultContent",
         .store = &m_outlook,
         .key = "Article_Theme",
         .defaultValue = "Default",
         .codec = FieldCodec::ChoiceText,
         .hotHelp = "How articles show in your mail program.",
         .choices = {"Plain", "Full", "Default"},
         .options = {"optPlainContent", "optFullContent", "optDefaultContent"}},
    });
    connect(ui->cmdTopFolder, &QPushButton::clicked, this, &OLDefaultsUI::PickTopFolder);
    connect(ui->cmdNewPSTFile, &QPushButton::clicked, this, &OLDefaultsUI::NewMailStore);
    connect(ui->chkSubFolderName, &QCheckBox::toggled, this, &OLDefaultsUI::FollowSubFolder);
    LoadValues();
}

OLDefaultsUI::~OLDefaultsUI() = default;

bool OLDefaultsUI::SafeToApply()
{
    if (ui->chkSubFolderName->isChecked() && ui->txtSubFolderName->text().isEmpty()) {
        ShowAlert(this, QStringLiteral("Please enter a folder name before proceeding."),
                  QStringLiteral("No folder name specified."));
        return false;
    }
    return true;
}

void OLDefaultsUI::FieldsLoaded()
{
    m_pickedTopFolder.reset();
    SettingStore::Values stored;
    try {
        stored = m_outlook.Read({{kTopFolder, QString()}, {kSubPlacement, "0"}});
    } catch (const quillon::EngineError &error) {
        qCWarning(lcOutlookDefaults) << "the top folder could not be read:" << error.message();
    }
    ShowTopFolder(stored.value(kTopFolder));
    // The first run's "a named folder in the existing store" is "2"; delivery takes it as set.
    if (stored.value(kSubPlacement) == QLatin1String("2"))
        ui->chkSubFolderName->setChecked(true);
    FollowSubFolder();
    // Read from the vendor branch, written to the local store: the two never meet, so this
    // is written at every load.
    const QString section = QStringLiteral("CONFIGCONSUMER");
    if (GetRegistrySetting(QStringLiteral("Quillon"), section, QStringLiteral("PrefsVersion"),
                           QStringLiteral("None")) == QLatin1String("None"))
        SaveSetting(QStringLiteral("Quillon"), section, QStringLiteral("PrefsVersion"),
                    QStringLiteral("0.9.6"));
}

void OLDefaultsUI::BeforeStore()
{
    if (m_pickedTopFolder)
        m_outlook.Write({{kTopFolder, m_pickedTopFolder->path}, {kTopFolderId, m_pickedTopFolder->folderId}});
}

void OLDefaultsUI::ShowTopFolder(const QString &path)
{
    ui->lblTopFolder->setText(
        path.isEmpty() || path == QLatin1String("\\") ? QStringLiteral("The top of the mail store") : path);
}

void OLDefaultsUI::PickTopFolder()
{
    const std::optional<OutlookFolder> folder = FormControls::PickMailFolder(
        this, QStringLiteral("The mail store is not available."),
        QStringLiteral(
            "Its folders can only be chosen while it can be reached. The top folder stays as it was."));
    if (!folder)
        return;
    m_pickedTopFolder = folder;
    ShowTopFolder(folder->path);
    FieldChanged();
}

void OLDefaultsUI::NewMailStore()
{
    frmCreatePST dialog(this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    // Delivery makes the store at its next folder check.
    try {
        dialog.GetResults(*EngineClientBag::Client());
    } catch (const quillon::EngineError &error) {
        ShowAlert(this, QStringLiteral("The new mail store was not asked for."), error.message());
    }
}

void OLDefaultsUI::FollowSubFolder()
{
    ui->txtSubFolderName->setEnabled(ui->chkSubFolderName->isChecked());
}
