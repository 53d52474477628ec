#include "frmEditPost.h"

#include "ui_frmEditPost.h"

frmEditPost::frmEditPost(const WeblogApi::Post &post, QWidget *owner)
    : QDialog(owner), ui(std::make_unique<Ui::frmEditPost>()), m_link(post.link)
{
    ui->setupUi(this);
    ui->txtPostTitle->setText(post.title);
    ui->txtPostBody->setPlainText(post.body);
    connect(ui->cmdPublish, &QPushButton::clicked, this, &QDialog::accept);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
}

frmEditPost::~frmEditPost() = default;

WeblogApi::Post frmEditPost::GetResults() const
{
    return {ui->txtPostTitle->text(), ui->txtPostBody->toPlainText(), m_link};
}
