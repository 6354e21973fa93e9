// The tables behind classregistry.h, defined among the other static objects.
#pragma once

#include "foundation/inc/classregistry.h"
#include "foundation/inc/map.h"
#include <typeindex>

namespace Tsx {

struct CTypeKeyTraits {
    static std::uint32_t Hash(const std::type_index& key) { return static_cast<std::uint32_t>(key.hash_code()); }
    static bool Equal(const std::type_index& a, const std::type_index& b) { return a == b; }
};

struct CClassRegistry {
    CMap<CUnicodeString, CObjectFactory, CStringKeyTraits, CProcessHeapPolicy> Factories;
    CMap<CUnicodeString, CUnicodeString, CStringKeyTraits, CProcessHeapPolicy> Modules;
    CMap<std::type_index, CUnicodeString, CTypeKeyTraits, CProcessHeapPolicy> Names;
};

/// Under FoundationLock.
extern CClassRegistry ClassRegistry;

} // namespace Tsx
