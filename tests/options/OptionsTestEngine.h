#pragma once

#include "EngineCalls.h"
#include "PromptRecorder.h"
#include "TestEngine.h"

// A real engine on a temporary database, a client connected to it as ConfigConsumer, and
// scripted answers to every question a page or the window asks.
class OptionsTestEngine
{
public:
    OptionsTestEngine() : client(engine.newClient())
    {
        client->Connect("CONFIGCONSUMER", std::make_shared<EngineCalls::IgnoreMessages>());
    }

    [[nodiscard]] bool ready() const { return engine.isReady(); }

    TestEngine engine;
    quillon::SubscribeClientPtr client;
    PromptRecorder prompts;
};
