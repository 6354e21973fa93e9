// Paths as keys of tables.
#pragma once

#include "foundation/inc/filesystem.h"
#include "foundation/inc/keytraits.h"

namespace Tsx {

/// The hash of a path: HashTextNoCase over the path without its closing separators, with `\` for each `/`. 0 for a path
/// of separators alone.
/// AS DESIGNED: it takes upper-case characters where FileSystem::Compare takes lower-case ones. Paths that compare
/// equal have one hash all the same, except on Linux where one has U+0130, U+03F4, U+1E9E, U+2126, U+212A or U+212B in
/// the place of another letter with the same lower case.
std::uint32_t HashPath(const CUnicodeString& path);

struct CPathKeyTraits {
    static std::uint32_t Hash(const CUnicodeString& key) { return HashPath(key); }
    static void Prefetch(const CUnicodeString& key) { PrefetchText(key); }
    static bool Equal(const CUnicodeString& a, const CUnicodeString& b) { return FileSystem::Compare(a, b) == 0; }
};

} // namespace Tsx
