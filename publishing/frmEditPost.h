#pragma once

#include "WeblogApi.h"

#include <QDialog>

#include <memory>

namespace Ui {
class frmEditPost;
}

// The composed post, for the user to change before it is published.
class frmEditPost : public QDialog
{
    Q_OBJECT
public:
    explicit frmEditPost(const WeblogApi::Post &post, QWidget *owner = nullptr);
    ~frmEditPost() override;

    [[nodiscard]] WeblogApi::Post GetResults() const;

private:
    std::unique_ptr<Ui::frmEditPost> ui;
    QString m_link;
};
