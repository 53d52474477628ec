#pragma once

#include <QByteArrayView>
#include <QStringView>

namespace quillon {

namespace TextSearchDetail {
template <typename View> qsizetype findTerminator(View text, View terminator, qsizetype from)
{
    for (qsizetype at = text.indexOf(terminator.front(), from); at >= 0;
         at = text.indexOf(terminator.front(), at + 1)) {
        if (text.sliced(at).startsWith(terminator))
            return at;
    }
    return -1;
}
} // namespace TextSearchDetail

// Where a short marker ("]]>", "-->", "xmlns:") next starts in text from `from` on, or -1.
// Finds candidates by the first character (a vectorised search): several times cheaper over a
// long text than Qt's general substring search.
inline qsizetype findTerminator(QStringView text, QStringView terminator, qsizetype from)
{
    return TextSearchDetail::findTerminator(text, terminator, from);
}

// The same in bytes, where the first byte is found by memchr().
inline qsizetype findTerminator(QByteArrayView bytes, QByteArrayView terminator, qsizetype from)
{
    return TextSearchDetail::findTerminator(bytes, terminator, from);
}

} // namespace quillon
