#include "MailReaderConfig.h"

#include "DeliveryLogging.h"

#include <QDir>
#include <QSaveFile>

namespace {
// A double-quoted word of a configuration line: the shell-like characters lose their meaning.
QString quoted(const QString &text)
{
    QString out;
    for (const QChar c : text) {
        if (c == QLatin1Char('"') || c == QLatin1Char('\\') || c == QLatin1Char('$') || c == QLatin1Char('`'))
            out += QLatin1Char('\\');
        out += c;
    }
    return QLatin1Char('"') + out + QLatin1Char('"');
}
} // namespace

QByteArray MailReaderConfig::text(const QString &root, const QStringList &dirNames)
{
    QStringList lines = {
        QStringLiteral("# Written by quillon-deliver whenever its folders change; edits here are lost."),
        QStringLiteral("# Read the delivered feeds with: neomutt -F %1")
            .arg(quoted(QDir(root).filePath(kFileName))),
        QStringLiteral("set mbox_type = Maildir"),
        QStringLiteral("set folder = %1").arg(quoted(root)),
        QStringLiteral("set spoolfile = \"+\""),
        QStringLiteral("set mask = \".\""),
        QStringLiteral("set sort = reverse-date"),
        QStringLiteral("set mail_check_stats = yes"),
        QStringLiteral("set sidebar_visible = yes"),
        QStringLiteral("set sidebar_width = 40"),
        QStringLiteral("set sidebar_short_path = yes"),
        QStringLiteral("set sidebar_delim_chars = \".\""),
        QStringLiteral("set sidebar_folder_indent = yes"),
        QStringLiteral("set sidebar_format = \"%B%* %?N?%N/?%S\""),
        QStringLiteral("bind index,pager \\Cp sidebar-prev"),
        QStringLiteral("bind index,pager \\Cn sidebar-next"),
        QStringLiteral("bind index,pager \\Co sidebar-open"),
        QStringLiteral("mailboxes \"+\""),
    };
    for (const QString &dir : dirNames)
        lines << QStringLiteral("mailboxes ") + quoted(QLatin1Char('+') + dir);
    return (lines.join(QLatin1Char('\n')) + QLatin1Char('\n')).toUtf8();
}

bool MailReaderConfig::write(const QString &root, const QStringList &dirNames)
{
    QSaveFile file(QDir(root).filePath(kFileName));
    const QByteArray bytes = text(root, dirNames);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return true;
    qCWarning(lcDeliver) << "cannot write the mail program's configuration" << file.fileName()
                         << file.errorString();
    return false;
}
