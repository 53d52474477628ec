#pragma once

#include <QDateTime>
#include <QString>

namespace quillon {

class EngineDatabase;

// The engine's shared log: every line goes to the engine_log table and to a text file beside
// the database, so it can be read without any tool.
class EngineLog
{
public:
    EngineLog(EngineDatabase &db, QString filePath) : m_db(db), m_filePath(std::move(filePath)) {}

    void write(qint32 level, const QString &consumerId, const QString &text, const QDateTime &now);
    [[nodiscard]] const QString &filePath() const { return m_filePath; }

private:
    void appendToFile(const QString &line);

    EngineDatabase &m_db;
    QString m_filePath;
};

} // namespace quillon
