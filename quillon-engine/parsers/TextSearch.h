#pragma once

#include <QStringView>

namespace quillon {

// Where a short marker ("]]>", "-->", "xmlns:") next starts in text from `from` on, or -1.
// Finds candidates by the first character (a vectorised search): several times cheaper over a
// long text than QString's general substring search.
inline qsizetype findTerminator(QStringView text, QStringView terminator, qsizetype from)
{
    for (qsizetype at = text.indexOf(terminator.front(), from); at >= 0;
         at = text.indexOf(terminator.front(), at + 1)) {
        if (text.mid(at).startsWith(terminator))
            return at;
    }
    return -1;
}

} // namespace quillon
