#pragma once

#include "ConfigHost.h"
#include "ConfigPage.h"
#include "ModuleTable.h"
#include "OptionPageFactory.h"

#include <QDialog>
#include <QHash>
#include <QPointer>

#include <functional>
#include <memory>

namespace Ui {
class frmOptionsWindow;
}

// The modal options window: the module list on the left, the chosen module's page on the
// right, one Apply/OK/Cancel flow and a hot-help line. Pages reach it through ConfigHost; it
// calls their operations by name.
class frmOptionsWindow : public QDialog, public ConfigHost
{
    Q_OBJECT
public:
    explicit frmOptionsWindow(const OptionPageFactory &pages, QWidget *parent = nullptr,
                              ModuleTable modules = ModuleTable::Standard());
    ~frmOptionsWindow() override;

    // The host contract; the status line, the busy cursor and the categories are the host's.
    void SetHost(QObject *host) override { m_host = host; }
    void SetClient(quillon::SubscribeClientPtr client) override { m_client = std::move(client); }
    [[nodiscard]] QString GetConsumerID() const override;
    [[nodiscard]] QString GetNewsSubscriptionType() const override;
    void OnStatusChange() override;
    void EditConfiguration(qint32 subscriptionId, bool &handled) override;
    void SetHotHelp(const QString &text, const QString &warning) override;
    void SetStatusText(const QString &text) override;
    void SetBusy(bool busy) override;
    [[nodiscard]] QStringList Categories() const override;

    // Where the module icons are; the program's "Images" data folder unless set.
    void SetImagesFolder(const QString &folder) { m_imagesFolder = folder; }
    // Opens the add-subscription wizard over the given owner.
    void SetAddSubscription(std::function<void(QWidget *owner)> open) { m_addSubscription = std::move(open); }

    // Builds the list and the pages; runs once, at the latest when the window is first shown.
    void FormLoad();
    // Shows the network page, which no row lists, in the place of the current module's page; a
    // click on that module's row brings its page back.
    void ShowNetworkPane();
    // Puts the window's centre on the host's centre.
    void CentreOver(const QWidget *host);
    // 1-based; 0 while none is shown.
    [[nodiscard]] int CurrentModule() const { return m_current; }
    [[nodiscard]] ConfigPage *Page(const QString &paneName) const { return m_pages.value(paneName); }

    void done(int result) override;

protected:
    void showEvent(QShowEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    // The list rows and the pages; answers the row to show first.
    int BuildModules();
    void SetCaptions();
    void BuildRow(int index, const CModuleRecord &module);
    void MakePage(const QString &paneName, bool missingIsAnError);
    void OnRowChosen(int row);
    [[nodiscard]] bool SettleUnappliedChanges();
    void SwitchTo(int module);
    void MoveSelectionTo(int row);
    [[nodiscard]] ConfigPage *CurrentPage() const;
    // The page in view: the current module's, or the network page in its place.
    [[nodiscard]] ConfigPage *ShownPage() const;
    bool ApplyCurrentModule();
    void OnApply();
    void OnOK();
    void ShowOwnHotHelp(const QString &controlName);
    void Unload();

    std::unique_ptr<Ui::frmOptionsWindow> ui;
    const OptionPageFactory &m_factory;
    ModuleTable m_modules;
    QPointer<QObject> m_host;
    quillon::SubscribeClientPtr m_client;
    QHash<QString, QPointer<ConfigPage>> m_pages;
    QHash<QString, QString> m_hotHelp;
    QString m_lastHotHelpKey;
    QString m_imagesFolder;
    std::function<void(QWidget *)> m_addSubscription;
    int m_current = 0;
    bool m_loading = false;
    bool m_networkShown = false;
    bool m_loaded = false;
    bool m_unloaded = false;
};
