#pragma once

#include "ReaderImporter.h"

namespace quillon {

// A reader the engine knows by name but whose store it cannot read on this platform: it is
// listed, never available, and has nothing to import.
class AbsentReaderImporter final : public ReaderImporter
{
public:
    AbsentReaderImporter(QString id, QString title) : m_id(std::move(id)), m_title(std::move(title)) {}

    [[nodiscard]] QString id() const override { return m_id; }
    [[nodiscard]] QString title() const override { return m_title; }
    [[nodiscard]] bool available() const override { return false; }
    [[nodiscard]] QList<OpmlOutline> subscriptions() const override { return {}; }

private:
    QString m_id;
    QString m_title;
};

} // namespace quillon
