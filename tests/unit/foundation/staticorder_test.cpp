// The order in which the foundation's static objects come up, and that they go down in reverse. A program of its own,
// linked with a statics.cpp that has a mark behind each object: it judges when the first mark, and with it the last
// object, is gone.
#include "foundation/inc/unicodestring.h"
#include "tests/support/staticmark.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

constexpr int Most = 200;
constinit std::string_view built[Most] = {};
constinit int builtCount = 0;
constinit int destroyedCount = 0;
constinit bool failed = false;

// Each relies on those before it.
constexpr std::string_view Order[] = {"RegistryLock",
                                      "CharSetLeafLock",
                                      "ThreadObjectRegistry",
                                      "MemoryManagerSlot",
                                      "ErrorGuardState",
                                      "ThreadErrorMode",
                                      "threadHandler",
                                      "VirtualMemoryManager",
                                      "RuntimeHeapManager",
                                      "StringAllocator",
                                      "CharSetLeaves",
                                      "MemoryExceptionPool",
                                      "WhiteSpaceChars",
                                      "DigitChars",
                                      "InvalidNameChars",
                                      "ERR_BAD_ARCHIVE",
                                      "StoredApplicationName",
                                      "StaticMessageBoxHandler",
                                      "StaticConsoleMessageHandler",
                                      "StaticEventLogMessageHandler",
                                      "HandlerStage",
                                      "ResourceBase",
                                      "ClassRegistry",
                                      "SpecialFolders",
                                      "TemporaryFiles",
                                      "MappingSizes",
                                      "VirtualRootName",
                                      "NativeFileSystemObject",
                                      "VirtualFileSystemObject"};

// An object of this source: it comes up after all of the foundation's and can use them both ways.
struct CLateUser {
    CLateUser() : text(u"  made while static objects are built ") { text.Trim(); }
    ~CLateUser() {
        text += u", and used while they go, in a block of its own that is longer than any pool has";
        failed = failed || text.Length() < 100;
    }
    Tsx::CUnicodeString text;
};
const CLateUser LateUser;

bool OrderHolds() {
    const std::string_view* place = built;
    const std::string_view* const end = built + builtCount;
    for (const std::string_view name : Order) {
        place = std::find(place, end, name);
        if (place == end) {
            std::printf("%s is missing or too early\n", name.data());
            return false;
        }
    }
    return true;
}

} // namespace

void StaticBuilt(const char* name) {
    built[builtCount++] = name;
}

void StaticDestroyed(const char* name) {
    ++destroyedCount;
    if (built[builtCount - destroyedCount] != name) {
        std::printf("%s goes out of turn\n", name);
        failed = true;
    }
    if (destroyedCount == builtCount && failed) {
        std::_Exit(1);
    }
}

int main() {
    failed = !OrderHolds() || builtCount < 60;
    return failed ? 1 : 0;
}
