// The registry's files on Linux: what the reader makes of any bytes, what the writer writes, where the files are, and
// what happens when others write or when a write fails.
#include "platform/linux/registry/regfile.h"

#include "platform/inc/faults.h"
#include "platform/inc/lasterror.h"
#include "platform/inc/registry.h"
#include "platform/linux/registry/regfolders.h"
#include "platform/linux/text/nativetext.h"
#include "tests/support/registrychange.h"
#include "tests/unit/platform/scratchfolder.h"
#include <cstdlib>
#include <cstring>
#include <random>
#include <regex>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace Platform;
namespace fs = std::filesystem;

namespace {

/// A tree as it is written, key for key in the order of their names.
std::string Written(const RegistryNode& node, std::vector<std::u16string> path = {}, std::string bytes = "") {
    for (const auto& [name, key] : node.keys) {
        path.push_back(name);
        bytes = AddRegistryKey(bytes, path);
        for (const auto& [valueName, value] : key->values) {
            bytes = SetRegistryValue(bytes, path, valueName, value);
        }
        bytes = Written(*key, path, bytes);
        path.pop_back();
    }
    return bytes;
}

/// What is read of a file and written again, in UTF-8 with LF and without the header.
std::string ReadBack(const std::string& bytes) {
    RegistryNode top;
    ReadRegistryText(bytes, top);
    const std::string written = Written(top);
    std::u16string text(written.size() / sizeof(char16_t), u'\0');
    std::memcpy(text.data(), written.data(), written.size());
    std::erase(text, u'\r');
    constexpr std::u16string_view header = u"\uFEFFWindows Registry Editor Version 5.00\n\n";
    EXPECT_TRUE(text.starts_with(header));
    return Utf8Text(text.substr(std::min(text.size(), header.size())));
}

/// The text of a value of the key K under a root, or the code of what failed.
std::string Query(std::uint32_t root, const std::u16string& name) {
    RegistryKey key = nullptr;
    std::uint32_t result = RegOpenKeyEx(RootKey(root), u"K", 0, KeyRead, key);
    char16_t text[64] = {};
    std::uint32_t size = sizeof(text);
    if (result == ErrorSuccess) {
        result = RegQueryValueEx(key, name.c_str(), nullptr, text, &size);
        RegCloseKey(key);
    }
    return result == ErrorSuccess ? Utf8Text(text) : std::to_string(result);
}

std::uint32_t Set(std::uint32_t root, const std::u16string& name, const std::u16string& text) {
    RegistryKey key = nullptr;
    std::uint32_t result = RegCreateKeyEx(RootKey(root), u"K", 0, KeyReadWrite, key);
    if (result == ErrorSuccess) {
        result = RegSetValueEx(key, name.c_str(), RegSz, text.c_str(), static_cast<std::uint32_t>(2 * text.size() + 2));
        RegCloseKey(key);
    }
    return result;
}

/// A registry of the test's own, at first with the value `v` of the user's key K.
class Registry : public testing::Test {
protected:
    const CTestFolder folder;
    const std::string home = std::getenv("HOME") ? std::getenv("HOME") : "";

