// The open-mode word of the file layer: one access, one share mode, and how a file comes into being.
#pragma once

#include <cstdint>

namespace Tsx {

// Access, bits 0 and 1.
constexpr std::uint32_t OM_Read = 0;
constexpr std::uint32_t OM_Write = 1;
constexpr std::uint32_t OM_ReadWrite = 2;

// Share mode, bits 4 to 6. Every open states one.
constexpr std::uint32_t OM_ShareExclusive = 0x10;
constexpr std::uint32_t OM_ShareDenyWrite = 0x20;
constexpr std::uint32_t OM_ShareDenyRead = 0x30;
constexpr std::uint32_t OM_ShareDenyNone = 0x40;

// Creation:
//
//   OM_Create   OM_NoTruncate   OM_CreateNew    disposition
//   clear       any             clear           OPEN_EXISTING
//   clear       any             set             CREATE_NEW
//   set         clear           any             CREATE_ALWAYS
//   set         set             any             OPEN_ALWAYS
constexpr std::uint32_t OM_Create = 0x1000;
constexpr std::uint32_t OM_NoTruncate = 0x2000;
constexpr std::uint32_t OM_CreateNew = 0x4000;

constexpr std::uint32_t OM_AccessMask = 0x03;
constexpr std::uint32_t OM_ShareMask = 0x70;

/// Mode word for CheckFile: does the name exist at all, whatever could be done with it?
constexpr std::uint32_t FA_Exists = 0xFF00FF00;

} // namespace Tsx
