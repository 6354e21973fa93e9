// Mappings: memory of the page file that is made visible in views.
#pragma once

#include "foundation/inc/map.h"
#include "platform/inc/types.h"
#include <cstdint>

namespace Tsx {

/// What static construction asks the system for, once.
struct CMappingSizes {
    CMappingSizes();
    const std::int64_t View;
    const std::int64_t Unit;
};
extern const CMappingSizes MappingSizes;

/// The size of every view of a virtual file, and what mappings of virtual files are multiples of: both are the system's
/// allocation granularity.
extern const std::int64_t& ViewSize;
extern const std::int64_t& MappingUnit;

/// One mapping object with its views, or closed. No lock: one thread at a time. A call of the system that fails raises
/// CMemoryException for code 8 and CLastErrorException for any other; wrong calls are internal errors. Callers only
/// read the fields.
class CMapping {
public:
    CMapping() = default;
    /// Closes; a failure is shown.
    virtual ~CMapping();
    CMapping(const CMapping&) = delete;
    CMapping& operator=(const CMapping&) = delete;

    /// Writes what all views hold back to the object.
    virtual void Flush();
    /// Unmaps all views. What the system says to that, and to the end of the object, goes unnoticed.
    virtual void Close();
    /// Unmaps all views and makes the object anew at another size: the contents are lost. After a failure it is closed.
    virtual void SetSize(std::int64_t size);

    bool IsOpen() const { return Handle != nullptr; }

    /// Takes over an object made elsewhere, to be read only.
    void Attach(Platform::Handle handle);

    /// Makes `size` bytes from any offset on visible (0: all to the end), for a FileMap access, and returns the first.
    void* MapView(std::uint32_t access, std::int64_t offset, std::int32_t size);
    /// Takes what MapView returned.
    void UnmapView(void* pointer);

    using CViewMap = CMap<void*, void*, CKeyTraits<void*>, CRuntimeHeapPolicy>;

    Platform::Handle File = nullptr; // InvalidHandle() for the page file, null while closed
    std::uint32_t Writable = 0;      // 0 or 1
    Platform::Handle Handle = nullptr;
    CViewMap Views; // the user's pointer and the address that the system gave: a view may begin off its grid

protected:
    /// An object of the page file.
    CMapping(std::uint32_t writable, std::int64_t size);

private:
    void CreateMapping(std::int64_t size);
    void UnmapAll();
};

/// A mapping that is made together with the object.
class CMemoryMapping : public CMapping {
public:
    CMemoryMapping(std::uint32_t writable, std::int64_t size) : CMapping(writable, size) {}

    /// A size below 1 is an internal error.
    void SetSize(std::int64_t size) override;

protected:
    CMemoryMapping() = default; // for Attach
};

} // namespace Tsx
