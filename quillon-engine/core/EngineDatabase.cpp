#include "EngineDatabase.h"

#include "CoreLogging.h"
#include "EngineError.h"
#include "SchemaMigrator.h"

#include <QAtomicInteger>
#include <QSqlDriver>
#include <QSqlError>

#include <sqlite3.h>

#include <memory>

namespace quillon {

namespace {
QString newConnectionName()
{
    // Several cores may share a process (tests); each needs its own named connection.
    static QAtomicInteger<int> counter;
    return QStringLiteral("quillon-core-%1").arg(counter.fetchAndAddRelaxed(1) + 1);
}

// SQLite keeps a count of its memory under one lock for the whole process. The fetch store's
// connection and the main one allocate at the same time, and nothing reads the count: without
// it, they stopped waiting for each other thousands of times a round. It can only be set before
// SQLite's first use in the process; if a connection came first (a test's), the count stays.
void leaveMemoryUncounted()
{
    static const int result = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
    if (result != SQLITE_OK)
        qCDebug(lcCore) << "SQLite was in use already; its memory stays counted";
}

// As Qt's driver reads a column, without describing it first.
QVariant rawColumn(sqlite3_stmt *statement, int column)
{
    switch (sqlite3_column_type(statement, column)) {
    case SQLITE_NULL:
        return {};
    case SQLITE_INTEGER:
        return qint64(sqlite3_column_int64(statement, column));
    case SQLITE_FLOAT:
        return sqlite3_column_double(statement, column);
    case SQLITE_BLOB:
        return QByteArray(static_cast<const char *>(sqlite3_column_blob(statement, column)),
                          sqlite3_column_bytes(statement, column));
    default: {
        const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(statement, column));
        return QString::fromUtf8(text, sqlite3_column_bytes(statement, column));
    }
    }
}

// As Qt's driver binds a value, except that a null text is still a text ("").
void bindVariant(sqlite3_stmt *statement, int column, const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::UnknownType:
    case QMetaType::Nullptr:
        sqlite3_bind_null(statement, column);
        return;
    case QMetaType::Bool:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        if (value.isNull())
            sqlite3_bind_null(statement, column);
        else
            sqlite3_bind_int64(statement, column, value.toLongLong());
        return;
    case QMetaType::Float:
    case QMetaType::Double:
        sqlite3_bind_double(statement, column, value.toDouble());
        return;
    case QMetaType::QByteArray: {
        const QByteArray bytes = value.toByteArray();
        if (bytes.isNull())
            sqlite3_bind_null(statement, column);
        else
            sqlite3_bind_blob(statement, column, bytes.constData(), int(bytes.size()), SQLITE_TRANSIENT);
        return;
    }
    default: {
        const QByteArray text = value.toString().toUtf8();
        sqlite3_bind_text(statement, column, text.isNull() ? "" : text.constData(), int(text.size()),
                          SQLITE_TRANSIENT);
    }
    }
}

EngineDatabase::Row rowOf(sqlite3_stmt *statement)
{
    EngineDatabase::Row row;
    const int columns = sqlite3_column_count(statement);
    row.reserve(columns);
    for (int i = 0; i < columns; ++i)
        row.append(rawColumn(statement, i));
    return row;
}

} // namespace

EngineDatabase::EngineDatabase(QString filePath)
    : m_filePath(std::move(filePath)), m_connectionName(newConnectionName())
{
}

EngineDatabase::~EngineDatabase()
{
    // Statements must go before the connection they were prepared on.
    for (const auto &[sql, statement] : m_rawStatements)
        sqlite3_finalize(statement);
    for (const auto &[sql, statement] : m_statements)
        sqlite3_finalize(statement);
    if (m_db.isValid())
        m_db.close();
    m_db = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_connectionName);
}

void EngineDatabase::fail(const QString &doing, const QString &reason) const
{
    const QString message = QStringLiteral("Engine database error while %1: %2").arg(doing, reason);
    qCWarning(lcCore).noquote() << message;
    throw EngineError(message);
}

void EngineDatabase::open()
{
    if (m_open)
        return;
    leaveMemoryUncounted();
    m_db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connectionName);
    if (!m_db.isValid())
        fail(QStringLiteral("loading the SQLite driver"), m_db.lastError().text());
    m_db.setDatabaseName(m_filePath);
    if (!m_db.open())
        fail(QStringLiteral("opening %1").arg(m_filePath), m_db.lastError().text());
    switchOnPragmas();
    SchemaMigrator(*this).migrate();
    m_open = true;
}

void EngineDatabase::switchOnPragmas()
{
    runOnce(QStringLiteral("PRAGMA foreign_keys = ON"), "enabling foreign keys");
    const auto mode = runOnce(QStringLiteral("PRAGMA journal_mode = WAL"), "enabling write-ahead logging");
    if (mode.isEmpty() ||
        mode.first().value(0).toString().compare(QLatin1String("wal"), Qt::CaseInsensitive) != 0)
        qCWarning(lcCore) << "write-ahead logging not available for" << m_filePath;
    // With WAL a commit stays durable against crashes of the engine at this level.
    runOnce(QStringLiteral("PRAGMA synchronous = NORMAL"), "setting the sync level");
}

QList<EngineDatabase::Row> EngineDatabase::select(const QString &sql, const QVariantList &binds,
                                                  const char *doing)
{
    QList<Row> rows;
    run(sql, binds, doing, [&rows](sqlite3_stmt *statement) { rows.append(rowOf(statement)); });
    return rows;
}

int EngineDatabase::execute(const QString &sql, const QVariantList &binds, const char *doing)
{
    return sqlite3_changes(run(sql, binds, doing, {}));
}

