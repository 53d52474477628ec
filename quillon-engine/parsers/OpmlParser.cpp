#include "OpmlParser.h"

#include "ParsersLog.h"
#include "XmlSource.h"

#include "XmlPullReader.h"

namespace quillon {

namespace {

// Real lists nest a few levels; hand-made ones far more. Deeper than this is refused.
constexpr int kMaxDepth = 1000;

} // namespace

OpmlDocument OpmlParser::parse(const QByteArray &bytes, const QString &contentType)
{
    OpmlDocument document;
    XmlSource::Prepared prepared = XmlSource::prepare(bytes, contentType);
    document.encoding = prepared.encoding;
    document.encodingFallback = prepared.encodingFallback;
    document.repairs = prepared.repairs;
    if (prepared.error != ParseError::None) {
        document.error = prepared.error;
        document.errorText = prepared.errorText;
        return document;
    }

    XmlPullReader xml(prepared.text.toUtf8());
    if (xml.readNextStartElement()) {
        if (xml.name().compare(u"opml", Qt::CaseInsensitive) != 0) {
            document.error = ParseError::UnknownFormat;
            document.errorText =
                QStringLiteral("The document is not an OPML outline list (its root element is <%1>).")
                    .arg(xml.name().toString());
            return document;
        }
        OpmlParser(xml, document).readRoot();
        while (!xml.atEnd() && document.error == ParseError::None)
            xml.readNext();
    }
    if (xml.hasError() && document.error == ParseError::None) {
        document.error = XmlSource::classifyError(xml);
        document.errorText = XmlSource::describeError(xml);
        qCDebug(lcParsers) << "OPML not well-formed:" << document.errorText;
    }
    return document;
}

void OpmlParser::readRoot()
{
    while (m_document.error == ParseError::None && m_xml.readNextStartElement()) {
        if (m_xml.name() == u"head")
            readHead();
        else if (m_xml.name() == u"body")
            readOutlines(m_document.outlines);
        else
            m_xml.skipCurrentElement();
    }
}

void OpmlParser::readHead()
{
    while (m_xml.readNextStartElement()) {
        if (m_xml.name() == u"title")
            m_document.title = m_xml.readElementText().trimmed();
        else
            m_xml.skipCurrentElement();
    }
}

// Each outline is stored as soon as its start tag is read, so an error inside it keeps it.
// A loop with its own stack, not recursion: the depth comes from the document.
void OpmlParser::readOutlines(QList<OpmlOutline> &into)
{
    QList<QList<OpmlOutline> *> open{&into};
    while (!open.isEmpty()) {
        if (!m_xml.readNextStartElement()) {
            open.removeLast();
            continue;
        }
        if (m_xml.name() != u"outline") {
            m_xml.skipCurrentElement();
            continue;
        }
        if (open.size() > kMaxDepth) {
            m_document.error = ParseError::TooDeep;
            m_document.errorText =
                QStringLiteral("The outline list nests deeper than %1 levels.").arg(kMaxDepth);
            return;
        }
        open.last()->append(outlineFromAttributes());
        open.append(&open.last()->last().children);
    }
}

// Attribute names are matched without regard to case: lists written by hand say "xmlURL".
OpmlOutline OpmlParser::outlineFromAttributes() const
{
    OpmlOutline outline;
    const std::pair<QStringView, QString OpmlOutline::*> fields[] = {
        {u"text", &OpmlOutline::text},
        {u"title", &OpmlOutline::title},
        {u"description", &OpmlOutline::description},
        {u"xmlurl", &OpmlOutline::xmlUrl},
        {u"htmlurl", &OpmlOutline::htmlUrl},
        {u"url", &OpmlOutline::url},
        {u"type", &OpmlOutline::type},
        {u"category", &OpmlOutline::category},
    };
    for (const XmlAttribute &attribute : m_xml.attributes()) {
        if (!attribute.namespaceUri.isEmpty())
            continue;
        for (const auto &[name, member] : fields) {
            if (attribute.name.compare(name, Qt::CaseInsensitive) == 0 && (outline.*member).isEmpty())
                outline.*member = attribute.value.trimmed();
        }
        outline.hasXmlUrl = outline.hasXmlUrl || attribute.name.compare(u"xmlurl", Qt::CaseInsensitive) == 0;
    }
    return outline;
}

} // namespace quillon
