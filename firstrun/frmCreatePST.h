#pragma once

#include "NewStoreRequest.h"
#include "SubscribeClient.h"

#include <QDate>
#include <QDialog>

#include <functional>
#include <memory>

namespace Ui {
class frmCreatePST;
}

// Names and places a new personal-folders store for the delivered feeds. The Outlook defaults
// page opens it; GetResults hands the choice to the delivery through its settings.
class frmCreatePST : public QDialog
{
    Q_OBJECT
public:
    // Asks for a file to save: owner, title, filter in "description|patterns" form, proposed path.
    using FileChooser = std::function<QString(QWidget *owner, const QString &title, const QString &filter,
                                              const QString &proposed)>;

    static inline const QString kChooserTitle = QStringLiteral("Choose a location...");
    static inline const QString kFilter = QStringLiteral("Outlook Data Files (*.pst)|*.pst");
    static inline const QString kMissingText =
        QStringLiteral("Please enter a name and select a location for the new Outlook data file.");

    explicit frmCreatePST(QWidget *parent = nullptr);
    ~frmCreatePST() override;

    void SetFileChooser(FileChooser chooser) { m_chooseFile = std::move(chooser); }
    // The store asked for; meaningful once the dialog was accepted.
    [[nodiscard]] NewStoreRequest Request() const;
    // Writes the four keys when the dialog was accepted and returns 1; else writes nothing, 0.
    int GetResults(quillon::SubscribeClient &client);

    // "Corvell for Outlook" and the date, with the characters a file name cannot hold as "-".
    [[nodiscard]] static QString ProposedName(const QDate &today);

private:
    void ChoosePath();
    void Confirm();

    std::unique_ptr<Ui::frmCreatePST> ui;
    FileChooser m_chooseFile;
};
