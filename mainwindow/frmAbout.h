#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class frmAbout;
}

// The About box: version and build, and where to read the privacy policy and reach us.
class frmAbout : public QDialog
{
    Q_OBJECT
public:
    static inline const QString kPrivacyUrl = QStringLiteral("https://www.marrowby.example/quillon/privacy");
    static inline const QString kContactUrl = QStringLiteral("https://www.marrowby.example/quillon/contact");

    explicit frmAbout(QWidget *parent = nullptr);
    ~frmAbout() override;

    [[nodiscard]] static QString VersionText();
    [[nodiscard]] static QString BuildText();

private:
    std::unique_ptr<Ui::frmAbout> ui;
};
