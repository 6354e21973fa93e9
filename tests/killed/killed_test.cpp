// Writers that are killed at random moments: what is there is the old or the new, whole.
#include "platform/inc/filenames.h"
#include "platform/inc/registry.h"
#include "tests/support/folder.h"
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

using namespace Platform;

namespace {

/// Makes a process that writes for as long as that succeeds, ends it after a while, and looks at what is there; all
/// that again and again.
template <class TWrite, class TLook>
void ExpectWhole(TWrite write, TLook isWhole) {
    std::random_device chance;
    for (int kill = 0; kill < 20; ++kill) {
        const pid_t writer = fork();
        while (writer == 0) {
            write() ? void() : std::_Exit(1);
        }
        usleep(chance() % 50'000);
        ::kill(writer, SIGKILL);
        int status = 0;
        waitpid(writer, &status, 0);
        EXPECT_EQ(status, SIGKILL) << "it could not write";
        ASSERT_TRUE(isWhole()) << "kill " << kill;
    }
}

bool SetText(const std::u16string& text) {
    RegistryKey key = nullptr;
    const auto size = static_cast<std::uint32_t>(2 * (text.size() + 1));
    const bool done = RegCreateKeyEx(RootKey(HkeyCurrentUser), u"K", 0, KeyReadWrite, key) == 0 &&
                      RegSetValueEx(key, u"v", RegSz, text.c_str(), size) == 0;
    RegCloseKey(key);
    return done;
}

bool Move(const Tsx::CUnicodeString& from, const Tsx::CUnicodeString& to) {
    return MoveFileEx(from.Text(), to.Text(), MoveFileCopyAllowed | MoveFileReplaceExisting);
}

} // namespace

TEST(Killed, AWriterOfTheRegistry) {
    const auto file = [](char letter) {
        return "; kept\n[HKEY_CURRENT_USER\\K]\n\"v\"=\"" + std::string(100'000, letter) + "\"\n";
    };
    const CTestFolder folder;
    folder.Write(u"HKEY_CURRENT_USER.reg", file('a'));
    setenv("TESSARIX_REGISTRY", folder.Place().c_str(), 1);
    ExpectWhole([] { return SetText(std::u16string(100'000, u'b')) && SetText(std::u16string(100'000, u'a')); },
                [&] {
                    const std::string content = folder.Content(u"HKEY_CURRENT_USER.reg");
                    return content == file('a') || content == file('b');
                });
}

TEST(Killed, AMoveBetweenTwoVolumes) {
    const CTestFolder one;
    setenv("TMPDIR", "/dev/shm", 1);
    const CTestFolder other;
    const std::string content(1 << 20, 'x');
    one.Write(u"file", content);
    // Either may be the one that has it.
    ExpectWhole([&] { return Move(one / u"file", other / u"file") + Move(other / u"file", one / u"file") > 0; },
                [&] {
                    const std::string both = one.Content(u"file") + other.Content(u"file");
                    return both == content + "(missing)" || both == "(missing)" + content || both == content + content;
                });
}
