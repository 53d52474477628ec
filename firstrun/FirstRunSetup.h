#pragma once

#include "ImportTab.h"
#include "SubscribeClient.h"
#include "WelcomeChoices.h"

#include <QObject>

#include <functional>
#include <optional>

class frmMainWindow;
class frmWelcome;

// The first start for a user: finds the other readers, asks the welcome dialog, stores the
// choices and requests the first subscriptions, with the main window holding its refreshes.
class FirstRunSetup : public QObject
{
    Q_OBJECT
public:
    // Shows the filled dialog modally; tests tick boxes and answer instead.
    using WelcomeRunner = std::function<void(frmWelcome &)>;
    // Imports the subscriptions a reader holds, given its id.
    using ReaderImport = std::function<void(const QString &readerId)>;

    static inline const QString kFolderTitle = QStringLiteral("Corvell for Outlook");
    static inline const QString kStatusUploading = QStringLiteral("Uploading Requests To Server");

    FirstRunSetup(frmMainWindow &window, quillon::SubscribeClientPtr client, ReaderImport importReader);

    void SetWelcomeRunner(WelcomeRunner runner) { m_runWelcome = std::move(runner); }
    // The whole flow; returns when the requests are sent.
    void Run();

    // "A" for "newsgator", "B" for "intravnews", in the order found; other readers add nothing.
    [[nodiscard]] static QString ImportCode(const QList<ImportTab::Source> &readers);

    Q_INVOKABLE void EventImportSourcesCallback(qint32 answer);

Q_SIGNALS:
    void ReadersFound();

private:
    [[nodiscard]] QList<ImportTab::Source> FindReaders();
    void SaveFileTypes(const WelcomeChoices &choices);
    void SaveDelivery(bool newStore);
    // True when anything was asked of the engine.
    bool RequestSubscriptions(const WelcomeChoices &choices, const QList<ImportTab::Source> &readers);

    frmMainWindow &m_window;
    quillon::SubscribeClientPtr m_client;
    ReaderImport m_importReader;
    WelcomeRunner m_runWelcome;
    std::optional<QList<ImportTab::Source>> m_readers;
};
