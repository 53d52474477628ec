#pragma once

#include "ConfigPage.h"
#include "ConsumerSettingStore.h"

#include <memory>

namespace Ui {
class PodcastingUI;
}

// The "Enclosure Handling Settings" module: the media consumer's settings. The three download
// options stand for two keys together, so they are read and written here rather than bound.
class PodcastingUI : public ConfigPage
{
    Q_OBJECT
public:
    explicit PodcastingUI(QWidget *parent = nullptr);
    ~PodcastingUI() override;

    void Apply() override;

protected:
    void FieldsLoaded() override;

private:
    void ShowDependents();

    std::unique_ptr<Ui::PodcastingUI> ui;
    ConsumerSettingStore m_media{QStringLiteral("MEDIACONSUMER"), QStringLiteral("Settings")};
    // Kept as read: no control of this page offers it.
    QString m_autoDelete;
};
