#include "TestEngine.h"

#include "InProcessLink.h"

#include <QDebug>
#include <QTimer>

namespace {
// The in-process link with the test's hook in front of it.
class HookedLink : public quillon::EngineLink
{
public:
    HookedLink(quillon::EngineCore *core, CallHook hook) : m_inner(core), m_hook(std::move(hook)) {}
    quillon::PropertyValue call(const QString &operation, const QList<quillon::PropertyValue> &args) override
    {
        const CallHook::Answer answer = [this](qint32 callbackId, const quillon::BagPtr &message) {
            QTimer::singleShot(0, [sink = m_sink, callbackId, message] { sink(callbackId, message); });
        };
        if (const auto value = m_hook.see(operation, args, answer))
            return *value;
        return m_inner.call(operation, args);
    }
    void setMessageSink(MessageSink sink) override
    {
        m_sink = sink;
        m_inner.setMessageSink(std::move(sink));
    }
    bool isConnected() const override { return m_inner.isConnected(); }

private:
    quillon::InProcessLink m_inner;
    CallHook m_hook;
    MessageSink m_sink;
};
} // namespace

TestEngine::TestEngine() : m_core(std::make_unique<quillon::EngineCore>(m_dir.path()))
{
    QString error;
    m_ready = m_dir.isValid() && m_core->open(&error);
    if (!m_ready)
        qWarning() << "test engine did not open:" << error;
}

TestEngine::~TestEngine() = default;

std::shared_ptr<quillon::LinkedSubscribeClient> TestEngine::newClient(CallHook hook)
{
    if (!hook.see)
        return quillon::LinkedSubscribeClient::create(std::make_unique<quillon::InProcessLink>(m_core.get()));
    return quillon::LinkedSubscribeClient::create(
        std::make_unique<HookedLink>(m_core.get(), std::move(hook)));
}
