#include "XmlSource.h"

#include "CharsetDecoder.h"
#include "EntityRepair.h"
#include "PrefixRepair.h"

#include <QXmlStreamReader>

namespace quillon {

namespace {

// Characters a document's own entities may add in total, and one entity may expand to.
constexpr qint64 kMaxTotalExpansion = qint64(8) << 20;
constexpr int kMaxEntityExpansion = 64 * 1024;

bool hasMarkup(const QString &text)
{
    return text.contains(u'<');
}

} // namespace

XmlSource::Prepared XmlSource::prepare(const QByteArray &bytes, const QString &contentType)
{
    Prepared prepared;
    CharsetDecoder::Result decoded = CharsetDecoder::decode(bytes, contentType);
    prepared.encoding = decoded.encoding;
    prepared.encodingFallback = decoded.fallback;
    if (!hasMarkup(decoded.text)) {
        prepared.error = ParseError::Empty;
        prepared.errorText = QStringLiteral("The document is empty or is not XML.");
        return prepared;
    }
    EntityRepair::Result repaired = EntityRepair::repair(decoded.text);
    if (repaired.unreadableDtd) {
        prepared.error = ParseError::NotWellFormed;
        prepared.errorText = QStringLiteral("The document type declaration is incomplete or malformed.");
        return prepared;
    }
    if (repaired.expansion > kMaxTotalExpansion) {
        prepared.error = ParseError::EntityExpansion;
        prepared.errorText =
            QStringLiteral("The document's entities would expand to more than %1 characters.")
                .arg(kMaxTotalExpansion);
        return prepared;
    }
    prepared.text = std::move(repaired.text);
    prepared.repairs = repaired.repairs + PrefixRepair::declareMissing(prepared.text);
    return prepared;
}

void XmlSource::configure(QXmlStreamReader &reader)
{
    reader.setNamespaceProcessing(true);
    reader.setEntityExpansionLimit(kMaxEntityExpansion);
}

QString XmlSource::describeError(const QXmlStreamReader &reader)
{
    return QStringLiteral("line %1, column %2: %3")
        .arg(reader.lineNumber())
        .arg(reader.columnNumber())
        .arg(reader.errorString());
}

ParseError XmlSource::classifyError(const QXmlStreamReader &reader, const QString &text)
{
    if (!reader.hasError())
        return ParseError::None;
    if (reader.error() == QXmlStreamReader::PrematureEndOfDocumentError && text.trimmed().isEmpty())
        return ParseError::Empty;
    return ParseError::NotWellFormed;
}

} // namespace quillon
