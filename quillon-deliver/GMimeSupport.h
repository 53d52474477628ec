#pragma once

// GMime's GLib headers go first: Qt's keyword macros must not reach them.
#include <gmime/gmime.h>

#include <memory>
#include <mutex>

// GMime objects owned the C++ way, and the library's one-time start.
namespace GMimeSupport {

struct Unref
{
    void operator()(gpointer object) const
    {
        if (object)
            g_object_unref(object);
    }
};
template <typename T> using Owned = std::unique_ptr<T, Unref>;

inline void initialiseOnce()
{
    static std::once_flag once;
    std::call_once(once, [] { g_mime_init(); });
}

} // namespace GMimeSupport
