#pragma once

#include <QString>

// One search source the engine offers, with its limits as the engine gives them (texts that
// may be empty, " ", "0" or the missing marker when the source has no such limit).
struct SearchSource
{
    QString guid;
    QString title;
    QString defaultLimit;
    QString minLimit;
    QString maxLimit;
};
