// A MAPI library that the search may find: under whatever name it is copied to, it notes in the file that
// PROVIDER_NOTES names when it is loaded and unloaded, and what its entries are handed.
#include "mapi/MapiInterfaces.h"
#include "platform/inc/memory.h"
#include "platform/inc/modules.h"
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

using namespace Mapi;
using Number = std::uint32_t;
using Result = std::int32_t;

namespace {

void Note(const std::string& line) {
    const char* path = std::getenv("PROVIDER_NOTES");
    if (std::FILE* notes = path ? std::fopen(path, "ab") : nullptr) {
        std::fprintf(notes, "%s\n", line.c_str());
        std::fclose(notes);
    }
}

class CPresence {
public:
    CPresence() {
        char16_t name[1000] = {};
        Platform::GetModuleFileName(Platform::QueryAddress(this).module, name, 1000);
        for (const char16_t c : std::u16string(name)) {
            path += static_cast<char>(c); // the test's folders have plain names
        }
        Note("load " + path);
    }
    ~CPresence() { Note("unload " + path); }
    CPresence(const CPresence&) = delete;
    CPresence& operator=(const CPresence&) = delete;

private:
    std::string path;
};

const CPresence presence;

// Not by std::to_string, which has an object that must be the process's only one: the library could not be unloaded.
std::string Shown(std::uintptr_t argument) {
    char text[30] = {};
    std::snprintf(text, sizeof(text), " %zu", argument);
    return text;
}
std::string Shown(const void* argument) {
    return Shown(reinterpret_cast<std::uintptr_t>(argument));
}

template <class... TArguments>
Result Handed(const char* entry, TArguments... arguments) {
    Note((entry + ... + Shown(arguments)));
    return 77;
}

} // namespace

extern "C" {

PLATFORM_EXPORT Result FGetComponentPath(const char* component, const char* qualifier, char* path, Number size,
                                         Result install) {
    Note(std::string("component ") + component + " " + qualifier + Shown(size) + Shown(static_cast<Number>(install)));
    const char* answer = std::getenv("PROVIDER_COMPONENT");
    std::strncpy(path, answer ? answer : "", size);
    return path[0] != '\0';
}

// An entry notes its arguments, whatever its pointers point to.
#define ENTRY(TYPE, NAME, PARAMETERS, ...)                                                                             \
    PLATFORM_EXPORT TYPE NAME PARAMETERS {                                                                             \
        return static_cast<TYPE>(Handed(#NAME __VA_OPT__(, ) __VA_ARGS__));                                            \
    }

ENTRY(Result, MAPIInitialize, (void* a), a)
ENTRY(void, MAPIUninitialize, ())
ENTRY(Result, MAPILogonEx, (WindowParameter a, void* b, void* c, Number d, void* e), a, b, c, d, e)
ENTRY(Result, MAPIAllocateBuffer, (Number a, void* b), a, b)
ENTRY(Number, MAPIFreeBuffer, (void* a), a)
ENTRY(Result, HrQueryAllRows, (void* a, void* b, void* c, void* d, Number e, void* f), a, b, c, d, e, f)
ENTRY(void, FreeProws, (void* a), a)
ENTRY(void, FreePadrlist, (void* a), a)
ENTRY(Result, HrGetOneProp, (void* a, Number b, void* c), a, b, c)
ENTRY(Result, HrSetOneProp, (void* a, void* b), a, b)

} // extern "C"
