#include "MaildirStore.h"

#include "DeliveryLogging.h"
#include "DurableFile.h"
#include "FolderPlan.h"
#include "MailReaderConfig.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <optional>

namespace {
const QString kTagFile = QStringLiteral("quillon-subscription");

struct OurName
{
    QStringView key; // "a12"
    QStringView flags;
};

bool isAsciiLetter(QChar c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

// "a12.quillon" in new/, "a12.quillon:2,S" in cur/ once a mail program has seen it; nothing
// for a name that is not ours. (A plain scan: the folders are read after every batch.)
std::optional<OurName> ourName(QStringView name)
{
    static constexpr QLatin1StringView kSuffix(".quillon");
    if (name.endsWith(u'\n'))
        name.chop(1); // as "$" allowed
    qsizetype digits = 1;
    while (digits < name.size() && name[digits] >= u'0' && name[digits] <= u'9')
        ++digits;
    if (digits == 1 || name.front() != u'a' || !name.sliced(digits).startsWith(kSuffix))
        return std::nullopt;
    const QStringView rest = name.sliced(digits + kSuffix.size());
    if (rest.isEmpty())
        return OurName{name.first(digits), {}};
    if (!rest.startsWith(QLatin1StringView(":2,")) ||
        !std::all_of(rest.begin() + 3, rest.end(), isAsciiLetter))
        return std::nullopt;
    return OurName{name.first(digits), rest.sliced(3)};
}

} // namespace

QString MaildirStore::folderPath(const Folder &folder) const
{
    if (folder.isEmpty())
        return m_root;
    return QDir(m_root).filePath(QLatin1Char('.') + folder.join(QLatin1Char('.')));
}

bool MaildirStore::makeMaildir(const QString &dir, QString *error, bool *made) const
{
    // A folder whose new/ this call made held nothing of ours before.
    const bool fresh = QDir().mkpath(dir) && QDir(dir).mkdir(QStringLiteral("new"));
    for (const char *sub : {"cur", "new", "tmp"}) {
        if ((fresh && qstrcmp(sub, "new") == 0) || QDir().mkpath(QDir(dir).filePath(QLatin1String(sub))))
            continue;
        if (error)
            *error = QStringLiteral("Cannot create the mail folder %1").arg(dir);
        return false;
    }
    if (made)
        *made = fresh;
    if (dir != m_root && (fresh || !QFile::exists(QDir(dir).filePath(QStringLiteral("maildirfolder")))))
        DurableFile::write(QDir(dir).filePath(QStringLiteral("maildirfolder")), {});
    return true;
}

bool MaildirStore::makeLevels(const Folder &folder, bool trustMade, QString *error)
{
    // Parents too, so that a mail program can open every level.
    for (qsizetype depth = 1; depth <= folder.size(); ++depth) {
        const QString dir = folderPath(folder.mid(0, depth));
        bool made = false;
        if (trustMade && m_made.contains(dir))
            continue;
        if (!makeMaildir(dir, error, &made))
            return false;
        if (made)
            m_keys.insert(dir, {});
        m_made.insert(dir);
    }
    return true;
}

QStringList MaildirStore::madeRoots() const
{
    QFile file(m_rootsRecord);
    if (m_rootsRecord.isEmpty() || !file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

void MaildirStore::rememberRoot() const
{
    const QString root = QFileInfo(m_root).absoluteFilePath();
    if (m_rootsRecord.isEmpty() || madeRoots().contains(root))
        return;
    QDir().mkpath(QFileInfo(m_rootsRecord).absolutePath());
    QFile file(m_rootsRecord);
    if (!file.open(QIODevice::Append) || file.write((root + QLatin1Char('\n')).toUtf8()) < 0)
        qCWarning(lcDeliver) << "cannot note the mail store in" << m_rootsRecord;
}

bool MaildirStore::open(QString *error)
{
    if (!reachable() && madeRoots().contains(QFileInfo(m_root).absoluteFilePath()))
        return true; // away: the delivery waits for it
    if (!makeMaildir(m_root, error))
        return false;
    rememberRoot();
    // Messages left in tmp/ by a delivery that was cut off were never acknowledged: they
    // come again from the engine.
    QList<Folder> all = folders();
    all.append(Folder());
    for (const Folder &folder : std::as_const(all)) {
        QDir tmp(QDir(folderPath(folder)).filePath(QStringLiteral("tmp")));
        for (const QString &name : tmp.entryList(QDir::Files)) {
            if (ourName(name))
                tmp.remove(name);
        }
    }
    listFolders();
    return true;
}

void MaildirStore::listFolders()
{
    // A root that is away (a disk not mounted) lists nothing, which says nothing of its folders.
    if (!reachable())
        return;
    QStringList dirs = QDir(m_root).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    dirs.removeIf([](const QString &name) { return !name.startsWith(QLatin1Char('.')) || name.size() < 2; });
    if (m_configWritten && dirs == m_listed)
        return;
    m_configWritten = MailReaderConfig::write(m_root, dirs);
    m_listed = dirs;
}

bool MaildirStore::reachable()
{
    return QFileInfo(QDir(m_root).filePath(QStringLiteral("cur"))).isDir() &&
           QFileInfo(QDir(m_root).filePath(QStringLiteral("new"))).isDir();
}

QHash<QString, QString> MaildirStore::messages(const QString &dir) const
{
    QHash<QString, QString> found;
    for (const char *sub : {"new", "cur"}) {
        const QDir d(QDir(dir).filePath(QLatin1String(sub)));
        for (const QString &name : d.entryList(QDir::Files)) {
            if (const auto ours = ourName(name))
                found.insert(ours->key.toString(), d.filePath(name));
        }
    }
    return found;
}

QSet<QString> &MaildirStore::knownKeys(const QString &dir)
{
    auto it = m_keys.find(dir);
    if (it == m_keys.end()) {
        const auto present = messages(dir);
        it = m_keys.insert(dir, QSet<QString>(present.keyBegin(), present.keyEnd()));
    }
    return *it;
}

bool MaildirStore::add(const Folder &folder, const QString &key, const QByteArray &message, QString *error)
{
    const QString dir = folderPath(folder);
    // The mail program's configuration is rewritten once a batch, not for every folder made.
    m_unlisted = m_unlisted || (!m_made.contains(dir) && !folder.isEmpty());
    if (!makeLevels(folder, true, error))
        return false;
    if (knownKeys(dir).contains(key))
        return true;
    const QString name = fileName(key);
    const QString tmpPath = QDir(dir).filePath(QStringLiteral("tmp/") + name);
    // A folder deleted meanwhile (in the mail program) is made again, as a new one is.
    if (!DurableFile::write(tmpPath, message) &&
        !(makeLevels(folder, false, nullptr) && DurableFile::write(tmpPath, message))) {
        if (error)
            *error = QStringLiteral("Cannot write %1").arg(tmpPath);
        QFile::remove(tmpPath);
        return false;
    }
    const QString newDir = QDir(dir).filePath(QStringLiteral("new"));
    m_pending.append({tmpPath, QDir(newDir).filePath(name), newDir});
    knownKeys(dir).insert(key);
    return true;
}

MailStore::CommitJob MaildirStore::commitJob()
{
    return [pending = std::exchange(m_pending, {})](QString *error) {
        QStringList written;
        for (const Pending &p : pending)
            written.append(p.tmpPath);
        if (!DurableFile::syncFiles(written)) {
            if (error)
                *error = QStringLiteral("Cannot flush the messages to disk");
            return false;
        }
        QSet<QString> dirs;
        bool ok = true;
        for (const Pending &p : pending) {
            if (!DurableFile::rename(p.tmpPath, p.newPath)) {
                ok = false;
                if (error)
                    *error = QStringLiteral("Cannot move %1 into new/").arg(p.tmpPath);
            }
            dirs.insert(p.newDir);
        }
        for (const QString &dir : dirs)
            ok = DurableFile::syncDirectory(dir) && ok;
        return ok;
    };
}

void MaildirStore::afterCommit(bool ok)
{
    if (!ok) {
        m_keys.clear(); // read them again from disk
        m_made.clear();
    }
    if (std::exchange(m_unlisted, false))
        listFolders();
}

bool MaildirStore::remove(const Folder &folder, const QString &key)
{
    const QString dir = folderPath(folder);
    const QString path = messages(dir).value(key);
    knownKeys(dir).remove(key);
    return path.isEmpty() || QFile::remove(path);
}

bool MaildirStore::move(const Folder &from, const Folder &to, QString *error)
{
    const QString source = folderPath(from);
    const QString target = folderPath(to);
    if (source == target || !QFileInfo::exists(source))
        return true;
    if (!create(to, error))
        return false;
    // A mail program open on the folder renames a message when the user reads it: one that
    // slipped away under a new name meanwhile is taken, read mark and all, in the next pass.
    int left = 0;
    for (int pass = 0; pass < kMovePasses && (left = moveMessages(source, target)) > 0; ++pass) {
    }
    if (left > 0)
        qCWarning(lcDeliver) << left << "messages could not be moved from" << source;
    DurableFile::syncDirectory(QDir(target).filePath(QStringLiteral("cur")));
    DurableFile::syncDirectory(QDir(target).filePath(QStringLiteral("new")));
    m_keys.remove(source);
    m_keys.remove(target);
    const QString tag = QDir(source).filePath(kTagFile);
    if (QFile::exists(tag)) {
        QFile::remove(QDir(target).filePath(kTagFile));
        QFile::rename(tag, QDir(target).filePath(kTagFile));
    }
    dropIfEmpty(source);
    dropEmptyParents(from, to, [this](const Folder &parent) { return dropIfUnused(parent); });
    return true;
}

int MaildirStore::moveMessages(const QString &source, const QString &target)
{
    const auto present = messages(target);
    const auto moving = messages(source);
    int left = 0;
    for (auto it = moving.cbegin(); it != moving.cend(); ++it) {
        const QFileInfo file(it.value());
        const QString destination =
            QDir(target).filePath(file.dir().dirName() + QLatin1Char('/') + file.fileName());
        // A copy left there by a move cut short gives way to this one, which has the latest mark.
        if (const QString earlier = present.value(it.key()); !earlier.isEmpty() && earlier != destination)
            QFile::remove(earlier);
        if (!QFile::rename(it.value(), destination) &&
            !(QFile::exists(destination) && QFile::remove(it.value())))
            ++left;
    }
    return left;
}

void MaildirStore::removeAll(const Folder &folder)
{
    const QString dir = folderPath(folder);
    for (const QString &path : messages(dir))
        QFile::remove(path);
    m_keys.remove(dir);
    dropIfEmpty(dir);
    dropEmptyParents(folder, {}, [this](const Folder &parent) { return dropIfUnused(parent); });
}

void MaildirStore::dropIfEmpty(const QString &dir)
{
    if (dir == m_root)
        return;
    for (const char *sub : {"new", "cur"}) {
        if (!QDir(QDir(dir).filePath(QLatin1String(sub))).isEmpty(QDir::Files | QDir::NoDotAndDotDot))
            return;
    }
    QDir(dir).removeRecursively();
    m_keys.remove(dir);
    m_made.remove(dir);
    listFolders();
}

bool MaildirStore::dropIfUnused(const Folder &folder)
{
    // Maildir++ keeps every level beside the others: ".Tech.News" is a folder inside ".Tech".
    const QString inside = QLatin1Char('.') + folder.join(QLatin1Char('.')) + QLatin1Char('.');
    for (const QString &name : QDir(m_root).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot)) {
        if (name.startsWith(inside))
            return false;
    }
    const QString dir = folderPath(folder);
    dropIfEmpty(dir);
    return !QFileInfo::exists(dir);
}

bool MaildirStore::exists(const Folder &folder)
{
    return QFileInfo::exists(QDir(folderPath(folder)).filePath(QStringLiteral("cur")));
}

bool MaildirStore::create(const Folder &folder, QString *error)
{
    if (!makeLevels(folder, false, error))
        return false;
    listFolders();
    return true;
}

QList<MailStore::Folder> MaildirStore::folders()
{
    QList<Folder> found;
    const QStringList names =
        QDir(m_root).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString &name : names) {
        if (name.startsWith(QLatin1Char('.')) && name.size() > 1)
            found.append(name.mid(1).split(QLatin1Char('.')));
    }
    return found;
}

QList<MailStore::Folder> MaildirStore::changedFolders(const QList<Folder> &watched)
{
    // Folders the user made or deleted in the mail program count too.
    listFolders();
    QList<Folder> changed;
    for (const Folder &folder : watched) {
        const QString dir = folderPath(folder);
        // A rename inside cur/ or new/ (a new flag, a message taken) changes that directory.
        const qint64 stamp = DurableFile::changeStamp(QDir(dir).filePath(QStringLiteral("cur"))) ^
                             (DurableFile::changeStamp(QDir(dir).filePath(QStringLiteral("new"))) << 1);
        const auto it = m_stamps.constFind(dir);
        if (it == m_stamps.cend() || *it != stamp)
            changed.append(folder);
        m_stamps.insert(dir, stamp);
    }
    return changed;
}

QHash<QString, bool> MaildirStore::readStates(const Folder &folder)
{
    QHash<QString, bool> states;
    const QString dir = folderPath(folder);
    for (const char *sub : {"new", "cur"}) {
        const QDir d(QDir(dir).filePath(QLatin1String(sub)));
        for (const QString &name : d.entryList(QDir::Files)) {
            if (const auto ours = ourName(name))
                states.insert(ours->key.toString(), ours->flags.contains(QLatin1Char('S')));
        }
    }
    return states;
}

void MaildirStore::setRead(const Folder &folder, const QHash<QString, bool> &marks)
{
    const QString dir = folderPath(folder);
    const auto present = messages(dir);
    for (auto it = marks.cbegin(); it != marks.cend(); ++it) {
        const QString path = present.value(it.key());
        const QString name = QFileInfo(path).fileName();
        const auto ours = ourName(name);
        QString flags = ours ? ours->flags.toString() : QString();
        if (path.isEmpty() || flags.contains(QLatin1Char('S')) == it.value())
            continue;
        flags.remove(QLatin1Char('S'));
        if (it.value())
            flags += QLatin1Char('S');
        // Flags go in ASCII order; a message whose mark was set has been seen, so it is in cur/.
        std::sort(flags.begin(), flags.end());
        const QString target =
            QDir(dir).filePath(QStringLiteral("cur/") + fileName(it.key()) + QStringLiteral(":2,") + flags);
        if (!QFile::rename(path, target))
            qCWarning(lcDeliver) << "cannot set the read mark of" << path;
    }
}

void MaildirStore::tag(const Folder &folder, qint32 subscriptionId)
{
    const QString path = QDir(folderPath(folder)).filePath(kTagFile);
    if (!QFile::exists(path))
        DurableFile::write(path, QByteArray::number(subscriptionId));
}

std::optional<MailStore::Folder> MaildirStore::findTagged(qint32 subscriptionId)
{
    for (const Folder &folder : folders()) {
        QFile file(QDir(folderPath(folder)).filePath(kTagFile));
        if (file.open(QIODevice::ReadOnly) && file.readAll().trimmed().toInt() == subscriptionId)
            return folder;
    }
    return std::nullopt;
}
