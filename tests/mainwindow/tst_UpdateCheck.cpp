#include "LocalHttpServer.h"
#include "LocalSettings.h"
#include "RegistrySettings.h"
#include "TestRows.h"
#include "UpdateCheck.h"
#include "frmAbout.h"

#include <QCheckBox>
#include <QLabel>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>

// The About box's check for a newer version, against a server on 127.0.0.1 and a closed port.
class tst_UpdateCheck : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void answersSayWhatWasFound_data();
    void answersSayWhatWasFound();
    void aboutBoxShowsTheBuildAndChecksWhenAsked();

private:
    LocalHttpServer m_server;
    QTemporaryDir m_settings;
};

void tst_UpdateCheck::initTestCase()
{
    QVERIFY(m_server.listen());
    QStandardPaths::setTestModeEnabled(true);
    LocalSettings::SetBaseFolder(m_settings.path());
}

void tst_UpdateCheck::answersSayWhatWasFound_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<bool>("closedPort");
    QTest::addColumn<QString>("said");

    const QString unreachable = "The update server could not be reached (";
    row("newer, with its page", 200, QByteArray("0.2.0\nhttps://example.org/get\n"), false,
        "Version 0.2.0 is available. Get it from https://example.org/get");
    row("newer, a page that is no web address", 200, QByteArray("1.0\nfile:///etc/passwd"), false,
        "Version 1.0 is available.");
    row("the same version", 200, QByteArray("0.1.0\n"), false, "You have the newest version.");
    row("a web page instead", 200, QByteArray("<html>moved</html>"), false,
        "The update server's answer was not understood. Please try again later.");
    row("not found", 404, QByteArray(), false, unreachable);
    row("nobody listening", 200, QByteArray(), true, unreachable);
}

void tst_UpdateCheck::answersSayWhatWasFound()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(bool, closedPort);
    QFETCH(QString, said);
    LocalHttpServer::Route route;
    route.status = status;
    route.reason = status == 200 ? "OK" : "Not Found";
    route.contentType = "text/plain";
    route.body = body;
    m_server.setRoute("/latest.txt", route);
    QUrl address = m_server.url("/latest.txt");
    if (closedPort) {
        QTcpServer closed;
        QVERIFY(closed.listen(QHostAddress::LocalHost));
        address.setPort(closed.serverPort());
    }

    UpdateCheck check(address, "0.1.0");
    QSignalSpy finished(&check, &UpdateCheck::Finished);
    check.Start();
    QVERIFY(finished.wait(UpdateCheck::kTimeoutMs + 5000));
    const QString text = finished.at(0).at(0).toString();
    QVERIFY2(said.endsWith('(') ? text.startsWith(said) && text.endsWith("Please try again later.")
                                : text == said,
             qPrintable(text));
}

void tst_UpdateCheck::aboutBoxShowsTheBuildAndChecksWhenAsked()
{
    m_server.serve("/latest.txt", "99.0\n", "text/plain");
    const int asked = m_server.requestCount("/latest.txt");
    {
        frmAbout about(nullptr, m_server.url("/latest.txt"));
        QVERIFY(about.findChild<QLabel *>("lblVersion")->text().startsWith("Version "));
        QVERIFY(
            about.findChild<QLabel *>("lblBuild")->text().contains(QRegularExpression("^Build \\d+ \\(")));
        QVERIFY(about.findChild<QLabel *>("lblPrivacy")->text().contains(frmAbout::kPrivacyUrl));
        // "AutoUpdates" is off: nothing is asked until the user says so.
        QCOMPARE(m_server.requestCount("/latest.txt"), asked);
        about.findChild<QCheckBox *>("chkAutoUpdates")->click();
        QCOMPARE(GetRegistrySetting("Quill On", "CONFIGCONSUMER", "AutoUpdates", ""), "1");
    }
    frmAbout reopened(nullptr, m_server.url("/latest.txt"));
    QTRY_COMPARE(reopened.findChild<QLabel *>("lblUpdateStatus")->text(), "Version 99.0 is available.");
    QCOMPARE(m_server.requestCount("/latest.txt"), asked + 1);
}

QTEST_MAIN(tst_UpdateCheck)
#include "tst_UpdateCheck.moc"
