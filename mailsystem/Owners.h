// Owners of what the system, GLib and GMime hand out.
#pragma once

#include <cerrno>
#include <glib-object.h>
#include <memory>
#include <unistd.h>
#include <utility>

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

/// An open file, or -1 for none.
class Descriptor {
public:
    explicit Descriptor(int openDescriptor) : descriptor(openDescriptor) {}
    ~Descriptor() { Close(); }
    Descriptor(Descriptor&& other) noexcept : descriptor(std::exchange(other.descriptor, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(descriptor, other.descriptor);
        return *this;
    }

    int Get() const { return descriptor; }
    bool IsOpen() const { return descriptor >= 0; }

    /// False, with errno set, when only now the system tells that something written is lost. The file is closed anyway,
    /// also after EINTR.
    bool Close() {
        const int closing = std::exchange(descriptor, -1);
        return closing < 0 || close(closing) == 0 || errno == EINTR;
    }

private:
    int descriptor;
};

} // namespace MailSystem
