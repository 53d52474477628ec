#include "SyncOutcome.h"

namespace quillon {

QString SyncOutcome::text() const
{
    QString words;
    switch (kind) {
    case Kind::Synchronised:
        words = QStringLiteral("synchronised");
        break;
    case Kind::WrongLogin:
        words = QStringLiteral("wrong user name or password");
        break;
    case Kind::ApiOff:
        words = QStringLiteral("the server's API is switched off");
        break;
    case Kind::NoApi:
        words = QStringLiteral("no sync API found at this address");
        break;
    case Kind::Unreachable:
        words = QStringLiteral("cannot reach the server");
        break;
    case Kind::Failed:
        words = QStringLiteral("the server refused the synchronisation");
        break;
    case Kind::SwitchedOff:
        words = QStringLiteral("synchronisation is switched off");
        break;
    }
    return serverMessage.isEmpty() ? words : QStringLiteral("%1 (%2)").arg(words, serverMessage);
}

} // namespace quillon
