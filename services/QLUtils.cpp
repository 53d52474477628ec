#include "QLUtils.h"

namespace {
OutlookProvider &provider()
{
    static OutlookProvider instance;
    return instance;
}
} // namespace

OutlookPtr GetOutlookNamespace()
{
    if (!provider())
        return nullptr;
    // Whatever goes wrong while reaching Outlook only means there is no Outlook.
    try {
        return provider()();
    } catch (...) {
        return nullptr;
    }
}

OutlookProvider SetOutlookProvider(OutlookProvider newProvider)
{
    OutlookProvider previous = std::move(provider());
    provider() = std::move(newProvider);
    return previous;
}
