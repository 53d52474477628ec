#include "UpdateCheck.h"

#include <QLoggingCategory>
#include <QNetworkReply>
#include <QVersionNumber>

Q_LOGGING_CATEGORY(lcUpdateCheck, "corvell.about.updates")

namespace {
// More than a version and an address is not an answer from our server.
constexpr qint64 kLargestAnswer = 4096;
} // namespace

UpdateCheck::UpdateCheck(QUrl address, QString currentVersion, QObject *parent)
    : QObject(parent), m_address(std::move(address)), m_currentVersion(std::move(currentVersion))
{
}

void UpdateCheck::Start()
{
    if (!m_address.isValid() || m_address.isRelative()) {
        Q_EMIT Finished(QStringLiteral("No address to check for a newer version was built in."));
        return;
    }
    QNetworkRequest request(m_address);
    request.setTransferTimeout(kTimeoutMs);
    QNetworkReply *reply = m_network.get(request);
    connect(reply, &QNetworkReply::finished, this, [this, reply] {
        reply->deleteLater();
        const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        if (reply->error() != QNetworkReply::NoError || status != 200) {
            qCInfo(lcUpdateCheck) << "update check failed:" << status << reply->errorString();
            Q_EMIT Finished(
                QStringLiteral("The update server could not be reached (%1). Please try again later.")
                    .arg(reply->errorString()));
            return;
        }
        Q_EMIT Finished(Explain(reply->read(kLargestAnswer), m_currentVersion));
    });
}

QString UpdateCheck::Explain(const QByteArray &body, const QString &currentVersion)
{
    const QStringList lines = QString::fromUtf8(body).split(QLatin1Char('\n'));
    const QString newestText = lines.value(0).trimmed();
    qsizetype suffix = 0;
    const QVersionNumber newest = QVersionNumber::fromString(newestText, &suffix);
    if (newest.isNull() || suffix != newestText.size())
        return QStringLiteral("The update server's answer was not understood. Please try again later.");
    if (newest <= QVersionNumber::fromString(currentVersion))
        return QStringLiteral("You have the newest version.");
    const QString page = lines.value(1).trimmed();
    QString text = QStringLiteral("Version %1 is available.").arg(newest.toString());
    if (page.startsWith(QLatin1String("https://")) || page.startsWith(QLatin1String("http://")))
        text += QStringLiteral(" Get it from ") + page;
    return text;
}
