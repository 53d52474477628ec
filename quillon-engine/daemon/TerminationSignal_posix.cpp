#include "TerminationSignal.h"

#include <QLoggingCategory>
#include <QSocketNotifier>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

Q_LOGGING_CATEGORY(lcTermination, "corvell.quillon.daemon.signal")

namespace quillon {

namespace {
// The handler may only do async-signal-safe work: it writes one byte that the loop reads.
int s_pipe[2] = {-1, -1};

void onSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(s_pipe[1], &byte, 1);
}

void install(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGTERM, &action, nullptr);
    ::sigaction(SIGINT, &action, nullptr);
}
} // namespace

TerminationSignal::TerminationSignal(QObject *parent) : QObject(parent)
{
    if (::pipe(s_pipe) != 0) {
        qCWarning(lcTermination) << "no pipe for signals; SIGTERM will end the engine abruptly";
        return;
    }
    ::fcntl(s_pipe[1], F_SETFL, ::fcntl(s_pipe[1], F_GETFL) | O_NONBLOCK);
    auto *notifier = new QSocketNotifier(s_pipe[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this]() {
        char byte = 0;
        [[maybe_unused]] const auto count = ::read(s_pipe[0], &byte, 1);
        m_received = true;
        Q_EMIT requested();
    });
    m_watcher = notifier;
    install(onSignal);
}

TerminationSignal::~TerminationSignal()
{
    if (!m_watcher)
        return;
    // Once stopping, a repeated request must not kill the process halfway through its exit.
    install(m_received ? SIG_IGN : SIG_DFL);
    delete m_watcher;
    ::close(s_pipe[0]);
    ::close(s_pipe[1]);
    s_pipe[0] = s_pipe[1] = -1;
}

} // namespace quillon
