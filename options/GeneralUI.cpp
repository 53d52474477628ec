#include "GeneralUI.h"

#include "GeneralSettingKeys.h"
#include "ui_GeneralUI.h"

GeneralUI::GeneralUI(QWidget *parent)
    : ConfigPage(parent), ui(std::make_unique<Ui::GeneralUI>()),
      m_engine(QStringLiteral("ENGINE"), QString()),
      m_vendor(QStringLiteral("Quill On"), QStringLiteral("CONFIGCONSUMER"))
{
    ui->setupUi(this);
    // The engine reads these scales; one header keeps the sliders and the engine in step.
    ui->sliderLoggingLevel->setRange(quillon::GeneralSettingKeys::kLogLevelMin,
                                     quillon::GeneralSettingKeys::kLogLevelMax);
    ui->sliderCPU->setRange(quillon::GeneralSettingKeys::kEngineLoadMin,
                            quillon::GeneralSettingKeys::kEngineLoadMax);
    using C = FieldCodec;
    Bind({
        {.control = "chkLogToWindow",
         .store = &m_engine,
         .key = "ShowLogWindow",
         .defaultValue = "0",
         .codec = C::Flag,
         .hotHelp = "Follow what the engine does in a window of its own."},
        {.control = "chkLogToDisk",
         .store = &m_engine,
         .key = "LogToDisk",
         .defaultValue = "1",
         .codec = C::Flag,
         .hotHelp = "Keep the engine's log in a file, for finding out what went wrong."},
        {.control = "sliderLoggingLevel",
         .store = &m_engine,
         .key = quillon::GeneralSettingKeys::kLogLevel,
         .defaultValue = QString::number(quillon::GeneralSettingKeys::kLogLevelDefault),
         .codec = C::Number,
         .hotHelp = "From errors only (left) to every step (right)."},
        {.control = "sliderCPU",
         .store = &m_engine,
         .key = quillon::GeneralSettingKeys::kEngineLoad,
         .defaultValue = QString::number(quillon::GeneralSettingKeys::kEngineLoadDefault),
         .codec = C::Number,
         .hotHelp = "How many feeds the engine fetches at the same time."},
        {.control = "chkAsyncIO",
         .store = &m_engine,
         .key = "AsyncIO",
         .defaultValue = "1",
         .codec = C::Flag,
         .hotHelp = "Keeps the engine answering while it reads and writes."},
        {.control = "chkSupressWarnings",
         .store = &m_vendor,
         .key = "SupressDeleteWarnings",
         .defaultValue = "0",
         .codec = C::Flag,
         .hotHelp = "Subscriptions and categories are deleted without a question."},
    });
    LoadValues();
}

GeneralUI::~GeneralUI() = default;
