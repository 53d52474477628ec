#pragma once

#include "EditorSelection.h"
#include "SearchSource.h"
#include "SearchUrl.h"
#include "SubscribeClient.h"
#include "SubscriptionSettingsValues.h"

#include <QWidget>

#include <memory>
#include <optional>

class QAbstractButton;
class QButtonGroup;
class QComboBox;
class QLineEdit;
class CBSearchSources;

namespace Ui {
class SubscriptionSettingsEditor;
}

// The settings tabs beside the tree: what the selected subscription, or every subscription
// under the selected category, has in common, and the writing back of what the user changed.
class SubscriptionSettingsEditor : public QWidget
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
    [[nodiscard]] bool IsDirty() const { return m_dirty; }

    void LoadSubscriptionTab();
    void LoadOutlookTab();
    void EnableSubscriptionTab();
    void EnableOutlookTab();
    // True, after the warning, when the time is below the minimum. Throws FieldError.
    bool CheckUpdateFreq(const QString &number, int unitIndex);
    // False, after a warning, when a specific folder is chosen but none is named.
    [[nodiscard]] bool CheckOutlookTabSettings();
    // Both throw FieldError or quillon::EngineError; subscriptions before the failing one
    // stay written.
    void ApplySubscriptionTab(const QList<qint32> &ids);
    void ApplyOutlookTab(const QList<qint32> &ids);
    // Checks and applies both tabs to the selection; false when the check stops it.
    bool Apply();

    // "1", "0" or "NothingCommon".
    [[nodiscard]] QString RadioEnclosure() const;
    // "Plain", "Full", "Default" or "NothingCommon".
    [[nodiscard]] QString RadioContent() const;
    void setStoreNamedFolderCheck(bool checked);
    void setSpecificFolderName(const QString &path);

    Q_INVOKABLE void EventSearchSourcesCallback(qint32 message);

Q_SIGNALS:
    void DirtyChanged(bool dirty);
    // An apply changed the subscription's title.
    void TitleApplied(const QString &newTitle);
    // An apply wrote the selection; the tree and details may show something new.
    void Applied();

private:
    void ConnectChangeEvents();
    void OnFieldChanged();
    void OnOptionChanged();
    void SetDirty(bool dirty);
    [[nodiscard]] bool HasSelection() const;
    [[nodiscard]] bool IsSearchSelection() const;

    void ClearSubscriptionTab();
    void LoadFrequency(qint32 common);
    void LoadDeletion(qint32 read, qint32 unread);
    void LoadLogin(const SubscriptionTabValues &values);
    void LoadSearch();
    void RequestSearchSources();
    void ShowSources();
    void OnSearchSourceChosen();
    void ShowSourceLimit();
    void EnableSearchLimit();
    void PickSpecificFolder();

    [[nodiscard]] SubscriptionTabEdits ReadSubscriptionEdits();
    [[nodiscard]] OutlookTabEdits ReadOutlookEdits() const;
    [[nodiscard]] std::optional<QString> ReadSearchUrlEdit();
    [[nodiscard]] SearchUrl SearchInForm() const;
    [[nodiscard]] const SearchSource *ChosenSource() const;
    [[nodiscard]] bool SourceGivesLimit() const;
    void CorrectUpdateFreq();

    static void ShowChoice(QButtonGroup *group, QAbstractButton *chosen);
    static void ShowTime(QLineEdit *number, QComboBox *unit, qint32 seconds);

    std::unique_ptr<Ui::SubscriptionSettingsEditor> ui;
    quillon::SubscribeClientPtr m_client;
    EditorSelection m_selection;
    EngineTimeDefaults m_defaults;
    bool m_loading = false;
    bool m_dirty = false;
    QString m_loadedTitle;
    SearchUrl m_loadedSearch;
    QList<SearchSource> m_sources;
    std::shared_ptr<CBSearchSources> m_sourcesCallback;
    QString m_specificFolderId;
};
