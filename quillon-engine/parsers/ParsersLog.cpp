#include "ParsersLog.h"

Q_LOGGING_CATEGORY(lcParsers, "quillon.parsers", QtInfoMsg)
