#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class frmGetURL;
}

// Asks for a weblog's name and posting address, for a service that cannot find it itself.
class frmGetURL : public QDialog
{
    Q_OBJECT
public:
    struct Results
    {
        QString name;
        QString url;
    };

    explicit frmGetURL(QWidget *owner = nullptr);
    ~frmGetURL() override;

    [[nodiscard]] Results GetResults() const;

private:
    void OnOK();

    std::unique_ptr<Ui::frmGetURL> ui;
};
