#pragma once

#include <QHash>
#include <QString>

namespace quillon {

// Mends what feeds commonly get wrong before a strict XML reader sees it: HTML named entities
// used without a DTD (&nbsp;), stray '&', references to characters XML forbids and raw control
// characters. CDATA sections, comments and the DTD are left alone. It also estimates how much
// text the document's own entity declarations will expand to, so that a document built to
// explode ("billion laughs") can be refused before it is parsed.
class EntityRepair
{
public:
    struct Result
    {
        QString text;
        int repairs = 0;
        qint64 expansion = 0;       // characters that references to declared entities will produce
        bool unreadableDtd = false; // the document type declaration could not be followed
    };

    [[nodiscard]] static Result repair(const QString &text);
    // Whether the prolog holds a document type declaration, whose entities only repair() sizes.
    [[nodiscard]] static bool hasDoctype(const QString &text);

private:
    explicit EntityRepair(const QString &text) : m_in(text) {}

    qsizetype doctypeStart() const;
    qsizetype readDoctype();
    qsizetype readInternalSubset(qsizetype i);
    qsizetype readEntityDeclaration(qsizetype i);
    void scanBody(qsizetype from);
    qsizetype handleReference(qsizetype amp);
    qsizetype handleCharacterReference(qsizetype amp);
    qsizetype skipMarkupSection(qsizetype i) const;
    qsizetype skipPast(qsizetype from, QStringView terminator) const;
    qint64 expansionOf(const QString &name, int depth);
    void replace(qsizetype from, qsizetype to, QStringView with);

    const QString &m_in;
    QString m_out;
    qsizetype m_copied = 0;
    int m_repairs = 0;
    qint64 m_expansion = 0;
    QHash<QString, QString> m_declared; // general entity name -> literal value
    QHash<QString, qint64> m_expansionOf;
};

} // namespace quillon
