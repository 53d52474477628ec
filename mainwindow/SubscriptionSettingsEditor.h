#pragma once

#include "ConfigPage.h"
#include "EditorSelection.h"
#include "SubscribeClient.h"
#include "SubscriptionSettingsValues.h"

#include <memory>
#include <optional>

namespace Ui {
class SubscriptionSettingsEditor;
}

// The settings tabs beside the tree: what the selected subscription, or every subscription
// under the selected category, has in common, and the writing back of what the user changed.
// A page of the main window: it reports changes to its host.
class SubscriptionSettingsEditor : public ConfigPage
{
    Q_OBJECT
public:
    explicit SubscriptionSettingsEditor(QWidget *parent = nullptr);
    ~SubscriptionSettingsEditor() override;

    void SetClient(quillon::SubscribeClientPtr client);
    // LoadSubscriptionTab + LoadOutlookTab + Enable*; clears the dirty flag.
    void LoadSelection(const EditorSelection &selection);
    // The apply command: frequency check and correction, both tabs, dirty cleared. False when
    // stopped (incomplete Outlook tab, a field that is not a number, an engine failure).
    bool ApplyEdits();
    // 0 when not dirty; else asks and returns 6 (applied), 7 (dropped) or 2 (cancelled).
    int CommitCurrentEdits(bool allowCancel);

    // The page operations: Apply is the apply command, LoadValues reads the selection again.
    void Apply() override { ApplyEdits(); }
    bool SafeToApply() override;
    void LoadValues() override { LoadSelection(m_selection); }

    void LoadSubscriptionTab();
    void LoadOutlookTab();
    void EnableSubscriptionTab();
    void EnableOutlookTab();
    // False, after a warning, when a specific folder is chosen but none is named.
    [[nodiscard]] bool CheckOutlookTabSettings();
    // Both throw FieldError or quillon::EngineError; subscriptions before the failing one
    // stay written.
    void ApplySubscriptionTab(const QList<qint32> &ids);
    void ApplyOutlookTab(const QList<qint32> &ids);
    // Checks and applies both tabs to the selection; false when the check stops it.
    bool WriteSelection();

    // "1", "0" or "NothingCommon".
    [[nodiscard]] QString RadioEnclosure() const;
    // "Plain", "Full", "Default" or "NothingCommon".
    [[nodiscard]] QString RadioContent() const;
    void setStoreNamedFolderCheck(bool checked);
    void setSpecificFolderName(const QString &path);
    // The selection's title as the tree now has it (after a rename), in the caption and the
    // Title box; other pending edits stay.
    void ShowTitle(const QString &title);

Q_SIGNALS:
    // An apply changed the title of the subscription or category.
    void TitleApplied(const QString &newTitle);
    // An apply wrote the selection; the tree and details may show something new.
    void Applied();

private:
    void ConnectChangeEvents();
    void OnFieldChanged();
    void OnOptionChanged();
    [[nodiscard]] bool HasSelection() const;
    [[nodiscard]] bool IsSearchSelection() const;

    void ClearSubscriptionTab();
    void LoadFrequency(qint32 common);
    void LoadDeletion(qint32 read, qint32 unread);
    void LoadLogin(const SubscriptionTabValues &values);
    void PickSpecificFolder();

    void ShowCaption();
    // The Title box when it differs from the title loaded.
    [[nodiscard]] std::optional<QString> EditedTitle() const;
    [[nodiscard]] SubscriptionTabEdits ReadSubscriptionEdits();
    [[nodiscard]] OutlookTabEdits ReadOutlookEdits() const;
    void CorrectUpdateFreq();

    std::unique_ptr<Ui::SubscriptionSettingsEditor> ui;
    quillon::SubscribeClientPtr m_client;
    EditorSelection m_selection;
    EngineTimeDefaults m_defaults;
    QString m_loadedTitle;
    QString m_specificFolderId;
};
