#include "AddressResolver.h"

#include "CoreLogging.h"

#include <QDir>

namespace quillon {

namespace {
const QString kSearchSourcesFile = QStringLiteral("searchsources.json");
} // namespace

FeedAddress::Resolved AddressResolver::resolve(const QString &address) const
{
    const QString text = address.trimmed();
    if (!SearchSources::isSearch(text))
        return FeedAddress::resolve(text, m_dataFolder);
    QString error;
    const QString url = searchSources().searchUrl(text, &error);
    if (url.isEmpty())
        return {QUrl(), error};
    return FeedAddress::resolve(url, m_dataFolder);
}

SearchSources AddressResolver::searchSources() const
{
    QStringList files;
    if (!m_dataFolder.isEmpty())
        files.append(QDir(m_dataFolder).filePath(kSearchSourcesFile));
    if (!m_userFolder.isEmpty())
        files.append(QDir(m_userFolder).filePath(kSearchSourcesFile));
    QStringList problems;
    SearchSources sources = SearchSources::load(files, &problems);
    for (const QString &problem : std::as_const(problems))
        qCWarning(lcCore).noquote() << "search sources:" << problem;
    return sources;
}

} // namespace quillon
