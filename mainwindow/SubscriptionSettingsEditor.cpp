#include "SubscriptionSettingsEditor.h"

#include "FieldError.h"
#include "FormControls.h"
#include "ItemClass.h"
#include "MinimumFrequency.h"
#include "PropertyBag.h"
#include "QLUtils.h"
#include "SearchSubscriptionPanel.h"
#include "SettingsEditorRules.h"
#include "StandardDialogs.h"
#include "SubscriptionSettingsStore.h"
#include "TimeField.h"
#include "editorLogging.h"
#include "frmDoYouWantToSave.h"
#include "ui_SubscriptionSettingsEditor.h"

Q_LOGGING_CATEGORY(lcEditor, "corvell.mainwindow.editor")

using FormControls::ShowChoice;
using FormControls::ShowTime;
using Kind = EditorSelection::Kind;
using Rules = SettingsEditorRules;

namespace {
const QString kSaveQuestion = QStringLiteral("Do you want to save your changes to this subscription?");
const QString kNoFolderTitle = QStringLiteral("Please selected a folder.");
const QString kNotSaved = QStringLiteral("The settings were not saved.");
const QString kNotAllSaved = QStringLiteral("Not all settings could be saved.");

const QString kFrequencyField = QStringLiteral("the update frequency");
const QString kReadAgeField = QStringLiteral("the age of read articles");
const QString kUnreadAgeField = QStringLiteral("the age of unread articles");

const QString kThemePlain = QStringLiteral("Plain");
const QString kThemeFull = QStringLiteral("Full");
const QString kThemeDefault = QStringLiteral("Default");
} // namespace

SubscriptionSettingsEditor::SubscriptionSettingsEditor(QWidget *parent)
    : ConfigPage(parent), ui(std::make_unique<Ui::SubscriptionSettingsEditor>())
{
    ui->setupUi(this);
    ConnectChangeEvents();
    LoadSelection({});
}

SubscriptionSettingsEditor::~SubscriptionSettingsEditor() = default;

void SubscriptionSettingsEditor::SetClient(quillon::SubscribeClientPtr client)
{
    m_client = client;
    ui->picSearchSubscription->SetClient(std::move(client));
}

void SubscriptionSettingsEditor::ConnectChangeEvents()
{
    for (QWidget *field : std::initializer_list<QWidget *>{
             ui->txtSubTitle, ui->txtUpdateFreq, ui->txtDelRead, ui->txtDelUnread, ui->txtUserNameField,
             ui->txtPasswordField, ui->cboUpdateFreq, ui->cboDelRead, ui->cboDelUnread})
        FormControls::WhenChanged(field, this, [this] { OnFieldChanged(); });
    connect(ui->picSearchSubscription, &SearchSubscriptionPanel::Edited, this,
            &SubscriptionSettingsEditor::OnFieldChanged);
    for (QButtonGroup *group :
         {ui->btnsUpdateFreq, ui->btnsDelete, ui->btnsEnclosure, ui->btnsContent, ui->btnsStoreLocation})
        connect(group, &QButtonGroup::buttonToggled, this, &SubscriptionSettingsEditor::OnOptionChanged);
    for (QWidget *check :
         std::initializer_list<QWidget *>{ui->chkDelRead, ui->chkDelUnread, ui->chkSubNamedFolder})
        FormControls::WhenChanged(check, this, [this] { OnOptionChanged(); });
    connect(ui->cmdStoreInSpecificFolder, &QPushButton::clicked, this,
            &SubscriptionSettingsEditor::PickSpecificFolder);
}

void SubscriptionSettingsEditor::OnFieldChanged()
{
    MarkDirty();
}

void SubscriptionSettingsEditor::OnOptionChanged()
{
    if (Loading())
        return;
    EnableSubscriptionTab();
    EnableOutlookTab();
    MarkDirty();
}

bool SubscriptionSettingsEditor::HasSelection() const
{
    return m_client && m_selection.kind != Kind::None && !m_selection.subscriptionIds.isEmpty();
}

bool SubscriptionSettingsEditor::IsSearchSelection() const
{
    return m_selection.kind == Kind::Subscription && SearchUrl::IsSearchUrl(m_selection.url);
}