    Registry() {
        setenv("TESSARIX_REGISTRY", folder.Place().c_str(), 1);
        Fill(u"", "HKEY_CURRENT_USER", "old");
    }
    ~Registry() override {
        DisarmFaults();
        for (const char* name : {"TESSARIX_REGISTRY", "XDG_CONFIG_HOME", "XDG_CONFIG_DIRS"}) {
            unsetenv(name);
        }
        setenv("HOME", home.c_str(), 1);
    }
    void Fill(const std::u16string& place, const std::string& root, const std::string& value) const {
        folder.Write((place + WideName(root) + u".reg").c_str(), "[" + root + "\\K]\n\"v\"=\"" + value + "\"\n");
    }
};

struct Row {
    const char* name;
    std::string text;      // in the key HKEY_USERS\K, unless it names one itself
    std::string remaining; // likewise; "=" for the same as `text`
};

// clang-format off
const Row Rows[] = {
    {"nothing", "", ""},
    {"plain and default", "@=\"y\"\n\"a\"=\"x\"\n", "="},
    {"last value, first spelling", "\"Ab\"=\"x\"\n\"aB\"=\"y\"\n", "\"Ab\"=\"y\"\n"},
    {"blanks and comments", " \"a\" = \"x\" ; c\n;\"b\"=\"y\"\n\t@=dword:1 ;\n", "@=dword:00000001\n\"a\"=\"x\"\n"},
    {"escapes", R"("\"a\\"="\"b\\\c")", "\"\\\"a\\\\\"=\"\\\"b\\\\c\"\n"},
    {"line breaks", "\"a\\r\\nb\"=\"x\\r\\ny\"\n\"c\"=\"\ny\"\n", "\"a\\r\\nb\"=hex(1):78,00,0d,00,0a,00,79,00,00,00\n\"c\"=hex(1):0a,00,79,00,00,00\n"},
    {"capitals", "\"a\"=DWORD:A\n\"b\"=Hex(B):01\n@=HEX:02\n", "@=hex:02\n\"a\"=dword:0000000a\n\"b\"=hex(b):01\n"},
    {"open quotes", "\"a=\"x\"\n\"b\"=\"x\n\"c\"=\"x\\\"\n\"d\\\n@=\"y\"", "@=\"y\"\n"},
    {"something behind", "\"a\"=\"x\"y\n\"b\"=dword:1x\n\"c\"=hex:01 02\n\"d\"=-x\n@=\"y\"", "@=\"y\"\n"},
    {"no such form", "\"a\"=x\n\"b\"=hex(:1\n\"c\"=hex()\n\"d\"=dword:\n\"e\"\n=1\n@=hex(g):1\n", ""},
    {"dwords", "\"a\"=dword:ABCDEF01\n\"b\"=dword:123456789\n", "\"a\"=dword:abcdef01\n"},
    {"types", "\"a\"=hex:\n\"b\"=hex(0):01,02\n\"c\"=hex(ffffffff):0a\n\"d\"=hex(4):01\n", "="},
    {"short bytes", "\"a\"=hex:1,2,\n\"b\"=hex(4):4,3,2,1\n", "\"a\"=hex:01,02\n\"b\"=dword:01020304\n"},
    {"no quotes can tell", "\"a\"=hex(1):61\n\"b\"=hex(1):61,00\n\"c\"=hex(1):00,00,00,00\n\"d\"=hex(1):0a,00,00,00\n", "="},
    {"continued", "\"a\"=hex:01,\\ ; c\n  02,\\\n\\\n\n ; c\n03\n", "\"a\"=hex:01,02,03\n"},
    {"broken off by a value", "\"a\"=hex:01,\\\n\"b\"=\"x\"\n", "\"b\"=\"x\"\n"},
    {"broken off by the end", "\"b\"=\"x\"\n\"a\"=hex:01,\\", "\"b\"=\"x\"\n"},
    {"no bytes", "\"a\"=hex:01,0g\n\"b\"=hex:001\n\"c\"=hex:,1\n\"d\"=hex:1,,2\n\"e\"=hex:01\\\n02\n", ""},
    {"removed", "\"a\"=\"x\"\n\"b\"=\"x\"\n\"A\"=-\n\"c\"=-\n", "\"b\"=\"x\"\n"},
    {"a key goes with all below", "[HKEY_USERS\\K\\L\\M]\n[-hkey_users\\k\\l]\n\"a\"=\"x\"\n[-HKEY_USERS\\K\\O\\P]\n[-HKEY_USERS]\n", ""},
    {"no key", "[HKEY_USERS\\\\K]\n@=\"x\"\n[HKEY_NONE\\K]\n@=\"x\"\n[HKEY_USERS\\K\n@=\"x\"\n[]\n@=\"x\"\n", ""},
    {"a name too long", "[HKEY_USERS\\" + std::string(256, 'n') + "]\n@=\"x\"\n", ""},
    {"a path too deep", "[HKEY_USERS" + std::regex_replace(std::string(512, 'd'), std::regex("d"), "\\d") + "]\n@=\"x\"\n", ""},
    {"separators and brackets", "[HKEY_USERS\\K\\\\L\\] c\n[HKEY_USERS\\k\\a]b]\n", "\n[HKEY_USERS\\K\\a]b]\n\n[HKEY_USERS\\K\\L]\n"},
    {"narrow texts", "REGEDIT4\n@=hex(2):61,62,00\n\"b\"=hex:61\n", "@=hex(2):61,00,62,00,00,00\n\"b\"=hex:61\n"},
    {"letters", "\"\xC3\x84\"=\"\xE2\x82\xAC\"\n\"\xC3\xA4\"=\"\xF0\x9F\x98\x80\"\n", "\"\xC3\x84\"=\"\xF0\x9F\x98\x80\"\n"},
};
// clang-format on

} // namespace

