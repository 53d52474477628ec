// libFuzzer entry: every input goes through both parsers and the pieces they are built from.
#include "FeedDateParser.h"
#include "FeedParser.h"
#include "HtmlNormalizer.h"
#include "OpmlCatalog.h"
#include "OpmlParser.h"

#include <cstddef>
#include <cstdint>

namespace {

// The last byte picks an HTTP content type, so that the charset paths are reached too.
QString contentTypeFor(uint8_t selector)
{
    switch (selector % 5) {
    case 1:
        return QStringLiteral("text/xml; charset=utf-8");
    case 2:
        return QStringLiteral("application/rss+xml; charset=\"windows-1251\"");
    case 3:
        return QStringLiteral("text/xml; charset=utf-16");
    case 4:
        return QStringLiteral("text/xml; charset=x-unknown");
    default:
        return {};
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const QString contentType = contentTypeFor(data[size - 1]);
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    const QUrl base(QStringLiteral("http://fuzz.example/feeds/"));

    const quillon::ParsedFeed feed = quillon::FeedParser::parse(bytes, contentType, base);
    const quillon::OpmlDocument document = quillon::OpmlParser::parse(bytes, contentType);
    const quillon::OpmlCatalog catalog = quillon::OpmlCatalog::fromDocument(document);
    const QString text = QString::fromUtf8(bytes);
    const QString html = quillon::HtmlNormalizer::normalize(text, base);
    const QDateTime date = quillon::FeedDateParser::parse(QStringView(text).left(80));
    return int(feed.items.size() + catalog.feeds.size() + html.size() + date.isValid()) < 0 ? 1 : 0;
}
