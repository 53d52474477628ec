#pragma once

#include <QByteArrayView>
#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <QVariant>

#include <functional>
#include <optional>
#include <unordered_map>
#include <variant>

struct sqlite3;
struct sqlite3_stmt;

namespace quillon {

// The engine's SQLite connection. Statements are prepared once and kept, because the same few
// run thousands of times when a consumer reads every subscription or feeds are fetched; they run
// on SQLite's own interface over the connection Qt's driver opened, with UTF-8 texts, since Qt's
// layer described every column anew on each run and copied each value twice. Every failure is
// thrown as EngineError naming what was being done.
class EngineDatabase
{
public:
    using Row = QVariantList;

    explicit EngineDatabase(QString filePath);
    ~EngineDatabase();
    EngineDatabase(const EngineDatabase &) = delete;
    EngineDatabase &operator=(const EngineDatabase &) = delete;

    // Opens the file, switches on WAL and foreign keys and brings the schema up to date.
    void open();
    [[nodiscard]] bool isOpen() const { return m_open; }
    [[nodiscard]] const QString &filePath() const { return m_filePath; }

    [[nodiscard]] QList<Row> select(const QString &sql, const QVariantList &binds, const char *doing);
    // Returns the number of rows changed.
    int execute(const QString &sql, const QVariantList &binds, const char *doing);
    // Returns the new row's id.
    qint64 insert(const QString &sql, const QVariantList &binds, const char *doing);
    // For an insert that may be ignored (ON CONFLICT DO NOTHING): the new row's id, or nothing.
    std::optional<qint64> insertIfNew(const QString &sql, const QVariantList &binds, const char *doing);
    // Null, an integer, or UTF-8 text that outlives the call.
    using RawValue = std::variant<std::monostate, qint64, QByteArrayView>;
    // insertIfNew for the hottest statement, the article insert: its texts bound as they are,
    // without a QVariant or a UTF-16 copy. sql must be a literal; it names the kept statement.
    std::optional<qint64> insertIfNewRaw(const char *sql, std::initializer_list<RawValue> binds,
                                         const char *doing);
    // Runs a statement once, not kept (schema scripts, pragmas).
    QList<Row> runOnce(const QString &sql, const char *doing);

    // Nested calls join the outermost transaction.
    void begin();
    void commit();
    void rollback();

private:
    // kept: prepared for many runs, not once.
    [[nodiscard]] sqlite3_stmt *prepare(const char *sql, const char *doing, bool kept = true);
    // Binds, runs to the end (each row to onRow) and resets; throws on a failure.
    sqlite3 *run(const QString &sql, const QVariantList &binds, const char *doing,
                 const std::function<void(sqlite3_stmt *)> &onRow);
    sqlite3 *stepRaw(const char *sql, std::initializer_list<RawValue> binds, const char *doing);
    sqlite3 *step(sqlite3_stmt *statement, const char *doing,
                  const std::function<void(sqlite3_stmt *)> &onRow);
    [[nodiscard]] sqlite3 *handle() const;
    [[noreturn]] void fail(const QString &doing, const QString &reason) const;
    void switchOnPragmas();
    void undo();

    QString m_filePath;
    QString m_connectionName;
    QSqlDatabase m_db;
    std::unordered_map<QString, sqlite3_stmt *> m_statements;
    std::unordered_map<const char *, sqlite3_stmt *> m_rawStatements;
    int m_transactionDepth = 0;
    bool m_rollbackOnly = false;
    bool m_open = false;
};

} // namespace quillon
