#pragma once

#include "CBBase.h"

// The answer to a request, forwarded to the handler the asker names (the search sources, the
// import sources).
class CBNamedAnswer final : public CBBase
{
public:
    explicit CBNamedAnswer(const char *handler) : m_handler(handler) {}

protected:
    const char *HandlerName() const override { return m_handler; }

private:
    const char *m_handler;
};
