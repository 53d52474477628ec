#pragma once

#include "CBBase.h"

// The answer to a request for one OPML list; the tag tells the target which list it was.
class CBSubOPML final : public CBBase
{
public:
    using CBBase::Setup;
    void Setup(QObject *target, qint32 tag);

protected:
    const char *HandlerName() const override { return "EventSubOPMLCallback"; }
    void Handle(quillon::Handle &bag) override;

private:
    qint32 m_tag = 0;
};
