#pragma once

// Saves a picture of the main window shortly after it first appears, when
// CONFIGCONSUMER_SCREENSHOT names a file; with CONFIGCONSUMER_EXIT_AFTER_SCREENSHOT=1 the
// program then ends. The run script uses it where there is no display to look at.
// CONFIGCONSUMER_REPORT_WINDOW=1 prints a line when the window appears (start-up tests).
namespace ScreenshotOnStart {
void InstallFromEnvironment();
}
