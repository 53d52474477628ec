#pragma once

#include "ConfigPage.h"
#include "SyncSettingStore.h"

#include <QTimer>

#include <memory>

namespace Ui {
class OnlineUI;
}

// "Corvell Online Settings": the account and schedule by which the engine synchronises the
// subscriptions with the online service.
class OnlineUI : public ConfigPage
{
    Q_OBJECT
public:
    explicit OnlineUI(QWidget *parent = nullptr);
    ~OnlineUI() override;

    // Explains at most one problem (user name, password, frequency, in that order) and
    // answers true all the same: the values are stored as typed.
    bool SafeToApply() override;

protected:
    void FieldsLoaded() override;

private:
    void EnableOnline();
    void SyncNow();
    // Shows the engine's last outcome; answers when that run ended ("" before any).
    QString ShowSyncStatus();
    void PollSyncStatus();
    [[nodiscard]] QString Problem() const;

    std::unique_ptr<Ui::OnlineUI> ui;
    SyncSettingStore m_sync;
    // After "Synchronise Now", the outcome is read until a run newer than m_runBefore ended.
    QTimer m_statusPoll;
    QString m_runBefore;
    int m_pollsLeft = 0;
};
