#pragma once

#include "WeblogApi.h"

#include <QDialog>

#include <memory>

namespace Ui {
class frmChooseBlog;
}

// Lists the weblogs of an account that are not configured yet; OK hands back the ticked ones.
class frmChooseBlog : public QDialog
{
    Q_OBJECT
public:
    explicit frmChooseBlog(QList<WeblogApi::Weblog> weblogs, QWidget *owner = nullptr);
    ~frmChooseBlog() override;

    [[nodiscard]] QList<WeblogApi::Weblog> GetResults() const;

private:
    void TickAll(bool ticked);
    void OnRowTicked();

    std::unique_ptr<Ui::frmChooseBlog> ui;
    QList<WeblogApi::Weblog> m_weblogs;
};
