#pragma once

#include "CBBase.h"
#include "HandlerNames.h"
#include "SubscribeClient.h"

// The answer to an add request: forwarded to the main window, then the new subscription is
// bound for delivery and the window either reports it or, for the last add, refreshes.
class CBAddSub final : public CBBase
{
public:
    using CBBase::Setup;
    void Setup(QObject *target, quillon::SubscribeClientPtr client, bool autoBind);
    void Shutdown() override;
    [[nodiscard]] QList<SentHandler> SentHandlers() const override
    {
        return CBBase::SentHandlers() +
               QList<SentHandler>{{HandlerNames::DoDisplayRefresh, {}},
                                  {HandlerNames::SetStatusText, {QMetaType::fromType<QString>()}}};
    }

protected:
    const char *HandlerName() const override { return HandlerNames::EventSubscribeClientMessage; }
    void Handle(quillon::Handle &bag) override;

private:
    // Binds, then reports or refreshes; returns the new subscription's name.
    QString Complete(quillon::SubscribeClient &client, qint32 subscriptionId);
    [[nodiscard]] bool TakeCompletion();
    [[nodiscard]] static QString AddedTitle(quillon::SubscribeClient &client, qint32 subscriptionId);

    quillon::SubscribeClientPtr m_client;
    bool m_autoBind = false;
};
