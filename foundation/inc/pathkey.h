// Paths as keys of tables.
#pragma once

#include "foundation/inc/filesystem.h"
#include "foundation/inc/keytraits.h"

namespace Tsx {

/// The hash of a path, equal for paths that FileSystem::Compare takes for equal: HashTextNoCase over the path without
/// its closing separators, with `\` for each `/`. 0 for a path of separators alone.
/// AS DESIGNED: it takes upper-case characters where Compare takes lower-case ones. The two agree because letters have
/// their other case in pairs.
std::uint32_t HashPath(const CUnicodeString& path);

struct CPathKeyTraits {
    static std::uint32_t Hash(const CUnicodeString& key) { return HashPath(key); }
    static void Prefetch(const CUnicodeString& key) { PrefetchText(key); }
    static bool Equal(const CUnicodeString& a, const CUnicodeString& b) { return FileSystem::Compare(a, b) == 0; }
};

} // namespace Tsx