// ---- loading ----

void SubscriptionSettingsEditor::LoadSelection(const EditorSelection &selection)
{
    m_selection = selection;
    m_selection.subscriptionIds.removeIf([](qint32 id) { return !quillon::isValidId(id); });
    try {
        LoadSubscriptionTab();
        LoadOutlookTab();
    } catch (const quillon::EngineError &error) {
        // Showing half-read values would let an apply write guesses back.
        qCWarning(lcEditor) << "settings of" << m_selection.title << "could not be read:" << error.message();
        m_selection = {};
        LoadSubscriptionTab();
        LoadOutlookTab();
    }
    EnableSubscriptionTab();
    EnableOutlookTab();
    SetDirty(false);
}

void SubscriptionSettingsEditor::LoadSubscriptionTab()
{
    const auto loading = LoadingGuard();
    const bool subscription = m_selection.kind == Kind::Subscription;
    ui->grpDefinition->setTitle(m_selection.kind == Kind::Category
                                    ? QStringLiteral("Category Definition")
                                    : QStringLiteral("Subscription Definition"));
    ShowCaption();
    m_loadedTitle = m_selection.title;
    ui->txtSubTitle->setText(m_selection.title);
    ui->txtSubUrl->setText(subscription ? m_selection.url : QString());
    ClearSubscriptionTab();
    if (!HasSelection())
        return;

    SubscriptionSettingsStore store(*m_client);
    m_defaults = store.ReadTimeDefaults();
    const SubscriptionTabValues values = store.ReadSubscriptionTab(m_selection.subscriptionIds);
    LoadFrequency(values.updateFreq);
    LoadDeletion(values.deleteRead, values.deleteUnread);
    ShowChoice(ui->btnsEnclosure, values.enclosure == QLatin1String("1")   ? ui->optEnclosureAlways
                                  : values.enclosure == QLatin1String("0") ? ui->optEnclosureNever
                                                                           : nullptr);
    if (IsSearchSelection())
        ui->picSearchSubscription->Load(m_selection.url);
    else if (subscription)
        LoadLogin(values);
    SetDirty(false);
}

void SubscriptionSettingsEditor::ShowCaption()
{
    // A tab reads '&' as the mark of a shortcut: "News & views" would show as "News _views".
    const QString title = QString(m_selection.title).replace(QLatin1Char('&'), QLatin1String("&&"));
    ui->tabSettingsTabs->setTabText(ui->tabSettingsTabs->indexOf(ui->tabSubscription),
                                    m_selection.kind == Kind::None
                                        ? QStringLiteral("Settings")
                                        : QStringLiteral("Settings for '") + title + QLatin1Char('\''));
}

void SubscriptionSettingsEditor::ShowTitle(const QString &title)
{
    const auto loading = LoadingGuard();
    m_loadedTitle = m_selection.title = title;
    ui->txtSubTitle->setText(title);
    ShowCaption();
}

void SubscriptionSettingsEditor::ClearSubscriptionTab()
{
    for (QButtonGroup *group : {ui->btnsUpdateFreq, ui->btnsDelete, ui->btnsEnclosure})
        ShowChoice(group, nullptr);
    for (QLineEdit *field :
         {ui->txtUpdateFreq, ui->txtDelRead, ui->txtDelUnread, ui->txtUserNameField, ui->txtPasswordField})
        field->clear();
    for (QCheckBox *check : {ui->chkDelRead, ui->chkDelUnread})
        check->setChecked(false);
    ui->picSearchSubscription->Clear();
}

void SubscriptionSettingsEditor::LoadFrequency(qint32 common)
{
    const PairChoice choice = Rules::FrequencyChoice(common);
    ShowChoice(ui->btnsUpdateFreq, choice == PairChoice::Default  ? ui->optDefaultFreq
                                   : choice == PairChoice::Custom ? ui->optSpecificFreq
                                                                  : nullptr);
    ShowTime(ui->txtUpdateFreq, ui->cboUpdateFreq, Rules::FrequencyShown(common, m_defaults.updateFreq));
}

