// Single modules and the libraries of a prefix, as records on the process heap: for the two sources of the resource
// base.
#pragma once

#include "foundation/inc/memorymanager.h"
#include "foundation/inc/resourceinfo.h"
#include "platform/inc/messagebox.h"
#include <memory>

namespace Tsx {

template <class TRecord>
using CRecordHolder = std::unique_ptr<TRecord, CDestroyer<TRecord>>;

/// Raises CMemoryException.
template <class TRecord>
CRecordHolder<TRecord> MakeRecord() {
    return CRecordHolder<TRecord>(new (AllocateFromProcessHeap(sizeof(TRecord))) TRecord{});
}

template <class TRecord>
void FreeRecord(TRecord* record) {
    record->~TRecord();
    FreeToProcessHeap(record);
}

/// Appends what a holder has; it stays there when that raises.
template <class TArray, class TRecord>
void AppendRecord(TArray& array, CRecordHolder<TRecord>& record) {
    array.Append(record.get());
    static_cast<void>(record.release());
}

constexpr std::int32_t LibraryNumberCount = 128; // a library has one of the numbers below

/// The style of messages about resource libraries.
constexpr std::uint32_t ResourceFailureStyle = Platform::MbSystemModal | Platform::MbIconHand;

/// The place of a module among others; -1 if it is not one of them.
std::int32_t FindHandle(const CResourceModules& modules, Platform::Module handle);

/// Takes an element out of an array without destroying it.
template <class TArray>
auto* TakeAt(TArray& array, std::int32_t index) {
    auto* const element = array.Exchange(index, nullptr);
    array.DeleteAt(index);
    return element;
}

/// Enters a module and the functions that it exports into a record of zeros.
void FillModule(CResourceModule& record, Platform::Module handle, TResourceModuleKind kind);

/// A prefix's library for a language; null, with a line in the trace, if there is none that can be used.
CRecordHolder<CResourceModule> LoadResourceLibrary(const CResourcePrefix& prefix, std::uint32_t language);

/// Finds a prefix's libraries on disk and hears their languages' names. Raises what the search of a directory raises.
void ScanPrefix(CResourcePrefix& prefix);

} // namespace Tsx
