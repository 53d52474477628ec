#pragma once

#include "CBConnect.h"
#include "TestEngine.h"
#include "frmMainWindow.h"

// The main window on the engine, connected as ConfigConsumer, at the size the pictures use.
namespace Shots {

inline void showMainWindow(frmMainWindow &window, TestEngine &engine)
{
    const quillon::SubscribeClientPtr client = engine.newClient();
    auto callback = std::make_shared<CBConnect>();
    callback->Setup(&window);
    client->Connect("CONFIGCONSUMER", callback);
    window.SetClient(client);
    window.resize(1100, 720);
    window.show();
}

} // namespace Shots
