#include "InProcessLink.h"

#include <QMetaObject>

namespace quillon {

InProcessLink::InProcessLink(EngineCore *core)
    : m_core(core), m_sink(std::make_shared<MessageSink>()), m_context(std::make_unique<QObject>())
{
    std::weak_ptr<MessageSink> weakSink = m_sink;
    QObject *context = m_context.get();
    m_session = core->openSession([weakSink, context](qint32 callbackId, const BagPtr &message) {
        BagPtr copy = message ? message->clone() : nullptr;
        QMetaObject::invokeMethod(
            context,
            [weakSink, callbackId, copy]() {
                auto sink = weakSink.lock();
                if (sink && *sink)
                    (*sink)(callbackId, copy);
            },
            Qt::QueuedConnection);
    });
}

InProcessLink::~InProcessLink()
{
    if (m_core)
        m_core->closeSession(m_session);
}

PropertyValue InProcessLink::call(const QString &operation, const QList<PropertyValue> &args)
{
    if (!m_core)
        throw EngineError(QStringLiteral("The engine has gone"));
    QList<PropertyValue> copies;
    copies.reserve(args.size());
    for (const auto &arg : args)
        copies.append(deepCopy(arg));
    return deepCopy(m_core->call(m_session, operation, copies));
}

void InProcessLink::setMessageSink(MessageSink sink)
{
    *m_sink = std::move(sink);
}

} // namespace quillon
