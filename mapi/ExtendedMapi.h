// The Extended route of delivery: the probe that selects it, and the sending of one message to all recipients.
#pragma once

#include "foundation/inc/array.h"
#include "foundation/inc/namedaddress.h"

/// The objects of one delivery.
class CMapiContext {};

/// Whether the Extended route can be taken. So far it is not built, and the answer is no.
bool IsExtendedMapiAvailable();

/// 0 on success, 1 if the user cancelled, 2 after any other failure that was reported. Not to be called without a
/// positive probe.
std::int32_t SendThroughExtendedMapi(CMapiContext& context, const Tsx::CUnicodeString& subject,
                                     const Tsx::CUnicodeString& body, const Tsx::CArray<CNamedAddress>& recipients,
                                     const Tsx::CArray<Tsx::CUnicodeString>& attachmentPaths);
