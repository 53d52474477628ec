#pragma once

#include <QString>
#include <QUrl>

namespace quillon {

// Turns an address as consumers write it into something a fetcher can open: http and https
// URLs, file URLs, the "file://loopback/<path>" form of an imported file (blanks written as
// "%20"), "quillon-data:<path>" for documents shipped in the data folder, "feed:" URLs and a
// bare host name ("example.com/rss").
class FeedAddress
{
public:
    struct Resolved
    {
        QUrl url; // http, https or file
        QString error;
        [[nodiscard]] bool ok() const { return error.isEmpty(); }
    };

    [[nodiscard]] static Resolved resolve(const QString &address, const QString &dataFolder);

private:
    [[nodiscard]] static Resolved loopbackFile(const QString &rest);
    [[nodiscard]] static Resolved dataFile(const QString &rest, const QString &dataFolder);
    [[nodiscard]] static Resolved webAddress(const QString &address);
};

} // namespace quillon
