#include "SchemaMigrator.h"

#include "CoreLogging.h"
#include "EngineDatabase.h"
#include "EngineError.h"
#include "SqlTransaction.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

// Resources of a static library are only registered when asked for by name.
static void registerSchemaResources()
{
    Q_INIT_RESOURCE(schema);
}

namespace quillon {

namespace {
const QString kSchemaFolder = QStringLiteral(":/quillon/core/schema");

int scriptVersion(const QString &fileName)
{
    static const QRegularExpression leadingNumber(QStringLiteral("^(\\d+)_"));
    const auto match = leadingNumber.match(fileName);
    return match.hasMatch() ? match.captured(1).toInt() : 0;
}
} // namespace

QStringList SchemaMigrator::statements(const QString &script)
{
    QStringList result;
    QString current;
    for (const QString &line : script.split(QLatin1Char('\n'))) {
        const QString trimmed = line.trimmed();
        if (trimmed.isEmpty() || trimmed.startsWith(QLatin1String("--")))
            continue;
        current += line + QLatin1Char('\n');
        if (trimmed.endsWith(QLatin1Char(';'))) {
            result.append(current.trimmed());
            current.clear();
        }
    }
    if (!current.trimmed().isEmpty())
        result.append(current.trimmed());
    return result;
}

int SchemaMigrator::currentVersion()
{
    m_db.runOnce(QStringLiteral("CREATE TABLE IF NOT EXISTS schema_version (version INTEGER NOT NULL)"),
                 "creating schema_version");
    const auto rows = m_db.runOnce(QStringLiteral("SELECT COALESCE(MAX(version), 0) FROM schema_version"),
                                   "reading the schema version");
    return rows.isEmpty() ? 0 : rows.first().value(0).toInt();
}

void SchemaMigrator::migrate()
{
    registerSchemaResources();
    const int current = currentVersion();
    const QStringList scripts =
        QDir(kSchemaFolder).entryList({QStringLiteral("*.sql")}, QDir::Files, QDir::Name);
    if (scripts.isEmpty())
        throw EngineError(QStringLiteral("The engine's schema scripts are missing from the program"));
    for (const QString &name : scripts) {
        const int version = scriptVersion(name);
        if (version > current)
            apply(version, kSchemaFolder + QLatin1Char('/') + name);
    }
}

void SchemaMigrator::apply(int version, const QString &resourcePath)
{
    QFile file(resourcePath);
    if (!file.open(QIODevice::ReadOnly))
        throw EngineError(QStringLiteral("Cannot read schema script %1").arg(resourcePath));
    const QString script = QString::fromUtf8(file.readAll());

    SqlTransaction transaction(m_db);
    for (const QString &statement : statements(script))
        m_db.runOnce(statement, "applying the database schema");
    m_db.runOnce(QStringLiteral("INSERT INTO schema_version (version) VALUES (%1)").arg(version),
                 "recording the schema version");
    transaction.commit();
    qCInfo(lcCore) << "database schema now at version" << version;
}

} // namespace quillon
