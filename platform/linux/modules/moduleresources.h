// The resources of a program or library of ours on this system, in place of what the Windows linker would add: strings
// and the names of icons in a table under one exported symbol, and the version block, in the same form as on Windows,
// in a section of its own that can be read from the file. The program's own is taken from memory.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Platform {

struct ModuleString {
    std::uint32_t id;
    const char16_t* text;
};

struct ModuleResources {
    std::uint32_t stringCount;
    const ModuleString* strings; // by ascending id
    std::uint32_t iconCount = 0;
    const char16_t* const* icons = nullptr; // names, for there is nothing here that draws an icon
    std::uint32_t versionSize = 0;
    const std::byte* version = nullptr; // the version block
};

/// The symbol under which a module exports its ModuleResources.
constexpr const char* ModuleResourcesSymbol = "TessarixModuleResources";

/// The section that holds a module's version block.
#define TESSARIX_VERSION_SECTION ".tessarix.version"

} // namespace Platform
