#pragma once

#include "OpmlDocument.h"

#include <QByteArray>

namespace quillon {

class XmlPullReader;

// Reads OPML 1.0 and 2.0 outline lists. Like FeedParser it does no I/O and never throws;
// outlines read before an error are kept.
class OpmlParser
{
public:
    [[nodiscard]] static OpmlDocument parse(const QByteArray &bytes, const QString &contentType = {});

private:
    explicit OpmlParser(XmlPullReader &xml, OpmlDocument &document) : m_xml(xml), m_document(document) {}

    void readRoot();
    void readHead();
    void readOutlines(QList<OpmlOutline> &into);
    [[nodiscard]] OpmlOutline outlineFromAttributes() const;

    XmlPullReader &m_xml;
    OpmlDocument &m_document;
};

} // namespace quillon
