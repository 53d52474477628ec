#pragma once

#include <QNetworkAccessManager>
#include <QObject>
#include <QUrl>

// Asks the vendor's address for the newest version and says in one sentence what it found. The
// address answers plain text: the newest version on the first line, optionally the page to get
// it from on the second.
class UpdateCheck : public QObject
{
    Q_OBJECT
public:
    static constexpr int kTimeoutMs = 10000;

    UpdateCheck(QUrl address, QString currentVersion, QObject *parent = nullptr);

    // Starts one check; Finished follows, also when nothing could be reached.
    void Start();

    // What the answer means for the version running.
    [[nodiscard]] static QString Explain(const QByteArray &body, const QString &currentVersion);

Q_SIGNALS:
    void Finished(const QString &text);

private:
    QNetworkAccessManager m_network;
    QUrl m_address;
    QString m_currentVersion;
};
