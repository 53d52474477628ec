#include "XmlPullReader.h"

#include <expat.h>

#include <algorithm>
#include <limits>

namespace quillon {

namespace {

// Between a name's namespace, local part and prefix; XML allows this character nowhere.
constexpr char kSeparator = '\x01';
// Tokens read ahead before the parser is suspended. Once suspended, expat reads about a third
// slower, so a feed of ordinary size is read in one go; a large one a batch at a time, which
// keeps memory bounded.
constexpr size_t kReadAhead = 4096;
// Names kept for the thread's next documents; more are dropped before the next one.
constexpr size_t kKeptNames = 4096;

} // namespace

QStringView XmlAttributes::value(QStringView qualifiedName) const
{
    for (const XmlAttribute &attribute : *this) {
        if (attribute.qualifiedName == qualifiedName)
            return attribute.value;
    }
    return {};
}

QStringView XmlAttributes::value(QStringView namespaceUri, QStringView name) const
{
    for (const XmlAttribute &attribute : *this) {
        if (attribute.name == name && attribute.namespaceUri == namespaceUri)
            return attribute.value;
    }
    return {};
}

XmlPullReader::Names &XmlPullReader::namesOfThisThread()
{
    thread_local Names names;
    if (names.readers == 0 && names.names.size() > kKeptNames) {
        names.names.clear();
        names.index.clear();
    }
    return names;
}

XmlPullReader::XmlPullReader(QByteArray utf8) : m_document(std::move(utf8)), m_names(namesOfThisThread())
{
    ++m_names.readers;
    m_parser = XML_ParserCreateNS("UTF-8", kSeparator);
    XML_SetReturnNSTriplet(m_parser, 1);
    XML_SetUserData(m_parser, this);
    XML_SetElementHandler(m_parser, &XmlPullReader::onStart, &XmlPullReader::onEnd);
    XML_SetCharacterDataHandler(m_parser, &XmlPullReader::onText);
    m_text.reserve(size_t(std::min<qsizetype>(m_document.size(), 1 << 20)));
    m_queue.reserve(std::min(kReadAhead, size_t(m_document.size()) / 24 + 8)); // a token in 24 bytes or more
}

XmlPullReader::~XmlPullReader()
{
    XML_ParserFree(m_parser);
    --m_names.readers;
}

XmlPullReader::Token XmlPullReader::readNext()
{
    if (atEnd())
        return m_current.type;
    if (m_next == m_queue.size())
        fill();
    m_current = std::move(m_queue[m_next++]);
    m_textDecoded = false;
    return m_current.type;
}

bool XmlPullReader::readNextStartElement()
{
    for (;;) {
        const Token token = readNext();
        if (token == StartElement)
            return true;
        if (token == EndElement || atEnd())
            return false;
    }
}

void XmlPullReader::skipCurrentElement()
{
    for (int depth = 1; depth > 0 && !atEnd();) {
        const Token token = readNext();
        depth += token == StartElement ? 1 : token == EndElement ? -1 : 0;
    }
}

QString XmlPullReader::readElementText()
{
    // Text comes in one piece unless a comment or child element splits it: the first piece is
    // decoded straight into the result. Each piece is whole characters.
    QString text;
    while (!atEnd()) {
        const Token token = readNext();
        if (token == Characters && text.isEmpty())
            text = textString();
        else if (token == Characters)
            text.append(this->text());
        else if (token == StartElement)
            skipCurrentElement();
        else if (token == EndElement)
            break;
    }
    return text;
}

QString XmlPullReader::errorString() const
{
    if (!hasError())
        return {};
    QString message = QString::fromUtf8(XML_ErrorString(XML_Error(m_error)));
    if (!message.isEmpty())
        message[0] = message[0].toUpper();
    return message + u'.';
}

QStringView XmlPullReader::name() const
{
    return m_current.name < 0 ? QStringView() : QStringView(m_names.names[size_t(m_current.name)].local);
}

QStringView XmlPullReader::namespaceUri() const
{
    return m_current.name < 0 ? QStringView()
                              : QStringView(m_names.names[size_t(m_current.name)].namespaceUri);
}

QStringView XmlPullReader::text() const
{
    return decodedText();
}

QString XmlPullReader::textString() const
{
    return decodedText();
}

const QString &XmlPullReader::decodedText() const
{
    if (!m_textDecoded) {
        m_decodedText =
            QString::fromUtf8(m_text.data() + m_current.textStart, qsizetype(m_current.textLength));
        m_textDecoded = true;
    }
    return m_decodedText;
}

// Runs the parser until it has queued at least one token: it suspends itself once it has
// read ahead, and is resumed here.
void XmlPullReader::fill()
{
    m_queue.clear();
    m_next = 0;
    // What is still pending belongs to the tokens to come; what came before, to those read.
    m_text.erase(0, m_pendingStart);
    m_pendingStart = 0;
    while (m_queue.empty()) {
        XML_Status status = XML_STATUS_ERROR; // a document longer than expat's int is refused, not cut
        if (m_started)
            status = XML_ResumeParser(m_parser);
        else if (m_document.size() <= std::numeric_limits<int>::max())
            status = XML_Parse(m_parser, m_document.constData(), int(m_document.size()), XML_TRUE);
        m_started = true;
        if (status == XML_STATUS_ERROR) {
            const XML_Error error = XML_GetErrorCode(m_parser);
            m_error = error != XML_ERROR_NONE ? error : XML_ERROR_NO_MEMORY;
            m_errorLine = qint64(XML_GetCurrentLineNumber(m_parser));
            m_errorColumn = qint64(XML_GetCurrentColumnNumber(m_parser)) + 1;
            m_queue.push_back(Item{Invalid, -1, {}, {}});
        } else if (status == XML_STATUS_OK) {
            queueText();
            m_queue.push_back(Item{EndDocument, -1, {}, {}});
        }
    }
}

void XmlPullReader::queue(Item &&item)
{
    queueText();
    m_queue.push_back(std::move(item));
    if (m_queue.size() >= kReadAhead)
        suspend();
}

void XmlPullReader::queueText()
{
    if (m_text.size() == m_pendingStart)
        return;
    m_queue.push_back(Item{Characters, -1, {}, m_pendingStart, m_text.size() - m_pendingStart});
    m_pendingStart = m_text.size();
}

// Expat may still call a handler or two after this; their tokens queue behind.
void XmlPullReader::suspend()
{
    XML_ParsingStatus status;
    XML_GetParsingStatus(m_parser, &status);
    if (status.parsing == XML_PARSING)
        XML_StopParser(m_parser, XML_TRUE);
}

int XmlPullReader::intern(const char *raw)
{
    const std::string_view key(raw);
    if (const auto found = m_names.index.find(key); found != m_names.index.end())
        return found->second;
    // "local", "namespace\1local" or "namespace\1local\1prefix"
    const QList<QByteArray> pieces = QByteArray(raw).split(kSeparator);
    Name name;
    if (pieces.size() == 1) {
        name.local = QString::fromUtf8(pieces[0]);
        name.qualified = name.local;
    } else {
        name.namespaceUri = QString::fromUtf8(pieces[0]);
        name.local = QString::fromUtf8(pieces[1]);
        name.qualified = pieces.size() > 2 ? QString::fromUtf8(pieces[2]) + u':' + name.local : name.local;
    }
    m_names.names.push_back(std::move(name));
    const int index = int(m_names.names.size() - 1);
    m_names.index.emplace(key, index);
    return index;
}

void XmlPullReader::onStart(void *self, const char *name, const char **attributes)
{
    auto *reader = static_cast<XmlPullReader *>(self);
    Item item{StartElement, reader->intern(name), {}, {}};
    reader->m_open.push_back(item.name);
    for (const char **at = attributes; *at; at += 2) {
        const Name &attributeName = reader->m_names.names[size_t(reader->intern(at[0]))];
        item.attributes.append({attributeName.namespaceUri, attributeName.local, attributeName.qualified,
                                QString::fromUtf8(at[1])});
    }
    reader->queue(std::move(item));
}

// Expat reports an end tag only when it matches the open element, whose name is known.
void XmlPullReader::onEnd(void *self, const char *)
{
    auto *reader = static_cast<XmlPullReader *>(self);
    const int name = reader->m_open.back();
    reader->m_open.pop_back();
    reader->queue(Item{EndElement, name, {}, {}});
}

void XmlPullReader::onText(void *self, const char *text, int length)
{
    static_cast<XmlPullReader *>(self)->m_text.append(text, size_t(length));
}

} // namespace quillon
