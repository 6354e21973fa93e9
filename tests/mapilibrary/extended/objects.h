// The objects of the Extended side: just enough of a MAPI library for one delivery, each call written down. Folders,
// stores and messages have no content; what is put into them is in the transcript.
#pragma once

#include "mapi/MapiInterfaces.h"
#include "tests/mapilibrary/extended/ledger.h"

/// The caller's only reference.
Mapi::IMAPISession* NewSession();
/// What HrQueryAllRows and HrGetOneProp give; not written down.
Mapi::SRowSet* AllRowsOf(Mapi::IMAPITable* table);
Mapi::SPropValue* OutboxProperty(const std::string& word);
