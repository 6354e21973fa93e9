// The version record of an executable file. Absent data is no error: every operation then answers empty or false. Names
// the program (programidentity.h) and its message handler, and tells resource libraries from others.
#pragma once

#include "foundation/inc/array.h"
#include "foundation/inc/unicodestring.h"
#include "platform/inc/resources.h"

namespace Tsx {

class CVersionInfo {
public:
    /// Reads the record of the file at `path`, if it has one.
    void Load(const CUnicodeString& path);
    /// A named string in the record's first translation; empty if it is not there.
    CUnicodeString GetString(const char16_t* name) const;
    /// Copies the fixed block; false if there is none.
    bool GetFixedInfo(Platform::FixedFileInfo& info) const;

private:
    CArray<std::uint8_t> Data;
    std::int32_t Loaded = 0;

    bool Query(const char16_t* subBlock, const void*& value, std::uint32_t& length) const;
};

} // namespace Tsx
