#pragma once

#include <QLoggingCategory>

// Diagnostics of the engine core ("corvell.quillon.engine.core"); the shared log is EngineLog.
Q_DECLARE_LOGGING_CATEGORY(lcCore)
