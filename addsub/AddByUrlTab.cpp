#include "AddByUrlTab.h"

#include "ui_AddByUrlTab.h"

AddByUrlTab::AddByUrlTab(QWidget *parent) : QWidget(parent), ui(std::make_unique<Ui::AddByUrlTab>())
{
    ui->setupUi(this);
    connect(ui->cmdCheckNow, &QPushButton::clicked, this, &AddByUrlTab::CheckNowClicked);
}

AddByUrlTab::~AddByUrlTab() = default;

QString AddByUrlTab::Url() const
{
    return ui->txtURL->text();
}
QString AddByUrlTab::UserTitle() const
{
    return ui->txtUserTitle->text();
}
QString AddByUrlTab::UserName() const
{
    return ui->txtUserName->text();
}
QString AddByUrlTab::Password() const
{
    return ui->txtPasswordField->text();
}
QComboBox &AddByUrlTab::Categories() const
{
    return *ui->cboCategories_enterTab;
}
void AddByUrlTab::SetUrl(const QString &url)
{
    ui->txtURL->setText(url);
}
