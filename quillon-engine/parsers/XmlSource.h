#pragma once

#include "ParseError.h"

#include <QByteArray>
#include <QString>

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
    // "line 3, column 7: <reason>"
    [[nodiscard]] static QString describeError(const XmlPullReader &reader);
    [[nodiscard]] static ParseError classifyError(const XmlPullReader &reader);
};

} // namespace quillon
