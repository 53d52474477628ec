#pragma once

#include <QString>

namespace quillon {

// Tells the user something the engine cannot work around, where the desktop offers a way: a
// notification through the freedesktop notification service on the session bus. The engine
// runs without a window, and the program that waits for it says nothing on purpose. Answers
// whether a notification service took it; the caller logs the text either way.
bool tellUser(const QString &summary, const QString &body);

} // namespace quillon
