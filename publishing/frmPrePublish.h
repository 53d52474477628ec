#pragma once

#include "PrePublishChoices.h"
#include "SubscribeClient.h"

#include <QDialog>

#include <memory>
#include <utility>

class QCheckBox;

namespace Ui {
class frmPrePublish;
}

// Asks how an item is posted. The choices are read from the publishing defaults when the
// dialog opens and stored back only when the command button closes it. In save mode (the
// defaults edited without an item to post) the command reads "Save".
class frmPrePublish : public QDialog
{
    Q_OBJECT
public:
    static constexpr int kResultCommand = 1;
    static constexpr int kResultCancel = 2;

    frmPrePublish(quillon::SubscribeClientPtr client, QWidget *owner = nullptr);
    ~frmPrePublish() override;

    // Names the item and the weblog it goes to; empty texts leave the line out.
    void SetInitialStrings(const QString &itemTitle, const QString &weblogTitle);
    // The edit-or-publish choice made in the short request dialog, over the stored one.
    void PresetEditFirst(bool editFirst);
    // 1 when the command button closed the dialog (the choices are stored then), else 2.
    int Run(bool saveMode = false);
    [[nodiscard]] PrePublishChoices GetResults() const;
    void ApplyDialog();
    void CancelDialog();

private:
    [[nodiscard]] QList<std::pair<QCheckBox *, bool PrePublishChoices::*>> CheckBoxes() const;
    void ShowChoices(const PrePublishChoices &choices);
    void UpdateDependents();

    std::unique_ptr<Ui::frmPrePublish> ui;
    quillon::SubscribeClientPtr m_client;
    bool m_saveMode = false;
    int m_result = kResultCancel;
};
