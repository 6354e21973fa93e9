// Opening an object of the MAPI library by its identifier, for MapiSession.cpp and MapiStore.cpp.
#pragma once

#include "mapi/FaultCleanup.h"
#include "mapi/MapiInterfaces.h"

namespace Mapi {

/// Opens for changes, through a store or a session. AS DESIGNED: the type that the call reports is not checked; the
/// identifier comes from a place that has objects of one type only.
template <class T, class TOpener>
void OpenEntry(TOpener* opener, SBinary entryId, CInterface<T>& opened) {
    std::uint32_t type = 0;
    opened.Receive([&](T** out) {
        IUnknown* object = nullptr;
        const std::int32_t result =
            opener->OpenEntry(entryId.cb, reinterpret_cast<ENTRYID*>(entryId.lpb), nullptr, FlagModify, &type, &object);
        *out = static_cast<T*>(object);
        return result;
    });
}

} // namespace Mapi
