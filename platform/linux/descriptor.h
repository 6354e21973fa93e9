// A file descriptor that closes itself, and the call that a signal breaks off.
#pragma once

#include <cerrno>
#include <unistd.h>
#include <utility>

namespace Platform {

/// A call that a signal broke off is made again.
template <class TCall>
auto Retry(TCall call) {
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int openDescriptor) : value(openDescriptor) {}
    Descriptor(Descriptor&& other) noexcept : value(other.Release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(value, other.value);
        return *this;
    }
    ~Descriptor() {
        if (value >= 0) {
            const int error = errno; // what failed before counts
            close(value);
            errno = error;
        }
    }

    int Get() const { return value; }
    explicit operator bool() const { return value >= 0; }
    int Release() { return std::exchange(value, -1); }

private:
    int value = -1;
};

} // namespace Platform
