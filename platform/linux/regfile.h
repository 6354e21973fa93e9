// The text form of the registry, as Windows exports it and imports it: a reader that takes any bytes, and a writer.
//
//   Windows Registry Editor Version 5.00     or REGEDIT4, whose texts in hex are narrow
//   [HKEY_CURRENT_USER\Software\Vendor]      a key, made with those on the way to it
//   "name"="C:\\a \"b\""                     REG_SZ; \ before a character keeps that character
//   @="text"                                 the default value
//   "name"=dword:0000002a                    REG_DWORD
//   "name"=hex:01,02,\                       REG_BINARY; a line that ends with \ goes on in the next one
//     03
//   "name"=hex(7):61,00,00,00,00,00          any type, its number in hexadecimal
//   "name"=-                                 the value goes
//   [-HKEY_CURRENT_USER\Software\Old]        the key goes, and all below it
//   ; comment
#pragma once

#include "platform/linux/regtree.h"
#include <string>
#include <string_view>

namespace Platform {

/// Applies a file to a tree whose topmost keys are the roots (HKEY_CURRENT_USER and so on). The text is UTF-16 with a
/// mark, or UTF-8 with or without one. A line that makes no sense is skipped, and with a key line the values under it;
/// all others count. Takes time in proportion to the size.
void ReadRegistryText(std::string_view bytes, RegistryNode& top);

/// The whole tree as a file of version 5.00, in UTF-16 with a mark and with CR LF.
std::string WriteRegistryText(const RegistryNode& top);

} // namespace Platform
