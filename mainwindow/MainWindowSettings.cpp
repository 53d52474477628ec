#include "MainWindowSettings.h"

#include "ConsumerSettings.h"
#include "EngineNames.h"
#include "LocalSettings.h"
#include "PropertyBag.h"
#include "commonUtils.h"

#include <QLoggingCategory>

Q_DECLARE_LOGGING_CATEGORY(lcMainWindow)

namespace {
using EngineNames::kConfigConsumer;
const QString kQuillon = QStringLiteral("Quillon");
constexpr int kMinimumRememberedSize = 200;
} // namespace

QString MainWindowSettings::Read(const QString &key, const QString &defaultValue)
{
    return GetConsumerSetting(m_client, key, defaultValue, kConfigConsumer, QString());
}

QSize MainWindowSettings::RememberedSize()
{
    const qint32 width = TextToInt(Read(QStringLiteral("MainWindowWidth"), quillon::kMissingText));
    const qint32 height = TextToInt(Read(QStringLiteral("MainWindowHeight"), quillon::kMissingText));
    if (width < kMinimumRememberedSize || height < kMinimumRememberedSize)
        return {};
    return {width, height};
}

bool MainWindowSettings::ShowDetails()
{
    return TextToBool(Read(QStringLiteral("ShowMainWindowDetails"), QStringLiteral("1")));
}

bool MainWindowSettings::ShowUrlColumn()
{
    return TextToBool(Read(QStringLiteral("ShowUrlColumn"), QStringLiteral("0")));
}

void MainWindowSettings::SaveSize(const QSize &size)
{
    try {
        SetConsumerSetting(m_client, kConfigConsumer, QString(), QStringLiteral("MainWindowWidth"),
                           QString::number(size.width()));
        SetConsumerSetting(m_client, kConfigConsumer, QString(), QStringLiteral("MainWindowHeight"),
                           QString::number(size.height()));
    } catch (const std::exception &e) {
        qCWarning(lcMainWindow) << "could not keep the window size:" << e.what();
    }
}

void MainWindowSettings::SaveView(const QString &key, bool value)
{
    try {
        SetConsumerSettingBool(m_client, kConfigConsumer, QString(), key, value);
    } catch (const std::exception &e) {
        qCWarning(lcMainWindow) << "could not keep" << key << e.what();
    }
}

bool MainWindowSettings::TakeFirstRun()
{
    const bool first = GetSetting(kQuillon, kConfigConsumer, QStringLiteral("ConfigAppFirstRun"),
                                  QStringLiteral("0")) == QLatin1String("0");
    if (first)
        SaveSetting(kQuillon, kConfigConsumer, QStringLiteral("ConfigAppFirstRun"), QStringLiteral("1"));
    return first;
}

void MainWindowSettings::MarkStartupComplete()
{
    SaveSetting(kQuillon, kQuillon, QStringLiteral("ConfigStartupComplete"), QStringLiteral("1"));
}
