#include "BindingRule.h"

#include "EngineError.h"

namespace quillon {

BindingRule::Action BindingRule::decide(State state, qint32 flag)
{
    if (flag == 0)
        return state == State::Unbound ? Action::DropDelivered : Action::UnbindDroppingDelivered;
    if (flag != 1)
        throw EngineError(QStringLiteral("BindItem flag must be 0 or 1, not %1").arg(flag));
    switch (state) {
    case State::Unbound:
        return Action::Bind;
    case State::AwaitingConfirmation:
        return Action::Confirm;
    case State::Bound:
        break;
    }
    return Action::UnbindKeepingDelivered;
}

} // namespace quillon
