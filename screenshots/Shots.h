#pragma once

#include "LocalSettings.h"
#include "PromptSeam.h"

#include <QApplication>
#include <QDir>
#include <QPixmap>
#include <QString>
#include <QTemporaryDir>
#include <QWidget>

#include <cstdio>

// What every picture program starts with, and how it saves a picture.
namespace Shots {

// Before the QApplication: offscreen unless a platform is named.
inline void preparePlatform()
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
}

// Settings in the temporary folder, no log file, the first start behind us, every question
// given its neutral answer: the pictures show the windows, never a dialog in front of them.
inline void quietSettings(const QTemporaryDir &settings)
{
    LocalSettings::SetBaseFolder(settings.path());
    SaveSetting("Quillon", "Quillon", "LogFileWanted", "0");
    SaveSetting("Quillon", "CONFIGCONSUMER", "ConfigAppFirstRun", "1");
    PromptSeam::SetHandler([](Prompt &prompt) { return PromptSeam::NeutralAnswer(prompt.kind); });
}

// The folder named first on the command line, else the current one.
inline QString outputFolder(int argc, char *argv[])
{
    return argc > 1 ? QString::fromLocal8Bit(argv[1]) : QDir::currentPath();
}

// Saves the picture and says which file it wrote, or could not.
inline bool save(const QPixmap &picture, const QString &path)
{
    const bool saved = picture.save(path);
    std::printf("%s %s\n", saved ? "wrote" : "could not write", qPrintable(path));
    return saved;
}

// The start every picture program shares: what must come before the application (by default
// the offscreen platform), the application, the output folder and quiet settings.
class Program
{
public:
    Program(int &argc, char *argv[], void (*beforeApplication)() = preparePlatform)
        : m_prepared((beforeApplication(), true)), m_app(argc, argv), folder(outputFolder(argc, argv))
    {
        quietSettings(m_settings);
    }

private:
    bool m_prepared;
    QApplication m_app;
    QTemporaryDir m_settings;

public:
    const QDir folder;
};

} // namespace Shots
