#include "XmlSource.h"

#include "CharsetDecoder.h"
#include "EntityRepair.h"
#include "PrefixRepair.h"
#include "TextSearch.h"

#include "XmlPullReader.h"

namespace quillon {

namespace {

// Characters a document's own entities may add in total.
constexpr qint64 kMaxTotalExpansion = qint64(8) << 20;

bool hasMarkup(const QString &text)
{
    return text.contains(u'<');
}

// The reader takes "&#0000000065;"; mending escapes its '&', as it reads no more than 9 digits.
bool hasLongCharacterReference(QStringView text)
{
    for (qsizetype at = findTerminator(text, u"&#", 0); at >= 0; at = findTerminator(text, u"&#", at + 2)) {
        qsizetype i = at + 2;
        if (i < text.size() && text[i] == u'x')
            ++i;
        const qsizetype digitsStart = i;
        while (i < text.size() && text[i].isLetterOrNumber() && i - digitsStart < 9)
            ++i;
        if (i - digitsStart >= 9)
            return true;
    }
    return false;
}

// Mending declares the prefix of anything that looks like an element there ("<?pi <a:b?>").
bool hasMarkupInInstruction(QStringView text)
{
    for (qsizetype at = text.indexOf(u'?'); at > 0; at = text.indexOf(u'?', at + 1)) {
        if (text[at - 1] != u'<')
            continue;
        const qsizetype end = findTerminator(text, u"?>", at + 1);
        if (end < 0 || text.mid(at, end - at).contains(u'<'))
            return true;
        at = end;
    }
    return false;
}

} // namespace

XmlSource::Prepared XmlSource::prepare(const QByteArray &bytes, const QString &contentType)
{
    Prepared prepared = decode(bytes, contentType);
    mend(prepared);
    return prepared;
}

XmlSource::Prepared XmlSource::decode(const QByteArray &bytes, const QString &contentType)
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
    prepared.text = std::move(decoded.text);
    return prepared;
}

void XmlSource::mend(Prepared &prepared)
{
    if (prepared.error != ParseError::None)
        return;
    EntityRepair::Result repaired = EntityRepair::repair(prepared.text);
    if (repaired.unreadableDtd) {
        prepared.error = ParseError::NotWellFormed;
        prepared.errorText = QStringLiteral("The document type declaration is incomplete or malformed.");
    } else if (repaired.expansion > kMaxTotalExpansion) {
        prepared.error = ParseError::EntityExpansion;
        prepared.errorText =
            QStringLiteral("The document's entities would expand to more than %1 characters.")
                .arg(kMaxTotalExpansion);
    }
    if (prepared.error != ParseError::None) {
        prepared.text.clear();
        return;
    }
    prepared.text = std::move(repaired.text);
    prepared.repairs = repaired.repairs + PrefixRepair::declareMissing(prepared.text);
}

bool XmlSource::readsAsMended(const QString &text)
{
    return !EntityRepair::hasDoctype(text) && !hasLongCharacterReference(text) &&
           !hasMarkupInInstruction(text);
}

QString XmlSource::describeError(const XmlPullReader &reader)
{
    return QStringLiteral("line %1, column %2: %3")
        .arg(reader.lineNumber())
        .arg(reader.columnNumber())
        .arg(reader.errorString());
}

ParseError XmlSource::classifyError(const XmlPullReader &reader)
{
    return reader.hasError() ? ParseError::NotWellFormed : ParseError::None;
}

} // namespace quillon
