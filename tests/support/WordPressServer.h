#pragma once

#include <QJsonArray>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>
#include <QUrl>

// Debian's WordPress served by `php -S` on 127.0.0.1 over a private mariadbd in a temporary
// folder, installed through wp-admin/install.php with one account; stopped when this goes.
// Debian's wp-config.php reads /etc/wordpress/config-127.0.0.1.php, which hands over to the
// configuration file each server names in its environment.
class WordPressServer
{
public:
    WordPressServer() = default;
    ~WordPressServer();
    WordPressServer(const WordPressServer &) = delete;
    WordPressServer &operator=(const WordPressServer &) = delete;

    // Why WordPress tests cannot run here; empty when everything is installed.
    [[nodiscard]] static QString missing();
    [[nodiscard]] bool start();
    [[nodiscard]] const QString &errorText() const { return m_error; }

    [[nodiscard]] QUrl home() const { return QUrl(QStringLiteral("http://127.0.0.1:%1/").arg(m_port)); }
    [[nodiscard]] QUrl xmlrpc() const { return home().resolved(QUrl(QStringLiteral("xmlrpc.php"))); }
    // The REST interface's root as WordPress names it without pretty addresses.
    [[nodiscard]] QUrl restRoot() const
    {
        return home().resolved(QUrl(QStringLiteral("index.php?rest_route=/")));
    }
    // The account's application password, made at the start.
    [[nodiscard]] const QString &applicationPassword() const { return m_applicationPassword; }
    // The published posts, newest first: objects with "title", "content" and "url".
    [[nodiscard]] QJsonArray posts() const;

    static inline const QString kUser = QStringLiteral("editor");
    static inline const QString kPassword = QStringLiteral("pen-and-ink-42");
    static inline const QString kTitle = QStringLiteral("Field Notes");

private:
    [[nodiscard]] bool startDatabase();
    [[nodiscard]] bool startPhp();
    [[nodiscard]] bool install();
    [[nodiscard]] bool makeApplicationPassword();
    [[nodiscard]] QByteArray sql(const QString &statement,
                                 const QString &database = QStringLiteral("wordpress")) const;
    [[nodiscard]] bool fail(const QString &why);

    QTemporaryDir m_dir;
    QProcess m_database;
    QProcess m_php;
    quint16 m_port = 0;
    QString m_error;
    QString m_applicationPassword;
};
