#pragma once

#include <QDialog>
#include <QUrl>

#include <memory>

namespace Ui {
class frmAbout;
}
class UpdateCheck;

// The About box: version and build, where to read the privacy policy and reach us, and a check
// for a newer version, made when the box opens while "AutoUpdates" is on.
class frmAbout : public QDialog
{
    Q_OBJECT
public:
    static inline const QString kPrivacyUrl = QStringLiteral("https://www.marrowby.example/quillon/privacy");
    static inline const QString kContactUrl = QStringLiteral("https://www.marrowby.example/quillon/contact");

    explicit frmAbout(QWidget *parent = nullptr, const QUrl &updateAddress = BuiltInUpdateAddress());
    ~frmAbout() override;

    [[nodiscard]] static QString VersionNumber();
    [[nodiscard]] static QString VersionText();
    [[nodiscard]] static QString BuildText();
    // The address the build was told to ask for the newest version.
    [[nodiscard]] static QUrl BuiltInUpdateAddress();

private:
    void CheckForUpdates();
    void KeepAutoUpdates(bool on);

    std::unique_ptr<Ui::frmAbout> ui;
    UpdateCheck *m_check = nullptr;
};
