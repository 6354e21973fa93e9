// Where message texts come from: the modules that carry them, and the interface language.
#pragma once

#include "foundation/inc/array.h"
#include "foundation/inc/unicodestring.h"

namespace Tsx {

constexpr std::uint32_t NoLanguage = 0xFFFFFFFF;

/// The modules with message tables. So far the program's own module is the only one and no language can be chosen.
class CResourceBase {
public:
    /// Called by the start and the stop of the foundation.
    void Initialize() {}
    void Deinitialize() {}

    /// The text of a message by name; false if no module has one.
    bool LookupMessage(const char16_t* name, CUnicodeString& text);
    /// The names in the tables of all modules, sorted by code units, each once.
    void GetAllMessageNames(CArray<CUnicodeString>& names);
    /// The module that has the named icon; null if none does.
    Platform::Module FindModuleWithIcon(const char16_t* name);
    /// The index of a language number among the languages that can be chosen; NoLanguage for any other.
    std::uint32_t FindLanguage(std::uint32_t language);
    /// Makes a language the current one. It must be known: an internal error otherwise.
    void SetCurrentLanguage(std::uint32_t language);
};

CResourceBase& GetResourceBase();

} // namespace Tsx
