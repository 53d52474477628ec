#include "AddRequestQueue.h"

#include "AddProgress.h"
#include "callbackSupport.h"

#include <QCoreApplication>
#include <QLocale>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcAddQueue, "corvell.engine.addqueue")

namespace {
// Long enough to send a few hundred, short enough that the window never seems to stall.
constexpr qint64 kSliceMs = 40;
} // namespace

AddRequestQueue &AddRequestQueue::Instance()
{
    static QPointer<AddRequestQueue> queue;
    if (!queue)
        queue = new AddRequestQueue(QCoreApplication::instance());
    return *queue;
}

AddRequestQueue::AddRequestQueue(QObject *parent) : QObject(parent)
{
    m_timer.setInterval(0);
    connect(&m_timer, &QTimer::timeout, this, &AddRequestQueue::RunSlice);
}

void AddRequestQueue::Enqueue(QObject *target, const quillon::SubscribeClientPtr &client,
                              const QList<Request> &requests)
{
    for (const Request &request : requests)
        m_waiting.append({target, client, request});
    // Counted as in flight from now on, so the window refreshes once, after the last answer,
    // and not each time the answers catch up with a slice.
    callbackSupport::PendingAddCount() += qint32(requests.size());
    AddProgress::Instance().Expect(int(requests.size()));
    if (!m_timer.isActive())
        m_timer.start();
}

void AddRequestQueue::RunSlice()
{
    QElapsedTimer slice;
    slice.start();
    Queued last;
    while (m_next < m_waiting.size() && slice.elapsed() < kSliceMs) {
        last = m_waiting.at(m_next++);
        --callbackSupport::PendingAddCount(); // the request counts itself when it goes out
        const quillon::SubscribeClientPtr client = last.client.lock();
        try {
            if (client)
                callbackSupport::RequestAddSubscription(last.target, client, last.request.title,
                                                        last.request.url, true, QString(), QString(),
                                                        last.request.category);
        } catch (const std::exception &e) {
            qCWarning(lcAddQueue) << "cannot request" << last.request.url << e.what();
        }
        // Withdrawn only after the request counted itself, so the run cannot seem to end here.
        AddProgress::Instance().Withdraw();
    }
    const qsizetype left = m_waiting.size() - m_next;
    if (left > 0) {
        const QString name = last.request.title.isEmpty() ? last.request.url : last.request.title;
        callbackSupport::SetTargetStatusText(
            last.target, QStringLiteral("Requesting: ") + name +
                             QStringLiteral(" (%1 more to send)").arg(QLocale().toString(qint64(left))));
        return;
    }
    m_timer.stop();
    m_waiting.clear();
    m_next = 0;
    Q_EMIT Drained();
}
