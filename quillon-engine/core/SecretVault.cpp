#include "SecretVault.h"

#include "CoreLogging.h"
#include "EngineDatabase.h"
#include "SecretKeyring.h"
#include "SettingsStore.h"
#include "SqlTransaction.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>
#include <QUuid>

namespace quillon {

namespace {
// Changes come in bursts (an import, a settings page saved): one keyring write for the burst.
constexpr int kSweepDelayMs = 200;

const QString kEntrySetting = QStringLiteral("KeyringEntry");

// A secret as the database holds it, with the statement that replaces it by the marker.
struct StoredSecret
{
    QString name;
    QString value;
    QString replace; // binds: the marker, the keys, the value it must still have
    QVariantList keys;
};

// Every non-empty secret in the database, markers included: subscription passwords, and
// settings whose key names a password.
QList<StoredSecret> storedSecrets(EngineDatabase &db)
{
    QList<StoredSecret> found;
    for (const auto &row :
         db.select(QStringLiteral("SELECT id, password FROM subscriptions WHERE password <> ''"), {},
                   "listing the passwords of subscriptions"))
        found.append({SecretVault::subscriptionName(row.at(0).toLongLong()),
                      row.at(1).toString(),
                      QStringLiteral("UPDATE subscriptions SET password = ? WHERE id = ? AND password = ?"),
                      {row.at(0)}});
    for (const auto &row : db.select(QStringLiteral("SELECT consumer_id, section, key, value FROM settings"
                                                    " WHERE key LIKE '%password%' AND value <> ''"),
                                     {}, "listing the passwords of settings"))
        found.append(
            {SecretVault::settingName(row.at(0).toString(), row.at(1).toString(), row.at(2).toString()),
             row.at(3).toString(),
             QStringLiteral("UPDATE settings SET value = ? WHERE consumer_id = ? AND section = ?"
                            " AND key = ? AND value = ?"),
             {row.at(0), row.at(1), row.at(2)}});
    return found;
}
} // namespace

// Nobody types a control character into a password field.
const QString SecretVault::kMarker = QStringLiteral("\u0001in the desktop keyring");

SecretVault::SecretVault(EngineDatabase &db, std::unique_ptr<SecretKeyring> keyring)
    : m_db(db), m_keyring(std::move(keyring))
{
}

SecretVault::~SecretVault() = default;

QString SecretVault::subscriptionName(qint64 id)
{
    return QStringLiteral("subscription/%1").arg(id);
}

QString SecretVault::settingName(const QString &consumerId, const QString &section, const QString &key)
{
    // Setting names match without regard to case, so their secrets do too.
    return QStringLiteral("setting/%1/%2/%3").arg(consumerId, section, key).toLower();
}

bool SecretVault::load(QString *error)
{
    if (!m_keyring)
        return true;
    SettingsStore settings(m_db);
    const QString engine = QStringLiteral("ENGINE");
    const QString section = QStringLiteral("Keyring");
    // One entry per database, so that two data folders of one user never share passwords.
    m_entryKey = settings.value(engine, section, kEntrySetting).value_or(QString());
    if (m_entryKey.isEmpty()) {
        m_entryKey = QStringLiteral("engine-") + QUuid::createUuid().toString(QUuid::WithoutBraces);
        settings.setValue(engine, section, kEntrySetting, m_entryKey);
    }
    QByteArray data;
    if (!m_keyring->read(m_entryKey, &data, error))
        return false;
    QJsonParseError parsed{};
    const QJsonDocument document = QJsonDocument::fromJson(data, &parsed);
    if (!data.isEmpty() && !document.isObject()) {
        if (error)
            *error = QStringLiteral("the keyring entry %1 is not readable: %2")
                         .arg(m_entryKey, parsed.errorString());
        return false;
    }
    const QJsonObject object = document.object();
    for (auto it = object.begin(); it != object.end(); ++it)
        m_secrets.insert(it.key(), it.value().toString());
    m_usable = true;
    changed(); // what an older version or the fallback left in the database moves now
    return true;
}

QString SecretVault::reveal(const QString &stored, const QString &name) const
{
    return stored == kMarker ? m_secrets.value(name) : stored;
}

void SecretVault::changed()
{
    if (!m_usable || std::exchange(m_sweepPending, true))
        return;
    if (!m_writing)
        QTimer::singleShot(kSweepDelayMs, this, &SecretVault::sweep);
}

void SecretVault::sweep()
{
    if (m_writing)
        return; // written() sweeps again
    m_sweepPending = false;
    // The entry holds exactly the secrets the database stands for: removed ones drop out.
    QHash<QString, QString> plain;
    QHash<QString, QString> entry;
    for (const StoredSecret &secret : storedSecrets(m_db)) {
        if (secret.value == kMarker) {
            entry.insert(secret.name, m_secrets.value(secret.name));
        } else {
            plain.insert(secret.name, secret.value);
            entry.insert(secret.name, secret.value);
        }
    }
    if (entry == m_secrets) {
        if (!plain.isEmpty())
            written(entry, plain, true, QString());
        return;
    }
    QJsonObject object;
    for (auto it = entry.cbegin(); it != entry.cend(); ++it)
        object.insert(it.key(), it.value());
    m_writing = true;
    m_keyring->write(
        m_entryKey, QJsonDocument(object).toJson(QJsonDocument::Compact),
        [this, entry, plain](bool ok, const QString &error) { written(entry, plain, ok, error); });
}

void SecretVault::written(const QHash<QString, QString> &entry, const QHash<QString, QString> &moved, bool ok,
                          const QString &error)
{
    m_writing = false;
    if (!ok) {
        if (!std::exchange(m_failureLogged, true))
            qCWarning(lcCore,
                      "The desktop keyring refused the passwords (%s); they stay in the private database",
                      qPrintable(error));
    } else {
        m_secrets = entry;
        markMoved(moved);
    }
    if (m_sweepPending) {
        m_sweepPending = false;
        changed();
    }
}

void SecretVault::markMoved(const QHash<QString, QString> &moved)
{
    // Only a value that is still the one the keyring took gives way to the marker.
    SqlTransaction transaction(m_db);
    for (const StoredSecret &secret : storedSecrets(m_db)) {
        const auto it = moved.constFind(secret.name);
        if (secret.value != kMarker && it != moved.cend() && *it == secret.value)
            m_db.execute(secret.replace, QVariantList{kMarker} + secret.keys + QVariantList{secret.value},
                         "moving a password to the keyring");
    }
    transaction.commit();
}

} // namespace quillon
