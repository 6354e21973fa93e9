// Values that each thread has for itself, made at its first use without asking any thread to announce itself, and the
// guard around the processing of a failure. Everything here lives on the process heap.
#pragma once

#include "foundation/inc/array.h"
#include "foundation/inc/criticalsection.h"
#include "foundation/inc/pointerarray.h"
#include "foundation/inc/tlsslot.h"
#include "platform/inc/types.h"
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace Tsx {

/// One family's value for one thread.
struct CThreadRecord {
    alignas(8) std::byte value[8];
    Platform::Handle thread; // tells whether the thread has ended; null, and the record stays, where it cannot be had

    static void Destroy(CThreadRecord* record);
};
static_assert(sizeof(CThreadRecord) == 16);

/// A thread's records, by the index of their family; null where there is none.
using CThreadArray = CArray<CThreadRecord*, CProcessHeapPolicy>;

/// Calls a static Destroy in the place of a delete.
template <class T>
struct CDestroyer {
    void operator()(T* object) const { T::Destroy(object); }
};

/// Hands out the indices of the families and keeps every thread's array, which its slot holds, until the end of the
/// process. One instance.
class CThreadObjectRegistry : private CTlsSlot {
public:
    /// The next free index. Under RegistryLock.
    std::int32_t TakeIndex() { return NextIndex++; }

    /// The calling thread's record of a family, or null.
    CThreadRecord* Find(std::int32_t index) const {
        const auto* array = static_cast<const CThreadArray*>(Get());
        return array && index < array->Size() ? array->Data()[index] : nullptr;
    }
    /// The calling thread's place for a record of a family, made at need. Raises CMemoryException.
    CThreadRecord*& Place(std::int32_t index);

protected:
    struct CFreeArray {
        void operator()(CThreadArray* array) const;
    };

    using CTlsSlot::TlsIndex;
    std::int32_t NextIndex = 0;
    CPointerArray<CThreadArray, CFreeArray, CProcessHeapPolicy> ThreadArrays; // under RegistryLock
};

extern CCriticalSection RegistryLock;
extern CThreadObjectRegistry ThreadObjectRegistry;

/// The untyped part of CThreadObject. A record is there from the thread's first use on; that of a finished thread goes
/// when the next new thread makes its first record of the family. Lock order: the family's, then RegistryLock.
class CThreadObjectFamily {
public:
    CThreadObjectFamily() = default;
    CThreadObjectFamily(const CThreadObjectFamily&) = delete;
    CThreadObjectFamily& operator=(const CThreadObjectFamily&) = delete;

protected:
    ~CThreadObjectFamily() = default;

    /// The calling thread's record if it has one; null otherwise, also while it is being made.
    CThreadRecord* FindRecord() const {
        const std::int32_t index = Index.load(std::memory_order_acquire);
        CThreadRecord* record = index >= 0 ? ThreadObjectRegistry.Find(index) : nullptr;
        return record != &BeingMade ? record : nullptr;
    }
    /// The same, made at need: null only while it is being made further up. Raises CMemoryException, and CInternalError
    /// with the system's code if the thread's handle cannot be had; a thread that must not throw has its record then.
    CThreadRecord* MakeRecord();

    std::atomic<std::int32_t> Index{-1}; // -1 until the first use of any thread
    CPointerArray<CThreadRecord, CDestroyer<CThreadRecord>, CProcessHeapPolicy> Records; // of all threads, under Lock
    CCriticalSection Lock;

private:
    // Stands in a thread's array while its record is made: a failure in that must not begin to make it once more.
    static CThreadRecord BeingMade;

    void AssignIndex();
    void ClearDeadRecords();
};

/// One static instance a family. The value, zero at first, belongs to its thread alone.
template <class T>
class CThreadObject : public CThreadObjectFamily {
    static_assert(sizeof(T) <= sizeof(CThreadRecord::value));

public:
    /// Never null, but for a failure in the making of this very value.
    T* Get() {
        CThreadRecord* record = FindRecord();
        return ValueOf(record ? record : MakeRecord());
    }
    /// Null if the thread has no value yet.
    T* Find() const { return ValueOf(FindRecord()); }

private:
    static T* ValueOf(CThreadRecord* record) { return record ? reinterpret_cast<T*>(record->value) : nullptr; }
};

/// What the failure paths remember of a thread.
struct CErrorGuardState {
    bool Raising;         // an exception object is being built
    bool InInternalError; // an internal failure is being shown
};

struct CThreadErrorMode {
    bool ErrorReported; // an internal failure was reported on this thread
    bool NoExceptions;  // failures on this thread must not be thrown
};

extern CThreadObject<CErrorGuardState> ErrorGuardState;
extern CThreadObject<CThreadErrorMode> ThreadErrorMode;

/// Stands around the processing of a failure. The thread is served from the runtime heap meanwhile. A second internal
/// error inside the first ends the process with a notice.
class CReentryScope {
public:
    /// What is being done.
    enum TKind : std::int32_t {
        RS_Raising = 0,      // an exception object is being built
        RS_InternalError = 1 // an internal error is being shown
    };
    /// Whether the thread's state is made at need. The path that tells of exhausted memory takes none.
    enum TRecordUse { RU_Make, RU_ExistingOnly };

    explicit CReentryScope(std::int32_t kind, TRecordUse use = RU_Make);
    ~CReentryScope();
    CReentryScope(const CReentryScope&) = delete;
    CReentryScope& operator=(const CReentryScope&) = delete;

private:
    CRuntimeHeapSwitcher switcher; // put back last
    CErrorGuardState* state;       // null when the thread has none
    CErrorGuardState kept;
};

} // namespace Tsx
