#pragma once

#include <QProcess>
#include <QTest>

// A session bus of the test's own, so that nothing reaches the desktop of whoever runs it.
class PrivateSessionBus
{
public:
    bool start()
    {
        m_bus.start(QStringLiteral("dbus-daemon"), {QStringLiteral("--session"), QStringLiteral("--nofork"),
                                                    QStringLiteral("--print-address")});
        if (!m_bus.waitForStarted(5000) || !QTest::qWaitFor([this] { return m_bus.canReadLine(); }, 5000))
            return false;
        m_address = QString::fromUtf8(m_bus.readLine().trimmed());
        return true;
    }
    ~PrivateSessionBus()
    {
        m_bus.kill();
        m_bus.waitForFinished(5000);
    }
    [[nodiscard]] QString address() const { return m_address; }
    // The test's environment, on this bus.
    [[nodiscard]] QProcessEnvironment environment() const
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), m_address);
        return env;
    }

private:
    QProcess m_bus;
    QString m_address;
};
