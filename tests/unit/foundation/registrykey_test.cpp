#include "foundation/inc/registrykey.h"

#include "platform/inc/lasterror.h"
#include "tests/support/folder.h"
#include "tests/support/recordinghandler.h"
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>

using namespace Tsx;
using namespace std::string_view_literals;

// The build puts the second of each pair before the first.
using TKey = Platform::RegistryKey;
extern std::uint32_t RealOpen(TKey, const char16_t*, std::uint32_t, std::uint32_t,
                              TKey&) __asm__("__real__ZN8Platform12RegOpenKeyExEPvPKDsjjRS0_");
extern std::uint32_t NotedOpen(TKey, const char16_t*, std::uint32_t, std::uint32_t,
                               TKey&) __asm__("__wrap__ZN8Platform12RegOpenKeyExEPvPKDsjjRS0_");
extern std::uint32_t RealCreate(TKey, const char16_t*, std::uint32_t, std::uint32_t,
                                TKey&) __asm__("__real__ZN8Platform14RegCreateKeyExEPvPKDsjjRS0_");
extern std::uint32_t NotedCreate(TKey, const char16_t*, std::uint32_t, std::uint32_t,
                                 TKey&) __asm__("__wrap__ZN8Platform14RegCreateKeyExEPvPKDsjjRS0_");

namespace {

/// What was asked of the registry: the call and the access, in hexadecimal digits.
CUnicodeString Asked;

constexpr const char16_t* TestKey = u"Software\\TessarixTest";
constexpr const char16_t* Default = u"(default)";

const TKey User = Platform::RootKey(Platform::HkeyCurrentUser);

/// Each test begins with the values of registrykey.reg.
class RegistryKey : public testing::Test {
protected:
    RegistryKey() {
        // The fixture is ASCII; Windows exports UTF-16 with a mark and CR LF.
        std::ifstream fixture(TestFilePlace(u"registrykey.reg"), std::ios::binary);
        std::string bytes = "\xFF\xFE";
        for (std::istreambuf_iterator<char> at(fixture), end; at != end; ++at) {
            bytes += *at == '\n' ? std::string("\r\0", 2) : std::string();
            bytes += {*at, '\0'};
        }
        folder.Write(u"HKEY_CURRENT_USER.reg", bytes);
#ifdef _WIN32
        const std::string file = (folder.Place() / "HKEY_CURRENT_USER.reg").string();
        EXPECT_EQ(std::system(("reg import \"" + file + "\" >nul 2>nul").c_str()), 0);
#else
        setenv("TESSARIX_REGISTRY", folder.Place().c_str(), 1);
#endif
    }

    const CTestFolder folder;
};

} // namespace

std::uint32_t NotedOpen(TKey key, const char16_t* path, std::uint32_t options, std::uint32_t access, TKey& opened) {
    Asked += CUnicodeString::Format(u"open %x ", access);
    return RealOpen(key, path, options, access, opened);
}

std::uint32_t NotedCreate(TKey key, const char16_t* path, std::uint32_t options, std::uint32_t access, TKey& opened) {
    Asked += CUnicodeString::Format(u"create %x ", access);
    return RealCreate(key, path, options, access, opened);
}

TEST_F(RegistryKey, ReadsValuesByTypeAndSize) {
    CRegistryKey key;
    ASSERT_TRUE(key.Open(User, u"SOFTWARE\\tessarixtest", RK_Write));
    // An import may add terminators; bytes behind the ones that are stored may not.
    EXPECT_EQ(Platform::RegSetValueEx(key.Handle, u"Unterminated", Platform::RegSz, u"abx", 4), 0U);
    EXPECT_EQ(Platform::RegSetValueEx(key.Handle, u"Unterminated expand", Platform::RegExpandSz, u"%x", 2), 0U);
    // The type, the size, and what is given as a text.
    for (const auto& [name, told] : {std::pair(u"pLAIN", u"1 10 text"sv),
                                     {u"", u"1 36 the default value"sv},
                                     {u"No bytes", u"1 0 (default)"sv},
                                     {u"One terminator", u"1 6 ab"sv},
                                     {u"Two terminators", u"1 8 ab\0"sv},
                                     {u"Text behind", u"1 8 a\0b"sv},
                                     {u"Odd", u"1 7 (default)"sv},
                                     {u"Expand", u"2 14 %PATH%"sv},
                                     {u"Number", u"4 4 (default)"sv},
                                     {u"Gone", u"0 0 (default)"sv},
                                     {u"Unterminated", u"1 4 ab"sv},
                                     {u"Unterminated expand", u"2 2 %"sv}}) {
        const CUnicodeString text = key.GetStringValue(name, Default);
        const auto found = CUnicodeString::Format(u"%u %d ", key.GetValueType(name), key.GetValueSize(name)) + text;
        EXPECT_EQ(Readable(found.View()), Readable(told)) << Readable(name);
    }
    std::array<unsigned char, 4> buffer = {9, 9, 9, 9};
    EXPECT_EQ(key.GetBinaryValue(u"Bytes", buffer.data(), 2), 0) << "too small";
    EXPECT_EQ(key.GetBinaryValue(u"Bytes", buffer.data(), 4), 3);
    EXPECT_EQ(buffer, (std::array<unsigned char, 4>{1, 2, 3, 9}));
    EXPECT_EQ(key.GetBinaryValue(u"Bytes", nullptr, 0), 3);
    EXPECT_EQ(key.GetBinaryValue(u"None", buffer.data(), 4), 0);
}

