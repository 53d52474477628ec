#pragma once

#include "CBBase.h"
#include "HandlerNames.h"

// The answer to a request for one OPML list; the tag tells the target which list it was.
class CBSubOPML final : public CBBase
{
public:
    using CBBase::Setup;
    void Setup(QObject *target, qint32 tag);
    [[nodiscard]] QList<SentHandler> SentHandlers() const override
    {
        return {{HandlerName(), {QMetaType::fromType<qint32>(), QMetaType::fromType<qint32>()}}};
    }

protected:
    const char *HandlerName() const override { return HandlerNames::EventSubOPMLCallback; }
    void Handle(quillon::Handle &bag) override;

private:
    qint32 m_tag = 0;
};
