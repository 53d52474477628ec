#include "QLUtils.h"

#include <QApplication>
#include <QWidget>

bool ForceForegroundWindow(QWidget *window)
{
    if (!window)
        return false;
    if (window->isMinimized())
        window->showNormal();
    else
        window->show();
    window->raise();
    window->activateWindow();
    return QApplication::activeWindow() == window->window();
}
