#pragma once

#include <QByteArray>
#include <QString>

namespace quillon {

// Turns the bytes of an XML document into text. The character set is chosen in this order:
// byte-order mark, the charset of the HTTP content type, the XML declaration, UTF-8.
class CharsetDecoder
{
public:
    struct Result
    {
        QString text;
        QString encoding;      // the set actually used
        bool fallback = false; // the chosen set was unknown or the bytes did not fit it
    };

    [[nodiscard]] static Result decode(const QByteArray &bytes, const QString &contentType = {});
    // The set decode() tries first, in lower case ("utf-8", "windows-1252").
    [[nodiscard]] static QString decoderName(const QByteArray &bytes, const QString &contentType = {});

    // The charset parameter of a content type ("text/xml; charset=utf-8"), or empty.
    [[nodiscard]] static QString charsetOfContentType(const QString &contentType);
    // The encoding named by the XML declaration at the start of the bytes, or empty.
    [[nodiscard]] static QString declaredEncoding(const QByteArray &bytes);
};

} // namespace quillon
