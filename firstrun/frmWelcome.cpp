#include "frmWelcome.h"

#include "ui_frmWelcome.h"

frmWelcome::frmWelcome(QWidget *parent) : QDialog(parent), ui(std::make_unique<Ui::frmWelcome>())
{
    ui->setupUi(this);
    m_importLabel = ui->chkImport1->text();
    connect(ui->cmdAdd, &QPushButton::clicked, this, [this] {
        m_result = kAccepted;
        accept();
    });
    connect(ui->chkStarterFeeds, &QCheckBox::toggled, this, &frmWelcome::FollowStarterFeeds);
}

frmWelcome::~frmWelcome() = default;

QList<QCheckBox *> frmWelcome::FileTypeBoxes() const
{
    return {ui->chkRSS, ui->chkATOM, ui->chkFEED, ui->chkOPML};
}

QCheckBox *frmWelcome::ImportBox(int slot)
{
    if (slot == 1)
        return ui->chkImport1;
    if (slot == 2)
        return ui->chkImport2;
    auto *box = new QCheckBox(ui->fraImport);
    box->setObjectName(QStringLiteral("chkImport%1").arg(slot));
    ui->layoutImport->addWidget(box);
    return box;
}

void frmWelcome::SetCheck(int slot, const QString &readerName)
{
    if (slot < 1 || slot != m_imports.size() + 1)
        return;
    QCheckBox *box = ImportBox(slot);
    QString label = m_importLabel;
    box->setText(label.replace(QStringLiteral("^1"), readerName));
    m_imports.append(box);
}

void frmWelcome::IniitalizeDialog()
{
    for (QCheckBox *box : FileTypeBoxes())
        box->setChecked(true);
    ui->chkNewPST->setChecked(false);
    for (QCheckBox *box : std::as_const(m_imports))
        box->setChecked(true);
    // Someone who reads feeds elsewhere already wants their own, not ours.
    ui->chkStarterFeeds->setChecked(m_imports.isEmpty());
    FollowStarterFeeds();
}

void frmWelcome::FollowStarterFeeds()
{
    // The starter feeds replace the imports: the boxes say so by standing aside.
    for (QCheckBox *box : std::as_const(m_imports))
        box->setEnabled(!ui->chkStarterFeeds->isChecked());
}

void frmWelcome::AdjustDialogSize()
{
    ui->chkImport1->setVisible(m_imports.size() >= 1);
    ui->chkImport2->setVisible(m_imports.size() >= 2);
    ui->fraImport->setVisible(!m_imports.isEmpty());
    adjustSize();
}

WelcomeChoices frmWelcome::Choices() const
{
    WelcomeChoices choices;
    choices.fileTypes.clear();
    for (const QCheckBox *box : FileTypeBoxes())
        choices.fileTypes.append(box->isChecked());
    choices.newStore = ui->chkNewPST->isChecked();
    choices.starterFeeds = ui->chkStarterFeeds->isChecked();
    for (const QCheckBox *box : m_imports)
        choices.imports.append(box->isChecked());
    return choices;
}