TEST(RegFile, SkipsWhatMakesNoSenseAndReadsTheRest) {
    for (const Row& row : Rows) {
        const std::string whole = "[HKEY_USERS\\K]\n" + row.text;
        const std::string& remaining = row.remaining == "=" ? row.text : row.remaining;
        for (const char* mark : {"", "\xEF\xBB\xBF"}) {
            EXPECT_EQ(ReadBack(mark + whole), "[HKEY_USERS]\n\n[HKEY_USERS\\K]\n" + remaining) << row.name << mark;
        }
    }
}

// "K" at the begin of a line stands for the key's own line; the value becomes "x".
TEST(RegFile, AChangeLeavesAllElseAsItStands) {
    struct Change {
        const char16_t* value;
        const char *before, *after;
    };
    constexpr Change changes[] = {
        {u"v", "; c\nfoo\nK\"V\" = dword:1 ; d\n\"w\"=bar\n", "; c\nfoo\nK\"V\" = \"x\" ; d\n\"w\"=bar\n"},
        {u"v", "K\"v\"=\"y\"\n\"v\"=\"z\"\n", "K\"v\"=\"y\"\n\"v\"=\"x\"\n"}, // the one that counts
        {u"", "K@=\"y\n; z\"\n\n;", "K@=\"x\"\n\n;"},
        {u"\"\n\\", "K@=\"y\" ; c\n; d\n\n[HKEY_USERS]\n",
         "K@=\"y\" ; c\n\"\\\"\\n\\\\\"=\"x\"\n; d\n\n[HKEY_USERS]\n"},
        {u"v", "; c\r\n[HKEY_USERS]", "; c\r\n[HKEY_USERS]\r\n\r\n[HKEY_USERS\\K]\r\n\"v\"=\"x\"\r\n"},
        {u"v", "K\"v\"=\"y\"\n[-HKEY_USERS\\K]\n", "K\"v\"=\"y\"\n[-HKEY_USERS\\K]\n\nK\"v\"=\"x\"\n"},
        {u"v", "K\"v\"=hex:01,\\ ; c\n; d\n  02 ; \xE4\n", "K\"v\"=\"x\" ; \xE4\n; c\n; d\n"},
        {u"v", "REGEDIT4 ; c\nK\"a\"=hex(2):61,00\n",
         "Windows Registry Editor Version 5.00 ; c\nK\"a\"=hex(2):61,00,00,00\n\"v\"=\"x\"\n"},
    };
    const auto text = [](const char* brief) {
        return std::regex_replace(brief, std::regex("(^|\n)K"), "$1[HKEY_USERS\\K]\n");
    };
    for (const Change& row : changes) {
        const RegistryValue value{RegSz, {"x\0\0\0", 4}};
        EXPECT_EQ(SetRegistryValue(text(row.before), {u"HKEY_USERS", u"K"}, row.value, value), text(row.after));
    }
}
TEST(RegFile, AnyBytesStandAChange) {
    constexpr unsigned seed = 4711;
    std::mt19937 random(seed);
    std::string whole = "REGEDIT4\n[HKEY_USERS\\K]\n";
    for (const Row& row : Rows) {
        whole += row.text.size() < 256 ? row.text + "\n" : "";
    }
    for (int round = 0; round < 1000 && !HasFailure(); ++round) {
        std::string bytes = whole.substr(0, 1 + random() % whole.size());
        for (auto changes = random() % 20; changes > 0; --changes) {
            constexpr std::string_view likely("\0\n\\\"[]=,;-@:(", 13);
            const char byte = likely[random() % likely.size()];
            bytes[random() % bytes.size()] = random() % 2 == 0 ? byte : static_cast<char>(random() % 256);
        }
        const RegistryValue value{round % 3 == 0 ? RegSz : RegBinary, {"x\0\0\0", 4}};
        EXPECT_TRUE(ChangesThatAlone(round % 2 == 0 ? bytes : "\xFF\xFE" + bytes, {u"HKEY_USERS", u"K"},
                                     random() % 2 == 0 ? u"" : u"a", value))
            << "seed " << seed << " round " << round;
    }
}

