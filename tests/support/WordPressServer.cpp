#include "WordPressServer.h"

#include "ServerProcess.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QUrlQuery>

#include <memory>
#include <utility>

WordPressServer::~WordPressServer()
{
    ServerProcess::stop(m_php);
    ServerProcess::stop(m_database);
}

QString WordPressServer::missing()
{
    // The last one is written by scripts/setup-deps.sh, which installs the rest too.
    for (const QString &file :
         {QStringLiteral("/usr/bin/php"), QStringLiteral("/usr/sbin/mariadbd"),
          QStringLiteral("/usr/share/wordpress/wp-content/themes/twentytwentythree/theme.json"),
          QStringLiteral("/etc/wordpress/config-127.0.0.1.php")}) {
        if (!QFileInfo::exists(file))
            return QStringLiteral("%1 is missing (scripts/setup-deps.sh installs it)").arg(file);
    }
    return {};
}

bool WordPressServer::fail(const QString &why)
{
    m_error = why;
    return false;
}

bool WordPressServer::start()
{
    if (const QString why = missing(); !why.isEmpty())
        return fail(why);
    if (!m_dir.isValid())
        return fail(QStringLiteral("no temporary folder"));
    return startDatabase() && startPhp() && install() && makeApplicationPassword();
}

bool WordPressServer::startDatabase()
{
    const QString data = m_dir.filePath(QStringLiteral("db"));
    QProcess setup;
    setup.setProcessChannelMode(QProcess::MergedChannels);
    setup.start(QStringLiteral("mariadb-install-db"),
                {"--no-defaults", "--datadir=" + data, "--user=root",
                 "--auth-root-authentication-method=normal", "--skip-test-db"});
    if (!setup.waitForFinished(60000) || setup.exitCode() != 0)
        return fail("mariadb-install-db failed: " + QString::fromLocal8Bit(setup.readAll()));
    const QString socket = m_dir.filePath(QStringLiteral("db.sock"));
    m_database.setProcessChannelMode(QProcess::MergedChannels);
    m_database.start(QStringLiteral("/usr/sbin/mariadbd"),
                     {"--no-defaults", "--datadir=" + data, "--socket=" + socket, "--skip-networking",
                      "--user=root", "--pid-file=" + m_dir.filePath("db.pid"),
                      "--innodb-buffer-pool-size=16M", "--log-error=" + m_dir.filePath("db.log")});
    const QDeadlineTimer deadline(30000);
    while (!QFileInfo::exists(socket) ||
           sql(QStringLiteral("SELECT 1"), QStringLiteral("mysql")).trimmed() != "1") {
        if (deadline.hasExpired() || m_database.state() == QProcess::NotRunning)
            return fail("mariadbd did not start: " + QString::fromLocal8Bit(m_database.readAll()));
        m_database.waitForFinished(100);
    }
    return !sql(QStringLiteral("CREATE DATABASE wordpress; SELECT 'made'"), QStringLiteral("mysql"))
                .isEmpty();
}

QByteArray WordPressServer::sql(const QString &statement, const QString &database) const
{
    QProcess client;
    client.start(QStringLiteral("mariadb"), {"--no-defaults", "-S", m_dir.filePath(QStringLiteral("db.sock")),
                                             "-u", "root", "-N", "-B", "-r", database, "-e", statement});
    client.waitForFinished(30000);
    return client.readAllStandardOutput();
}

