#pragma once

#include <QString>
#include <QUrl>
#include <QVarLengthArray>

namespace quillon {

// Rewrites an HTML fragment from a feed into one consistent, safe form: lower-case tag and
// attribute names, attributes sorted and double-quoted, void elements closed ("<br />"),
// stray '<' and '&' escaped, relative links resolved against the base. Only a short list of
// elements and attributes is kept, links only with web and mail schemes, styles only when they
// cannot run or fetch anything. Text is otherwise kept as written. Runs in linear time on any
// input.
class HtmlNormalizer
{
public:
    [[nodiscard]] static QString normalize(QStringView html, const QUrl &base = {});
    // The same; text already in its normal form is given back without a copy.
    [[nodiscard]] static QString normalize(const QString &html, const QUrl &base = {});
    // Appends text with '&', '<', '>' and '"' escaped, copying the runs between them at once.
    static void appendEscaped(QString &out, QStringView text);

private:
    struct Attribute
    {
        QString name;
        QString value;
    };
    struct Tag
    {
        QString name;
        QVarLengthArray<Attribute, 4> attributes; // on the stack for the usual few
        bool selfClosing = false;
        qsizetype end = -1; // index after '>'; -1 when the tag never closes
        quint8 kind = 0;    // what the element tables say of the name
    };

    HtmlNormalizer(QStringView in, const QUrl &base) : m_in(in), m_base(base) {}

    [[nodiscard]] static QString normalized(QStringView html, const QUrl &base, const QString *whole);
    void normalize();
    void replace(qsizetype from, qsizetype to);
    qsizetype drop(qsizetype from, qsizetype to);
    qsizetype handleAmpersand(qsizetype i);
    qsizetype handleMarkup(qsizetype i);
    qsizetype handleDeclaration(qsizetype i);
    qsizetype handleEndTag(qsizetype i);
    qsizetype handleStartTag(qsizetype i);
    [[nodiscard]] qsizetype plainTagEnd(qsizetype name) const;
    Tag readStartTag(qsizetype i) const;
    qsizetype readAttribute(qsizetype i, Tag &tag) const;
    void emitStartTag(Tag &tag, QString &out) const;
    [[nodiscard]] static bool keepAttribute(const Attribute &attribute, bool uri);
    [[nodiscard]] QString resolved(const QString &uri) const;
    qsizetype escapeLessThan(qsizetype i);

    QStringView m_in;
    QUrl m_base;
    QString m_out;             // stays null while the input needs no change
    QString m_tag;             // a start tag as it is given, to compare with the input
    qsizetype m_copied = 0;    // how much of the input the output holds, changed or not
    bool m_noMoreTags = false; // a tag ran off the end: later '<' cannot close either
};

} // namespace quillon
