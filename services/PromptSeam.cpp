#include "PromptSeam.h"

#include <QDebug>

namespace {
PromptSeam::Handler &handler()
{
    static PromptSeam::Handler instance;
    return instance;
}
} // namespace

int PromptSeam::NeutralAnswer(PromptKind kind)
{
    switch (kind) {
    case PromptKind::YesNo:
        return 7;
    case PromptKind::DoYouWantToSave:
    case PromptKind::AreYouSure:
        return 2;
    case PromptKind::MessageBox:
    case PromptKind::Alert:
    case PromptKind::EnclosureWarning:
    case PromptKind::UserNameAndPassword:
        return 0;
    }
    return 0;
}

int PromptSeam::Ask(Prompt &prompt)
{
    if (handler())
        return handler()(prompt);
    qWarning().noquote() << "unanswered prompt:" << prompt.mainText << prompt.extendedText;
    return NeutralAnswer(prompt.kind);
}

PromptSeam::Handler PromptSeam::SetHandler(Handler newHandler)
{
    Handler previous = std::move(handler());
    handler() = std::move(newHandler);
    return previous;
}
