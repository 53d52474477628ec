#include "EnclosureDownloader.h"

#include "CurlProxy.h"
#include "MediaLogging.h"

#include <QDir>
#include <QFileInfo>

namespace {
constexpr long kReadBytes = 512 * 1024;
} // namespace

EnclosureDownloader::EnclosureDownloader(Limits limits, std::shared_ptr<quillon::FetchPolicy> policy,
                                         QObject *parent)
    : QObject(parent), m_limits(limits), m_policy(std::move(policy)),
      m_multi([this](CURL *easy, CURLcode code) { onDone(easy, code); }, this)
{
}

EnclosureDownloader::~EnclosureDownloader()
{
    // Partial files stay where they are for the next run.
    for (auto it = m_running.begin(); it != m_running.end(); ++it) {
        m_multi.stop(it.key());
        m_multi.give(it.key());
    }
}

void EnclosureDownloader::add(const Job &job)
{
    m_queue.append(job);
    pump();
}

void EnclosureDownloader::pump()
{
    for (qsizetype i = 0; i < m_queue.size() && m_running.size() < m_limits.total;) {
        const QString host = m_queue.at(i).url.host();
        if (m_perHost.value(host) >= m_limits.perHost) {
            ++i;
            continue;
        }
        auto transfer = std::make_shared<Transfer>();
        transfer->job = m_queue.takeAt(i);
        transfer->maxBytes = m_limits.maxBytes;
        CURL *easy = m_multi.take();
        transfer->easy = easy;
        if (!easy || !setUp(easy, *transfer) || !m_multi.start(easy)) {
            m_multi.give(easy);
            Q_EMIT finished(
                {transfer->job.key, Outcome::Retry, QStringLiteral("cannot start the download"), false});
            continue;
        }
        m_running.insert(easy, transfer);
        ++m_perHost[host];
    }
}

bool EnclosureDownloader::setUp(CURL *easy, Transfer &transfer)
{
    QDir().mkpath(QFileInfo(transfer.job.file).absolutePath());
    transfer.part.setFileName(partOf(transfer.job.file));
    if (!transfer.part.open(QIODevice::ReadWrite | QIODevice::Unbuffered))
        return false;
    transfer.offset = transfer.part.size();
    transfer.part.seek(transfer.offset);
    const QByteArray url = transfer.job.url.toEncoded();
    curl_easy_setopt(easy, CURLOPT_URL, url.constData());
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(easy, CURLOPT_MAXREDIRS, 5L);
    curl_easy_setopt(easy, CURLOPT_FAILONERROR, 1L);
    quillon::CurlProxy::apply(easy, m_policy->route(transfer.job.url));
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT, 30L);
    // A stalled server is given up after a minute below one byte a second.
    curl_easy_setopt(easy, CURLOPT_LOW_SPEED_LIMIT, 1L);
    curl_easy_setopt(easy, CURLOPT_LOW_SPEED_TIME, 60L);
    curl_easy_setopt(easy, CURLOPT_USERAGENT, "quillon-media/1.0");
    // Large reads: curl's 16 KiB woke the event loop and wrote the part for every 16 KiB.
    curl_easy_setopt(easy, CURLOPT_BUFFERSIZE, kReadBytes);
    curl_easy_setopt(easy, CURLOPT_MAXFILESIZE_LARGE, curl_off_t(transfer.maxBytes));
    if (transfer.offset > 0)
        curl_easy_setopt(easy, CURLOPT_RESUME_FROM_LARGE, curl_off_t(transfer.offset));
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &EnclosureDownloader::onData);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, &transfer);
    return true;
}

size_t EnclosureDownloader::onData(char *data, size_t size, size_t count, void *transfer)
{
    const qint64 bytes = qint64(size * count);
    return write(*static_cast<Transfer *>(transfer), data, bytes) ? size_t(bytes) : 0;
}

bool EnclosureDownloader::write(Transfer &transfer, const char *data, qint64 size)
{
    if (!transfer.started) {
        transfer.started = true;
        long status = 0;
        curl_easy_getinfo(transfer.easy, CURLINFO_RESPONSE_CODE, &status);
        // Only 206 continues the part; a whole answer starts it over.
        if (status != 206 && transfer.offset > 0) {
            transfer.part.resize(0);
            transfer.part.seek(0);
            transfer.offset = 0;
        }
    }
    if (transfer.offset + transfer.written + size > transfer.maxBytes) {
        transfer.tooLarge = true;
        return false;
    }
    if (transfer.part.write(data, size) != size) {
        transfer.diskFull = true;
        return false;
    }
    transfer.written += size;
    return true;
}

void EnclosureDownloader::onDone(CURL *easy, CURLcode code)
{
    const std::shared_ptr<Transfer> transfer = m_running.take(easy);
    if (!transfer)
        return;
    m_multi.stop(easy);
    if (--m_perHost[transfer->job.url.host()] <= 0)
        m_perHost.remove(transfer->job.url.host());
    if (code == CURLE_RANGE_ERROR) {
        // The server cannot continue the part: begin again with the whole file.
        m_multi.give(easy);
        transfer->part.close();
        QFile::remove(transfer->part.fileName());
        qCInfo(lcMedia) << transfer->job.url.toDisplayString() << "cannot be continued; downloading it whole";
        add(transfer->job);
        return;
    }
    const Result result = conclude(easy, code, *transfer);
    m_multi.give(easy);
    Q_EMIT finished(result);
    pump();
}

EnclosureDownloader::Result EnclosureDownloader::conclude(CURL *easy, CURLcode code, Transfer &transfer)
{
    Result result{transfer.job.key, Outcome::Done, QString(), transfer.offset > 0};
    long status = 0;
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
    transfer.part.close();
    if (code == CURLE_HTTP_RETURNED_ERROR && status == 416 && transfer.offset > 0) {
        code = CURLE_OK; // the part was already whole when the run ended
    }
    if (transfer.tooLarge || code == CURLE_FILESIZE_EXCEEDED) {
        QFile::remove(transfer.part.fileName());
        return {transfer.job.key, Outcome::GiveUp,
                QStringLiteral("larger than the limit of %1 MiB").arg(transfer.maxBytes >> 20), false};
    }
    if (transfer.diskFull)
        return {transfer.job.key, Outcome::Retry, QStringLiteral("the disk is full or cannot be written"),
                false};
    if (code != CURLE_OK) {
        const bool refused = code == CURLE_HTTP_RETURNED_ERROR && status >= 400 && status < 500;
        return {transfer.job.key, refused ? Outcome::GiveUp : Outcome::Retry,
                refused ? QStringLiteral("HTTP %1").arg(status) : QString::fromUtf8(curl_easy_strerror(code)),
                false};
    }
    QFile::remove(transfer.job.file); // overwriting was chosen when the name was
    if (!QFile::rename(transfer.part.fileName(), transfer.job.file))
        return {transfer.job.key, Outcome::Retry, QStringLiteral("cannot rename the finished file"), false};
    return result;
}
