#pragma once

#include "SearchSource.h"

#include <QList>
#include <QWidget>

#include <memory>

namespace Ui {
class SearchTab;
}
class QComboBox;

// Tab 2 of the wizard: a search of one of the engine's search sources, kept as a subscription.
class SearchTab : public QWidget
{
    Q_OBJECT
public:
    explicit SearchTab(QWidget *parent = nullptr);
    ~SearchTab() override;

    void SetSources(const QList<SearchSource> &sources);
    [[nodiscard]] bool HasSources() const { return !m_sources.isEmpty(); }
    // The selected source; its guid is the missing marker when none is selected.
    [[nodiscard]] SearchSource CurrentSource() const;
    [[nodiscard]] QString Words() const;
    [[nodiscard]] bool LimitChecked() const;
    [[nodiscard]] QString LimitText() const;
    [[nodiscard]] QComboBox &Categories() const;

    // "( min to max )", or "n/a" when the source gives no range.
    [[nodiscard]] static QString RangeText(const SearchSource &source);

private:
    void ShowRange();

    std::unique_ptr<Ui::SearchTab> ui;
    QList<SearchSource> m_sources;
};
