#pragma once

#include <QLoggingCategory>

// Diagnostics of the fetcher ("corvell.quillon.engine.fetch").
Q_DECLARE_LOGGING_CATEGORY(lcFetch)
