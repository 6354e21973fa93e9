// What the program's version record says of it: its name, the registry path of its settings, the lines of its logo. The
// console application uses it.
#pragma once

#include "foundation/inc/unicodestring.h"
#include "foundation/inc/versioninfo.h"

namespace Tsx {

/// The key below which the makers' programs keep what is theirs, with its separator.
constexpr const char16_t* RegistryRoot = u"Software\\Ostrel\\";

struct CProgramIdentity {
    CUnicodeString Name;         // the internal name, or else the program's title
    CUnicodeString RegistryPath; // RegistryRoot, the name, and "\major.minor" of the file version: "...\Corvane\5.00"
    bool HasLogo = false;        // whether the record has a fixed block
    CUnicodeString Logo[4];      // internal name, description, product version, copyright
};

/// What a record says, of a program with that title. Anything that the record lacks is left out.
CProgramIdentity IdentifyProgram(const CVersionInfo& record, const CUnicodeString& title);

/// The running program, read at the first call. Any thread.
const CProgramIdentity& GetProgramIdentity();

} // namespace Tsx
