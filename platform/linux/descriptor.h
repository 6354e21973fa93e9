// A file descriptor that is closed with its owner.
#pragma once

#include <unistd.h>
#include <utility>

namespace Platform {

class Descriptor {
public:
    explicit Descriptor(int openDescriptor = -1) : descriptor(openDescriptor) {}
    ~Descriptor() { Close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool IsOpen() const { return descriptor >= 0; }
    int Get() const { return descriptor; }
    /// False with errno set when what was written is lost. The descriptor is free in any case.
    bool Close() { return descriptor < 0 || close(std::exchange(descriptor, -1)) == 0; }

    void Reset(int openDescriptor) {
        Close();
        descriptor = openDescriptor;
    }

private:
    int descriptor;
};

} // namespace Platform
