#include "XmlSource.h"

#include "CharsetDecoder.h"
#include "EntityRepair.h"
#include "PrefixRepair.h"
#include "TextSearch.h"

#include "XmlPullReader.h"

#include <QVarLengthArray>

namespace quillon {

using namespace Qt::StringLiterals;

namespace {

// Characters a document's own entities may add in total.
constexpr qint64 kMaxTotalExpansion = qint64(8) << 20;

bool hasMarkup(const QString &text)
{
    return text.contains(u'<');
}

// The looks below run on decoded text or on UTF-8 bytes. Only ASCII matters to them; a byte of
// a longer character counts as a letter, which at worst sends a document to be mended.
bool isLetterOrDigit(QChar c)
{
    return c.isLetterOrNumber();
}

bool isLetterOrDigit(char c)
{
    const auto u = uchar(c);
    return u >= 0x80 || (u >= '0' && u <= '9') || ((u | 0x20) >= 'a' && (u | 0x20) <= 'z');
}

qsizetype find(QStringView text, QLatin1StringView marker, qsizetype from)
{
    QVarLengthArray<char16_t, 4> wide;
    for (qsizetype i = 0; i < marker.size(); ++i)
        wide.append(char16_t(uchar(marker.data()[i])));
    return findTerminator(text, QStringView(wide.data(), wide.size()), from);
}

qsizetype find(QByteArrayView bytes, QLatin1StringView marker, qsizetype from)
{
    return findTerminator(bytes, QByteArrayView(marker.data(), marker.size()), from);
}

qsizetype find(QStringView text, char c, qsizetype from)
{
    return text.indexOf(QLatin1Char(c), from);
}

qsizetype find(QByteArrayView bytes, char c, qsizetype from)
{
    return bytes.indexOf(c, from);
}

// The reader takes "&#0000000065;"; mending escapes its '&', as it reads no more than 9 digits.
template <typename Text> bool hasLongCharacterReference(Text text)
{
    for (qsizetype at = find(text, "&#"_L1, 0); at >= 0; at = find(text, "&#"_L1, at + 2)) {
        qsizetype i = at + 2;
        if (i < text.size() && text[i] == u'x')
            ++i;
        const qsizetype digitsStart = i;
        while (i < text.size() && isLetterOrDigit(text[i]) && i - digitsStart < 9)
            ++i;
        if (i - digitsStart >= 9)
            return true;
    }
    return false;
}

// Mending declares the prefix of anything that looks like an element there ("<?pi <a:b?>").
template <typename Text> bool hasMarkupInInstruction(Text text)
{
    for (qsizetype at = find(text, '?', 0); at > 0; at = find(text, '?', at + 1)) {
        if (text[at - 1] != u'<')
            continue;
        const qsizetype end = find(text, "?>"_L1, at + 1);
        if (end < 0 || find(text.sliced(at, end - at), '<', 0) >= 0)
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
    return !EntityRepair::hasDoctype(text) && !hasLongCharacterReference(QStringView(text)) &&
           !hasMarkupInInstruction(QStringView(text));
}

std::optional<XmlSource::Prepared> XmlSource::asReceived(const QByteArray &bytes, const QString &contentType)
{
    // A declaration anywhere, even in an article's text, sends the bytes the long way: finding
    // the prolog's would mean decoding it. '!' is rarer than '<' to look for.
    const QByteArrayView view(bytes);
    if (CharsetDecoder::decoderName(bytes, contentType) != u"utf-8" || find(view, "!DOCTYPE"_L1, 0) >= 0 ||
        hasLongCharacterReference(view) || hasMarkupInInstruction(view))
        return std::nullopt;
    Prepared prepared;
    prepared.utf8 = bytes;
    prepared.encoding = QStringLiteral("utf-8");
    return prepared;
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
