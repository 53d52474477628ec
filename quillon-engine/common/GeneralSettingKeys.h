#pragma once

#include <QString>

namespace quillon {

// The general page's engine settings (consumer "ENGINE", section ""), with their scales, shared
// by ConfigConsumer's page and the engine that follows them. Flags are "1" or "0".
namespace GeneralSettingKeys {

inline const QString kConsumer = QStringLiteral("ENGINE");
inline const QString kSection; // the empty section

// ConfigConsumer opens its log window while this is "1" (default "0").
inline const QString kShowLogWindow = QStringLiteral("ShowLogWindow");
// The engine writes its log file engine.log while this is "1" (default "1").
inline const QString kLogToDisk = QStringLiteral("LogToDisk");
inline const QString kAsyncIO = QStringLiteral("AsyncIO");
// Written by the engine at each start: the full path of its log file, for a window to follow.
inline const QString kLogFilePath = QStringLiteral("EngineLogFile");

// How many fetches may run at once: 2 to the power of the value, 1 (2 at once) to 5 (32);
// default 4 (16 at once). Values outside are held to the range.
inline const QString kEngineLoad = QStringLiteral("EngineLoad");
constexpr int kEngineLoadMin = 1;
constexpr int kEngineLoadMax = 5;
constexpr int kEngineLoadDefault = 4;

// Which lines reach the log file, 0 to 3 (default 2). A line's level says how much it matters:
// 0 detail (each fetch), 1 and up a consumer's ordinary line, 500 an error the engine met,
// 999 a milestone (a consumer connecting).
//   0: milestones only; 1: and errors; 2: and consumers' lines; 3: everything.
inline const QString kLogLevel = QStringLiteral("LogLevel");
constexpr int kLogLevelMin = 0;
constexpr int kLogLevelMax = 3;
constexpr int kLogLevelDefault = 2;

constexpr int kLineDetail = 0;
constexpr int kLineError = 500;
constexpr int kLineMilestone = 999;

// The lowest line level the file takes at a log level.
[[nodiscard]] constexpr int lowestLineLevel(int logLevel)
{
    return logLevel <= 0 ? kLineMilestone : logLevel == 1 ? kLineError : logLevel == 2 ? 1 : kLineDetail;
}

} // namespace GeneralSettingKeys

} // namespace quillon
