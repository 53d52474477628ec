#include "EngineHandoff.h"

#include "ConsumerRequests.h"
#include "HandleGuard.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

namespace {
// The engine answers at once; this only ends a wait on an engine that hangs.
constexpr int kAnswerMs = 60000;
constexpr int kRetryMs = 500;
} // namespace

EngineHandoff::EngineHandoff(quillon::SubscribeClientPtr client, Starter startConfigConsumer)
    : m_client(std::move(client)), m_startConfigConsumer(std::move(startConfigConsumer))
{
    ConsumerRequests::connect(*m_client, QStringLiteral("IEPLUGINCONSUMER"), this, [](quillon::Handle) {});
}

EngineHandoff::Outcome EngineHandoff::open(const OpenTarget &target)
{
    switch (target.kind()) {
    case OpenTarget::Kind::Feed:
        return openFeed(target.address());
    case OpenTarget::Kind::Opml:
        return importOpml(target.address());
    case OpenTarget::Kind::Invalid:
        break;
    }
    return {false, target.error()};
}

EngineHandoff::Answer EngineHandoff::submit(const QString &kind, const QString &name, const QString &value)
{
    Answer answer;
    QEventLoop loop;
    const auto fill = [&](quillon::Handle bag) { m_client->SetStringValue(bag, name, value); };
    ConsumerRequests::submit(*m_client, kind, fill, this, [&](quillon::Handle bag) {
        answer.received = true;
        answer.message = m_client->GetStringValue(bag, QStringLiteral("MESSAGE"));
        answer.error = m_client->GetStringValue(bag, QStringLiteral("ERROR"));
        HandleGuard result(*m_client, m_client->GetHandleValue(bag, QStringLiteral("Result")));
        if (result.isValid()) {
            answer.title = m_client->GetStringValue(result.get(), QStringLiteral("TITLE"));
            answer.count = m_client->GetLongValue(result.get(), QStringLiteral("ITEMCOUNT"));
        }
        loop.quit();
    });
    QTimer::singleShot(kAnswerMs, &loop, &QEventLoop::quit);
    if (!answer.received)
        loop.exec();
    return answer;
}

EngineHandoff::Outcome EngineHandoff::openFeed(const QString &url)
{
    const Answer answer = submit(QStringLiteral("OPENFEED"), QStringLiteral("URL"), url);
    if (answer.message == QLatin1String("SubscriptionAddResult"))
        return {true, QStringLiteral("Subscribed to %1").arg(url)};
    if (answer.message == QLatin1String("AlreadySubscribed"))
        return {true,
                QStringLiteral("Already subscribed to %1").arg(answer.title.isEmpty() ? url : answer.title)};
    if (answer.message == QLatin1String("PreviewOffered"))
        return {true, QStringLiteral("ConfigConsumer shows a preview of %1").arg(url)};
    return {false, answer.received ? answer.error : QStringLiteral("The engine did not answer")};
}

EngineHandoff::Outcome EngineHandoff::importOpml(const QString &path)
{
    const QDeadlineTimer deadline(kStartWaitMs);
    bool started = false;
    for (;;) {
        const Answer answer = submit(QStringLiteral("IMPORTOPML"), QStringLiteral("PATH"), path);
        if (answer.message != QLatin1String("ImportOffered"))
            return {false, answer.received ? answer.error : QStringLiteral("The engine did not answer")};
        if (answer.count > 0)
            return {true, QStringLiteral("ConfigConsumer shows %1 to import").arg(path)};
        if (!started && !(started = m_startConfigConsumer()))
            return {false, QStringLiteral("ConfigConsumer cannot be started to import %1").arg(path)};
        if (deadline.hasExpired())
            return {false, QStringLiteral("ConfigConsumer did not connect to the engine in time")};
        QEventLoop pause;
        QTimer::singleShot(kRetryMs, &pause, &QEventLoop::quit);
        pause.exec();
    }
}
