#pragma once

#include "PropertyBag.h"
#include "ReaderImporter.h"

#include <memory>
#include <vector>

namespace quillon {

// The other feed readers the engine can import from, in the order they were added.
class ReaderImporterRegistry
{
public:
    // The readers consumers ask for by name.
    [[nodiscard]] static ReaderImporterRegistry withKnownReaders();

    // Replaces a reader with the same id.
    void add(std::unique_ptr<ReaderImporter> importer);
    [[nodiscard]] const ReaderImporter *find(const QString &id) const;
    // One bag per reader: "id", "title", "available" (1 or 0).
    [[nodiscard]] ListPtr bags() const;

private:
    std::vector<std::unique_ptr<ReaderImporter>> m_importers;
};

} // namespace quillon
