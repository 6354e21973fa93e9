// killedwriter registry | killedwriter move ONE OTHER: writes without end, for killed.py to end it.
#include "platform/inc/filenames.h"
#include "platform/inc/registry.h"
#include "platform/linux/text/nativetext.h"
#include <string>
#include <string_view>
#include <unistd.h>

using namespace Platform;

namespace {

bool SetText(char16_t letter) {
    constexpr std::size_t length = 100000;
    const std::u16string text(length, letter);
    RegistryKey key = nullptr;
    const bool done = RegCreateKeyEx(RootKey(HkeyCurrentUser), u"K", 0, KeyReadWrite, key) == 0 &&
                      RegSetValueEx(key, u"v", RegSz, text.c_str(), 2 * (length + 1)) == 0;
    RegCloseKey(key);
    return done;
}

bool MoveOver(const std::u16string& from, const std::u16string& to) {
    return MoveFileEx(from.c_str(), to.c_str(), MoveFileCopyAllowed | MoveFileReplaceExisting);
}

} // namespace

int main(int count, char** words) {
    const bool isMove = count == 4 && std::string_view(words[1]) == "move";
    const std::u16string one = isMove ? WideName(words[2]) : u"";
    const std::u16string other = isMove ? WideName(words[3]) : u"";
    bool done = write(STDOUT_FILENO, "\n", 1) == 1;
    while (done) {
        done = isMove ? MoveOver(one, other) && MoveOver(other, one) : SetText(u'a') && SetText(u'b');
    }
    return 1;
}
