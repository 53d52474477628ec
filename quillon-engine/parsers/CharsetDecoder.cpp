#include "CharsetDecoder.h"

#include <QList>
#include <QStringDecoder>

#include <optional>

namespace quillon {

namespace {

// Bytes any decoder can take: the last resort when the declared set does not fit.
const char *const kLastResort = "windows-1252";

struct Bom
{
    const char *bytes;
    int size;
    const char *encoding;
};

// UTF-32 before UTF-16: FF FE 00 00 also starts with the UTF-16LE mark.
constexpr Bom kBoms[] = {
    {"\xEF\xBB\xBF", 3, "UTF-8"}, {"\xFF\xFE\x00\x00", 4, "UTF-32LE"}, {"\x00\x00\xFE\xFF", 4, "UTF-32BE"},
    {"\xFF\xFE", 2, "UTF-16LE"},  {"\xFE\xFF", 2, "UTF-16BE"},
};

QString encodingFromBom(const QByteArray &bytes)
{
    for (const Bom &bom : kBoms) {
        if (bytes.startsWith(QByteArrayView(bom.bytes, bom.size)))
            return QString::fromLatin1(bom.encoding);
    }
    // No mark, but "<?" in UTF-16 tells the byte order.
    if (bytes.startsWith(QByteArrayView("<\0?\0", 4)))
        return QStringLiteral("UTF-16LE");
    if (bytes.startsWith(QByteArrayView("\0<\0?", 4)))
        return QStringLiteral("UTF-16BE");
    return {};
}

// Labels whose bytes are better read by a superset: windows-1252 decodes every byte that
// ISO-8859-1 does, and feeds labelled ASCII are mostly not.
QString preferredDecoderName(const QString &label)
{
    const QString lower = label.trimmed().toLower();
    if (lower == u"iso-8859-1" || lower == u"latin1" || lower == u"latin-1" || lower == u"us-ascii" ||
        lower == u"ascii" || lower == u"iso_8859-1")
        return QString::fromLatin1(kLastResort);
    return lower;
}

std::optional<QString> tryDecode(const QByteArray &bytes, const QString &name)
{
    const QByteArray encodedName = name.toLatin1();
    QStringDecoder decoder(encodedName.constData());
    if (!decoder.isValid())
        return std::nullopt;
    QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

} // namespace

QString CharsetDecoder::charsetOfContentType(const QString &contentType)
{
    const auto params = QStringView(contentType).split(u';');
    for (qsizetype i = 1; i < params.size(); ++i) {
        const QStringView param = params[i].trimmed();
        if (!param.startsWith(u"charset", Qt::CaseInsensitive))
            continue;
        const qsizetype eq = param.indexOf(u'=');
        if (eq < 0)
            continue;
        QStringView value = param.mid(eq + 1).trimmed();
        if (value.size() >= 2 && (value.front() == u'"' || value.front() == u'\''))
            value = value.mid(1, value.size() - 2);
        return value.trimmed().toString();
    }
    return {};
}

QString CharsetDecoder::declaredEncoding(const QByteArray &bytes)
{
    // Only the first line matters; a declaration is short.
    const QByteArray head = bytes.left(256);
    if (!head.startsWith("<?xml"))
        return {};
    const qsizetype end = head.indexOf("?>");
    const qsizetype at = head.indexOf("encoding");
    if (at < 0 || (end >= 0 && at > end))
        return {};
    qsizetype i = head.indexOf('=', at);
    if (i < 0)
        return {};
    ++i;
    while (i < head.size() && (head[i] == ' ' || head[i] == '\t' || head[i] == '\r' || head[i] == '\n'))
        ++i;
    if (i >= head.size() || (head[i] != '"' && head[i] != '\''))
        return {};
    const qsizetype close = head.indexOf(head[i], i + 1);
    if (close < 0)
        return {};
    return QString::fromLatin1(head.mid(i + 1, close - i - 1)).trimmed();
}

QString CharsetDecoder::decoderName(const QByteArray &bytes, const QString &contentType)
{
    QString label = encodingFromBom(bytes);
    if (label.isEmpty())
        label = charsetOfContentType(contentType);
    if (label.isEmpty())
        label = declaredEncoding(bytes);
    if (label.isEmpty())
        label = QStringLiteral("UTF-8");
    return preferredDecoderName(label);
}

CharsetDecoder::Result CharsetDecoder::decode(const QByteArray &bytes, const QString &contentType)
{
    const QString name = decoderName(bytes, contentType);
    if (auto text = tryDecode(bytes, name))
        return {std::move(*text), name, false};
    // The label lied or is unknown: UTF-8 is the likeliest truth, else any byte is a character.
    if (name != u"utf-8") {
        if (auto text = tryDecode(bytes, QStringLiteral("utf-8")))
            return {std::move(*text), QStringLiteral("utf-8"), true};
    }
    QStringDecoder lastResort(kLastResort);
    return {lastResort.decode(bytes), QString::fromLatin1(kLastResort), true};
}

} // namespace quillon
