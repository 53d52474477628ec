#pragma once

#include "FeedListPanel.h"

#include <QWidget>

#include <memory>

namespace Ui {
class ImportTab;
}
class QCheckBox;
class QComboBox;

// Tab 3 of the wizard: feeds from an OPML file or from another feed reader on this machine.
class ImportTab : public QWidget
{
    Q_OBJECT
public:
    struct Source
    {
        QString id; // "" for an OPML file
        QString title;
        bool available = true;
    };

    explicit ImportTab(QWidget *parent = nullptr);
    ~ImportTab() override;

    [[nodiscard]] FeedListPanel &List() { return *m_list; }
    // The file source first, then the readers the engine offers.
    void SetSources(const QList<Source> &readers);
    [[nodiscard]] Source CurrentSource() const;
    void SelectSource(int index);
    [[nodiscard]] QString FilePath() const;
    void SetFilePath(const QString &path);
    // Shows the loading text, the no-data text, or the grid.
    enum class View { Grid, Loading, NoData };
    void Show(View view);
    void SetImportAll(bool checked);
    [[nodiscard]] QComboBox &Categories() const;
    [[nodiscard]] QCheckBox &UseCategory() const;

Q_SIGNALS:
    void SourceChanged();
    void LoadClicked();
    void ImportAllClicked(bool checked);

private:
    // The system's file chooser; a chosen file is loaded at once.
    void BrowseFile();

    std::unique_ptr<Ui::ImportTab> ui;
    std::unique_ptr<FeedListPanel> m_list;
    QList<Source> m_sources;
};