void SubscriptionSettingsEditor::LoadDeletion(qint32 read, qint32 unread)
{
    const PairChoice choice = Rules::DeletionChoice(read, unread);
    ShowChoice(ui->btnsDelete, choice == PairChoice::Default  ? ui->optDefaultDelete
                               : choice == PairChoice::Custom ? ui->optCustomDelete
                                                              : nullptr);
    const auto readField = Rules::DeletionShown(read, m_defaults.deleteRead);
    ui->chkDelRead->setChecked(readField.checked);
    ShowTime(ui->txtDelRead, ui->cboDelRead, readField.seconds);
    const auto unreadField = Rules::DeletionShown(unread, m_defaults.deleteUnread);
    ui->chkDelUnread->setChecked(unreadField.checked);
    ShowTime(ui->txtDelUnread, ui->cboDelUnread, unreadField.seconds);
}

void SubscriptionSettingsEditor::LoadLogin(const SubscriptionTabValues &values)
{
    ui->txtUserNameField->setText(quillon::presentText(values.user));
    ui->txtPasswordField->setText(quillon::presentText(values.password));
}

void SubscriptionSettingsEditor::LoadOutlookTab()
{
    const auto loading = LoadingGuard();
    ShowChoice(ui->btnsStoreLocation, nullptr);
    ShowChoice(ui->btnsContent, nullptr);
    setSpecificFolderName(QString());
    m_specificFolderId.clear();
    ui->chkSubNamedFolder->setTristate(false);
    ui->chkSubNamedFolder->setChecked(false);
    if (!HasSelection())
        return;

    const OutlookTabValues values =
        SubscriptionSettingsStore(*m_client).ReadOutlookTab(m_selection.subscriptionIds);
    ShowChoice(ui->btnsStoreLocation,
               values.storeLocation == Rules::kStoreInParentFolder     ? ui->optStoreInParentFolder
               : values.storeLocation == Rules::kStoreInSpecificFolder ? ui->optStoreInSpecificFolder
                                                                       : nullptr);
    if (values.specificFolder != CommonValues::kNothingCommonText) {
        setSpecificFolderName(values.specificFolder);
        if (values.specificFolderId != CommonValues::kNothingCommonText)
            m_specificFolderId = values.specificFolderId;
    }
    if (values.namedFolder == CommonValues::kNothingCommonText) {
        ui->chkSubNamedFolder->setTristate(true);
        ui->chkSubNamedFolder->setCheckState(Qt::PartiallyChecked);
    } else {
        setStoreNamedFolderCheck(values.namedFolder == QLatin1String("1"));
    }
    ShowChoice(ui->btnsContent, values.articleTheme == kThemePlain     ? ui->optPlainContent
                                : values.articleTheme == kThemeFull    ? ui->optFullContent
                                : values.articleTheme == kThemeDefault ? ui->optDefaultContent
                                                                       : nullptr);
}

// ---- enabling ----

void SubscriptionSettingsEditor::EnableSubscriptionTab()
{
    const bool subscription = m_selection.kind == Kind::Subscription;
    const bool search = IsSearchSelection();
    ui->pnlSubscription->setEnabled(HasSelection());
    // A category's title is its name: applying a new one renames it as a label edit does.
    ui->txtSubTitle->setEnabled(m_selection.kind != Kind::None);
    ui->lblSubUrl->setVisible(subscription);
    ui->txtSubUrl->setVisible(subscription);
    ui->grpLogin->setVisible(subscription && !search);
    ui->picSearchSubscription->setVisible(search);

    const bool specific = ui->optSpecificFreq->isChecked();
    ui->txtUpdateFreq->setEnabled(specific);
    ui->cboUpdateFreq->setEnabled(specific);
    const bool custom = ui->optCustomDelete->isChecked();
    ui->chkDelRead->setEnabled(custom);
    ui->txtDelRead->setEnabled(custom && ui->chkDelRead->isChecked());
    ui->cboDelRead->setEnabled(custom && ui->chkDelRead->isChecked());
    ui->chkDelUnread->setEnabled(custom);
    ui->txtDelUnread->setEnabled(custom && ui->chkDelUnread->isChecked());
    ui->cboDelUnread->setEnabled(custom && ui->chkDelUnread->isChecked());
    ui->picSearchSubscription->EnableLimit();
}

