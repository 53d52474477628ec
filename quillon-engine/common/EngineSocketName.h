#pragma once

#include <QString>

namespace quillon {

// The local socket of this user's engine: QUILLON_ENGINE_SOCKET when set (tests), else a name
// made from the user's account (Windows pipes share one namespace); placed by EngineSocketPath.
QString EngineSocketName();

// Where a socket name lives. On Unix a relative name goes into PrivateRuntimeFolder(), so
// neither the socket nor its lock can be taken or squatted by another local user; an absolute
// name stays as given. On Windows the name is a pipe name and is returned unchanged.
QString EngineSocketPath(const QString &name);

// A folder only this user can enter: $XDG_RUNTIME_DIR when it is ours and mode 0700, else
// "quillon-engine" in the user's cache folder, made 0700. Empty (with the reason) when neither
// can be trusted.
QString PrivateRuntimeFolder(QString *error = nullptr);

} // namespace quillon
