#include "foundation/inc/registrykey.h"

#include "platform/inc/lasterror.h"
#include "tests/support/folder.h"
#include "tests/support/text.h"
#include <array>
#include <cstdlib>
#include <tuple>

using namespace Tsx;
using namespace std::string_view_literals;

// The build puts the second of each pair before the first.
using TKey = Platform::RegistryKey;
using TCall = std::uint32_t(TKey, const char16_t*, std::uint32_t, std::uint32_t, TKey&);
extern TCall RealOpen __asm__("__real__ZN8Platform12RegOpenKeyExEPvPKDsjjRS0_");
extern TCall NotedOpen __asm__("__wrap__ZN8Platform12RegOpenKeyExEPvPKDsjjRS0_");
extern TCall RealCreate __asm__("__real__ZN8Platform14RegCreateKeyExEPvPKDsjjRS0_");
extern TCall NotedCreate __asm__("__wrap__ZN8Platform14RegCreateKeyExEPvPKDsjjRS0_");

namespace {

/// What was asked of the registry: the call and the access, in hexadecimal digits.
CUnicodeString Asked;

constexpr const char16_t* TestKey = u"Software\\TessarixTest";
constexpr const char16_t* Default = u"(default)";

const TKey User = Platform::RootKey(Platform::HkeyCurrentUser);

/// Each test begins with a key that is there.
class RegistryKey : public testing::Test {
protected:
    RegistryKey() {
#ifndef _WIN32
        setenv("TESSARIX_REGISTRY", folder.Place().c_str(), 1);
#endif
        EXPECT_TRUE(key.Open(User, TestKey, RK_Write));
        Asked.Clear();
    }
    const CTestFolder folder;
    CRegistryKey key;
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
    // The type, the bytes and how many of them are stored, and what is given as a text.
    for (const auto& [type, bytes, size, text] : {std::tuple(1U, u"text"sv, 10, u"text"sv),
                                                  {1U, u"x", 0, Default},
                                                  {1U, u"ab\0\0"sv, 8, u"ab\0"sv},
                                                  {1U, u"a\0b\0"sv, 8, u"a\0b"sv},
                                                  {1U, u"abcx", 7, Default},
                                                  {1U, u"abx", 4, u"ab"},
                                                  {2U, u"%x", 2, u"%"},
                                                  {4U, u"42", 4, Default}}) {
        ASSERT_EQ(Platform::RegSetValueEx(key.Handle, u"Value", type, bytes.data(), static_cast<std::uint32_t>(size)),
                  0U);
        EXPECT_EQ(std::pair(key.GetValueType(u"vALUE"), key.GetValueSize(u"Value")), std::pair(type, size));
        EXPECT_EQ(Readable(key.GetStringValue(u"Value", Default).View()), Readable(text)) << type << ' ' << size;
    }
    EXPECT_TRUE(key.GetValueType(u"None") == 0 && key.GetValueSize(u"None") == 0);
    EXPECT_EQ(key.GetStringValue(u"None", Default), Default);
    std::array<char, 5> buffer = {'9', '9', '9', '9', '9'};
    EXPECT_EQ(key.GetBinaryValue(u"Value", buffer.data(), 3), 0) << "too small";
    EXPECT_EQ(key.GetBinaryValue(u"Value", buffer.data(), 5), 4);
    EXPECT_EQ(buffer, (std::array<char, 5>{'4', '\0', '2', '\0', '9'}));
    EXPECT_EQ(key.GetBinaryValue(u"Value", nullptr, 0), 4);
}

TEST_F(RegistryKey, NamesItselfWhereItCannotBeOpened) {
    for (const auto& [root, name] : {std::pair(0U, u"HKEY_CLASSES_ROOT"), {2, u"HKEY_LOCAL_MACHINE"}, {7, u""}}) {
        key.Close();
        EXPECT_TRUE(key.Mode == RK_Closed && key.Path.IsEmpty());
        Platform::SetLastError(0);
        EXPECT_FALSE(key.Open(Platform::RootKey(0x80000000 + root), u"a\\b", RK_Read)) << root;
        EXPECT_NE(Platform::GetLastError(), 0U) << root;
        EXPECT_TRUE(key.Path == CUnicodeString(name) + u"\\a\\b" && key.Mode == RK_Read && !key.Handle) << root;
        EXPECT_EQ(key.GetStringValue(u"Plain", Default), Default);
    }
}

// Wine opens for whatever is asked, and for more; Windows keeps to these.
TEST_F(RegistryKey, AsksForTheAccessThatItNeeds) {
    for (const auto& [path, mode] : {std::pair(TestKey, RK_Read), {TestKey, RK_Write}, {u"", RK_Write}}) {
        ASSERT_TRUE(CRegistryKey().Open(User, path, mode));
        EXPECT_EQ(Platform::GetLastError(), 0U);
    }
    EXPECT_EQ(Asked, u"open 20119 create 2011f open 2011f ") << "a root is opened, not made";
}

TEST_F(RegistryKey, WritesWhatAnotherKeyReads) {
    const std::u16string large(40000, u'\u20AC');
    CRegistryKey made;
    ASSERT_TRUE(made.Open(User, u"Software\\TessarixTest\\New\\Deep", RK_Write)) << "with those on the way";
    made.SetStringValue(u"Large", large.c_str(), 80002);
    made.SetStringValue(u"", u"", 2);
    CRegistryKey other;
    ASSERT_TRUE(other.Open(User, u"Software\\TessarixTest\\New\\Deep", RK_Read));
    EXPECT_EQ(other.GetValueType(u"Large"), Platform::RegSz);
    EXPECT_TRUE(other.GetStringValue(u"Large", Default).View() == large);
    EXPECT_EQ(other.GetStringValue(u"", Default), u"");
    Platform::RegCloseKey(other.Handle); // the registry refuses a handle that is not open
    other.Close();
    EXPECT_NE(Platform::GetLastError(), 0U) << "what the closing answers";
}

TEST_F(RegistryKey, FailedWritesNameTheirPlace) {
    CRegistryKey failed;
    EXPECT_FALSE(failed.Open(User, u"\\a", RK_Write)) << "a path begins with a name";
    Platform::RegCloseKey(key.Handle); // the registry refuses a handle that is not open
    for (const auto& [unwritable, place] :
         {std::pair(&failed, u"HKEY_CURRENT_USER\\\\a"), {&key, u"HKEY_CURRENT_USER\\Software\\TessarixTest\\v"}}) {
        const auto failure = Raised<CCheckException>([to = unwritable] { to->SetStringValue(u"v", u"x", 4); });
        EXPECT_EQ(failure ? failure->param0 : u"", place);
    }
    EXPECT_TRUE(Raised<CInternalError>([&] { key.Open(User, TestKey, RK_Read); })) << "it is open";
    EXPECT_EQ(CRegistryKey::GetViewAccess(0) << 8 | CRegistryKey::GetViewAccess(1), 0x10200U);
    EXPECT_EQ(CRegistryKey::GetViewAccess(2), 0x100U);
}
