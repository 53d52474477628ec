#include "CLog.h"

#include "LocalSettings.h"
#include "commonUtils.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QLocale>

namespace {
const QString kApplication = QStringLiteral("Quillon");
const QString kSection = QStringLiteral("Quillon");

QString timestamp()
{
    const QDateTime now = QDateTime::currentDateTime();
    const QLocale locale = QLocale::system();
    return locale.toString(now.date(), QLocale::ShortFormat) + QLatin1Char(' ') +
           locale.toString(now.time(), QLocale::LongFormat);
}

void appendLine(const QString &path, const QString &line)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append))
        return;
    file.write(line.toUtf8());
    file.close();
}
} // namespace

QString CLog::HomeFolder()
{
    const QString drive = qEnvironmentVariable("HOMEDRIVE");
    const QString path = qEnvironmentVariable("HOMEPATH");
    if (!drive.isEmpty() && !path.isEmpty())
        return drive + path;
    return QDir::toNativeSeparators(QDir::homePath());
}

QString CLog::EarlierUserFolder()
{
    QString folder = HomeFolder();
    if (!folder.endsWith(QDir::separator()))
        folder += QDir::separator();
    return folder + QStringLiteral("Marrowby Software") + QDir::separator() + QStringLiteral("Quill On") +
           QDir::separator();
}

QString CLog::UserFolder()
{
#ifdef Q_OS_WIN
    return EarlierUserFolder();
#else
    // Logs are state, not configuration or data: XDG puts them in ~/.local/state.
    QString state = qEnvironmentVariable("XDG_STATE_HOME");
    if (!QDir::isAbsolutePath(state))
        state = QDir::homePath() + QStringLiteral("/.local/state");
    return state + QStringLiteral("/ConfigConsumer/");
#endif
}

void CLog::MoveEarlierLog()
{
    const QString name = QStringLiteral("QuillonLog.txt");
    const QString earlier = EarlierUserFolder() + name;
    const QString current = UserFolder() + name;
    if (earlier == current || LogFilePath() != current || !QFile::exists(earlier) || QFile::exists(current))
        return;
    if (!QDir().mkpath(UserFolder()) || !QFile::rename(earlier, current))
        return;
    // Only emptied folders go; anything else the user keeps there stays.
    QDir home(HomeFolder());
    home.rmdir(QStringLiteral("Marrowby Software/Quill On"));
    home.rmdir(QStringLiteral("Marrowby Software"));
}

QString CLog::LogFilePath()
{
    return GetSetting(kApplication, kSection, QStringLiteral("LogFilePathName"),
                      UserFolder() + QStringLiteral("QuillonLog.txt"));
}

void CLog::SaveMessage(const QString &text1, const QString &text2, const QString &text3, bool force)
{
    if (!force && TextToInt(GetSetting(kApplication, kSection, QStringLiteral("LogFileWanted"),
                                       QStringLiteral("1"))) == 0)
        return;
    const QString path = LogFilePath();
    // Our own folder is made on demand; a folder the user named is taken as it is.
    if (path == UserFolder() + QStringLiteral("QuillonLog.txt"))
        QDir().mkpath(UserFolder());
    const QChar tab = QLatin1Char('\t');
    appendLine(path, timestamp() + tab + text1 + tab + text2 + tab + text3 + QStringLiteral("\r\n"));
}
