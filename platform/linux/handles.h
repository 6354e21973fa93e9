// What a handle points to on this system: an object of one of the classes below, made by the function that gives the
// handle out and deleted by CloseHandle.
#pragma once

#include "platform/inc/types.h"
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace Platform {

struct HandleObject {
    HandleObject() = default;
    virtual ~HandleObject() = default;
    HandleObject(const HandleObject&) = delete;
    HandleObject& operator=(const HandleObject&) = delete;

    /// Gives back what the system lent; false with the last error set.
    virtual bool Close() { return true; }
};

struct FileObject : HandleObject {
    explicit FileObject(int openDescriptor = -1) : descriptor(openDescriptor) {}
    bool Close() override;

    int descriptor;
};

/// A thread that may have ended: its exit code is shared with it and outlives it.
struct ThreadObject : HandleObject {
    std::shared_ptr<std::atomic<std::uint32_t>> exitCode;
};

/// A name under which lines are written to syslog.
struct EventSourceObject : HandleObject {
    std::string identity;
};

/// The object behind a handle; null with the last error set when the handle is null, invalid or of another class.
FileObject* FileOf(Handle handle);
ThreadObject* ThreadOf(Handle handle);
EventSourceObject* EventSourceOf(Handle handle);

} // namespace Platform
