// Opening an object by its identifier.
#pragma once

#include "mapi/FaultCleanup.h"
#include "mapi/MapiInterfaces.h"

namespace Mapi {

/// Opens for changes, through a store or a session. AS DESIGNED: what kind of object the client says that it opened is
/// not looked at; the identifier came from a place that has only one kind.
template <class T, class TOpener>
void OpenEntry(TOpener* opener, std::uint32_t size, ENTRYID* entryId, CInterface<T>& opened) {
    std::uint32_t type = 0;
    opened.Receive([&](T** out) {
        IUnknown* object = nullptr;
        const std::int32_t result = opener->OpenEntry(size, entryId, nullptr, FlagModify, &type, &object);
        *out = static_cast<T*>(object);
        return result;
    });
}

template <class T, class TOpener>
void OpenEntry(TOpener* opener, SBinary entryId, CInterface<T>& opened) {
    OpenEntry(opener, entryId.cb, reinterpret_cast<ENTRYID*>(entryId.lpb), opened);
}

} // namespace Mapi
