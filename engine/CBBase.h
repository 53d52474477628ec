#pragma once

#include "ISubscribeClientCallback.h"

#include <QList>
#include <QMetaType>
#include <QPointer>

#include <memory>

// What every callback class shares: a target resolved by name at run time, one answer, then
// Shutdown. Each class names the handler it forwards to.
class CBBase : public quillon::ISubscribeClientCallback, public std::enable_shared_from_this<CBBase>
{
public:
    void Setup(QObject *target) override { m_target = target; }
    void Shutdown() override { m_target.clear(); }
    qint32 ProcessMessage(quillon::Handle &bag) override;

    // A handler this class calls on its target by name, with the argument types it passes.
    struct SentHandler
    {
        const char *name;
        QList<QMetaType> arguments;
    };
    // Every handler a target of this class must offer.
    [[nodiscard]] virtual QList<SentHandler> SentHandlers() const
    {
        return {{HandlerName(), {QMetaType::fromType<qint32>()}}};
    }

protected:
    // Calls the handler on the target; false when there is no target or no such handler.
    bool Forward(const char *handler, quillon::Handle bag);
    // The handler this class forwards to; classes with more steps override Handle instead.
    [[nodiscard]] virtual const char *HandlerName() const = 0;
    virtual void Handle(quillon::Handle &bag) { Forward(HandlerName(), bag); }
    // The connection callback keeps its target for the life of the connection.
    virtual bool ShutsDownAfterAnswer() const { return true; }
    [[nodiscard]] QObject *Target() const { return m_target.data(); }

private:
    QPointer<QObject> m_target;
};
