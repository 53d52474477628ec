#include "DesktopKeyring.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QSemaphore>
#include <QThread>

#include <qt6keychain/keychain.h>

#include <memory>

namespace quillon {

namespace {

const QString kService = QStringLiteral("Corvell feed engine");
constexpr int kReadTimeoutMs = 20000; // an unlock prompt may be waiting for the user

bool keyringRuns()
{
    if (qEnvironmentVariable("QUILLON_ENGINE_SECRETS") == QLatin1String("file"))
        return false;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || !bus.interface())
        return false;
    // Asked without starting anything: a keyring the session does not run is not wanted.
    for (const char *name : {"org.freedesktop.secrets", "org.kde.kwalletd6", "org.kde.kwalletd5"}) {
        if (bus.interface()->isServiceRegistered(QLatin1String(name)))
            return true;
    }
    return false;
}

// What a read left for the thread that waits on it; shared, because a read that timed out
// may still finish later.
struct ReadOutcome
{
    QSemaphore done;
    bool ok = false;
    QByteArray data;
    QString error;
};

class QtKeychainRing : public SecretKeyring
{
public:
    QtKeychainRing()
    {
        // The keyring library answers through a glib main loop. The engine's own threads use
        // the plain dispatcher, so this one thread is started with glib's.
        const QByteArray noGlib = qgetenv("QT_NO_GLIB");
        qunsetenv("QT_NO_GLIB");
        QSemaphore running;
        QObject::connect(&m_thread, &QThread::started, [&running] { running.release(); });
        m_thread.start();
        running.acquire();
        if (!noGlib.isNull())
            qputenv("QT_NO_GLIB", noGlib);
        m_jobs = new QObject;
        m_jobs->moveToThread(&m_thread);
    }

    ~QtKeychainRing() override
    {
        m_thread.quit();
        m_thread.wait();
        delete m_jobs; // and the jobs that never finished with it
    }

    bool read(const QString &key, QByteArray *data, QString *error) override
    {
        auto outcome = std::make_shared<ReadOutcome>();
        QMetaObject::invokeMethod(m_jobs, [this, key, outcome] {
            auto *job = new QKeychain::ReadPasswordJob(kService, m_jobs);
            job->setAutoDelete(false);
            job->setKey(key);
            QObject::connect(job, &QKeychain::Job::finished, job, [job, outcome] {
                outcome->ok = job->error() == QKeychain::NoError || job->error() == QKeychain::EntryNotFound;
                outcome->data = job->error() == QKeychain::NoError ? job->binaryData() : QByteArray();
                outcome->error = job->errorString();
                job->deleteLater();
                outcome->done.release();
            });
            job->start();
        });
        if (!outcome->done.tryAcquire(1, kReadTimeoutMs)) {
            *error = QStringLiteral("the keyring did not answer within %1 s").arg(kReadTimeoutMs / 1000);
            return false;
        }
        *data = outcome->data;
        *error = outcome->error;
        return outcome->ok;
    }

    void write(const QString &key, const QByteArray &data, Written done) override
    {
        QMetaObject::invokeMethod(m_jobs, [this, key, data, done = std::move(done)] {
            auto *job = new QKeychain::WritePasswordJob(kService, m_jobs);
            job->setAutoDelete(false);
            job->setKey(key);
            job->setBinaryData(data);
            QObject::connect(job, &QKeychain::Job::finished, job, [this, job, done] {
                const bool ok = job->error() == QKeychain::NoError;
                const QString error = job->errorString();
                job->deleteLater();
                // Answered on the caller's thread; dropped when the keyring is gone first.
                QMetaObject::invokeMethod(&m_answers, [done, ok, error] { done(ok, error); });
            });
            job->start();
        });
    }

private:
    QThread m_thread;
    QObject *m_jobs = nullptr; // lives on m_thread; parent of the jobs
    QObject m_answers;         // lives on the caller's thread
};

} // namespace

std::unique_ptr<SecretKeyring> desktopKeyring()
{
    if (!keyringRuns())
        return nullptr;
    return std::make_unique<QtKeychainRing>();
}

} // namespace quillon
