#include "MailStoreOutlook.h"

#include "ConsumerSettings.h"
#include "EngineNames.h"
#include "PropertyBag.h"

#include <QDir>
#include <QInputDialog>
#include <QStandardPaths>

namespace {
bool makeMaildir(const QString &dir)
{
    bool ok = true;
    for (const char *sub : {"cur", "new", "tmp"})
        ok = QDir().mkpath(QDir(dir).filePath(QLatin1String(sub))) && ok;
    return ok;
}
} // namespace

QString MailStoreOutlook::defaultRoot(quillon::SubscribeClient *client)
{
    try {
        const QString made =
            client ? GetConsumerSetting(*client, QStringLiteral("StoreRoot"), QString(),
                                        EngineNames::kOutlookConsumer, EngineNames::kOutlookDefaults)
                   : QString();
        if (!made.isEmpty() && made != quillon::kMissingText)
            return made;
    } catch (const std::exception &) {
        // The engine is away: the store is where it is by default.
    }
    const QString configured = qEnvironmentVariable("QUILLON_MAILDIR");
    if (!configured.isEmpty())
        return configured;
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation))
        .filePath(QStringLiteral("Corvell/Mail"));
}

void MailStoreOutlook::Install(std::function<quillon::SubscribeClientPtr()> client)
{
    SetOutlookProvider([client] {
        const quillon::SubscribeClientPtr current = client ? client() : nullptr;
        return std::make_shared<MailStoreOutlook>(defaultRoot(current.get()));
    });
}

QStringList MailStoreOutlook::FolderPaths()
{
    // Maildir++: the root is the inbox, ".A.B" the folder B inside A.
    QStringList paths = {QStringLiteral("\\")};
    const QStringList names =
        QDir(m_root).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString &name : names) {
        if (name.size() > 1 && name.startsWith(QLatin1Char('.')))
            paths.append(QLatin1Char('\\') + name.mid(1).split(QLatin1Char('.')).join(QLatin1Char('\\')));
    }
    return paths;
}

std::optional<OutlookFolder> MailStoreOutlook::PickFolder(QWidget *owner)
{
    bool ok = false;
    const QString path = QInputDialog::getItem(
        owner, QStringLiteral("Choose a mail folder"),
        QStringLiteral("Folders of %1:").arg(QDir::toNativeSeparators(m_root)), FolderPaths(), 0, true, &ok);
    if (!ok || path.trimmed().isEmpty())
        return std::nullopt;
    // A folder typed here is made by the delivery when the first article arrives.
    return OutlookFolder{path.trimmed(), path.trimmed()};
}

bool MailStoreOutlook::CreatePersonalFolders(const QString &filePath, const QString &)
{
    QString dir = filePath;
    if (dir.endsWith(QLatin1String(".pst"), Qt::CaseInsensitive))
        dir.chop(4);
    return !dir.isEmpty() && makeMaildir(dir);
}
