// Owners of what GLib and GMime hand out.
#pragma once

#include <glib-object.h>
#include <memory>

namespace MailSystem {

/// Calls a function of the library as the deleter.
template <auto TRelease>
struct Releaser {
    template <class T>
    void operator()(T* object) const {
        TRelease(object);
    }
};

/// One reference to an object.
template <class T>
using ObjectPointer = std::unique_ptr<T, Releaser<&g_object_unref>>;

using GlibText = std::unique_ptr<char, Releaser<&g_free>>;

} // namespace MailSystem
