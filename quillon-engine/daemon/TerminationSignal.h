#pragma once

#include <QObject>

namespace quillon {

// Turns the system's requests to stop (SIGTERM and SIGINT; console close and Ctrl+C on
// Windows) into a signal on the event loop, where stopping cleanly is safe.
// One instance at a time.
class TerminationSignal : public QObject
{
    Q_OBJECT
public:
    explicit TerminationSignal(QObject *parent = nullptr);
    ~TerminationSignal() override;

Q_SIGNALS:
    void requested();

private:
    QObject *m_watcher = nullptr;
    bool m_received = false;
};

} // namespace quillon
