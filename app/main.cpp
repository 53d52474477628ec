#include "CLog.h"
#include "LocalSettings.h"
#include "MainModule.h"
#include "PrivateFiles.h"
#include "ScreenshotOnStart.h"
#include "WebArticleView.h"

#include <QApplication>

#if __has_include("StandardDialogs.h")
#include "StandardDialogs.h"
#endif

namespace {
// Settings, log and lock hold the user's data and may hold secrets: private from the first file
// on, and what an earlier version left readable is tightened.
void keepFilesPrivate()
{
    using namespace quillon::PrivateFiles;
    restrictNewFiles();
    tightenTree(LocalSettings::BaseFolder() + QStringLiteral("/ConfigConsumer"));
    tightenTree(LocalSettings::BaseFolder() + QStringLiteral("/Marrowby Software"));
    CLog::MoveEarlierLog();
    tightenTree(CLog::UserFolder());
    tightenFile(CLog::LogFilePath());
}
} // namespace

int main(int argc, char *argv[])
{
    WebArticleView::PrepareProcess();
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("ConfigConsumer"));
    QApplication::setOrganizationName(QStringLiteral("Corvell"));
    keepFilesPrivate();
#if __has_include("StandardDialogs.h")
    InstallDialogPrompts();
#endif
    ScreenshotOnStart::InstallFromEnvironment();

    MainModule::Main();
    // A second instance, or nothing to wait for: end at once, silently.
    if (!MainModule::RetryConnect() && MainModule::TickTimerId() == 0)
        return 0;
    return app.exec();
}
