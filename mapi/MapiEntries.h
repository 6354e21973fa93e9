// The functions of Extended MAPI, each under its published name, for the probe and the wrappers of mapi/. They are not
// linked: each looks its entry up in the located library (MapiProvider.h) when it is first called, and again when the
// library has been set anew.
//
// Without a library, or without the entry in it, nothing is called: functions that return an HRESULT give E_FAIL,
// MAPIFreeBuffer gives 0, and the others do nothing. For one thread at a time.
#pragma once

#include "mapi/MapiInterfaces.h"

namespace Mapi {

std::int32_t MAPIInitialize(void* parameters);
void MAPIUninitialize();
std::int32_t MAPILogonEx(WindowParameter window, TextPointer profile, TextPointer password, std::uint32_t flags,
                         IMAPISession** session);

std::int32_t MAPIAllocateBuffer(std::uint32_t size, void** buffer);
std::uint32_t MAPIFreeBuffer(void* buffer);

std::int32_t HrQueryAllRows(IMAPITable* table, SPropTagArray* tags, SRestriction* restriction, SSortOrderSet* order,
                            std::int32_t most, SRowSet** rows);
void FreeProws(SRowSet* rows);
void FreePadrlist(ADRLIST* list);

std::int32_t HrGetOneProp(IMAPIProp* object, std::uint32_t tag, SPropValue** property);
std::int32_t HrSetOneProp(IMAPIProp* object, SPropValue* property);

} // namespace Mapi
