#include "PrePublishChoices.h"

#include "ConsumerSettings.h"
#include "commonUtils.h"

#include <QString>

namespace {
const QString kEngine = QStringLiteral("ENGINE");
const QString kDefaults = QStringLiteral("Publishing_defaults");

struct Key
{
    const char *name;
    bool PrePublishChoices::*member;
};

constexpr Key kKeys[] = {
    {"PUBDLG_editFirst", &PrePublishChoices::editFirst},
    {"PUBDLG_useTitle", &PrePublishChoices::useTitle},
    {"PUBDLG_useBody", &PrePublishChoices::useBody},
    {"PUBDLG_htmlBody", &PrePublishChoices::htmlBody},
    {"PUBDLG_includeTop", &PrePublishChoices::includeTop},
    {"PUBDLG_includeBottom", &PrePublishChoices::includeBottom},
    {"PUBDLG_includeAd", &PrePublishChoices::includeAd},
    {"PUBDLG_closeAfterPost", &PrePublishChoices::closeAfterPost},
    {"PUBDLG_saveInPublishedFolder", &PrePublishChoices::saveInPublishedFolder},
    {"PUBDLG_showSuccessDialog", &PrePublishChoices::showSuccessDialog},
    {"PUBDLG_parseForLinks", &PrePublishChoices::parseForLinks},
    {"PUBDLG_parseForFormatting", &PrePublishChoices::parseForFormatting},
    {"PUBDLG_alwaysDoCurrentSettings", &PrePublishChoices::alwaysDoCurrentSettings},
};
} // namespace

PrePublishChoices PrePublishChoices::Load(quillon::SubscribeClient &client)
{
    PrePublishChoices choices;
    for (const Key &key : kKeys) {
        choices.*key.member = TextToBool(GetConsumerSetting(
            client, QLatin1String(key.name), BoolToText(choices.*key.member), kEngine, kDefaults));
    }
    return choices;
}

void PrePublishChoices::Save(quillon::SubscribeClient &client) const
{
    for (const Key &key : kKeys)
        SetConsumerSetting(client, kEngine, kDefaults, QLatin1String(key.name),
                           BoolToText(this->*key.member));
}

void PrePublishChoices::SaveEditFirst(quillon::SubscribeClient &client) const
{
    SetConsumerSetting(client, kEngine, kDefaults, QLatin1String(kKeys[0].name), BoolToText(editFirst));
}
