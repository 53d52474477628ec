#include "ParsersLog.h"

Q_LOGGING_CATEGORY(lcParsers, "corvell.quillon.parsers", QtInfoMsg)
