#include "MainModule.h"
#include "ScreenshotOnStart.h"
#include "WebArticleView.h"

#include <QApplication>

#if __has_include("StandardDialogs.h")
#include "StandardDialogs.h"
#endif

int main(int argc, char *argv[])
{
    WebArticleView::PrepareProcess();
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("ConfigConsumer"));
    QApplication::setOrganizationName(QStringLiteral("Corvell"));
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
