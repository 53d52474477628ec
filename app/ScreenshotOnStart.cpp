#include "ScreenshotOnStart.h"

#include "MainModule.h"

#include <QApplication>
#include <QFileInfo>
#include <QPixmap>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <cstdio>

namespace ScreenshotOnStart {

void InstallFromEnvironment()
{
    const QString path = qEnvironmentVariable("CONFIGCONSUMER_SCREENSHOT");
    const bool report = qEnvironmentVariable("CONFIGCONSUMER_REPORT_WINDOW") == QLatin1String("1");
    if (path.isEmpty() && !report)
        return;
    const bool exitAfter = qEnvironmentVariable("CONFIGCONSUMER_EXIT_AFTER_SCREENSHOT") == QLatin1String("1");
    MainModule::SetMainWindowShownHook([path, report, exitAfter](QWidget *window) {
        if (report) {
            std::printf("main window shown\n");
            std::fflush(stdout);
        }
        if (path.isEmpty())
            return;
        QPointer<QWidget> target = window;
        QTimer::singleShot(1500, [target, path, exitAfter]() {
            if (!target)
                return;
            // A question open over the window (the first start's welcome) is what the user sees.
            QPointer<QWidget> modal = QApplication::activeModalWidget();
            if ((modal ? modal.data() : target.data())->grab().save(path))
                std::printf("Screenshot saved: %s\n", qPrintable(QFileInfo(path).absoluteFilePath()));
            else
                std::fprintf(stderr, "Could not save the screenshot to %s\n", qPrintable(path));
            std::fflush(stdout);
            if (!exitAfter)
                return;
            if (modal)
                modal->close();
            // Once the question has returned, the window goes too.
            QTimer::singleShot(0, target, [target] { target->close(); });
        });
    });
}

} // namespace ScreenshotOnStart
