#include "FeedParser.h"

#include "FeedReader.h"
#include "ParsersLog.h"
#include "XmlSource.h"

#include "XmlPullReader.h"

namespace quillon {

namespace {

ParsedFeed read(const XmlSource::Prepared &prepared, const QUrl &baseUrl, bool lastTry)
{
    ParsedFeed feed;
    feed.encoding = prepared.encoding;
    feed.encodingFallback = prepared.encodingFallback;
    feed.repairs = prepared.repairs;
    if (prepared.error != ParseError::None) {
        feed.error = prepared.error;
        feed.errorText = prepared.errorText;
        return feed;
    }

    XmlPullReader xml(prepared.utf8.isNull() ? prepared.text.toUtf8() : prepared.utf8);
    if (xml.readNextStartElement()) {
        FeedReader reader(xml, feed);
        if (!reader.read(baseUrl)) {
            feed.error = ParseError::UnknownFormat;
            feed.errorText = QStringLiteral("The document is not a feed (its root element is <%1>).")
                                 .arg(xml.name().toString());
            return feed;
        }
        while (!xml.atEnd()) // what follows the root must be well-formed too
            xml.readNext();
    }
    if (xml.hasError()) {
        feed.error = XmlSource::classifyError(xml);
        feed.errorText = XmlSource::describeError(xml);
        if (lastTry)
            qCDebug(lcParsers) << "feed not well-formed:" << feed.errorText;
    }
    return feed;
}

} // namespace

ParsedFeed FeedParser::parse(const QByteArray &bytes, const QString &contentType, const QUrl &baseUrl)
{
    // Most feeds need no mending, and looking for what to mend costs a pass over the whole
    // document: the document is read as it came first, and mended and read again only on a
    // fault. Most also come in UTF-8, which the reader takes as it came, without decoding.
    const std::optional<XmlSource::Prepared> received = XmlSource::asReceived(bytes, contentType);
    if (received) {
        ParsedFeed feed = read(*received, baseUrl, false);
        if (feed.error == ParseError::None)
            return feed;
    }
    XmlSource::Prepared prepared = XmlSource::decode(bytes, contentType);
    // Decoded without a fallback, the text is the bytes the reader already had.
    const bool triedAsDecoded = received && !prepared.encodingFallback;
    if (!triedAsDecoded && prepared.error == ParseError::None && XmlSource::readsAsMended(prepared.text)) {
        ParsedFeed feed = read(prepared, baseUrl, false);
        if (feed.error == ParseError::None)
            return feed;
    }
    XmlSource::mend(prepared);
    return read(prepared, baseUrl, true);
}

} // namespace quillon
