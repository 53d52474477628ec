#pragma once

#include "ConfigPage.h"
#include "OpmlExport.h"
#include "SubscribeClient.h"

#include <functional>
#include <memory>

namespace Ui {
class ExportUI;
}

// The "OPML Export" module: the user checks subscriptions and writes them to an OPML file. The
// list is read once the page was first shown, so opening the window does not wait for it.
class ExportUI : public ConfigPage
{
    Q_OBJECT
public:
    // Asks for the file to write; empty when the user cancelled.
    using FileChooser = std::function<QString(QWidget *owner, const QString &filter)>;

    explicit ExportUI(quillon::SubscribeClientPtr client, QWidget *parent = nullptr);
    ~ExportUI() override;

    void Apply() override;
    void LoadValues() override;
    void SetFileChooser(FileChooser chooser) { m_chooseFile = std::move(chooser); }

    // The save dialog's filter, in the system's "description|patterns|..." form.
    static const QString kFilter;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void FillList();
    void CheckAll(bool checked);
    void Export();
    [[nodiscard]] QList<OpmlExport::Subscription> Checked() const;

    std::unique_ptr<Ui::ExportUI> ui;
    quillon::SubscribeClientPtr m_client;
    QList<OpmlExport::Subscription> m_subscriptions;
    FileChooser m_chooseFile;
    bool m_listRead = false;
};
