#pragma once

#include <QString>
#include <QUrl>

namespace quillon {

// One document to fetch: an http(s) or file URL, the validators of the copy already held and
// the feed's login.
struct FetchRequest
{
    QUrl url;
    QString etag;
    QString lastModified;
    QString user;
    QString password;
    int timeoutMs = 0; // shorter than the fetcher's own limit when above 0
};

} // namespace quillon
