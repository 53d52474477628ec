#include "StoreLocation.h"

#include "DeliveryLogging.h"
#include "DeliverySettings.h"
#include "MaildirStore.h"
#include "PropertyBag.h"

#include <QDir>
#include <QFileInfo>

namespace {
bool hasValue(const QString &text)
{
    return !text.trimmed().isEmpty() && text != quillon::kMissingText;
}
} // namespace

QString StoreLocation::resolve(quillon::SubscribeClient &client, const QString &defaultRoot)
{
    DeliverySettings settings(client);
    const QString section = QStringLiteral("OutlookDefaults");
    try {
        const QStringList v =
            settings.read(section, {{QStringLiteral("StoreRoot"), QString()},
                                    {QStringLiteral("MakeNewPST_fileName"), QString()},
                                    {QStringLiteral("MakeNewPST_path"), QString()},
                                    {QStringLiteral("MakeNewPST_mode"), QStringLiteral("0")}});
        const QString current = hasValue(v.at(0)) ? v.at(0) : defaultRoot;
        if (!hasValue(v.at(1)))
            return current;
        // "Corvell.pst" becomes the folder "Corvell", beside the current tree unless a path is given.
        QString name = QFileInfo(v.at(1)).fileName();
        if (name.endsWith(QLatin1String(".pst"), Qt::CaseInsensitive))
            name.chop(4);
        const QString parent = hasValue(v.at(2)) ? v.at(2) : QFileInfo(current).absolutePath();
        const QString root = QDir(parent).filePath(name.isEmpty() ? QStringLiteral("Mail") : name);
        if (v.at(3) == QLatin1String("1") &&
            QFileInfo(root).absoluteFilePath() != QFileInfo(current).absoluteFilePath() &&
            !moveTree(current, root))
            qCWarning(lcDeliver) << "some mail stayed in" << current;
        QDir().mkpath(root);
        settings.store(section, {{QStringLiteral("StoreRoot"), root},
                                 {QStringLiteral("MakeNewPST_fileName"), quillon::kMissingText}});
        qCInfo(lcDeliver) << "new mail store" << root;
        return root;
    } catch (const std::exception &e) {
        qCWarning(lcDeliver) << "the store's settings cannot be read:" << e.what();
        return defaultRoot;
    }
}

std::function<std::optional<DeliveryAgent::Relocation>()>
StoreLocation::relocator(quillon::SubscribeClientPtr client, QString defaultRoot, QString current)
{
    return [client = std::move(client), defaultRoot = std::move(defaultRoot),
            current = std::move(current)]() mutable -> std::optional<DeliveryAgent::Relocation> {
        const QString root = resolve(*client, defaultRoot);
        if (QFileInfo(root).absoluteFilePath() == QFileInfo(current).absoluteFilePath())
            return std::nullopt;
        current = root;
        return DeliveryAgent::Relocation{std::make_unique<MaildirStore>(root), indexPath(root)};
    };
}

QString StoreLocation::indexPath(const QString &root)
{
    return QDir(root).filePath(QStringLiteral("quillon-deliver.json"));
}

bool StoreLocation::moveTree(const QString &from, const QString &to)
{
    if (!QFileInfo::exists(from))
        return true;
    if (!QFileInfo::exists(to) && QDir().rename(from, to))
        return true;
    // The new tree exists already (made empty by the program): move what is inside, one by one.
    bool ok = QDir().mkpath(to);
    const QDir source(from);
    for (const QString &name : source.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)) {
        const QString target = QDir(to).filePath(name);
        if (QFileInfo(source.filePath(name)).isDir() && QFileInfo::exists(target))
            ok = moveTree(source.filePath(name), target) && ok; // cur/, new/, tmp/ of the inbox
        else
            ok = QDir().rename(source.filePath(name), target) && ok;
    }
    return QDir().rmdir(from) && ok;
}
