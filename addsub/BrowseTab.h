#pragma once

#include "FeedListPanel.h"

#include <QStandardItemModel>
#include <QWidget>

#include <memory>

namespace Ui {
class BrowseTab;
}
class QCheckBox;
class QComboBox;

// Tab 1 of the wizard: the directory's root list of feed lists, and the feeds of the list
// selected in it.
class BrowseTab : public QWidget
{
    Q_OBJECT
public:
    explicit BrowseTab(QWidget *parent = nullptr);
    ~BrowseTab() override;

    [[nodiscard]] FeedListPanel &List() { return *m_list; }
    [[nodiscard]] QStandardItemModel &RootList() { return m_roots; }
    // Rows of the root list: title and the list's address. Row 0 is selected, which asks for it.
    void ShowRoots(const QList<std::pair<QString, QString>> &rows);
    void ClearRoots();
    [[nodiscard]] QString SelectedRootUrl() const;
    void SelectRoot(int row);
    void ShowLoading(bool loading);
    [[nodiscard]] QComboBox &Categories() const;
    [[nodiscard]] QCheckBox &UseCategory() const;

Q_SIGNALS:
    void RootSelected(const QString &url);

private:
    std::unique_ptr<Ui::BrowseTab> ui;
    QStandardItemModel m_roots;
    std::unique_ptr<FeedListPanel> m_list;
};
