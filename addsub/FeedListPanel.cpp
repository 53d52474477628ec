#include "FeedListPanel.h"

#include <QHeaderView>
#include <QLabel>
#include <QPlainTextEdit>
#include <QTreeView>

FeedListPanel::FeedListPanel(QTreeView &grid, QLabel &heading, QPlainTextEdit &details, QObject *parent)
    : QObject(parent), m_grid(grid), m_heading(heading), m_details(details)
{
    m_grid.setModel(&m_model);
    for (int c : {FeedListModel::Url, FeedListModel::Description, FeedListModel::Subscribed})
        m_grid.setColumnHidden(c, true);
    m_grid.header()->setStretchLastSection(false);
    m_grid.header()->setSectionResizeMode(FeedListModel::Title, QHeaderView::Stretch);
    m_grid.header()->setSectionResizeMode(FeedListModel::Add, QHeaderView::ResizeToContents);
    connect(&m_model, &FeedListModel::RowToggled, this, &FeedListPanel::RowToggled);
    connect(m_grid.selectionModel(), &QItemSelectionModel::currentChanged, this, [this]() {
        ShowDetails();
        Q_EMIT CurrentRowChanged();
    });
    // A click on the action cell toggles the row like its check box does.
    connect(&m_grid, &QTreeView::clicked, this, [this](const QModelIndex &index) {
        if (index.column() == FeedListModel::Add)
            m_model.Toggle(index);
    });
    ShowDetails();
}

QModelIndex FeedListPanel::CurrentRow() const
{
    const QModelIndex current = m_grid.currentIndex();
    return current.isValid() ? current.siblingAtColumn(FeedListModel::Title) : QModelIndex();
}

void FeedListPanel::SelectRow(const QModelIndex &index)
{
    m_grid.setCurrentIndex(index);
}

void FeedListPanel::Clear()
{
    m_model.Clear();
    ShowDetails();
}

void FeedListPanel::ExpandAll()
{
    m_grid.expandAll();
}

void FeedListPanel::CollapseAll()
{
    m_grid.collapseAll();
}

void FeedListPanel::ShowDetails()
{
    const QModelIndex row = CurrentRow();
    if (!m_model.IsFeed(row)) {
        m_heading.setText(QStringLiteral("Feed Details (No Feed Selected)"));
        m_details.clear();
        return;
    }
    m_heading.setText(QStringLiteral("Feed Details (") + m_model.TitleOf(row) + QStringLiteral(")"));
    m_details.setPlainText(m_model.DescriptionOf(row) + QStringLiteral("\n") + m_model.UrlOf(row));
}
