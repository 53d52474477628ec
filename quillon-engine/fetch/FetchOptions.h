#pragma once

#include <QByteArray>
#include <QString>

namespace quillon {

// Limits of the engine's fetcher.
struct FetchOptions
{
    int timeoutMs = 30000;              // the whole fetch, redirects included
    qint64 maxBytes = 10 * 1024 * 1024; // a document beyond this is abandoned
    int maxRedirects = 5;
    int maxConcurrent = 16; // fetches in flight at once; the rest wait their turn
    int maxPerHost = 6;     // connections to one host at once
    QByteArray userAgent = "QuillonEngine/1.0";

    // "the document is larger than 10 MiB"
    [[nodiscard]] QString tooLargeText() const
    {
        return QStringLiteral("the document is larger than %1").arg(limitText());
    }
    // A small download that unpacks to a huge document: said as such, not as a broken feed.
    [[nodiscard]] QString unpacksTooLargeText() const
    {
        return QStringLiteral("the document unpacks to more than %1").arg(limitText());
    }
    [[nodiscard]] QString limitText() const
    {
        const qint64 mib = 1024 * 1024;
        return maxBytes % mib == 0 ? QStringLiteral("%1 MiB").arg(maxBytes / mib)
                                   : QStringLiteral("%1 bytes").arg(maxBytes);
    }
};

} // namespace quillon
