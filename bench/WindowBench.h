#pragma once

#include "CBConnect.h"
#include "ClientAccess.h"
#include "DaemonProcess.h"
#include "LocalSettings.h"
#include "PromptSeam.h"
#include "frmMainWindow.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <cstdio>
#include <memory>

// What a benchmark of ConfigConsumer's windows starts from: the real engine daemon over its local
// socket with fetching off, settings in a temporary folder, every question answered neutrally,
// and the main window connected as "CONFIGCONSUMER".
class WindowBench
{
public:
    // Before the QApplication: the offscreen platform unless one is named, and no fetching.
    static void prepareProcess()
    {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("QUILLON_ENGINE_NO_FETCH", "1");
    }

    ~WindowBench()
    {
        if (m_window)
            m_window->close();
        ClientAccess::SetEngineClient(nullptr);
    }

    // False, with the reason on stderr, when the engine does not start.
    bool startEngine()
    {
        LocalSettings::SetBaseFolder(settings.path());
        PromptSeam::SetHandler([](Prompt &prompt) { return PromptSeam::NeutralAnswer(prompt.kind); });
        if (!m_daemon.start()) {
            std::fprintf(stderr, "cannot start: %s\n", qPrintable(m_daemon.errorText()));
            return false;
        }
        client = m_daemon.newClient();
        ClientAccess::SetEngineClient(client);
        return true;
    }

    frmMainWindow &showWindow(const MainWindowEntryPoints &points = {})
    {
        m_window = std::make_unique<frmMainWindow>();
        m_window->SetEntryPoints(points);
        auto connection = std::make_shared<CBConnect>();
        connection->Setup(m_window.get());
        client->Connect(QStringLiteral("CONFIGCONSUMER"), connection);
        m_window->SetClient(client);
        m_window->show();
        QCoreApplication::processEvents();
        return *m_window;
    }

    QTemporaryDir settings;

private:
    DaemonProcess m_daemon; // stops after the client and the window are gone

public:
    quillon::SubscribeClientPtr client;

private:
    std::unique_ptr<frmMainWindow> m_window;
};
