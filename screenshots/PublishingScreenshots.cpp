// Pictures of the publishing dialogs for the README, from a made-up engine state in a temporary
// engine, shown offscreen and saved as PNG files.
//
//   publishing_screenshots <folder>
//
// Writes publishing-add.png, publishing-choose.png, publishing-request.png and
// publishing-prepublish.png.

#include "EngineCalls.h"
#include "Shots.h"
#include "TestEngine.h"
#include "frmChooseBlog.h"
#include "frmPrePublish.h"
#include "frmPubSettings.h"
#include "frmPublishRequestOpt.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QTableWidget>
#include <QTemporaryDir>

#include <cstdio>

namespace {
bool shoot(QDialog &dialog, const QString &path)
{
    dialog.adjustSize();
    dialog.show();
    QCoreApplication::processEvents();
    const bool saved = Shots::save(dialog.grab(), path);
    dialog.reject();
    return saved;
}

void fill(QDialog &dialog, const char *name, const QString &text)
{
    dialog.findChild<QLineEdit *>(QLatin1String(name))->setText(text);
}
} // namespace

int main(int argc, char *argv[])
{
    const Shots::Program program(argc, argv);
    const QDir &folder = program.folder;
    TestEngine engine;
    quillon::SubscribeClientPtr client = engine.newClient();
    client->Connect(QStringLiteral("CONFIGCONSUMER"), std::make_shared<EngineCalls::IgnoreMessages>());
    bool ok = true;

    frmPubSettings add(client);
    fill(add, "txtBlogURL", QStringLiteral("https://notes.example.org/"));
    fill(add, "txtPubUsername", QStringLiteral("ann"));
    fill(add, "txtPubPassword", QStringLiteral("secret"));
    ok = shoot(add, folder.filePath(QStringLiteral("publishing-add.png"))) && ok;

    frmChooseBlog choose({{QStringLiteral("1"), QStringLiteral("Notes from the Garden"), QString()},
                          {QStringLiteral("2"), QStringLiteral("Team News"), QString()},
                          {QStringLiteral("3"), QStringLiteral("Weekend Journal"), QString()}});
    choose.findChild<QTableWidget *>(QStringLiteral("grdAvailableBlogs"))
        ->item(0, 0)
        ->setCheckState(Qt::Checked);
    ok = shoot(choose, folder.filePath(QStringLiteral("publishing-choose.png"))) && ok;

    const QString item = QStringLiteral("High water at the old mill");
    frmPublishRequestOpt request(
        client, {{1, QStringLiteral("Notes from the Garden")}, {2, QStringLiteral("Team News")}}, item);
    ok = shoot(request, folder.filePath(QStringLiteral("publishing-request.png"))) && ok;

    frmPrePublish prePublish(client);
    prePublish.SetInitialStrings(item, QStringLiteral("Notes from the Garden"));
    prePublish.PresetEditFirst(false);
    ok = shoot(prePublish, folder.filePath(QStringLiteral("publishing-prepublish.png"))) && ok;
    return ok ? 0 : 1;
}
