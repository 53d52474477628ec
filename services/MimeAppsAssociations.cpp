#include "MimeAppsAssociations.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QSaveFile>

Q_LOGGING_CATEGORY(lcFileTypes, "corvell.filetypes")

namespace {
const QString kDefaults = QStringLiteral("[Default Applications]");
const QString kAdded = QStringLiteral("[Added Associations]");
const QString kRemoved = QStringLiteral("[Removed Associations]");
const QString kMimeType = QStringLiteral("MimeType=");

// The line after a group's last line: the next header, or the end.
qsizetype GroupEnd(const QList<QString> &lines, qsizetype start)
{
    qsizetype end = start + 1;
    while (end < lines.size() && !lines.at(end).startsWith(QLatin1Char('[')))
        ++end;
    return end;
}

QString Folder(const char *variable, const char *fallback)
{
    const QString folder = qEnvironmentVariable(variable);
    return folder.isEmpty() ? QDir::home().filePath(QLatin1String(fallback)) : folder;
}

QList<QString> ReadLines(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    QList<QString> lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    while (!lines.isEmpty() && lines.constLast().isEmpty())
        lines.removeLast();
    return lines;
}

bool WriteLines(const QString &path, const QList<QString> &lines)
{
    QSaveFile out(path);
    const bool saved = QDir().mkpath(QFileInfo(path).path()) && out.open(QIODevice::WriteOnly) &&
                       out.write((lines.join(QLatin1Char('\n')) + QLatin1Char('\n')).toUtf8()) >= 0 &&
                       out.commit();
    if (!saved)
        qCWarning(lcFileTypes) << "cannot write" << path << out.errorString();
    return saved;
}
} // namespace

QString MimeAppsAssociations::UserConfigFolder()
{
    return Folder("XDG_CONFIG_HOME", ".config");
}

QString MimeAppsAssociations::UserDataFolder()
{
    return Folder("XDG_DATA_HOME", ".local/share");
}

QStringList MimeAppsAssociations::Entries(const Lines &lines, const QString &group, const QString &type)
{
    const qsizetype start = lines.indexOf(group);
    if (start < 0)
        return {};
    const QString prefix = type + QLatin1Char('=');
    for (qsizetype i = start + 1, end = GroupEnd(lines, start); i < end; ++i) {
        if (lines.at(i).startsWith(prefix))
            return lines.at(i).mid(prefix.size()).split(QLatin1Char(';'), Qt::SkipEmptyParts);
    }
    return {};
}

void MimeAppsAssociations::SetEntries(Lines &lines, const QString &group, const QString &type,
                                      const QStringList &ids)
{
    qsizetype start = lines.indexOf(group);
    if (start < 0) {
        if (ids.isEmpty())
            return;
        lines << group;
        start = lines.size() - 1;
    }
    const QString prefix = type + QLatin1Char('=');
    const qsizetype end = GroupEnd(lines, start);
    qsizetype at = start + 1;
    while (at < end && !lines.at(at).startsWith(prefix))
        ++at;
    // A default names one entry; the association lists end with ";" as the tools write them.
    const QString line = prefix + ids.join(QLatin1Char(';')) + (group == kDefaults ? "" : ";");
    if (at < end && ids.isEmpty())
        lines.removeAt(at);
    else if (at < end)
        lines[at] = line;
    else if (!ids.isEmpty())
        lines.insert(end, line);
}

void MimeAppsAssociations::Associate(Lines &lines, const QString &type, bool handled) const
{
    QStringList added = Entries(lines, kAdded, type);
    QStringList removed = Entries(lines, kRemoved, type);
    added.removeAll(kHandlerId);
    removed.removeAll(kHandlerId);
    if (handled) {
        added.prepend(kHandlerId);
        SetEntries(lines, kDefaults, type, {kHandlerId});
    } else {
        removed.append(kHandlerId);
        if (Entries(lines, kDefaults, type) == QStringList{kHandlerId})
            SetEntries(lines, kDefaults, type, {});
    }
    SetEntries(lines, kAdded, type, added);
    SetEntries(lines, kRemoved, type, removed);
}

bool MimeAppsAssociations::WriteEntry(const QStringList &types, bool handled) const
{
    // The types the user's entry declares so far; none before the first switch.
    QStringList declared;
    for (const QString &line : ReadLines(m_entryPath)) {
        if (line.startsWith(kMimeType))
            declared = line.mid(kMimeType.size()).split(QLatin1Char(';'), Qt::SkipEmptyParts);
    }
    for (const QString &type : types) {
        declared.removeAll(type);
        if (handled)
            declared.append(type);
    }
    Q_INIT_RESOURCE(desktopentry);
    Lines entry = ReadLines(QStringLiteral(":/desktop/") + kHandlerId);
    if (entry.isEmpty())
        return false; // not built in: nothing sensible to write
    for (QString &line : entry) {
        if (line.startsWith(kMimeType))
            line = kMimeType + declared.join(QLatin1Char(';')) + (declared.isEmpty() ? "" : ";");
        else if (line.startsWith(QLatin1String("Exec=")))
            line = QStringLiteral("Exec=%1 %U")
                       .arg(m_opener.contains(QLatin1Char(' ')) ? '"' + m_opener + '"' : m_opener);
    }
    return WriteLines(m_entryPath, entry);
}

bool MimeAppsAssociations::SetHandled(const QString &key, bool handled)
{
    const QStringList types = MimeTypes(key);
    if (types.isEmpty())
        return true;
    Lines lines = ReadLines(m_listPath);
    for (const QString &type : types)
        Associate(lines, type, handled);
    const bool listed = WriteLines(m_listPath, lines);
    return WriteEntry(types, handled) && listed;
}