void SubscriptionSettingsEditor::EnableOutlookTab()
{
    ui->pnlOutlook->setEnabled(HasSelection());
    const bool specific = ui->optStoreInSpecificFolder->isChecked();
    ui->cmdStoreInSpecificFolder->setEnabled(specific);
    ui->lblStoreInSpecificFolder->setEnabled(specific);
    ui->chkSubNamedFolder->setEnabled(ui->btnsStoreLocation->checkedButton() != nullptr);
}

// ---- the Outlook folder ----

void SubscriptionSettingsEditor::PickSpecificFolder()
{
    const std::optional<OutlookFolder> folder = FormControls::PickMailFolder(
        this, QStringLiteral("Outlook is not available."),
        QStringLiteral(
            "Outlook's folders can only be chosen while Outlook can be started. The folder stays as "
            "it was."));
    if (!folder)
        return;
    setSpecificFolderName(folder->path);
    m_specificFolderId = folder->folderId;
    MarkDirty();
}

void SubscriptionSettingsEditor::setStoreNamedFolderCheck(bool checked)
{
    ui->chkSubNamedFolder->setTristate(false);
    ui->chkSubNamedFolder->setChecked(checked);
}

void SubscriptionSettingsEditor::setSpecificFolderName(const QString &path)
{
    ui->lblStoreInSpecificFolder->setText(path);
}

QString SubscriptionSettingsEditor::RadioEnclosure() const
{
    if (ui->optEnclosureAlways->isChecked())
        return QStringLiteral("1");
    if (ui->optEnclosureNever->isChecked())
        return QStringLiteral("0");
    return CommonValues::kNothingCommonText;
}

QString SubscriptionSettingsEditor::RadioContent() const
{
    if (ui->optPlainContent->isChecked())
        return kThemePlain;
    if (ui->optFullContent->isChecked())
        return kThemeFull;
    if (ui->optDefaultContent->isChecked())
        return kThemeDefault;
    return CommonValues::kNothingCommonText;
}

// ---- checking and applying ----

bool SubscriptionSettingsEditor::CheckOutlookTabSettings()
{
    if (!ui->optStoreInSpecificFolder->isChecked() ||
        !ui->lblStoreInSpecificFolder->text().trimmed().isEmpty())
        return true;
    ShowAlert(this, kNoFolderTitle,
              m_selection.kind == Kind::Category
                  ? QStringLiteral("No folder selected for this Category.")
                  : QStringLiteral("No folder selected for this Subscription."));
    return false;
}

SubscriptionTabEdits SubscriptionSettingsEditor::ReadSubscriptionEdits()
{
    SubscriptionTabEdits edits;
    const bool subscription = m_selection.kind == Kind::Subscription;
    if (subscription)
        edits.folderTitle = EditedTitle();
    edits.enclosure = RadioEnclosure();
    if (ui->optDefaultFreq->isChecked())
        edits.updateFreq = Rules::kUseDefault;
    else if (ui->optSpecificFreq->isChecked())
        edits.updateFreq = TimeField::ToSeconds(ui->txtUpdateFreq->text(), ui->cboUpdateFreq->currentIndex(),
                                                kFrequencyField);
    if (ui->optDefaultDelete->isChecked()) {
        edits.deleteRead = edits.deleteUnread = Rules::kUseDefault;
    } else if (ui->optCustomDelete->isChecked()) {
        edits.deleteRead =
            ui->chkDelRead->isChecked()
                ? TimeField::ToSeconds(ui->txtDelRead->text(), ui->cboDelRead->currentIndex(), kReadAgeField)
                : 0;
        edits.deleteUnread = ui->chkDelUnread->isChecked()
                                 ? TimeField::ToSeconds(ui->txtDelUnread->text(),
                                                        ui->cboDelUnread->currentIndex(), kUnreadAgeField)
                                 : 0;
    }
    // Emptying either field never clears a stored login.
    if (subscription && !IsSearchSelection() && !ui->txtUserNameField->text().isEmpty() &&
        !ui->txtPasswordField->text().isEmpty()) {
        edits.user = ui->txtUserNameField->text();
        edits.password = ui->txtPasswordField->text();
    }
    if (IsSearchSelection())
        edits.url = ui->picSearchSubscription->EditedUrl();
    return edits;
}

