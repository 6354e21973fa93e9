// The slots of the interfaces that the program never calls. They are there all the same, each under its name: a call
// that goes astray is written down, and fails.
#pragma once

#include "mailsystem/MapiUnusedSlots.h"
#include "tests/mapilibrary/extended/ledger.h"

namespace Unused {

struct Noted {
    static std::int32_t Call(const char* name) {
        BeginCall(std::string("unexpected ") + name, {});
        return EndCall(static_cast<std::int32_t>(0x80004001)); // E_NOTIMPL
    }
};

template <class TInterface>
using MAPIProp = Mapi::Slots::PropSlots<TInterface, Noted>;
using MAPITable = Mapi::Slots::TableSlots<Noted>;
using MAPIStatus = Mapi::Slots::StatusSlots<Noted>;
using Message = Mapi::Slots::MessageSlots<Noted>;
using MAPIFolder = Mapi::Slots::FolderSlots<Noted>;
using MsgStore = Mapi::Slots::StoreSlots<Noted>;
using AddrBook = Mapi::Slots::AddressBookSlots<Noted>;
using MAPISession = Mapi::Slots::SessionSlots<Noted>;

} // namespace Unused
