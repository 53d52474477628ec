#include "CategoryTreeSerializer.h"

#include "CategoryTree.h"
#include "categoriesUtils.h"
#include "commonUtils.h"

#include <QLoggingCategory>

#include <algorithm>
#include <vector>

Q_LOGGING_CATEGORY(lcTreeText, "corvell.categories.treetext")

namespace {
const QString kLineBreak = QStringLiteral("\r\n");

// Appends without building temporaries; saving is dominated by these appends.
template <typename... Pieces> void append(QString &out, const Pieces &...pieces)
{
    ((out += pieces), ...);
}

QString boolText(bool value)
{
    return value ? QStringLiteral("True") : QStringLiteral("False");
}

void writeNode(QString &out, const CategoryNode &node, int level)
{
    const QString indent(2 * level, QLatin1Char(' '));
    const QString inner(2 * level + 2, QLatin1Char(' '));
    const auto property = [&](QLatin1StringView name, const QString &value) {
        append(out, kLineBreak, inner, name, QLatin1Char('('), value, QLatin1Char(')'));
    };
    append(out, indent, QLatin1StringView("BasicInfo("));
    property(QLatin1StringView("Expanded"), boolText(node.expanded()));
    property(QLatin1StringView("ExpandedImage"), node.expandedImage());
    property(QLatin1StringView("Image"), node.image());
    property(QLatin1StringView("Key"), node.key());
    property(QLatin1StringView("Selected"), boolText(node.selected()));
    property(QLatin1StringView("SelectedImage"), node.selectedImage());
    property(QLatin1StringView("Tag"), node.tag());
    property(QLatin1StringView("Text"), node.text());
    property(QLatin1StringView("Bold"), boolText(node.bold()));
    append(out, kLineBreak, indent, QLatin1Char(')'));
    for (int i = 0; i < node.childCount(); ++i) {
        const CategoryNode *child = node.child(i);
        if (categoriesUtils::IsSubscription(child))
            continue;
        append(out, kLineBreak, inner, QLatin1StringView("Child("), kLineBreak);
        writeNode(out, *child, level + 1);
        append(out, kLineBreak, inner, QLatin1Char(')'));
    }
}

// Reads "Name(value)" tokens. Every "(" is paired with its ")" in one pass up front, so that
// skipping a value costs nothing and reading stays linear however deep the nesting.
class TokenReader
{
public:
    struct Cursor
    {
        qsizetype pos;
        qsizetype end;
    };
    struct Token
    {
        QStringView name;
        qsizetype valueBegin = 0;
        qsizetype valueEnd = 0;
        [[nodiscard]] bool isEmpty() const { return name.isEmpty(); }
    };

    explicit TokenReader(const QString &text) : m_text(text)
    {
        std::vector<size_t> open;
        for (qsizetype i = 0; i < text.size(); ++i) {
            const QChar c = text[i];
            if (c == QLatin1Char('(')) {
                open.push_back(m_pairs.size());
                m_pairs.push_back({i, -1});
            } else if (c == QLatin1Char(')') && !open.empty()) {
                m_pairs[open.back()].close = i;
                open.pop_back();
            }
        }
    }

    [[nodiscard]] Cursor whole() const { return {0, m_text.size()}; }
    [[nodiscard]] static Cursor inside(const Token &token) { return {token.valueBegin, token.valueEnd}; }
    [[nodiscard]] QString value(const Token &token) const
    {
        return m_text.mid(token.valueBegin, token.valueEnd - token.valueBegin).toString();
    }

    Token next(Cursor &cursor) const
    {
        while (cursor.pos < cursor.end && !isPrintable(m_text[cursor.pos]))
            ++cursor.pos;
        const qsizetype found = m_text.sliced(cursor.pos, cursor.end - cursor.pos).indexOf(QLatin1Char('('));
        if (found <= 0) {
            cursor.pos = cursor.end;
            return {};
        }
        const qsizetype open = cursor.pos + found;
        Token token{m_text.sliced(cursor.pos, found), open + 1, cursor.end};
        const qsizetype close = closeOf(open);
        // A ")" beyond the enclosing value does not close this one.
        if (close >= 0 && close < cursor.end) {
            token.valueEnd = close;
            cursor.pos = close + 1;
        } else {
            cursor.pos = cursor.end;
        }
        return token;
    }

private:
    struct Pair
    {
        qsizetype open;
        qsizetype close; // -1 when unmatched
    };

    static bool isPrintable(QChar c) { return c.unicode() >= '!' && c.unicode() <= '~'; }

    [[nodiscard]] qsizetype closeOf(qsizetype open) const
    {
        // Tokens are read in text order, so the pair is nearly always the next one.
        size_t at = m_next;
        if (at < m_pairs.size() && m_pairs[at].open <= open) {
            while (m_pairs[at].open < open)
                ++at;
        } else {
            at = size_t(std::lower_bound(m_pairs.begin(), m_pairs.end(), open,
                                         [](const Pair &pair, qsizetype pos) { return pair.open < pos; }) -
                        m_pairs.begin());
        }
        m_next = at + 1;
        return m_pairs[at].close;
    }

