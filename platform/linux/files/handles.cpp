#include "platform/linux/files/handles.h"

#include "platform/inc/lasterror.h"
#include "platform/linux/errnocodes.h"
#include "platform/linux/faulthook.h"

namespace Platform {

namespace {

template <class TObject>
TObject* ObjectOf(Handle handle) {
    const bool none = !handle || handle == InvalidHandle();
    auto* object = none ? nullptr : dynamic_cast<TObject*>(static_cast<HandleObject*>(handle));
    if (!object) {
        SetLastError(ErrorInvalidHandle);
    }
    return object;
}

} // namespace

bool FileObject::Close() {
    return descriptor.Close() || FailFromErrno();
}

FileObject* FileOf(Handle handle) {
    return ObjectOf<FileObject>(handle);
}

FileObject* FileOf(Handle handle, std::uint32_t access) {
    FileObject* file = FileOf(handle);
    if (file && (file->access & access) == 0) {
        return Fail(ErrorAccessDenied, nullptr);
    }
    return file;
}

SearchObject* SearchOf(Handle handle) {
    return ObjectOf<SearchObject>(handle);
}

ThreadObject* ThreadOf(Handle handle) {
    return ObjectOf<ThreadObject>(handle);
}

EventSourceObject* EventSourceOf(Handle handle) {
    return ObjectOf<EventSourceObject>(handle);
}

MappingObject* MappingOf(Handle handle) {
    return ObjectOf<MappingObject>(handle);
}

bool CloseHandle(Handle handle) {
    const std::unique_ptr<HandleObject> object(ObjectOf<HandleObject>(handle));
    const bool closed = object && object->Close();
    PLATFORM_FAULT(CloseHandle, false);
    return closed;
}

} // namespace Platform
