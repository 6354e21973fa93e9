// The order in which the foundation's static objects come up, and that they go down in reverse. A program of its own,
// linked with a statics.cpp that has a mark behind each object: it judges when the first mark is gone.
#include "foundation/inc/unicodestring.h"
#include "tests/support/staticmark.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

constinit std::array<std::string_view, 200> built = {};
constinit int builtCount = 0;
constinit int destroyedCount = 0;
constinit bool failed = false;

// An object of this source: it comes up after all of the foundation's and can use them both ways.
struct CLateUser {
    ~CLateUser() { failed = failed || (text + u" and used while they go, in a longer block").Length() < 50; }
    const Tsx::CUnicodeString text{u"made while static objects are built"};
};
const CLateUser LateUser;

} // namespace

void StaticBuilt(const char* name) {
    built[static_cast<std::size_t>(builtCount++)] = name;
}

void StaticDestroyed(const char* name) {
    ++destroyedCount;
    if (built[static_cast<std::size_t>(builtCount - destroyedCount)] != name) {
        std::printf("%s goes out of turn\n", name);
        failed = true;
    }
    if (destroyedCount == builtCount && failed) {
        std::_Exit(1);
    }
}

int main() {
    const auto* place = built.cbegin(); // each of these relies on the one before it, some on all of them
    for (const std::string_view name : {"RegistryLock", "ThreadObjectRegistry", "ThreadErrorMode", "RuntimeHeapManager",
                                        "StringAllocator", "CharSetLeaves", "MemoryExceptionPool", "WhiteSpaceChars",
                                        "ERR_BAD_ARCHIVE", "HandlerStage", "ResourceBase", "NativeFileSystemObject"}) {
        place = std::find(place, built.cend(), name);
    }
    failed = place == built.cend() || builtCount < 60;
    return failed ? 1 : 0;
}
