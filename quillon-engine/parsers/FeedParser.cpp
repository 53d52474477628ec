#include "FeedParser.h"

#include "FeedReader.h"
#include "ParsersLog.h"
#include "XmlSource.h"

#include <QXmlStreamReader>

namespace quillon {

ParsedFeed FeedParser::parse(const QByteArray &bytes, const QString &contentType, const QUrl &baseUrl)
{
    ParsedFeed feed;
    XmlSource::Prepared prepared = XmlSource::prepare(bytes, contentType);
    feed.encoding = prepared.encoding;
    feed.encodingFallback = prepared.encodingFallback;
    feed.repairs = prepared.repairs;
    if (prepared.error != ParseError::None) {
        feed.error = prepared.error;
        feed.errorText = prepared.errorText;
        return feed;
    }

    QXmlStreamReader xml(prepared.text);
    XmlSource::configure(xml);
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
        feed.error = XmlSource::classifyError(xml, prepared.text);
        feed.errorText = XmlSource::describeError(xml);
        qCDebug(lcParsers) << "feed not well-formed:" << feed.errorText;
    }
    return feed;
}

} // namespace quillon