TEST_F(Registry, IsLookedForWhereTheEnvironmentSays) {
    const auto in = [](const std::string& place) { return WideName(place + "/tessarix/registry/"); };
    const auto machine = [] { return Query(HkeyLocalMachine, u"v") + " " + Query(HkeyLocalMachine, u"w"); };
    Fill(in("home"), "HKEY_CURRENT_USER", "home");
    Fill(in("one"), "HKEY_CURRENT_USER", "one");
    Fill(in("two"), "HKEY_LOCAL_MACHINE", "two");
    EXPECT_EQ(Query(HkeyCurrentUser, u"V") + " " + machine(), "old 2 2") << "no other folder counts";
    unsetenv("TESSARIX_REGISTRY");
    const std::string root = folder.Place().string() + "/";
    setenv("XDG_CONFIG_HOME", (root + "home").c_str(), 1);
    setenv("XDG_CONFIG_DIRS", ("relative:" + root + "one:" + root + "two").c_str(), 1);
    EXPECT_EQ(Query(HkeyCurrentUser, u"v") + " " + machine(), "home two 2");
    EXPECT_EQ(Set(HkeyLocalMachine, u"w", u"new"), ErrorSuccess);
    EXPECT_EQ(machine(), "two new") << "what the user's file doesn't say is the administrator's";
    Fill(in("one"), "HKEY_LOCAL_MACHINE", "one");
    EXPECT_EQ(machine(), "one new") << "the folders in their order";
    const std::u16string own = in("home") + u"HKEY_LOCAL_MACHINE.reg";
    folder.Write(own.c_str(), "[HKEY_LOCAL_MACHINE\\k]\n\"V\"=-\n");
    EXPECT_EQ(machine(), "2 2");
    folder.Write(own.c_str(), "[-HKEY_LOCAL_MACHINE\\K]\n");
    EXPECT_EQ(Set(HkeyLocalMachine, u"w", u"again"), ErrorSuccess);
    EXPECT_EQ(machine(), "2 again") << "still removed";
    const auto folders = [](const char* dirs, const char* user) {
        setenv("XDG_CONFIG_DIRS", dirs, 1);
        setenv("XDG_CONFIG_HOME", "relative", 1);
        setenv("HOME", user, 1);
        std::string found;
        for (const std::string& each : RegistryFolders(RegistryRoot::LocalMachine)) {
            found += each + ":";
        }
        return std::regex_replace(found, std::regex("/tessarix/registry"), "");
    };
    EXPECT_EQ(folders("", "relative"), ":/etc/xdg:");
    EXPECT_EQ(folders("/one:x:/two", "/ann"), "/ann/.config:/one:/two:");
    EXPECT_EQ(RegistryFolders(RegistryRoot::CurrentUser).size(), 1U);
}
TEST_F(Registry, AnswersWithTheCodesOfWindows) {
    RegistryKey key = nullptr;
    RegistryKey below = nullptr;
    ASSERT_EQ(RegOpenKeyEx(RootKey(HkeyCurrentUser), u"K", 0, KeyRead, key), ErrorSuccess);
    char16_t text[4] = {};
    std::uint32_t size = 7;
    EXPECT_EQ(RegQueryValueEx(key, u"v", nullptr, text, &size), ErrorMoreData);
    EXPECT_EQ(size, 8U) << "what is needed";
    EXPECT_EQ(RegQueryValueEx(key, nullptr, nullptr, nullptr, nullptr), ErrorFileNotFound);
    EXPECT_EQ(RegSetValueEx(key, u"v", RegSz, u"", 2), ErrorAccessDenied) << "opened for reading";
    EXPECT_EQ(RegCreateKeyEx(key, u"a\nb", 0, KeyRead, below), ErrorInvalidParameter) << "a file can't hold that";
    folder.Write(u"HKEY_CURRENT_USER.reg", "[HKEY_CURRENT_USER\\Other]\n");
    EXPECT_EQ(RegQueryValueEx(key, u"v", nullptr, nullptr, &size), ErrorKeyDeleted);
    EXPECT_EQ(RegCloseKey(key), ErrorSuccess);
    for (const RegistryKey handle : {key, RegistryKey{nullptr}, RegistryKey{text}}) {
        EXPECT_EQ(RegQueryValueEx(handle, u"v", nullptr, nullptr, &size), ErrorInvalidHandle);
    }
}

