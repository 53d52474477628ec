#include "FirstRunSetup.h"

#include "AddSubscriptionRequests.h"
#include "ConsumerSettings.h"
#include "EngineNames.h"
#include "FileTypeAssociations.h"
#include "LocalSettings.h"
#include "NewStoreRequest.h"
#include "OpmlImport.h"
#include "frmMainWindow.h"
#include "frmWelcome.h"

#include <QEventLoop>
#include <QLoggingCategory>
#include <QTimer>

Q_LOGGING_CATEGORY(lcFirstRun, "corvell.firstrun")

namespace {
// The engine lists the readers from what is on disk; a slow disk must not hold the start for long.
constexpr int kReaderListWaitMs = 10000;
const QString kQuillon = QStringLiteral("Quillon");
} // namespace

FirstRunSetup::FirstRunSetup(frmMainWindow &window, quillon::SubscribeClientPtr client,
                             ReaderImport importReader)
    : m_window(window), m_client(std::move(client)), m_importReader(std::move(importReader)),
      m_runWelcome([](frmWelcome &dialog) { dialog.exec(); })
{
}

QString FirstRunSetup::ImportCode(const QList<ImportTab::Source> &readers)
{
    QString code;
    for (const ImportTab::Source &reader : readers) {
        if (reader.id == QLatin1String("newsgator"))
            code += QLatin1Char('A');
        else if (reader.id == QLatin1String("intravnews"))
            code += QLatin1Char('B');
    }
    return code;
}

void FirstRunSetup::EventImportSourcesCallback(qint32 answer)
{
    QList<ImportTab::Source> found;
    for (const ImportTab::Source &source : AddSubscriptionRequests(m_client).ReadImportSources(answer)) {
        if (source.available)
            found.append(source);
    }
    m_readers = found;
    Q_EMIT ReadersFound();
}

QList<ImportTab::Source> FirstRunSetup::FindReaders()
{
    m_readers.reset();
    QEventLoop loop;
    connect(this, &FirstRunSetup::ReadersFound, &loop, &QEventLoop::quit);
    QTimer::singleShot(kReaderListWaitMs, &loop, &QEventLoop::quit);
    AddSubscriptionRequests(m_client).RequestImportSources(this);
    if (!m_readers)
        loop.exec();
    if (!m_readers)
        qCWarning(lcFirstRun) << "the engine did not list the other readers in time; none offered";
    return m_readers.value_or(QList<ImportTab::Source>());
}

void FirstRunSetup::Run()
{
    const QList<ImportTab::Source> readers = FindReaders();
    SaveSetting(kQuillon, kQuillon, QStringLiteral("import"), ImportCode(readers));
    frmWelcome dialog(&m_window);
    for (int i = 0; i < readers.size(); ++i)
        dialog.SetCheck(i + 1, readers.at(i).title);
    dialog.IniitalizeDialog();
    dialog.AdjustDialogSize();
    // The engine may end while the user reads: the window closes and takes the question with it.
    connect(&m_window, &frmMainWindow::Unloaded, &dialog, &QDialog::reject);
    qCInfo(lcFirstRun) << "welcome dialog shown";
    m_runWelcome(dialog);
    const int result = dialog.GetResult();
    // Held back until the requests are out; the tick carries the refresh out afterwards.
    m_window.SetIgnoreMessages(true);
    m_window.MaybeRefreshDisplay();
    if (result == frmWelcome::kAccepted) {
        const WelcomeChoices choices = dialog.Choices();
        try {
            SaveFileTypes(choices);
            SaveDelivery(choices.newStore);
            if (RequestSubscriptions(choices, readers))
                m_window.SetStatusText(kStatusUploading);
        } catch (const std::exception &e) {
            qCWarning(lcFirstRun) << "the first choices were not all kept:" << e.what();
        }
    }
    m_window.SetIgnoreMessages(false);
    m_window.MaybeRefreshDisplay();
}

void FirstRunSetup::SaveFileTypes(const WelcomeChoices &choices)
{
    const auto associations = FileTypeAssociations::ForThisDesktop();
    for (int i = 0; i < WelcomeChoices::kFileTypes.size(); ++i) {
        SetConsumerSettingBool(*m_client, QStringLiteral("ENGINE"), QStringLiteral("FileTypeHandling"),
                               WelcomeChoices::kFileTypes.at(i), choices.fileTypes.value(i));
        associations->SetHandled(WelcomeChoices::kFileTypes.at(i), choices.fileTypes.value(i));
    }
}

void FirstRunSetup::SaveDelivery(bool newStore)
{
    if (newStore) {
        // The delivery's own default place, beside the mail it keeps now; nothing to move yet.
        NewStoreRequest{kFolderTitle, QString(), QStringLiteral("Corvell.pst"),
                        NewStoreRequest::Mode::CreateOnly}
            .Write(*m_client);
        return;
    }
    const QString section = EngineNames::kOutlookDefaults;
    SetConsumerSetting(*m_client, EngineNames::kOutlookConsumer, section,
                       QStringLiteral("MakeNewPST_fileName"), quillon::kMissingText);
    SetConsumerSetting(*m_client, EngineNames::kOutlookConsumer, section, QStringLiteral("RadioSubPlacement"),
                       QStringLiteral("2"));
    SetConsumerSetting(*m_client, EngineNames::kOutlookConsumer, section, QStringLiteral("SubFolderTitle"),
                       kFolderTitle);
}

bool FirstRunSetup::RequestSubscriptions(const WelcomeChoices &choices,
                                         const QList<ImportTab::Source> &readers)
{
    if (choices.starterFeeds) {
        OpmlImport::AddDefaultFeeds(&m_window, m_client);
        return true;
    }
    bool requested = false;
    for (int i = 0; i < readers.size() && i < choices.imports.size(); ++i) {
        if (choices.imports.at(i) && m_importReader) {
            m_importReader(readers.at(i).id);
            requested = true;
        }
    }
    return requested;
}
