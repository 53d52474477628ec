#pragma once

#include <curl/curl.h>

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <functional>
#include <unordered_map>
#include <vector>

namespace quillon {

// libcurl's multi interface run by the Qt event loop of the thread this lives on: curl names
// the sockets to watch and the time to wake, and is called back from there. Transfers that
// end are handed to onDone one at a time, outside any curl callback, so it may add and remove
// handles freely. Easy handles are kept for reuse; connections stay open between transfers.
class CurlMulti : public QObject
{
    Q_OBJECT
public:
    using Done = std::function<void(CURL *easy, CURLcode code)>;

    explicit CurlMulti(Done onDone, QObject *parent = nullptr);
    ~CurlMulti() override;

    // A clean easy handle, or nullptr when curl has none to give.
    [[nodiscard]] CURL *take();
    // Back to the pool with its settings cleared; the handle must not be running.
    void give(CURL *easy);
    [[nodiscard]] bool start(CURL *easy);
    void stop(CURL *easy);

private:
    struct Watch
    {
        QSocketNotifier *read = nullptr;
        QSocketNotifier *write = nullptr;
    };

    static int onSocket(CURL *easy, curl_socket_t socket, int what, void *self, void *socketData);
    static int onTimer(CURLM *multi, long timeoutMs, void *self);
    void watch(curl_socket_t socket, int what);
    [[nodiscard]] QSocketNotifier *notifier(curl_socket_t socket, QSocketNotifier *&slot,
                                            QSocketNotifier::Type type);
    void driveTransfers(curl_socket_t socket, int events);

    Done m_onDone;
    CURLM *m_multi = nullptr;
    QTimer m_timer;
    std::unordered_map<curl_socket_t, Watch> m_watches;
    std::vector<CURL *> m_idle;
};

} // namespace quillon