OutlookTabEdits SubscriptionSettingsEditor::ReadOutlookEdits() const
{
    OutlookTabEdits edits;
    if (ui->optStoreInParentFolder->isChecked())
        edits.storeLocation = Rules::kStoreInParentFolder;
    else if (ui->optStoreInSpecificFolder->isChecked())
        edits.storeLocation = Rules::kStoreInSpecificFolder;
    edits.specificFolder = ui->lblStoreInSpecificFolder->text();
    edits.specificFolderId = m_specificFolderId;
    if (ui->chkSubNamedFolder->checkState() != Qt::PartiallyChecked)
        edits.namedFolder = BoolToText(ui->chkSubNamedFolder->isChecked());
    edits.articleTheme = RadioContent();
    return edits;
}

void SubscriptionSettingsEditor::ApplySubscriptionTab(const QList<qint32> &ids)
{
    const SubscriptionTabEdits edits = ReadSubscriptionEdits();
    SubscriptionSettingsStore store(*m_client);
    for (const qint32 id : ids)
        store.WriteSubscriptionTab(id, edits);
    if (edits.url) {
        m_selection.url = *edits.url;
        ui->picSearchSubscription->SetStored(*edits.url);
    }
    if (const std::optional<QString> title = EditedTitle()) {
        ShowTitle(*title);
        Q_EMIT TitleApplied(*title);
    }
}

std::optional<QString> SubscriptionSettingsEditor::EditedTitle() const
{
    const QString title = ui->txtSubTitle->text().trimmed();
    if (m_selection.kind == Kind::None || title.isEmpty() || title == m_loadedTitle)
        return std::nullopt;
    return title;
}

void SubscriptionSettingsEditor::ApplyOutlookTab(const QList<qint32> &ids)
{
    const OutlookTabEdits edits = ReadOutlookEdits();
    SubscriptionSettingsStore store(*m_client);
    for (const qint32 id : ids)
        store.WriteOutlookTab(id, edits);
}

bool SubscriptionSettingsEditor::SafeToApply()
{
    return !HasSelection() || CheckOutlookTabSettings();
}

bool SubscriptionSettingsEditor::WriteSelection()
{
    if (!HasSelection())
        return true;
    if (!SafeToApply())
        return false;
    ApplySubscriptionTab(m_selection.subscriptionIds);
    ApplyOutlookTab(m_selection.subscriptionIds);
    Q_EMIT Applied();
    return true;
}

void SubscriptionSettingsEditor::CorrectUpdateFreq()
{
    if (ui->optSpecificFreq->isChecked())
        MinimumFrequency::Correct(this, ui->txtUpdateFreq, ui->cboUpdateFreq, kFrequencyField);
}

bool SubscriptionSettingsEditor::ApplyEdits()
{
    try {
        CorrectUpdateFreq();
        if (!WriteSelection())
            return false;
    } catch (const FieldError &error) {
        ShowAlert(this, kNotSaved, error.message());
        return false;
    } catch (const quillon::EngineError &error) {
        qCWarning(lcEditor) << "apply stopped:" << error.message();
        ShowAlert(this, kNotAllSaved, error.message());
        return false;
    }
    SetDirty(false);
    return true;
}

int SubscriptionSettingsEditor::CommitCurrentEdits(bool allowCancel)
{
    if (!Dirty())
        return 0;
    int answer = AskDoYouWantToSave(this, kSaveQuestion, QString());
    if (answer == frmDoYouWantToSave::ResultCancel && !allowCancel)
        answer = frmDoYouWantToSave::ResultNo;
    if (answer == frmDoYouWantToSave::ResultYes) {
        if (ApplyEdits())
            return answer;
        // The failed apply was explained; let the user correct it where that is possible.
        if (allowCancel)
            return frmDoYouWantToSave::ResultCancel;
        answer = frmDoYouWantToSave::ResultNo;
    }
    if (answer == frmDoYouWantToSave::ResultNo)
        LoadSelection(m_selection);
    return answer;
}
