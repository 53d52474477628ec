#pragma once

#include "ReaderImporter.h"

#include <functional>
#include <memory>

namespace quillon {

// A reader that keeps its subscriptions as an OPML file (Liferea, Akregator): available while
// one of its candidate files exists, read with the engine's OPML parser, folders kept.
class OpmlFileImporter final : public ReaderImporter
{
public:
    // candidates lists the places to look, most likely first; it is asked on every use, so a
    // reader installed while the engine runs is found.
    OpmlFileImporter(QString id, QString title, std::function<QStringList()> candidates);

    [[nodiscard]] static std::unique_ptr<OpmlFileImporter> liferea();
    [[nodiscard]] static std::unique_ptr<OpmlFileImporter> akregator();

    [[nodiscard]] QString id() const override { return m_id; }
    [[nodiscard]] QString title() const override { return m_title; }
    [[nodiscard]] bool available() const override;
    [[nodiscard]] QList<OpmlOutline> subscriptions() const override;

private:
    QString m_id;
    QString m_title;
    std::function<QStringList()> m_candidates;
};

} // namespace quillon
