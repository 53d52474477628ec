#pragma once

#include <QString>

namespace quillon {

// The shipped documents (strings, templates, images, feed directory, starter feeds): the folder
// "QuillonData" beside the program in a build tree, else where `cmake --install` puts it, found
// relative to the program so that any install prefix works.
QString ShippedDataFolder();

} // namespace quillon
