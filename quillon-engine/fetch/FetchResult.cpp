#include "FetchResult.h"

namespace quillon {

QString FetchResult::describe() const
{
    switch (outcome) {
    case Outcome::Ok:
        return QStringLiteral("OK");
    case Outcome::NotModified:
        return QStringLiteral("Not modified");
    case Outcome::Unauthorized:
    case Outcome::HttpError: {
        const QString status = QStringLiteral("Error: HTTP %1").arg(httpStatus);
        return reason.isEmpty() ? status : status + QLatin1Char(' ') + reason;
    }
    case Outcome::TimedOut:
    case Outcome::TooLarge:
    case Outcome::Failed:
        break;
    }
    return QStringLiteral("Error: ") + reason;
}

} // namespace quillon
