// What a handle points to on this system: an object of one of the classes below, made by the function that gives the
// handle out and deleted by CloseHandle.
#pragma once

#include "platform/inc/files.h"
#include "platform/inc/types.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/files/sharetable.h"
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

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
    bool Close() override;

    Descriptor descriptor;
    std::uint32_t access = GenericRead | GenericWrite; // what it was opened for; a standard handle decides for itself
    bool isDisk = false;                               // its content has a position and an end
    std::int64_t position = 0;                         // of a metadata handle, whose descriptor has none
    ShareClaim claim;
};

/// A search: the entries that match, and how far it has told them. Deleted by FindClose.
struct SearchObject : HandleObject {
    Descriptor folder;
    std::u16string unread; // the expression to match the folder's entries with; empty when that is done
    std::vector<std::string> names;
    std::size_t next = 0;
};

/// A thread that may have ended: its exit code is shared with it.
struct ThreadObject : HandleObject {
    std::shared_ptr<std::atomic<std::uint32_t>> exitCode;
};

/// A name under which lines are written to syslog.
struct EventSourceObject : HandleObject {
    std::string identity;
};

/// A mapping object; see mappings.cpp.
struct BackingRange;
struct MappingObject : HandleObject {
    std::shared_ptr<const BackingRange> range;
    bool writable = false;
};

/// The object behind a handle; null with the last error set when the handle is null, invalid or of another class.
FileObject* FileOf(Handle handle);
/// The same for a file opened for that Generic bit: ERROR_ACCESS_DENIED for any other.
FileObject* FileOf(Handle handle, std::uint32_t access);
SearchObject* SearchOf(Handle handle);
ThreadObject* ThreadOf(Handle handle);
EventSourceObject* EventSourceOf(Handle handle);
MappingObject* MappingOf(Handle handle);

} // namespace Platform
