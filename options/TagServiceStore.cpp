#include "TagServiceStore.h"

namespace {
const QString kPosition = QStringLiteral("1");
const QString kService = QStringLiteral("Delicious");
} // namespace

ConsumerSettingStore TagServiceStore::ServiceSection()
{
    const QString name = m_services.Read({{kPosition, kService}}).value(kPosition);
    return ConsumerSettingStore(QStringLiteral("IEPLUGINCONSUMER"), QStringLiteral("TagServices_") + name);
}

SettingStore::Values TagServiceStore::Read(const Values &defaults)
{
    return ServiceSection().Read(defaults);
}

void TagServiceStore::Write(const Values &values)
{
    m_services.Write({{kPosition, kService}});
    ServiceSection().Write(values);
}
