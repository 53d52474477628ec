#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

struct XML_ParserStruct;

namespace quillon {

struct XmlAttribute
{
    QString namespaceUri;
    QString name;
    QString qualifiedName; // "prefix:name" as written
    QString value;
};

class XmlAttributes : public QList<XmlAttribute>
{
public:
    // Empty when the start tag has no such attribute.
    [[nodiscard]] QStringView value(QStringView qualifiedName) const;
    [[nodiscard]] QStringView value(QStringView namespaceUri, QStringView name) const;
};

// A pull reader over expat with the calls the parsers use, named as QXmlStreamReader names
// them. Expat reads about three times faster, and feeds are read on every fetch. The parser
// runs at most a few thousand tokens ahead of the caller, so memory stays bounded however
// large the document. Namespaces are always processed; external entities are never loaded.
// Text arrives as one Characters token between two element boundaries, comments and
// processing instructions are not reported.
class XmlPullReader
{
public:
    enum Token { NoToken, StartElement, EndElement, Characters, EndDocument, Invalid };

    // Reads UTF-8, whatever encoding the document declares: the caller has decoded it.
    explicit XmlPullReader(QByteArray utf8);
    ~XmlPullReader();
    XmlPullReader(const XmlPullReader &) = delete;
    XmlPullReader &operator=(const XmlPullReader &) = delete;

    Token readNext();
    // To the next start tag inside the current element; false at the current element's end.
    bool readNextStartElement();
    // From a start tag to just past its end tag.
    void skipCurrentElement();
    // The element's text, its child elements skipped; leaves the reader on the end tag.
    QString readElementText();

    [[nodiscard]] Token tokenType() const { return m_current.type; }
    [[nodiscard]] bool atEnd() const { return m_current.type == EndDocument || m_current.type == Invalid; }
    // Only once the reader has reached the fault, not while it still hands out what came before.
    [[nodiscard]] bool hasError() const { return m_current.type == Invalid; }
    [[nodiscard]] QString errorString() const;
    [[nodiscard]] qint64 lineNumber() const { return m_errorLine; }
    [[nodiscard]] qint64 columnNumber() const { return m_errorColumn; }

    [[nodiscard]] QStringView name() const;
    [[nodiscard]] QStringView namespaceUri() const;
    [[nodiscard]] const XmlAttributes &attributes() const { return m_current.attributes; }
    [[nodiscard]] QStringView text() const;
    // The same text as a string that shares the reader's copy instead of making another.
    [[nodiscard]] QString textString() const;

private:
    const QString &decodedText() const;

    struct Name
    {
        QString namespaceUri, local, qualified;
    };
    struct Item
    {
        Token type = NoToken;
        int name = -1;
        XmlAttributes attributes;
        size_t textStart = 0; // in m_text
        size_t textLength = 0;
    };

    static void onStart(void *self, const char *name, const char **attributes);
    static void onEnd(void *self, const char *name);
    static void onText(void *self, const char *text, int length);

    void queue(Item &&item);
    void queueText();
    void suspend();
    void fill();
    int intern(const char *raw);

    XML_ParserStruct *m_parser = nullptr;
    QByteArray m_document;
    bool m_started = false;
    int m_error = 0;
    qint64 m_errorLine = 0;
    qint64 m_errorColumn = 0;

    struct NameHash
    {
        using is_transparent = void;
        size_t operator()(std::string_view key) const { return std::hash<std::string_view>()(key); }
    };
    // The names met on a thread, kept across its documents: feeds use the same few dozen, and
    // making them for each document cost as much as reading them. Emptied when a reader starts
    // with no other reader alive on the thread and more than a few thousand are kept.
    struct Names
    {
        std::vector<Name> names;
        // expat's "uri\1local\1prefix" -> names
        std::unordered_map<std::string, int, NameHash, std::equal_to<>> index;
        int readers = 0;
    };
    static Names &namesOfThisThread();
    Names &m_names;
    std::vector<int> m_open; // the names of the open elements, innermost last
    // The text of the queued tokens, UTF-8, one after the other: one buffer, not one per token.
    std::string m_text;
    size_t m_pendingStart = 0;
    std::vector<Item> m_queue;
    size_t m_next = 0;
    Item m_current;
    mutable QString m_decodedText;
    mutable bool m_textDecoded = false;
};

} // namespace quillon
