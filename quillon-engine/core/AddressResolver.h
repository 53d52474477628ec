#pragma once

#include "FeedAddress.h"
#include "SearchSources.h"

#include <QString>

namespace quillon {

// Where the engine finds what an address names: search subscriptions through the search
// sources, "quillon-data:" in the data folder shipped with the program, everything else as
// FeedAddress reads it.
class AddressResolver
{
public:
    // dataFolder: the shipped "QuillonData"; userFolder: the engine's own folder, whose
    // searchsources.json adds to (or replaces) the shipped sources.
    AddressResolver(QString dataFolder, QString userFolder)
        : m_dataFolder(std::move(dataFolder)), m_userFolder(std::move(userFolder))
    {
    }

    void setDataFolder(const QString &folder) { m_dataFolder = folder; }
    [[nodiscard]] const QString &dataFolder() const { return m_dataFolder; }

    [[nodiscard]] FeedAddress::Resolved resolve(const QString &address) const;
    // Read afresh each time, so an edited file counts at once.
    [[nodiscard]] SearchSources searchSources() const;

private:
    QString m_dataFolder;
    QString m_userFolder;
};

} // namespace quillon