// Commands in the folder that holds the registry's, `r`, and a file `outside`; what is read then, and the code of a
// write.
TEST_F(Registry, RightsAndLinksAreTheUsers) {
    const uid_t self = getuid();
    const uid_t user = self == 0 ? 65534 : self; // root may do anything
    const std::string place = folder.Place() / "place";
    setenv("TESSARIX_REGISTRY", (place + "/r").c_str(), 1);
    const auto answers = [&](const std::u16string& command) {
        Fill(u"place/r/", "HKEY_CURRENT_USER", "old");
        folder.Write(u"place/outside", "outside");
        const std::string give = "chown -R " + std::to_string(user) + " '" + folder.Place().string() + "' && ";
        EXPECT_EQ(std::system((give + "cd '" + place + "' && " + NativeName(command)).c_str()), 0);
        EXPECT_EQ(setresuid(user, user, self), 0);
        const std::string read = Query(HkeyCurrentUser, u"v");
        const std::uint32_t written = Set(HkeyCurrentUser, u"v", u"new");
        EXPECT_EQ(setresuid(self, self, self), 0);
        EXPECT_EQ(folder.Content(u"place/outside"), "outside") << Readable(command);
        fs::permissions(place + "/r", fs::perms::owner_all);
        fs::remove_all(place);
        return read + " " + std::to_string(written);
    };
    ExpectRows(answers, {u"chmod 0 r/*.reg -> 5 5", u"chmod 444 r/*.reg -> old 5", u"chmod 0 r -> 5 5",
                         u"rm -r r; touch r -> 2 2", u"mv r there; ln -s there r -> old 0",
                         u"ln -s ../outside r/HKEY_CURRENT_USER.reg.new -> old 0",
                         u"ln -s ../outside r/registry.lock -> old 5"});
}

// Each writer changes the whole file; no change of another may be lost, and nobody may ever see less than a whole file.
TEST_F(Registry, ProcessesWriteAndThreadsRead) {
    constexpr int rounds = 40;
    const auto write = [](char16_t letter) {
        bool good = true;
        for (int i = 0; i < rounds; ++i) {
            good = Set(HkeyCurrentUser, letter + WideName(std::to_string(i)), u"x") == ErrorSuccess && good;
        }
        return good;
    };
    const pid_t child = fork();
    if (child == 0) {
        _exit(write(u'a') ? 0 : 1);
    }
    int status = -1;
    std::thread reader([&] {
        while (waitpid(child, &status, WNOHANG) == 0) {
            EXPECT_EQ(Query(HkeyCurrentUser, u"v"), "old");
        }
    });
    EXPECT_TRUE(write(u'b'));
    reader.join();
    EXPECT_EQ(status, 0);
    for (int i = 0; i < 2 * rounds; ++i) {
        EXPECT_EQ(Query(HkeyCurrentUser, (i % 2 ? u"a" : u"b") + WideName(std::to_string(i / 2))), "x") << i;
    }
}

TEST_F(Registry, AWriteThatFailsLeavesTheFileWhole) {
    SKIP_WITHOUT_FAULTS();
    constexpr const char16_t* file = u"HKEY_CURRENT_USER.reg";
    constexpr const char16_t* fresh = u"HKEY_CURRENT_USER.reg.new";
    constexpr auto mode = fs::perms::owner_read | fs::perms::owner_write;
    const std::string old = folder.Content(file);
    folder.Write(fresh, "left by a writer that was killed");
    fs::permissions(folder.Place() / file, mode);
    std::uint32_t result = 0;
    std::int32_t calls = 0;
    FailEachCall(
        "*", ErrorDiskFull, FaultMode::Once, [](std::int32_t) {}, [&] { result = Set(HkeyCurrentUser, u"v", u"new"); },
        [&](std::int32_t nth) {
            // The last call is the closing of the key, whose result Set does not tell.
            EXPECT_TRUE(result == ErrorSuccess || (result == ErrorDiskFull && folder.Content(file) == old)) << nth;
            const std::string rest = folder.Content(fresh);
            EXPECT_TRUE(rest == "(missing)" || rest.starts_with("left by")) << nth;
            calls = nth;
        });
    EXPECT_GT(calls, 10) << "the sweep saw each step";
    EXPECT_EQ(Query(HkeyCurrentUser, u"v") + folder.Content(fresh), "new(missing)");
    EXPECT_EQ(fs::status(folder.Place() / file).permissions(), mode) << "kept";
}
