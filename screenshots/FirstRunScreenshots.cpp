// Pictures of the first start's dialogs and the About box for the README, shown offscreen and
// saved as PNG files.
//
//   firstrun_screenshots <folder>
//
// Writes firstrun-welcome.png, firstrun-newstore.png and about.png.

#include "Shots.h"
#include "frmAbout.h"
#include "frmCreatePST.h"
#include "frmWelcome.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QTemporaryDir>

#include <cstdio>

namespace {

bool shoot(QDialog &dialog, const QString &path)
{
    dialog.show();
    QCoreApplication::processEvents();
    const bool saved = Shots::save(dialog.grab(), path);
    dialog.reject();
    return saved;
}

} // namespace

int main(int argc, char *argv[])
{
    const Shots::Program program(argc, argv);
    const QDir &folder = program.folder;
    bool ok = true;

    frmWelcome welcome;
    welcome.SetCheck(1, QStringLiteral("Newsboat"));
    welcome.IniitalizeDialog();
    welcome.AdjustDialogSize();
    ok = shoot(welcome, folder.filePath(QStringLiteral("firstrun-welcome.png"))) && ok;

    frmCreatePST newStore;
    const QString name = frmCreatePST::ProposedName(QDate(2026, 11, 24));
    newStore.findChild<QLineEdit *>(QStringLiteral("txtCustomPSTName"))->setText(name);
    newStore.findChild<QLineEdit *>(QStringLiteral("txtPSTLocation"))
        ->setText(QStringLiteral("/home/ann/.local/share/Corvell/") + name + QStringLiteral(".pst"));
    newStore.findChild<QCheckBox *>(QStringLiteral("chkMoveExistingData"))->setChecked(true);
    ok = shoot(newStore, folder.filePath(QStringLiteral("firstrun-newstore.png"))) && ok;

    // The address of a check not made yet: the box as it opens with "AutoUpdates" off.
    frmAbout about(nullptr, QUrl(QStringLiteral("http://127.0.0.1:9/latest.txt")));
    ok = shoot(about, folder.filePath(QStringLiteral("about.png"))) && ok;
    return ok ? 0 : 1;
}
