#pragma once

#include "CurlMulti.h"
#include "FetchPolicy.h"

#include <QFile>
#include <QHash>
#include <QList>
#include <QObject>
#include <QUrl>

#include <memory>

// Downloads files into "<file>.part" through libcurl, a few at a time and fewer per host, and
// renames each into place once whole. A part left by an interrupted run is continued with a
// range request; a server that ignores the range sends the whole file again.
class EnclosureDownloader : public QObject
{
    Q_OBJECT
public:
    struct Limits
    {
        int total = 16;
        int perHost = 6;
        qint64 maxBytes = qint64(4) << 30;
    };
    struct Job
    {
        quint64 key = 0;
        QUrl url;
        QString file; // the final path; the part is beside it
    };
    enum class Outcome {
        Done,
        Retry,  // the network or the disk failed; the part keeps its place
        GiveUp, // refused by the server, or too large
    };
    struct Result
    {
        quint64 key = 0;
        Outcome outcome = Outcome::Done;
        QString error;
        bool resumed = false; // continued a part with a range request
    };

    // Each download goes the way the policy routes its address.
    EnclosureDownloader(Limits limits, std::shared_ptr<quillon::FetchPolicy> policy,
                        QObject *parent = nullptr);
    ~EnclosureDownloader() override;

    void add(const Job &job);
    [[nodiscard]] int active() const { return int(m_running.size() + m_queue.size()); }
    [[nodiscard]] static QString partOf(const QString &file) { return file + QStringLiteral(".part"); }

Q_SIGNALS:
    void finished(const EnclosureDownloader::Result &result);

private:
    struct Transfer
    {
        Job job;
        CURL *easy = nullptr;
        qint64 maxBytes = 0;
        QFile part;
        qint64 offset = 0;  // bytes the part held when the transfer began
        qint64 written = 0; // bytes written by this transfer
        bool started = false;
        bool tooLarge = false;
        bool diskFull = false;
    };

    static size_t onData(char *data, size_t size, size_t count, void *transfer);
    // The answer's first bytes decide whether the part is continued or begun again.
    [[nodiscard]] static bool write(Transfer &transfer, const char *data, qint64 size);
    [[nodiscard]] bool setUp(CURL *easy, Transfer &transfer);
    void pump();
    void onDone(CURL *easy, CURLcode code);
    [[nodiscard]] Result conclude(CURL *easy, CURLcode code, Transfer &transfer);

    Limits m_limits;
    std::shared_ptr<quillon::FetchPolicy> m_policy;
    quillon::CurlMulti m_multi;
    QList<Job> m_queue;
    QHash<CURL *, std::shared_ptr<Transfer>> m_running;
    QHash<QString, int> m_perHost;
};
