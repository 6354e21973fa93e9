// A MAPI library that the search may find: under whatever name it is copied to, it notes in the file that
// PROVIDER_NOTES names when it is loaded and unloaded, and what its entries are handed.
#include "mapi/MapiInterfaces.h"
#include "platform/inc/memory.h"
#include "platform/inc/modules.h"
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

using namespace Mapi;

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
std::string Number(std::uint64_t argument) {
    char text[30] = {};
    std::snprintf(text, sizeof(text), " %llu", static_cast<unsigned long long>(argument));
    return text;
}
std::string Number(const void* argument) {
    return Number(reinterpret_cast<std::uintptr_t>(argument));
}

template <class... TArguments>
std::int32_t Handed(const char* entry, TArguments... arguments) {
    std::string line = entry;
    ((line += Number(arguments)), ...);
    Note(line);
    return 77;
}

} // namespace

extern "C" {

PLATFORM_EXPORT std::int32_t FGetComponentPath(const char* component, const char* qualifier, char* path,
                                               std::uint32_t size, std::int32_t install) {
    Note(std::string("component ") + component + " " + qualifier + Number(size) +
         Number(static_cast<std::uint64_t>(install)));
    const char* answer = std::getenv("PROVIDER_COMPONENT");
    if (!answer || !*answer) {
        return 0;
    }
    std::strncpy(path, answer, size);
    return 1;
}

PLATFORM_EXPORT std::int32_t MAPIInitialize(void* a) {
    return Handed("MAPIInitialize", a);
}
PLATFORM_EXPORT void MAPIUninitialize() {
    Handed("MAPIUninitialize");
}
PLATFORM_EXPORT std::int32_t MAPILogonEx(WindowParameter a, TextPointer b, TextPointer c, std::uint32_t d,
                                         IMAPISession** e) {
    return Handed("MAPILogonEx", a, b, c, d, e);
}
PLATFORM_EXPORT std::int32_t MAPIAllocateBuffer(std::uint32_t a, void** b) {
    return Handed("MAPIAllocateBuffer", a, b);
}
PLATFORM_EXPORT std::uint32_t MAPIFreeBuffer(void* a) {
    return static_cast<std::uint32_t>(Handed("MAPIFreeBuffer", a));
}
PLATFORM_EXPORT std::int32_t HrQueryAllRows(IMAPITable* a, SPropTagArray* b, SRestriction* c, SSortOrderSet* d,
                                            std::int32_t e, SRowSet** f) {
    return Handed("HrQueryAllRows", a, b, c, d, static_cast<std::uint32_t>(e), f);
}
PLATFORM_EXPORT void FreeProws(SRowSet* a) {
    Handed("FreeProws", a);
}
PLATFORM_EXPORT void FreePadrlist(ADRLIST* a) {
    Handed("FreePadrlist", a);
}
PLATFORM_EXPORT std::int32_t HrGetOneProp(IMAPIProp* a, std::uint32_t b, SPropValue** c) {
    return Handed("HrGetOneProp", a, b, c);
}
PLATFORM_EXPORT std::int32_t HrSetOneProp(IMAPIProp* a, SPropValue* b) {
    return Handed("HrSetOneProp", a, b);
}

} // extern "C"
