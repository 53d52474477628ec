#pragma once

#include "PropertyBag.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace quillon {

// The search services a search subscription can ask. Each source is a URL template of a
// service that answers in RSS or Atom, with "{keywords}" and "{limit}" in it, read from JSON
// files: {"sources": [{"guid", "title", "template", "defaultLimit", "minLimit", "maxLimit"}]}.
class SearchSources
{
public:
    struct Source
    {
        QString guid;
        QString title;
        QString urlTemplate;
        std::optional<qint32> defaultLimit;
        std::optional<qint32> minLimit;
        std::optional<qint32> maxLimit;
    };

    // A later file's source replaces an earlier one with the same guid; files that are
    // missing are skipped, unreadable ones reported in problems.
    [[nodiscard]] static SearchSources load(const QStringList &files, QStringList *problems = nullptr);
    // A search subscription's address begins with "search" (as BagToText writes it).
    [[nodiscard]] static bool isSearch(const QString &address);

    [[nodiscard]] const QList<Source> &sources() const { return m_sources; }
    [[nodiscard]] const Source *find(const QString &guid) const;
    // One bag per source: "guid", "title" and the limits it has.
    [[nodiscard]] ListPtr bags() const;
    // The address to fetch for "search?guid=...&keywords=...&limit=...": the keywords
    // percent-encoded, the limit held between the source's bounds. Empty, with a reason, when
    // it cannot be made.
    [[nodiscard]] QString searchUrl(const QString &address, QString *error) const;
    [[nodiscard]] static qint32 clampLimit(const Source &source, const QString &limit);

private:
    void read(const QString &file, QStringList *problems);
    void add(Source source);

    QList<Source> m_sources;
};

} // namespace quillon
