#pragma once

#include "ParseError.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace quillon {

class XmlPullReader;

// The steps both parsers take before and after reading XML: decode the bytes, mend common
// faults, guard against entity bombs, and describe a reader error for the user.
class XmlSource
{
public:
    struct Prepared
    {
        QString text;
        QByteArray utf8; // instead of the text: the bytes as they came, for the reader to check
        QString encoding;
        bool encodingFallback = false;
        int repairs = 0;
        ParseError error = ParseError::None;
        QString errorText;
    };

    [[nodiscard]] static Prepared prepare(const QByteArray &bytes, const QString &contentType);
    // prepare() in two steps, for a caller that first tries the text as it came.
    [[nodiscard]] static Prepared decode(const QByteArray &bytes, const QString &contentType);
    static void mend(Prepared &prepared);
    // Whether a reader that accepts the decoded text reads just what it would read once mended:
    // true unless the text has a document type declaration, a character reference of nine
    // digits or more, or a '<' inside a processing instruction. Whole-document looks for '&'
    // and '?', several times cheaper than mending.
    [[nodiscard]] static bool readsAsMended(const QString &text);
    // The bytes as they came, when they are to be read as UTF-8 and readsAsMended() holds of
    // them: most feeds, which the reader then takes without a copy decoded and encoded again.
    // Bytes that are not UTF-8 after all make the reader fail, and take the long way.
    [[nodiscard]] static std::optional<Prepared> asReceived(const QByteArray &bytes,
                                                            const QString &contentType);
    // "line 3, column 7: <reason>"
    [[nodiscard]] static QString describeError(const XmlPullReader &reader);
    [[nodiscard]] static ParseError classifyError(const XmlPullReader &reader);
};

} // namespace quillon
