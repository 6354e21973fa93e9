// A MAPI library that the search may find: under whatever name it is copied to, it notes in the file that
// PROVIDER_NOTES names when it is loaded and unloaded, and what its entries are handed.
#include "platform/inc/memory.h"
#include "platform/inc/modules.h"
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

void Note(const std::string& line) {
    const char* path = std::getenv("PROVIDER_NOTES");
    if (std::FILE* notes = path ? std::fopen(path, "ab") : nullptr) {
        std::fprintf(notes, "%s\n", line.c_str());
        std::fclose(notes);
    }
}

struct CPresence {
    std::string path;

    CPresence() {
        char16_t name[1000] = {};
        Platform::GetModuleFileName(Platform::QueryAddress(this).module, name, 1000);
        for (const char16_t c : std::u16string(name)) {
            path += static_cast<char>(c); // the test's folders have plain names
        }
        Note("load " + path);
    }
    ~CPresence() { Note("unload " + path); }
} const presence;

std::int32_t Handed(const std::string& entry, const void* argument) {
    Note(entry + ' ' + std::to_string(reinterpret_cast<std::uintptr_t>(argument)));
    return 77;
}

} // namespace

extern "C" {

PLATFORM_EXPORT std::int32_t FGetComponentPath(const char* component, const char* qualifier, char* path,
                                               std::uint32_t size, std::int32_t install) {
    Note(std::string("component ") + component + ' ' + qualifier + ' ' + std::to_string(size) + ' ' +
         std::to_string(install));
    const char* answer = std::getenv("PROVIDER_COMPONENT");
    std::strncpy(path, answer ? answer : "", size);
    return path[0] != '\0';
}
PLATFORM_EXPORT std::int32_t MAPIInitialize(void* options) {
    return Handed("MAPIInitialize", options);
}
PLATFORM_EXPORT std::uint32_t MAPIFreeBuffer(void* buffer) {
    return static_cast<std::uint32_t>(Handed("MAPIFreeBuffer", buffer));
}

} // extern "C"
