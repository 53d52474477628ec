#include "OpmlFileImporter.h"

#include "CoreLogging.h"
#include "OpmlParser.h"
#include "ReaderFiles.h"

#include <QDir>
#include <QVersionNumber>

#include <algorithm>

namespace quillon {

namespace {

// Search folders, news bins and other outlines with no feed anywhere beneath them would only
// be empty folders here; commands ("|command") are no address to subscribe to.
QList<OpmlOutline> withFeedsOnly(const QList<OpmlOutline> &outlines)
{
    QList<OpmlOutline> kept;
    for (OpmlOutline outline : outlines) {
        if (outline.xmlUrl.startsWith(u'|'))
            outline.xmlUrl.clear();
        outline.children = withFeedsOnly(outline.children);
        if (!outline.xmlUrl.isEmpty() || !outline.children.isEmpty())
            kept.append(outline);
    }
    return kept;
}

// Older Liferea releases kept one folder per version (~/.liferea_1.6); the newest comes first.
QStringList olderLifereaLists()
{
    QStringList folders =
        QDir(ReaderFiles::home()).entryList({QStringLiteral(".liferea_*")}, QDir::Dirs | QDir::Hidden);
    const auto version = [](const QString &folder) {
        return QVersionNumber::fromString(folder.mid(folder.indexOf(u'_') + 1));
    };
    std::sort(folders.begin(), folders.end(),
              [&version](const QString &a, const QString &b) { return version(a) > version(b); });
    QStringList paths;
    for (const QString &folder : folders)
        paths.append(ReaderFiles::home() + u'/' + folder + QStringLiteral("/feedlist.opml"));
    return paths;
}

} // namespace

OpmlFileImporter::OpmlFileImporter(QString id, QString title, std::function<QStringList()> candidates)
    : m_id(std::move(id)), m_title(std::move(title)), m_candidates(std::move(candidates))
{
}

std::unique_ptr<OpmlFileImporter> OpmlFileImporter::liferea()
{
    return std::make_unique<OpmlFileImporter>(QStringLiteral("liferea"), QStringLiteral("Liferea"), [] {
        return QStringList{ReaderFiles::configHome() + QStringLiteral("/liferea/feedlist.opml")} +
               olderLifereaLists();
    });
}

std::unique_ptr<OpmlFileImporter> OpmlFileImporter::akregator()
{
    return std::make_unique<OpmlFileImporter>(QStringLiteral("akregator"), QStringLiteral("Akregator"), [] {
        return QStringList{ReaderFiles::dataHome() + QStringLiteral("/akregator/data/feeds.opml")};
    });
}

bool OpmlFileImporter::available() const
{
    return !ReaderFiles::firstExisting(m_candidates()).isEmpty();
}

QList<OpmlOutline> OpmlFileImporter::subscriptions() const
{
    const QString path = ReaderFiles::firstExisting(m_candidates());
    if (path.isEmpty())
        return {};
    // A list read only in part still offers what was read.
    const OpmlDocument document = OpmlParser::parse(ReaderFiles::read(path));
    if (!document.ok())
        qCInfo(lcCore).noquote() << "reading" << path << "-" << document.errorText;
    return withFeedsOnly(document.outlines);
}

} // namespace quillon
