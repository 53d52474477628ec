#include "MediaChoices.h"

#include "PropertyBag.h"

MediaChoices::Download MediaChoices::decide(const QString &own, const QString &general, const QString &prompt)
{
    if (!own.isEmpty() && own != quillon::kMissingText)
        return isTrue(own) ? Download::Always : Download::Never;
    if (isTrue(prompt))
        return Download::Ask;
    return isTrue(general) ? Download::Always : Download::Never;
}

bool MediaChoices::isTrue(const QString &text)
{
    static const QStringList yes = {QStringLiteral("True"), QStringLiteral("1"),   QStringLiteral("true"),
                                    QStringLiteral("TRUE"), QStringLiteral("YES"), QStringLiteral("yes")};
    return yes.contains(text);
}
