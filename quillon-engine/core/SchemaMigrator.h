#pragma once

#include <QString>
#include <QStringList>

namespace quillon {

class EngineDatabase;

// Applies the numbered scripts below the schema resource folder that the database has not seen,
// each in its own transaction, and records the number in schema_version.
class SchemaMigrator
{
public:
    explicit SchemaMigrator(EngineDatabase &db) : m_db(db) {}

    void migrate();
    [[nodiscard]] int currentVersion();

    // Splits a script at semicolons that end a line, dropping "--" comment lines.
    [[nodiscard]] static QStringList statements(const QString &script);

private:
    void apply(int version, const QString &resourcePath);

    EngineDatabase &m_db;
};

} // namespace quillon
