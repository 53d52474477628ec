#pragma once

#include "FeedListModel.h"

#include <QObject>

class QLabel;
class QPlainTextEdit;
class QTreeView;

// One list grid of the wizard with its details box: shows the model, toggles a feed from its
// check or action cell, and names the selected feed in "Feed Details (...)".
class FeedListPanel : public QObject
{
    Q_OBJECT
public:
    FeedListPanel(QTreeView &grid, QLabel &heading, QPlainTextEdit &details, QObject *parent = nullptr);

    [[nodiscard]] FeedListModel &Model() { return m_model; }
    // The current row's title cell, or an invalid index.
    [[nodiscard]] QModelIndex CurrentRow() const;
    void SelectRow(const QModelIndex &index);
    void Clear();
    void ExpandAll();
    void CollapseAll();

Q_SIGNALS:
    void RowToggled(const QModelIndex &titleIndex, bool checked);
    void CurrentRowChanged();

private:
    void ShowDetails();

    QTreeView &m_grid;
    QLabel &m_heading;
    QPlainTextEdit &m_details;
    FeedListModel m_model;
};