TEST_F(RegistryKey, NamesItselfWhereItCannotBeOpened) {
    for (const auto& [root, name] : {std::pair(0U, u"HKEY_CLASSES_ROOT"), {2, u"HKEY_LOCAL_MACHINE"}, {7, u""}}) {
        CRegistryKey key;
        Platform::SetLastError(0);
        EXPECT_FALSE(key.Open(Platform::RootKey(0x80000000 + root), u"a\\b", RK_Read)) << root;
        EXPECT_NE(Platform::GetLastError(), 0U) << root;
        EXPECT_EQ(key.Path, CUnicodeString(name) + u"\\a\\b");
        EXPECT_TRUE(key.Mode == RK_Read && !key.Handle && key.GetStringValue(u"Plain", Default) == Default) << root;
        key.Close();
        EXPECT_TRUE(key.Mode == RK_Closed && key.Path.IsEmpty()) << root;
    }
}

// Wine opens for whatever is asked, and for more; Windows keeps to these.
TEST_F(RegistryKey, AsksForTheAccessThatItNeeds) {
    Asked.Clear();
    for (const auto& [path, mode] : {std::pair(TestKey, RK_Read), {TestKey, RK_Write}, {u"", RK_Write}}) {
        CRegistryKey key;
        ASSERT_TRUE(key.Open(User, path, mode));
        EXPECT_EQ(Platform::GetLastError(), 0U);
    }
    EXPECT_EQ(Asked, u"open 20119 create 2011f open 2011f ") << "a root is opened, not made";
}

TEST_F(RegistryKey, WritesWhatAnotherKeyReads) {
    const std::u16string large(40000, u'\u20AC');
    CRegistryKey key;
    ASSERT_TRUE(key.Open(User, u"Software\\TessarixTest\\New\\Deep", RK_Write)) << "made where it is not there";
    key.SetStringValue(u"Large", large.c_str(), 80002);
    key.SetStringValue(u"", u"text", 10);
    key.SetStringValue(u"", u"", 2);
    CRegistryKey other;
    ASSERT_TRUE(other.Open(User, u"Software\\TessarixTest\\New\\Deep", RK_Read));
    EXPECT_EQ(other.GetValueType(u"Large"), Platform::RegSz);
    EXPECT_TRUE(other.GetStringValue(u"Large", Default).View() == large);
    EXPECT_EQ(other.GetStringValue(u"", Default), u"");
    Platform::RegCloseKey(other.Handle); // the registry refuses a handle that is not open
    other.Close();
    EXPECT_NE(Platform::GetLastError(), 0U) << "what the closing answers";
}

TEST_F(RegistryKey, MisuseAndFailedWritesNameTheirPlace) {
    CRegistryKey closed;
    CRegistryKey failed;
    EXPECT_FALSE(failed.Open(User, u"\\a", RK_Write)) << "a path begins with a name";
    CRegistryKey written;
    ASSERT_TRUE(written.Open(User, TestKey, RK_Write));
    Platform::RegCloseKey(written.Handle); // the registry refuses a handle that is not open
    for (const auto& [key, name] : {std::pair(&failed, u"\\\\a"), {&written, u"\\Software\\TessarixTest\\v"}}) {
        const auto failure = Raised<CCheckException>([key = key] { key->SetStringValue(u"v", u"x", 4); });
        EXPECT_EQ(failure ? failure->GetMessageText() : u"", CUnicodeString(u"Access to the Windows registry key "
                                                                            "HKEY_CURRENT_USER") +
                                                                 name + u" is prohibited.");
    }
    CRegistryKey open;
    ASSERT_TRUE(open.Open(User, TestKey, RK_Read));
    char buffer[2];
    ExpectRefused({[&] { open.Open(User, TestKey, RK_Read); }, [&] { failed.Open(User, TestKey, RK_Read); },
                   [&] { closed.Open(User, nullptr, RK_Read); }, [&] { closed.GetValueType(u"v"); },
                   [&] { open.GetValueType(nullptr); }, [&] { closed.GetValueSize(u"v"); },
                   [&] { open.GetValueSize(nullptr); }, [&] { closed.GetBinaryValue(u"v", buffer, 2); },
                   [&] { open.GetBinaryValue(nullptr, buffer, 2); }, [&] { open.GetBinaryValue(u"v", buffer, -1); },
                   [&] { open.GetBinaryValue(u"v", nullptr, 1); }, [&] { closed.GetStringValue(u"v", Default); },
                   [&] { open.GetStringValue(nullptr, Default); }, [&] { open.GetStringValue(u"v", nullptr); },
                   [&] { written.SetStringValue(u"v", nullptr, 0); }, [&] { open.SetStringValue(u"v", u"", 2); },
                   [&] { written.SetStringValue(u"v", u"", -2); }, [] { CRegistryKey::GetViewAccess(3); },
                   [&] { CRegistryKey().Open(User, TestKey, 3); }});
    EXPECT_EQ(CRegistryKey::GetViewAccess(0) << 8 | CRegistryKey::GetViewAccess(1), 0x10200U);
    EXPECT_EQ(CRegistryKey::GetViewAccess(2), 0x100U);
}