qint64 EngineDatabase::insert(const QString &sql, const QVariantList &binds, const char *doing)
{
    return sqlite3_last_insert_rowid(run(sql, binds, doing, {}));
}

std::optional<qint64> EngineDatabase::insertIfNew(const QString &sql, const QVariantList &binds,
                                                  const char *doing)
{
    sqlite3 *db = run(sql, binds, doing, {});
    // The last insert id outlives an ignored insert, so only a changed row counts.
    return sqlite3_changes(db) > 0 ? std::optional<qint64>(sqlite3_last_insert_rowid(db)) : std::nullopt;
}

sqlite3 *EngineDatabase::handle() const
{
    // Qt's SQLite driver hands out its connection under this type name.
    const QVariant handle = m_db.isValid() ? m_db.driver()->handle() : QVariant();
    return handle.isValid() && qstrcmp(handle.typeName(), "sqlite3*") == 0
               ? *static_cast<sqlite3 *const *>(handle.constData())
               : nullptr;
}

sqlite3_stmt *EngineDatabase::prepare(const char *sql, const char *doing, bool kept)
{
    sqlite3 *db = handle();
    if (!db)
        fail(QString::fromLatin1(doing), QStringLiteral("the database is not open"));
    sqlite3_stmt *statement = nullptr;
    if (sqlite3_prepare_v3(db, sql, -1, kept ? SQLITE_PREPARE_PERSISTENT : 0, &statement, nullptr) !=
        SQLITE_OK)
        fail(QString::fromLatin1(doing), QString::fromUtf8(sqlite3_errmsg(db)));
    return statement;
}

sqlite3 *EngineDatabase::run(const QString &sql, const QVariantList &binds, const char *doing,
                             const std::function<void(sqlite3_stmt *)> &onRow)
{
    sqlite3_stmt *&statement = m_statements[sql];
    if (!statement)
        statement = prepare(sql.toUtf8().constData(), doing);
    for (qsizetype i = 0; i < binds.size(); ++i)
        bindVariant(statement, int(i + 1), binds.at(i));
    return step(statement, doing, onRow);
}

sqlite3 *EngineDatabase::stepRaw(const char *sql, std::initializer_list<RawValue> binds, const char *doing)
{
    sqlite3_stmt *&statement = m_rawStatements[sql];
    if (!statement)
        statement = prepare(sql, doing);
    int column = 0;
    for (const RawValue &value : binds) {
        ++column;
        if (const auto *number = std::get_if<qint64>(&value))
            sqlite3_bind_int64(statement, column, *number);
        else if (const auto *text = std::get_if<QByteArrayView>(&value))
            sqlite3_bind_text(statement, column, text->data() ? text->data() : "", int(text->size()),
                              SQLITE_STATIC);
        else
            sqlite3_bind_null(statement, column);
    }
    return step(statement, doing, {});
}

sqlite3 *EngineDatabase::step(sqlite3_stmt *statement, const char *doing,
                              const std::function<void(sqlite3_stmt *)> &onRow)
{
    int result = sqlite3_step(statement);
    for (; result == SQLITE_ROW; result = sqlite3_step(statement)) {
        if (onRow)
            onRow(statement);
    }
    sqlite3 *db = sqlite3_db_handle(statement);
    const QString reason = result == SQLITE_DONE ? QString() : QString::fromUtf8(sqlite3_errmsg(db));
    // Reset at once, so the statement holds no lock and no text it was lent.
    sqlite3_reset(statement);
    sqlite3_clear_bindings(statement);
    if (result != SQLITE_DONE)
        fail(QString::fromLatin1(doing), reason);
    return db;
}

std::optional<qint64> EngineDatabase::insertIfNewRaw(const char *sql, std::initializer_list<RawValue> binds,
                                                     const char *doing)
{
    sqlite3 *db = stepRaw(sql, binds, doing);
    return sqlite3_changes(db) > 0 ? std::optional<qint64>(sqlite3_last_insert_rowid(db)) : std::nullopt;
}

QList<EngineDatabase::Row> EngineDatabase::runOnce(const QString &sql, const char *doing)
{
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt *)> statement(
        prepare(sql.toUtf8().constData(), doing, false), sqlite3_finalize);
    QList<Row> rows;
    if (statement) // null for text with no statement in it, such as a comment
        step(statement.get(), doing, [&rows](sqlite3_stmt *row) { rows.append(rowOf(row)); });
    return rows;
}

void EngineDatabase::begin()
{
    if (m_transactionDepth++ > 0)
        return;
    m_rollbackOnly = false;
    // The fetch store writes over a second connection: taking the write lock at the start lets
    // SQLite's busy wait apply, where a read that turns into a write could fail at once.
    try {
        execute(QStringLiteral("BEGIN IMMEDIATE"), {}, "starting a transaction");
    } catch (...) {
        m_transactionDepth = 0;
        throw;
    }
}

void EngineDatabase::commit()
{
    if (m_transactionDepth <= 0)
        return;
    if (--m_transactionDepth > 0)
        return;
    if (m_rollbackOnly) {
        undo();
        fail(QStringLiteral("committing"), QStringLiteral("an inner step failed; everything was undone"));
    }
    try {
        execute(QStringLiteral("COMMIT"), {}, "committing");
    } catch (...) {
        undo();
        throw;
    }
}

void EngineDatabase::rollback()
{
    if (m_transactionDepth <= 0)
        return;
    if (--m_transactionDepth > 0) {
        m_rollbackOnly = true;
        return;
    }
    undo();
}

void EngineDatabase::undo()
{
    try {
        execute(QStringLiteral("ROLLBACK"), {}, "rolling back");
    } catch (const EngineError &) {
        // Already logged; SQLite may have rolled back by itself.
    }
}

} // namespace quillon
