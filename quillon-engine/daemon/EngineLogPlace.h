#pragma once

#include <QString>

namespace quillon {

// Where the daemon keeps its log's text file when its data is in the default place: logs are
// state, so $XDG_STATE_HOME/quillon-engine/engine.log, in a folder only the user can enter.
// A log left beside the database by an earlier version is moved there once.
class EngineLogPlace
{
public:
    [[nodiscard]] static QString stateFile();
    // Moves earlierFolder/engine.log to stateFile() unless one is there already; answers
    // stateFile(), or the earlier file when it could not be moved.
    [[nodiscard]] static QString adopt(const QString &earlierFolder);
};

} // namespace quillon
