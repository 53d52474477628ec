#include "EngineLog.h"

#include "CoreLogging.h"
#include "EngineDatabase.h"
#include "SubscriptionFields.h"

#include <QFile>

namespace quillon {

namespace {
// Consumers end their lines with CR LF themselves; the log adds its own line ends.
QString withoutTrailingBreaks(QString text)
{
    while (text.endsWith(QLatin1Char('\n')) || text.endsWith(QLatin1Char('\r')))
        text.chop(1);
    return text;
}
} // namespace

void EngineLog::write(qint32 level, const QString &consumerId, const QString &text, const QDateTime &now)
{
    const QString message = withoutTrailingBreaks(text);
    const QString time = SubscriptionFields::isoDate(now);
    m_db.insert(
        QStringLiteral("INSERT INTO engine_log (logged_at, level, consumer_id, message) VALUES (?, ?, ?, ?)"),
        {time, level, consumerId, message}, "writing the engine log");
    appendToFile(level, QStringLiteral("%1\t%2\t%3\t%4\n").arg(time).arg(level).arg(consumerId, message));
}

void EngineLog::writeToFile(qint32 level, const QString &consumerId, const QString &text,
                            const QDateTime &now)
{
    // Called after every update: nothing is formatted for a file nobody wants.
    if (!m_fileWanted || level < m_lowestLevel)
        return;
    const QString time = SubscriptionFields::isoDate(now);
    appendToFile(level, QStringLiteral("%1\t%2\t%3\t%4\n").arg(time).arg(level).arg(consumerId, text));
}

void EngineLog::appendToFile(qint32 level, const QString &line)
{
    if (!m_fileWanted || level < m_lowestLevel)
        return;
    QFile file(m_filePath);
    // The table already holds the line, so a file that cannot be written only costs a warning.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text)) {
        qCWarning(lcCore) << "cannot append to" << m_filePath << file.errorString();
        return;
    }
    file.write(line.toUtf8());
}

} // namespace quillon
