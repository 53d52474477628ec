#pragma once

#include "LogTail.h"

#include <QTimer>
#include <QWidget>

#include <memory>

namespace Ui {
class frmLogWindow;
}

namespace quillon {
class SubscribeClient;
}

// A window that follows the engine's log file as the engine writes it: its last lines first,
// then each new line within half a second.
class frmLogWindow : public QWidget
{
    Q_OBJECT
public:
    // The engine names its log file in its settings at each start; empty when it has not.
    [[nodiscard]] static QString EngineLogFile(quillon::SubscribeClient &client);

    explicit frmLogWindow(const QString &logFile, QWidget *parent = nullptr);
    ~frmLogWindow() override;

    [[nodiscard]] QString shownText() const;

private:
    void readMore();

    std::unique_ptr<Ui::frmLogWindow> ui;
    LogTail m_tail;
    QTimer m_poll;
};
