#pragma once

#include <QLoggingCategory>

// Diagnostics of the fetcher ("quillon.engine.fetch").
Q_DECLARE_LOGGING_CATEGORY(lcFetch)
