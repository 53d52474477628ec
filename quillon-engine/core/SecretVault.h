#pragma once

#include <QHash>
#include <QObject>
#include <QString>

#include <memory>

namespace quillon {

class EngineDatabase;
class SecretKeyring;

// Keeps the passwords of subscriptions and settings (keys that name a password) in the
// desktop keyring. A secret is first written to the database like any other value; a sweep after each
// change copies the database's secrets into one keyring entry and, once the keyring confirms,
// leaves only a marker in the database. A crash or a keyring that refuses therefore never loses
// a password: it simply stays in the private database, which is the store without a keyring.
class SecretVault : public QObject
{
    Q_OBJECT
public:
    // Without a keyring the vault changes nothing.
    SecretVault(EngineDatabase &db, std::unique_ptr<SecretKeyring> keyring);
    ~SecretVault() override;

    // Reads what the keyring holds; false with the reason when it cannot, and then this run
    // leaves every secret in the database (and passwords already moved read as empty).
    bool load(QString *error);

    // The secret a stored value stands for.
    [[nodiscard]] QString reveal(const QString &stored, const QString &name) const;
    // Something may have written a secret: sweep soon.
    void changed();

    [[nodiscard]] static QString subscriptionName(qint64 id);
    [[nodiscard]] static QString settingName(const QString &consumerId, const QString &section,
                                             const QString &key);
    // What the database holds instead of a secret that is in the keyring.
    static const QString kMarker;

private:
    void sweep();
    void written(const QHash<QString, QString> &entry, const QHash<QString, QString> &moved, bool ok,
                 const QString &error);
    void markMoved(const QHash<QString, QString> &moved);

    EngineDatabase &m_db;
    std::unique_ptr<SecretKeyring> m_keyring;
    QString m_entryKey;
    QHash<QString, QString> m_secrets; // what the keyring entry holds
    bool m_usable = false;
    bool m_sweepPending = false;
    bool m_writing = false;
    bool m_failureLogged = false;
};

} // namespace quillon
