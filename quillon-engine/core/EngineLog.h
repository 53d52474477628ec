#pragma once

#include <QDateTime>
#include <QString>

namespace quillon {

class EngineDatabase;

// The engine's shared log: every consumer's line goes to the engine_log table, and to a text
// file beside the database (so it can be read without any tool) while the file is wanted and
// the line's level reaches the lowest the log level lets through. The engine's own lines (each
// fetch) go to the file only.
class EngineLog
{
public:
    EngineLog(EngineDatabase &db, QString filePath) : m_db(db), m_filePath(std::move(filePath)) {}

    void write(qint32 level, const QString &consumerId, const QString &text, const QDateTime &now);
    void writeToFile(qint32 level, const QString &consumerId, const QString &text, const QDateTime &now);
    void setFile(bool wanted, qint32 lowestLevel)
    {
        m_fileWanted = wanted;
        m_lowestLevel = lowestLevel;
    }
    [[nodiscard]] const QString &filePath() const { return m_filePath; }

private:
    void appendToFile(qint32 level, const QString &line);

    EngineDatabase &m_db;
    QString m_filePath;
    bool m_fileWanted = true;
    qint32 m_lowestLevel = 0;
};

} // namespace quillon
