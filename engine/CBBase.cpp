#include "CBBase.h"

#include <QLoggingCategory>
#include <QMetaObject>
#include <QObject>

Q_LOGGING_CATEGORY(lcCallbacks, "corvell.engine.callbacks")

qint32 CBBase::ProcessMessage(quillon::Handle &bag)
{
    // Stay alive while the target runs, even if it drops the last other reference to us.
    const auto keepAlive = shared_from_this();
    if (m_target)
        Handle(bag);
    if (ShutsDownAfterAnswer())
        Shutdown();
    return 0;
}

bool CBBase::Forward(const char *handler, quillon::Handle bag)
{
    QObject *target = m_target.data();
    if (!target)
        return false;
    const bool called = QMetaObject::invokeMethod(target, handler, Qt::DirectConnection, Q_ARG(qint32, bag));
    if (!called)
        qCWarning(lcCallbacks) << target->metaObject()->className() << "has no handler" << handler;
    return called;
}
