#pragma once

#include "ConsumerSettingStore.h"

// The tag service settings of the browser plug-in: the "TagServices" bag of "IEPLUGINCONSUMER"
// names the service at position 1 ("Delicious"), and that service's values live in the
// section "TagServices_" + its name. The engine keeps settings flat, so the nesting is by section.
class TagServiceStore : public SettingStore
{
public:
    [[nodiscard]] Values Read(const Values &defaults) override;
    void Write(const Values &values) override;

private:
    [[nodiscard]] ConsumerSettingStore ServiceSection();

    ConsumerSettingStore m_services{QStringLiteral("IEPLUGINCONSUMER"), QStringLiteral("TagServices")};
};
