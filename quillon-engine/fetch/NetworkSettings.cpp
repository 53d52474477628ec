#include "NetworkSettings.h"

#include "NetworkSettingKeys.h"

#include <QStringList>

namespace quillon {

namespace {
// The page writes "True"/"False"; older writers may have used "1"/"0".
bool isTrue(const QString &text)
{
    static const QStringList yes = {QStringLiteral("True"), QStringLiteral("1"),   QStringLiteral("true"),
                                    QStringLiteral("TRUE"), QStringLiteral("YES"), QStringLiteral("yes")};
    return yes.contains(text.trimmed());
}
} // namespace

NetworkSettings NetworkSettings::read(const Lookup &lookup)
{
    namespace K = NetworkSettingKeys;
    const auto text = [&lookup](const QString &key) {
        for (const K::Default &field : K::kDefaults) {
            if (field.key == key)
                return lookup(key).value_or(field.value);
        }
        return lookup(key).value_or(QString());
    };
    NetworkSettings settings;
    settings.useProxy = isTrue(text(K::kUseProxy));
    settings.systemProxy = isTrue(text(K::kUseSystemProxy));
    settings.specificProxy = text(K::kSpecificProxy).trimmed();
    settings.bypassForLocals = isTrue(text(K::kBypassForLocals));
    settings.useCredentials = isTrue(text(K::kUseCredentials));
    settings.currentUserCredentials = isTrue(text(K::kCurrentUserCredentials));
    settings.user = text(K::kUser).trimmed();
    settings.password = text(K::kPassword);
    settings.domain = text(K::kDomain).trimmed();
    return settings;
}

QString NetworkSettings::proxyUser() const
{
    return domain.isEmpty() ? user : domain + QLatin1Char('\\') + user;
}

} // namespace quillon
