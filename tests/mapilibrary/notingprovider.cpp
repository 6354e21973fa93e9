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

PLATFORM_EXPORT Result MAPIInitialize(void* a) {
    return Handed("MAPIInitialize", a);
}
PLATFORM_EXPORT void MAPIUninitialize() {
    Handed("MAPIUninitialize");
}
PLATFORM_EXPORT Result MAPILogonEx(WindowParameter a, TextPointer b, TextPointer c, Number d, IMAPISession** e) {
    return Handed("MAPILogonEx", a, b, c, d, e);
}
PLATFORM_EXPORT Result MAPIAllocateBuffer(Number a, void** b) {
    return Handed("MAPIAllocateBuffer", a, b);
}
PLATFORM_EXPORT Number MAPIFreeBuffer(void* a) {
    return static_cast<Number>(Handed("MAPIFreeBuffer", a));
}
PLATFORM_EXPORT Result HrQueryAllRows(IMAPITable* a, SPropTagArray* b, SRestriction* c, SSortOrderSet* d, Result e,
                                      SRowSet** f) {
    return Handed("HrQueryAllRows", a, b, c, d, static_cast<Number>(e), f);
}
PLATFORM_EXPORT void FreeProws(SRowSet* a) {
    Handed("FreeProws", a);
}
PLATFORM_EXPORT void FreePadrlist(ADRLIST* a) {
    Handed("FreePadrlist", a);
}
PLATFORM_EXPORT Result HrGetOneProp(IMAPIProp* a, Number b, SPropValue** c) {
    return Handed("HrGetOneProp", a, b, c);
}
PLATFORM_EXPORT Result HrSetOneProp(IMAPIProp* a, SPropValue* b) {
    return Handed("HrSetOneProp", a, b);
}

} // extern "C"
