#pragma once

#include "ConfigPage.h"
#include "ConsumerSettingStore.h"
#include "LocalBagStore.h"
#include "MirroredStore.h"

#include <memory>

namespace Ui {
class NetworkUI;
}

// The proxy and the network credentials of every request the engine makes. The values live
// in the program's "NetworkModule" section and are mirrored to the engine's settings of the
// same name, which the engine's fetcher reads at each request; the password lives only with
// the engine, which keeps it in the keyring.
class NetworkUI : public ConfigPage
{
    Q_OBJECT
public:
    explicit NetworkUI(QWidget *parent = nullptr);
    ~NetworkUI() override;

protected:
    void FieldsLoaded() override;

private:
    void EnableNetwork();
    // Asks the engine which way a request to the address in txtTestProxyUrl would go.
    void TestProxy();

    std::unique_ptr<Ui::NetworkUI> ui;
    LocalBagStore m_local;
    ConsumerSettingStore m_engine;
    MirroredStore m_network;
};
