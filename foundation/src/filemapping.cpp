#include "foundation/inc/filemapping.h"

#include "foundation/inc/blockmanager.h"
#include "foundation/inc/errors.h"
#include "foundation/inc/failureguard.h"
#include "platform/inc/files.h"
#include "platform/inc/mappings.h"
#include "platform/inc/memory.h"
#include <memory>
#include <utility>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\filemapping";

std::uint32_t HighWord(std::int64_t value) {
    return static_cast<std::uint32_t>(static_cast<std::uint64_t>(value) >> 32);
}

std::uint32_t LowWord(std::int64_t value) {
    return static_cast<std::uint32_t>(value);
}

/// A thread that may not throw has shown the failure by then; there is nothing to go on with all the same.
[[noreturn]] void RaiseLastError() {
    GenerateExceptionFromLastError();
    GenerateUserException();
}

struct CViewUnmapper {
    void operator()(void* base) const { Platform::UnmapViewOfFile(base); }
};

} // namespace

constinit const std::int64_t& ViewSize = MappingSizes.View;
constinit const std::int64_t& MappingUnit = MappingSizes.Unit;

CMappingSizes::CMappingSizes() : View(GetAllocationGranularity()), Unit(View) {}

CMapping::CMapping(std::uint32_t writable, std::int64_t size) : File(Platform::InvalidHandle()), Writable(writable) {
    CreateMapping(size);
}

CMapping::~CMapping() {
    GuardDestructor([this] { CMapping::Close(); });
}

void CMapping::Flush() {
    for (const auto& view : Views) {
        if (!Platform::FlushViewOfFile(view.Value, 0)) {
            RaiseLastError();
        }
    }
}

void CMapping::Close() {
    UnmapAll();
    if (Handle) {
        Platform::CloseHandle(std::exchange(Handle, nullptr));
    }
    File = nullptr;
}

void CMapping::SetSize(std::int64_t size) {
    TSX_REQUIRE(IsOpen() && size >= 0, ModuleName);
    Platform::Handle file = File;
    CMapping::Close();
    File = file;
    CreateMapping(size);
}

void CMapping::Attach(Platform::Handle handle) {
    TSX_REQUIRE(handle && !Handle && !File && Views.IsEmpty(), ModuleName);
    File = Platform::InvalidHandle();
    Writable = 0;
    Handle = handle;
}

void* CMapping::MapView(std::uint32_t access, std::int64_t offset, std::int32_t size) {
    TSX_REQUIRE(IsOpen() && offset >= 0 && size >= 0, ModuleName, nullptr);
    const std::int64_t before = offset % GetAllocationGranularity();
    const std::int64_t start = offset - before;
    const auto length = static_cast<std::size_t>(size == 0 ? 0 : before + size);
    std::unique_ptr<void, CViewUnmapper> base(
        Platform::MapViewOfFile(Handle, access, HighWord(start), LowWord(start), length));
    if (!base) {
        RaiseLastError();
    }
    void* pointer = static_cast<char*>(base.get()) + before;
    Views.Add(pointer, base.get());
    static_cast<void>(base.release()); // owned by Views from here on
    return pointer;
}

void CMapping::UnmapView(void* pointer) {
    void* const* base = pointer ? Views.Find(pointer) : nullptr;
    TSX_REQUIRE(base, ModuleName);
    Platform::UnmapViewOfFile(*base);
    Views.Delete(pointer);
}

void CMapping::CreateMapping(std::int64_t size) {
    TSX_REQUIRE(size >= 0, ModuleName);
    const std::uint32_t protection = Writable ? Platform::PageReadWrite : Platform::PageReadOnly;
    Handle = Platform::CreateFileMapping(File, nullptr, protection, HighWord(size), LowWord(size), nullptr);
    if (!Handle) {
        File = nullptr;
        RaiseLastError();
    }
}

void CMapping::UnmapAll() {
    for (const auto& view : Views) {
        Platform::UnmapViewOfFile(view.Value);
    }
    Views.DeleteAll();
}

void CMemoryMapping::SetSize(std::int64_t size) {
    TSX_REQUIRE(size >= 1, ModuleName);
    CMapping::SetSize(size);
}

} // namespace Tsx
