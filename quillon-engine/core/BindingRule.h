#pragma once

#include <QtGlobal>

namespace quillon {

// What one BindItem call does to the delivery of a subscription to a consumer.
class BindingRule
{
public:
    enum class State { Unbound, Bound, AwaitingConfirmation };
    enum class Action {
        DropDelivered,           // flag 0 on an unbound subscription: nothing to announce
        UnbindDroppingDelivered, // flag 0 on a bound one
        Bind,                    // flag 1 on an unbound one
        Confirm,                 // flag 1 right after an add bound it: nothing changes
        UnbindKeepingDelivered,  // flag 1 on a bound one
    };

    // Throws EngineError for a flag other than 0 or 1.
    [[nodiscard]] static Action decide(State state, qint32 flag);
    [[nodiscard]] static bool announces(Action action)
    {
        return action != Action::DropDelivered && action != Action::Confirm;
    }
};

} // namespace quillon