    QStringView m_text;
    std::vector<Pair> m_pairs; // in text order
    mutable size_t m_next = 0;
};

using Result = CategoryTreeSerializer::ReadResult;

Result expected(const QString &where, const QString &what, QStringView found)
{
    return {false, QStringLiteral("Error reading %1 serialization. Expected '%2' but found '%3.'")
                       .arg(where, what, found.toString())};
}

struct NodeFields
{
    QString key, text, tag, image, expandedImage;
    bool expanded = false, selected = false, bold = false;
};

NodeFields readFields(const TokenReader &reader, TokenReader::Cursor cursor)
{
    NodeFields fields;
    QString selectedImage; // read, but a loaded node keeps none
    for (auto token = reader.next(cursor); !token.isEmpty(); token = reader.next(cursor)) {
        const QString value = reader.value(token);
        if (token.name == u"Expanded")
            fields.expanded = TextToBool(value);
        else if (token.name == u"Bold")
            fields.bold = TextToBool(value);
        else if (token.name == u"ExpandedImage")
            fields.expandedImage = value;
        else if (token.name == u"Image")
            fields.image = value;
        else if (token.name == u"Key")
            fields.key = value;
        else if (token.name == u"Selected")
            fields.selected = TextToBool(value);
        else if (token.name == u"SelectedImage")
            selectedImage = value;
        else if (token.name == u"Tag")
            fields.tag = value;
        else if (token.name == u"Text")
            fields.text = value;
        else
            qCDebug(lcTreeText) << "ignoring node property" << token.name;
    }
    return fields;
}

class SubtreeReader
{
public:
    SubtreeReader(CategoryTree &tree, const TokenReader &reader) : m_tree(tree), m_reader(reader) {}

    // Reads one node value and its Child values below it, depth first without recursion.
    Result read(CategoryNode *parent, const TokenReader::Token &nodeToken)
    {
        if (Result started = start(parent, nodeToken); !started.ok)
            return started;
        while (!m_open.empty()) {
            CategoryNode *node = m_open.back().node;
            const auto child = m_reader.next(m_open.back().rest);
            if (child.isEmpty()) {
                m_open.pop_back();
                continue;
            }
            if (child.name != u"Child")
                return expected(QStringLiteral("Node"), QStringLiteral("Child"), child.name);
            if (Result started = start(node, child); !started.ok)
                return started;
        }
        return {};
    }

private:
    struct Frame
    {
        CategoryNode *node;
        TokenReader::Cursor rest;
    };

    Result start(CategoryNode *parent, const TokenReader::Token &nodeToken)
    {
        auto cursor = TokenReader::inside(nodeToken);
        const auto info = m_reader.next(cursor);
        if (info.name != u"BasicInfo")
            return expected(QStringLiteral("Node"), QStringLiteral("BasicInfo"), info.name);
        const NodeFields fields = readFields(m_reader, TokenReader::inside(info));
        CategoryNode *node = m_tree.addNode(parent, fields.key, fields.text, fields.image);
        if (!node) {
            qCWarning(lcTreeText) << "saved category" << fields.text << "could not be added; reading stops";
            return {false, QString()};
        }
        node->setExpanded(fields.expanded);
        node->setExpandedImage(fields.expandedImage);
        node->setSelected(fields.selected);
        node->setTag(fields.tag);
        node->setBold(fields.bold);
        m_open.push_back({node, cursor});
        return {};
    }

    CategoryTree &m_tree;
    const TokenReader &m_reader;
    std::vector<Frame> m_open;
};
} // namespace

QString CategoryTreeSerializer::write(const CategoryTree &tree)
{
    QString out = QStringLiteral("TreeView(");
    for (const CategoryNode *node : tree.topLevelNodesInIndexOrder()) {
        if (categoriesUtils::IsSubscription(node))
            continue;
        append(out, kLineBreak, QLatin1StringView("  Root("), kLineBreak);
        writeNode(out, *node, 2);
        append(out, kLineBreak, QLatin1StringView("  )"));
    }
    append(out, kLineBreak, QLatin1Char(')'));
    return out;
}

CategoryTreeSerializer::ReadResult CategoryTreeSerializer::read(CategoryTree &tree, const QString &text)
{
    const TokenReader reader(text);
    auto cursor = reader.whole();
    const auto treeToken = reader.next(cursor);
    if (treeToken.name != u"TreeView")
        return {false, QStringLiteral("Error initializing TreeView. This is not a TreeView serialization.")};
    tree.clear();
    auto roots = TokenReader::inside(treeToken);
    for (auto root = reader.next(roots); !root.isEmpty(); root = reader.next(roots)) {
        if (root.name != u"Root")
            return expected(QStringLiteral("TreeView"), QStringLiteral("Root"), root.name);
        if (Result read = SubtreeReader(tree, reader).read(nullptr, root); !read.ok)
            return read;
    }
    return {};
}
