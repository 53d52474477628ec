#include "MainModule.h"

#include "AddSubscriptionEntry.h"
#include "CBConnect.h"
#include "ClientAccess.h"
#include "EngineNames.h"
#include "FirstRunSetup.h"
#include "HandleGuard.h"
#include "MailStoreOutlook.h"
#include "OptionPageFactory.h"
#include "PropertyBag.h"
#include "SingleInstance.h"
#include "StandardOptionPages.h"
#include "SubscribeClientFactory.h"
#include "callbackSupport.h"
#include "frmMainWindow.h"
#include "frmOptionsWindow.h"
#include "localization.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QPointer>
#include <QTimerEvent>

Q_LOGGING_CATEGORY(lcStartup, "corvell.startup")

namespace MainModule {

namespace {

const QString &kConsumerId = EngineNames::kConfigConsumer;
constexpr qint32 kTickMs = 2000;

// Receives the system timers the tick arms; every timer it holds calls TickProc.
class TickTarget : public QObject
{
protected:
    void timerEvent(QTimerEvent *) override { TickProc(); }
};

struct State
{
    bool retryConnect = false;
    int tickTimerId = 0;
    QPointer<frmMainWindow> mainWindow;
    std::function<void(QWidget *)> shownHook;
    qint32 skippedOutlines = 0;
    // Why the engine was last not reached; logged when it changes, not on every tick.
    QString unreachedBecause;
};

State &state()
{
    static State instance;
    return instance;
}

TickTarget &tickTarget()
{
    static TickTarget instance;
    return instance;
}

void OnMainWindowUnloaded()
{
    StopTickTimer();
    ClearStrings();
}

} // namespace

frmMainWindow *MainWindow()
{
    if (!state().mainWindow) {
        auto *window = new frmMainWindow();
        window->setAttribute(Qt::WA_DeleteOnClose);
        MainWindowEntryPoints points = AddSubscriptionEntry::EntryPoints();
        points.options = &OpenOptionsWindow;
        points.firstRunSetup = &RunFirstRunSetup;
        window->SetEntryPoints(std::move(points));
        QObject::connect(window, &frmMainWindow::Unloaded, window, &OnMainWindowUnloaded);
        state().mainWindow = window;
    }
    return state().mainWindow;
}

void OpenOptionsWindow(QWidget *host)
{
    static const OptionPageFactory pages = [] {
        OptionPageFactory factory;
        RegisterStandardOptionPages(factory);
        return factory;
    }();
    frmOptionsWindow window(pages, host);
    // The wizard opens over the options window; what it adds is announced to the main window.
    window.SetAddSubscription(
        [host](QWidget *owner) { AddSubscriptionEntry::OpenAddSubscription(owner, host); });
    window.SetHost(host);
    window.SetClient(ClientAccess::GetEngineClient());
    window.FormLoad();
    window.CentreOver(host);
    window.exec();
    // "ShowLogWindow" may have changed: the log window opens or closes now.
    if (auto *mainWindow = qobject_cast<frmMainWindow *>(host))
        mainWindow->FollowLogWindowSetting();
}

void RunFirstRunSetup(QWidget *owner)
{
    auto *window = qobject_cast<frmMainWindow *>(owner);
    const quillon::SubscribeClientPtr client = ClientAccess::GetEngineClient();
    if (!window || !client)
        return;
    FirstRunSetup setup(*window, client,
                        [client](const QString &readerId) { ImportFromReader(client, readerId); });
    setup.Run();
}

bool RetryConnect()
{
    return state().retryConnect;
}
int TickTimerId()
{
    return state().tickTimerId;
}
void SetMainWindowShownHook(std::function<void(QWidget *)> hook)
{
    state().shownHook = std::move(hook);
}
qint32 &SkippedOutlineCount()
{
    return state().skippedOutlines;
}

void Main()
{
    state().retryConnect = false;
    if (SingleInstance::AnotherInstanceRunning())
        return;
    MailStoreOutlook::Install(&ClientAccess::GetEngineClient);
    if (ConnectToEngine(kConsumerId)) {
        state().retryConnect = true;
        StartTickTimer(kTickMs);
        return;
    }
    frmMainWindow *window = MainWindow();
    window->SetClient(ClientAccess::GetEngineClient());
    window->show();
    if (state().shownHook)
        state().shownHook(window);
    StartTickTimer(kTickMs);
}

bool ConnectToEngine(const QString &consumerId)
{
    try {
        if (ClientAccess::GetEngineClient())
            return false;
        ClientAccess::SetEngineClient(
            quillon::SubscribeClientFactory::Create(quillon::SubscribeClientFactory::kProgId));
        const quillon::SubscribeClientPtr client = ClientAccess::GetEngineClient();
        if (!client)
            return true;
        auto callback = std::make_shared<CBConnect>();
        callback->Setup(MainWindow());
        client->Connect(consumerId, std::move(callback));
        client->Log(QStringLiteral("UI Client <> Engine comms established\r\n"), 999);
        if (!std::exchange(state().unreachedBecause, QString()).isEmpty())
            qCInfo(lcStartup) << "engine reached";
        return false;
    } catch (const std::exception &e) {
        // The tick retries every two seconds, with more timers each time: one line per change.
        const QString reason = QString::fromLocal8Bit(e.what());
        if (std::exchange(state().unreachedBecause, reason) != reason)
            qCInfo(lcStartup) << "engine not reached, waiting for it:" << reason;
        return true;
    }
}

void StartTickTimer(qint32 milliseconds)
{
    // Overwrites any identifier stored before, as the system timer call does: an earlier
    // timer that was not stopped keeps firing.
    state().tickTimerId = tickTarget().startTimer(milliseconds);
}

void StopTickTimer()
{
    if (state().tickTimerId != 0) {
        tickTarget().killTimer(state().tickTimerId);
        state().tickTimerId = 0;
    }
}

void TickProc()
{
    StopTickTimer();
    if (!ClientAccess::GetEngineClient()) {
        if (state().retryConnect) {
            Main();
            // Armed a second time on purpose: see the start-up notes in docs/DESIGN.md.
            StartTickTimer(kTickMs);
        } else if (!state().mainWindow) {
            QCoreApplication::quit();
        }
        return;
    }
    MainWindow()->Run();
    StartTickTimer(kTickMs);
}

void Reset()
{
    StopTickTimer();
    ClientAccess::SetEngineClient(nullptr);
    if (state().mainWindow)
        delete state().mainWindow.data();
    state().retryConnect = false;
    state().shownHook = {};
    state().skippedOutlines = 0;
    state().unreachedBecause.clear();
    callbackSupport::PendingAddCount() = 0;
}

void ImportFromReader(const quillon::SubscribeClientPtr &client, const QString &readerName)
{
    const bool newsGator = readerName == QLatin1String("newsgator");
    // Only IntraVnews' list is taken as it is; every other reader's outline needs an address.
    const bool testUrl = readerName != QLatin1String("intravnews");
    HandleGuard outlines(*client, client->ListReaderSubscriptions(readerName));
    const qint32 count = client->ListCount(outlines.get());
    for (qint32 i = 0; i < count; ++i) {
        QCoreApplication::processEvents();
        HandleGuard outline(*client, client->ListHandle(outlines.get(), i));
        if (!outline.isValid())
            continue;
        if (newsGator && client->GetStringValue(outline.get(), QStringLiteral("ng:useDefaultCredentials")) ==
                             QLatin1String("ngos")) {
            ++state().skippedOutlines;
            continue;
        }
        const QString title = client->GetStringValue(outline.get(), QStringLiteral("title"));
        const QString url = client->GetStringValue(outline.get(), QStringLiteral("xmlUrl"));
        if (testUrl && (url.isEmpty() || url == QLatin1String(" ") || url == quillon::kMissingText))
            continue;
        callbackSupport::RequestAddSubscription(MainWindow(), client, title, url, true, QString(), QString(),
                                                QString());
    }
}

} // namespace MainModule