bool WordPressServer::startPhp()
{
    m_port = ServerProcess::freePort();
    const QString config = m_dir.filePath(QStringLiteral("wp-config.php"));
    QFile file(config);
    if (m_port == 0 || !file.open(QIODevice::WriteOnly))
        return fail(QStringLiteral("cannot write %1").arg(config));
    file.write(
        QStringLiteral("<?php\ndefine('DB_NAME', 'wordpress');\ndefine('DB_USER', 'root');\n"
                       "define('DB_PASSWORD', '');\ndefine('DB_HOST', 'localhost:%1');\n"
                       // WordPress offers application passwords (the REST login) only over https
                       // or on a 'local' site; php -S hands their Basic login to PHP as it is.
                       "define('WP_ENVIRONMENT_TYPE', 'local');\ndefine('WP_HTTP_BLOCK_EXTERNAL', true);\n"
                       "define('AUTOMATIC_UPDATER_DISABLED', true);\ndefine('DISABLE_WP_CRON', true);\n")
            .arg(m_dir.filePath(QStringLiteral("db.sock")))
            .toUtf8());
    file.close();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QUILLON_WORDPRESS_CONFIG"), config);
    m_php.setProcessEnvironment(environment);
    m_php.setProcessChannelMode(QProcess::MergedChannels);
    m_php.setStandardOutputFile(m_dir.filePath(QStringLiteral("php.log")));
    m_php.start(QStringLiteral("php"), {"-S", QStringLiteral("127.0.0.1:%1").arg(m_port), "-t",
                                        QStringLiteral("/usr/share/wordpress")});
    return ServerProcess::waitUntilListening(m_php, m_port) ||
           fail(QStringLiteral("php -S did not listen on port %1").arg(m_port));
}

bool WordPressServer::install()
{
    QUrlQuery form;
    const QList<std::pair<QString, QString>> fields = {
        {"weblog_title", kTitle},       {"user_name", kUser},   {"admin_password", kPassword},
        {"admin_password2", kPassword}, {"pw_weak", "1"},       {"admin_email", "editor@example.org"},
        {"blog_public", "0"},           {"language", QString()}};
    for (const auto &[key, value] : fields)
        form.addQueryItem(key, value);
    QNetworkAccessManager network;
    QNetworkRequest request(home().resolved(QUrl(QStringLiteral("wp-admin/install.php?step=2"))));
    request.setHeader(QNetworkRequest::ContentTypeHeader, "application/x-www-form-urlencoded");
    request.setTransferTimeout(60000);
    std::unique_ptr<QNetworkReply> reply(network.post(request, form.query(QUrl::FullyEncoded).toUtf8()));
    QEventLoop wait;
    QObject::connect(reply.get(), &QNetworkReply::finished, &wait, &QEventLoop::quit);
    wait.exec();
    const QByteArray page = reply->readAll();
    if (!page.contains("<h1>Success!</h1>"))
        return fail("WordPress was not installed: " + reply->errorString() + ' ' +
                    QString::fromUtf8(page.left(600)));
    return true;
}

// Made by WordPress itself, through php on the command line with the site's configuration.
bool WordPressServer::makeApplicationPassword()
{
    QProcess php;
    php.setProcessEnvironment(m_php.processEnvironment());
    php.start(QStringLiteral("php"),
              {"-r", QStringLiteral(
                         "$_SERVER['HTTP_HOST'] = '127.0.0.1:%1'; require '/usr/share/wordpress/wp-load.php';"
                         "$made = WP_Application_Passwords::create_new_application_password(1, "
                         "array('name' => 'quillon')); echo is_wp_error($made) ? '' : $made[0];")
                         .arg(m_port)});
    php.waitForFinished(60000);
    m_applicationPassword = QString::fromUtf8(php.readAllStandardOutput()).trimmed();
    return !m_applicationPassword.isEmpty() ||
           fail("no application password: " + QString::fromUtf8(php.readAllStandardError()));
}

QJsonArray WordPressServer::posts() const
{
    const QByteArray rows =
        sql(QStringLiteral("SELECT JSON_ARRAYAGG(JSON_OBJECT('title', post_title, 'content', post_content, "
                           "'url', guid) ORDER BY ID "
                           "DESC) FROM wp_posts WHERE post_type = 'post' AND post_status = 'publish'"));
    return QJsonDocument::fromJson(rows.trimmed()).array();
}
