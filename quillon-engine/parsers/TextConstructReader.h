#pragma once

#include "ParsedText.h"

#include <QUrl>

namespace quillon {

class XmlAttributes;
class XmlPullReader;

// Reads the content of one text element (a title, summary, description or content) into a
// ParsedText, following how the element says its content is encoded. Markup comes out through
// HtmlNormalizer, with relative links resolved against the element's base.
class TextConstructReader
{
public:
    enum class Mode {
        Plain,  // text; child elements, if any, turn it into markup
        Html,   // the text is HTML source
        Xhtml,  // the children are markup; text is escaped into it
        Base64, // the text is base64 of the value
    };
    struct Options
    {
        Mode mode = Mode::Plain;
        bool stripXhtmlWrapper = false; // Atom 1.0: the outer xhtml <div> is not content
        bool decodedIsHtml = false;     // for Base64: the decoded bytes are HTML
        QUrl base;
    };

    // Expects the reader on the element's start; leaves it on the element's end.
    [[nodiscard]] static ParsedText read(XmlPullReader &xml, const Options &options);

    [[nodiscard]] static Options atom10Options(const XmlAttributes &attributes, const QUrl &base);
    [[nodiscard]] static Options atom03Options(const XmlAttributes &attributes, const QUrl &base);
};

} // namespace quillon
