#pragma once

#include "SubscribeClient.h"

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <memory>

// Add requests sent a slice at a time from the event loop, so that an import of thousands of
// feeds never holds up the window; each goes out through RequestAddSubscription as it would
// alone. Outlives the dialog that queued it.
class AddRequestQueue : public QObject
{
    Q_OBJECT
public:
    struct Request
    {
        QString title;
        QString url;
        QString category;
    };

    // The one queue of the program, made on first use and owned by the application object.
    static AddRequestQueue &Instance();

    // Auto-bound adds without credentials, answered at the target like any other add.
    void Enqueue(QObject *target, const quillon::SubscribeClientPtr &client, const QList<Request> &requests);
    [[nodiscard]] qsizetype Waiting() const { return m_waiting.size(); }

Q_SIGNALS:
    void Drained();

private:
    explicit AddRequestQueue(QObject *parent);
    void RunSlice();

    struct Queued
    {
        QPointer<QObject> target;
        std::weak_ptr<quillon::SubscribeClient> client;
        Request request;
    };
    QList<Queued> m_waiting;
    qsizetype m_next = 0;
    QTimer m_timer;
};
