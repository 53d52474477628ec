#include "ReaderImporterRegistry.h"

#include "AbsentReaderImporter.h"
#include "NewsboatImporter.h"
#include "OpmlFileImporter.h"

namespace quillon {

ReaderImporterRegistry ReaderImporterRegistry::withKnownReaders()
{
    ReaderImporterRegistry registry;
    registry.add(
        std::make_unique<AbsentReaderImporter>(QStringLiteral("newsgator"), QStringLiteral("NewsGator")));
    registry.add(
        std::make_unique<AbsentReaderImporter>(QStringLiteral("intravnews"), QStringLiteral("IntraVnews")));
    // The readers of Unix desktops follow the ones the import tab names.
    registry.add(std::make_unique<NewsboatImporter>());
    registry.add(OpmlFileImporter::liferea());
    registry.add(OpmlFileImporter::akregator());
    return registry;
}

void ReaderImporterRegistry::add(std::unique_ptr<ReaderImporter> importer)
{
    for (auto &known : m_importers) {
        if (known->id().compare(importer->id(), Qt::CaseInsensitive) == 0) {
            known = std::move(importer);
            return;
        }
    }
    m_importers.push_back(std::move(importer));
}

const ReaderImporter *ReaderImporterRegistry::find(const QString &id) const
{
    for (const auto &importer : m_importers) {
        if (importer->id().compare(id.trimmed(), Qt::CaseInsensitive) == 0)
            return importer.get();
    }
    return nullptr;
}

ListPtr ReaderImporterRegistry::bags() const
{
    auto list = PropertyList::create();
    for (const auto &importer : m_importers) {
        auto bag = PropertyBag::create();
        bag->setText(QStringLiteral("id"), importer->id());
        bag->setText(QStringLiteral("title"), importer->title());
        bag->setLong(QStringLiteral("available"), importer->available() ? 1 : 0);
        list->append(bag);
    }
    return list;
}

} // namespace quillon
