#include "CurlMulti.h"

#include "FetchLogging.h"

#include <QPointer>

#include <algorithm>

namespace quillon {

namespace {
// curl's global state, set up before the first handle and torn down at exit.
struct CurlLibrary
{
    CurlLibrary() { ok = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK; }
    ~CurlLibrary()
    {
        if (ok)
            curl_global_cleanup();
    }
    bool ok = false;
};

bool curlReady()
{
    static const CurlLibrary library;
    return library.ok;
}

// Enough idle easy handles for every transfer that may run at once to find one.
constexpr std::size_t kMaxIdle = 64;
} // namespace

CurlMulti::CurlMulti(Done onDone, QObject *parent) : QObject(parent), m_onDone(std::move(onDone))
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, [this]() { driveTransfers(CURL_SOCKET_TIMEOUT, 0); });
    if (!curlReady() || !(m_multi = curl_multi_init())) {
        qCWarning(lcFetch) << "libcurl could not be set up; web fetches will fail";
        return;
    }
    curl_multi_setopt(m_multi, CURLMOPT_SOCKETFUNCTION, &CurlMulti::onSocket);
    curl_multi_setopt(m_multi, CURLMOPT_SOCKETDATA, this);
    curl_multi_setopt(m_multi, CURLMOPT_TIMERFUNCTION, &CurlMulti::onTimer);
    curl_multi_setopt(m_multi, CURLMOPT_TIMERDATA, this);
}

CurlMulti::~CurlMulti()
{
    // Running handles are the owner's to stop first; curl may still call back while closing
    // its connections, which the members below are alive to hear.
    for (CURL *easy : m_idle)
        curl_easy_cleanup(easy);
    if (m_multi)
        curl_multi_cleanup(m_multi);
    m_timer.stop();
}

CURL *CurlMulti::take()
{
    if (!m_idle.empty()) {
        CURL *easy = m_idle.back();
        m_idle.pop_back();
        return easy;
    }
    return m_multi ? curl_easy_init() : nullptr;
}

void CurlMulti::give(CURL *easy)
{
    if (!easy)
        return;
    if (m_idle.size() >= kMaxIdle) {
        curl_easy_cleanup(easy);
        return;
    }
    curl_easy_reset(easy);
    m_idle.push_back(easy);
}

bool CurlMulti::start(CURL *easy)
{
    return m_multi && curl_multi_add_handle(m_multi, easy) == CURLM_OK;
}

void CurlMulti::stop(CURL *easy)
{
    if (m_multi)
        curl_multi_remove_handle(m_multi, easy);
}

int CurlMulti::onSocket(CURL *, curl_socket_t socket, int what, void *self, void *)
{
    static_cast<CurlMulti *>(self)->watch(socket, what);
    return 0;
}

int CurlMulti::onTimer(CURLM *, long timeoutMs, void *self)
{
    // curl must not be re-entered from here: the timer calls it back from the event loop.
    QTimer &timer = static_cast<CurlMulti *>(self)->m_timer;
    if (timeoutMs < 0)
        timer.stop();
    else
        timer.start(int(std::min<long>(timeoutMs, 24L * 3600 * 1000)));
    return 0;
}

void CurlMulti::watch(curl_socket_t socket, int what)
{
    // A socket curl stops watching keeps its notifiers, switched off: a kept-alive connection is
    // watched again for its next transfer, and making and deleting a pair per feed cost an
    // object, a connection and a posted deletion (which wakes the loop) each time. They are as
    // many as the socket numbers curl ever used, and go with this object.
    if (what == CURL_POLL_REMOVE) {
        const auto it = m_watches.find(socket);
        if (it == m_watches.end())
            return;
        for (QSocketNotifier *n : {it->second.read, it->second.write}) {
            if (n)
                n->setEnabled(false);
        }
        return;
    }
    Watch &w = m_watches[socket];
    const bool in = what == CURL_POLL_IN || what == CURL_POLL_INOUT;
    const bool out = what == CURL_POLL_OUT || what == CURL_POLL_INOUT;
    if (in || w.read)
        notifier(socket, w.read, QSocketNotifier::Read)->setEnabled(in);
    if (out || w.write)
        notifier(socket, w.write, QSocketNotifier::Write)->setEnabled(out);
}

QSocketNotifier *CurlMulti::notifier(curl_socket_t socket, QSocketNotifier *&slot, QSocketNotifier::Type type)
{
    if (slot)
        return slot;
    slot = new QSocketNotifier(qintptr(socket), type, this);
    const int events = type == QSocketNotifier::Read ? CURL_CSELECT_IN : CURL_CSELECT_OUT;
    connect(slot, &QSocketNotifier::activated, this,
            [this, socket, events]() { driveTransfers(socket, events); });
    return slot;
}

void CurlMulti::driveTransfers(curl_socket_t socket, int events)
{
    if (!m_multi)
        return;
    int running = 0;
    curl_multi_socket_action(m_multi, socket, events, &running);
    // onDone may end this object (an answer's receiver dropping the fetcher).
    const QPointer<CurlMulti> alive(this);
    int queued = 0;
    while (CURLMsg *message = curl_multi_info_read(m_multi, &queued)) {
        if (message->msg != CURLMSG_DONE)
            continue;
        CURL *easy = message->easy_handle;
        const CURLcode code = message->data.result;
        m_onDone(easy, code);
        if (!alive)
            return;
    }
}

} // namespace quillon
