#include "TextConstructReader.h"

#include "HtmlNormalizer.h"

#include "XmlPullReader.h"

namespace quillon {

namespace {

const QString kXhtmlNamespace = QStringLiteral("http://www.w3.org/1999/xhtml");

void appendStartTag(QString &out, const XmlPullReader &xml)
{
    out.append(u'<');
    out.append(xml.name());
    for (const XmlAttribute &attribute : xml.attributes()) {
        out.append(u' ');
        out.append(attribute.qualifiedName);
        out.append(u"=\"");
        HtmlNormalizer::appendEscaped(out, attribute.value);
        out.append(u'"');
    }
    out.append(u'>');
}

// Collects an element's content as markup and, while no child element has shown up, as text.
class Collector
{
public:
    explicit Collector(const TextConstructReader::Options &options) : m_options(options) {}

    void run(XmlPullReader &xml);
    [[nodiscard]] ParsedText result() const;

private:
    void characters(const XmlPullReader &xml);
    void startElement(const XmlPullReader &xml);
    void endElement(const XmlPullReader &xml);

    const TextConstructReader::Options &m_options;
    QString m_text;   // the plain value until markup appears; base64 text
    QString m_markup; // the HTML value
    bool m_sawElement = false;
    int m_depth = 0;
    int m_topElements = 0;
    bool m_wrapperOpen = false;
};

void Collector::run(XmlPullReader &xml)
{
    while (!xml.atEnd()) {
        switch (xml.readNext()) {
        case XmlPullReader::Characters:
            characters(xml);
            break;
        case XmlPullReader::StartElement:
            startElement(xml);
            break;
        case XmlPullReader::EndElement:
            if (m_depth == 0)
                return;
            endElement(xml);
            break;
        default:
            break; // comments and processing instructions are not content
        }
    }
}

void Collector::characters(const XmlPullReader &xml)
{
    const QStringView text = xml.text();
    if (m_options.mode == TextConstructReader::Mode::Html && m_markup.isEmpty())
        m_markup = xml.textString(); // already HTML source, and most often in one piece
    else if (m_options.mode == TextConstructReader::Mode::Html)
        m_markup.append(text);
    else if (m_options.mode == TextConstructReader::Mode::Base64)
        m_text.append(text);
    else if (!m_sawElement && m_options.mode == TextConstructReader::Mode::Plain)
        m_text.append(text);
    else
        HtmlNormalizer::appendEscaped(m_markup, text);
}

void Collector::startElement(const XmlPullReader &xml)
{
    if (!m_sawElement && m_options.mode == TextConstructReader::Mode::Plain) {
        HtmlNormalizer::appendEscaped(m_markup, m_text); // text so far becomes part of the markup
        m_text.clear();
    }
    m_sawElement = true;
    ++m_depth;
    if (m_depth == 1 && ++m_topElements == 1 && m_options.stripXhtmlWrapper && xml.name() == u"div" &&
        xml.namespaceUri() == kXhtmlNamespace) {
        m_wrapperOpen = true;
        return;
    }
    appendStartTag(m_markup, xml);
}

void Collector::endElement(const XmlPullReader &xml)
{
    if (m_depth == 1 && m_wrapperOpen) {
        m_wrapperOpen = false;
    } else {
        m_markup.append(u"</");
        m_markup.append(xml.name());
        m_markup.append(u'>');
    }
    --m_depth;
}

ParsedText Collector::result() const
{
    using Mode = TextConstructReader::Mode;
    switch (m_options.mode) {
    case Mode::Base64: {
        const QString decoded = QString::fromUtf8(QByteArray::fromBase64(m_text.trimmed().toLatin1()));
        if (m_options.decodedIsHtml)
            return {HtmlNormalizer::normalize(decoded, m_options.base), true};
        return {decoded.trimmed(), false};
    }
    case Mode::Html:
    case Mode::Xhtml:
        return {HtmlNormalizer::normalize(m_markup, m_options.base), true};
    case Mode::Plain:
        break;
    }
    if (m_sawElement)
        return {HtmlNormalizer::normalize(m_markup, m_options.base), true};
    return {m_text.trimmed(), false};
}

} // namespace

ParsedText TextConstructReader::read(XmlPullReader &xml, const Options &options)
{
    Collector collector(options);
    collector.run(xml);
    return collector.result();
}

TextConstructReader::Options TextConstructReader::atom10Options(const XmlAttributes &attributes,
                                                                const QUrl &base)
{
    Options options;
    options.base = base;
    options.stripXhtmlWrapper = true;
    const QString type = attributes.value(u"type").trimmed().toString().toLower();
    if (type.isEmpty() || type == u"text" || type.startsWith(u"text/plain"))
        options.mode = Mode::Plain;
    else if (type == u"html" || (type.contains(u"html") && !type.contains(u"xhtml")))
        options.mode = Mode::Html;
    else if (type == u"xhtml" || type.endsWith(u"+xml") || type.endsWith(u"/xml"))
        options.mode = Mode::Xhtml;
    else if (type.startsWith(u"text/"))
        options.mode = Mode::Plain;
    else
        options.mode = Mode::Base64; // any other media type is carried in base64
    return options;
}

TextConstructReader::Options TextConstructReader::atom03Options(const XmlAttributes &attributes,
                                                                const QUrl &base)
{
    Options options;
    options.base = base;
    const QString type = attributes.value(u"type").trimmed().toString().toLower();
    const QString mode = attributes.value(u"mode").trimmed().toString().toLower();
    const bool html = type.contains(u"html");
    options.decodedIsHtml = html;
    if (mode == u"base64")
        options.mode = Mode::Base64;
    else if (mode == u"escaped")
        options.mode = html ? Mode::Html : Mode::Plain;
    else
        options.mode = html ? Mode::Xhtml : Mode::Plain;
    return options;
}

} // namespace quillon
