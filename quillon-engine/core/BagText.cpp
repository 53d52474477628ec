#include "BagText.h"

#include "EngineError.h"

#include <QStringList>
#include <QUrl>

namespace quillon {

namespace {
QString encoded(const QString &text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}
} // namespace

QString BagText::render(const PropertyBag &bag)
{
    QStringList pairs;
    for (const auto &[name, value] : bag.entries()) {
        if (std::holds_alternative<BagPtr>(value) || std::holds_alternative<ListPtr>(value))
            throw EngineError(QStringLiteral("BagToText cannot render the nested value %1").arg(name));
        pairs.append(encoded(name) + QLatin1Char('=') + encoded(valueText(value)));
    }
    const bool search = bag.contains(QStringLiteral("guid")) && bag.contains(QStringLiteral("keywords"));
    return (search ? QStringLiteral("search?") : QStringLiteral("bag?")) + pairs.join(QLatin1Char('&'));
}

} // namespace quillon
