#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

namespace quillon {

// What became of a fetch. Only Ok carries a body.
struct FetchResult
{
    enum class Outcome {
        Ok,
        NotModified,  // 304: the copy held is current
        Unauthorized, // 401: the login is missing or wrong
        HttpError,    // any other status the server answered with
        TimedOut,
        TooLarge,
        Failed, // no answer: the address, the connection or the file
    };

    Outcome outcome = Outcome::Failed;
    int httpStatus = 0;
    QString reason; // the server's reason phrase, or what went wrong
    QByteArray body;
    QString contentType;
    QString etag;
    QString lastModified;
    QUrl finalUrl;       // after redirects
    QUrl discoveredFrom; // the web page whose advertised feed this is, when it was one

    [[nodiscard]] bool ok() const { return outcome == Outcome::Ok; }
    // The one-line account a user reads, e.g. "Error: HTTP 404 Not Found".
    [[nodiscard]] QString describe() const;
};

} // namespace quillon
