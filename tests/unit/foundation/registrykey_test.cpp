#include "foundation/inc/registrykey.h"

#include "platform/inc/lasterror.h"
#include "tests/support/folder.h"
#include "tests/support/text.h"
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numeric>
#include <random>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

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
std::string Asked;

void Note(const char* call, std::uint32_t access) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%s %x ", call, access);
    Asked += text.data();
}

constexpr const char16_t* TestKey = u"Software\\TessarixTest";
constexpr const char16_t* Default = u"(default)";

const Platform::RegistryKey User = Platform::RootKey(Platform::HkeyCurrentUser);

#ifdef _WIN32
void UseRegistry(const std::filesystem::path& file) {
    ASSERT_EQ(std::system(("reg import \"" + file.string() + "\" >nul 2>nul").c_str()), 0);
}
#else
void UseRegistry(const std::filesystem::path& file) {
    setenv("TESSARIX_REGISTRY", file.parent_path().c_str(), 1);
}
#endif

class RegistryKey : public testing::Test {
protected:
    RegistryKey() {
        folder = std::filesystem::temp_directory_path() / ("registrykey_" + std::to_string(std::random_device()()));
        std::filesystem::create_directory(folder);
        const std::filesystem::path file = folder / "HKEY_CURRENT_USER.reg";
        // The fixture is ASCII; Windows exports UTF-16 with a mark and CR LF.
        std::ifstream fixture(TestFilePlace(u"registrykey.reg"), std::ios::binary);
        std::string bytes = "\xFF\xFE";
        for (std::istreambuf_iterator<char> at(fixture), end; at != end; ++at) {
            bytes += *at == '\n' ? std::string("\r\0", 2) : std::string();
            bytes += {*at, '\0'};
        }
        std::ofstream(file, std::ios::binary) << bytes;
        UseRegistry(file);
    }
    ~RegistryKey() override { std::filesystem::remove_all(folder); }

    std::filesystem::path folder;
};

} // namespace

std::uint32_t NotedOpen(TKey key, const char16_t* path, std::uint32_t options, std::uint32_t access, TKey& opened) {
    Note("open", access);
    return RealOpen(key, path, options, access, opened);
}

std::uint32_t NotedCreate(TKey key, const char16_t* path, std::uint32_t options, std::uint32_t access, TKey& opened) {
    Note("create", access);
    return RealCreate(key, path, options, access, opened);
}

TEST_F(RegistryKey, ReadsValuesByTypeAndSize) {
    using TRow = std::tuple<const char16_t*, std::uint32_t, std::int32_t, std::u16string_view>;
    const TRow rows[] = {{u"pLAIN", 1, 10, u"text"},
                         {u"", 1, 36, u"the default value"},
                         {u"Quotes", 1, 18, u"C:\\a \"b\""},
                         {u"Empty", 1, 2, u""},
                         {u"No bytes", 1, 0, Default},
                         {u"One terminator", 1, 6, u"ab"},
                         {u"Two terminators", 1, 8, {u"ab\0", 3}},
                         {u"Text behind", 1, 8, {u"a\0b", 3}},
                         {u"Odd", 1, 7, Default},
                         {u"Expand", 2, 14, u"%PATH%"},
                         {u"Multi", 7, 10, Default},
                         {u"Number", 4, 4, Default},
                         {u"Gone", 0, 0, Default},
                         {u"Unterminated", 1, 4, u"ab"},
                         {u"Unterminated expand", 2, 2, u"%"}};
    CRegistryKey key;
    ASSERT_TRUE(key.Open(User, u"SOFTWARE\\tessarixtest", RK_Write));
    // An import may add terminators; bytes behind the ones that are stored may not.
    const char16_t bytes[] = {u'a', u'b', u'x'};
    EXPECT_EQ(Platform::RegSetValueEx(key.Handle, u"Unterminated", Platform::RegSz, bytes, 4), 0U);
    EXPECT_EQ(Platform::RegSetValueEx(key.Handle, u"Unterminated expand", Platform::RegExpandSz, u"%x", 2), 0U);
    for (const auto& [name, type, size, text] : rows) {
        EXPECT_EQ(key.GetValueType(name), type) << Readable(name);
        EXPECT_EQ(key.GetValueSize(name), size) << Readable(name);
        EXPECT_EQ(key.GetStringValue(name, Default).View(), text) << Readable(name);
    }
}

// The fixture is what `reg export` of Wine wrote of these values.
TEST_F(RegistryKey, AnExportGivesTheValuesThatWerePutIn) {
    const auto wide = [](std::u16string_view text) {
        return std::string(reinterpret_cast<const char*>(text.data()), 2 * text.size());
    };
    std::string all(64, '\0');
    std::iota(all.begin(), all.end(), '\0');
    const std::tuple<const char16_t*, std::uint32_t, std::string> rows[] = {
        {u"", 1, wide(u"d\0"sv)},
        {u"q\"\\ ;[k] = @-", 1, wide(u"C:\\a \"b\" ; c\0"sv)},
        {u"line\r\nbreak", 1, wide(u"\r\na\nb\r\0"sv)},
        {u"\U0001F600 \u00e4", 1, wide(u"\U0001F600\u20ac\0"sv)},
        {u" blanks ", 1, wide(u" x\t\0"sv)},
        {u"empty", 1, wide(u"\0"sv)},
        {u"none", 0, ""},
        {u"none 2", 0, "\1\2"},
        {u"expand", 2, wide(u"%A%\n\0"sv)},
        {u"binary", 3, all},
        {u"no bytes", 3, ""},
        {u"dword", 4, {"\x2a\0\0\x80", 4}},
        {u"big endian", 5, {"\0\0\0\x2a", 4}},
        {u"link", 6, wide(u"a")},
        {u"multi", 7, wide(u"a\nb\0\U0001F600\0\0"sv)},
        {u"resources", 8, "\1"},
        {u"descriptor", 9, "\1\2"},
        {u"requirements", 10, "\xff"},
        {u"qword", 11, "\1\2\3\4\5\6\7\x8"},
        {u"other", 0x100, "\1"},
        {u"last", 0xFFFFFFFF, "\2"}};
    const std::filesystem::path exported = folder / "exported" / "HKEY_CURRENT_USER.reg";
    std::filesystem::create_directory(exported.parent_path());
    std::filesystem::copy_file(TestFilePlace(u"registryexport.reg"), exported);
    UseRegistry(exported);
    CRegistryKey key;
    ASSERT_TRUE(key.Open(User, u"Software\\TessarixTest\\Exported", RK_Read));
    for (const auto& [name, expectedType, expected] : rows) {
        std::string bytes(100, '\0');
        std::uint32_t type = 4711;
        auto size = static_cast<std::uint32_t>(bytes.size());
        EXPECT_EQ(Platform::RegQueryValueEx(key.Handle, name, &type, bytes.data(), &size), 0U) << Readable(name);
        EXPECT_EQ(type, expectedType) << Readable(name);
        EXPECT_EQ(bytes.substr(0, size), expected) << Readable(name);
    }
    CRegistryKey below;
    ASSERT_TRUE(below.Open(User, u"Software\\TessarixTest\\Exported\\a]b;\"c\" [d=@] \U0001F600", RK_Read));
    EXPECT_EQ(below.GetStringValue(u"v", Default), u"below");
}

TEST_F(RegistryKey, ReadsBytesIntoBuffersThatAreLargeEnough) {
    CRegistryKey key;
    ASSERT_TRUE(key.Open(User, TestKey, RK_Read));
    EXPECT_EQ(Platform::GetLastError(), 0U);
    unsigned char buffer[4] = {9, 9, 9, 9};
    EXPECT_EQ(key.GetBinaryValue(u"Bytes", buffer, 2), 0);
    EXPECT_EQ(key.GetBinaryValue(u"Bytes", buffer, 4), 3);
    EXPECT_EQ(std::vector(buffer, buffer + 4), (std::vector<unsigned char>{1, 2, 3, 9}));
    EXPECT_EQ(key.GetBinaryValue(u"Bytes", nullptr, 0), 3);
    EXPECT_EQ(key.GetBinaryValue(u"Number", buffer, 4), 4);
    EXPECT_EQ(buffer[0], 42);
    EXPECT_EQ(key.GetBinaryValue(u"None", buffer, 4), 0);
}

TEST_F(RegistryKey, NamesItselfWhereItCannotBeOpened) {
    for (const auto& [root, name] : {std::pair(0x80000000U, u"HKEY_CLASSES_ROOT"),
                                     {0x80000001U, u"HKEY_CURRENT_USER"},
                                     {0x80000002U, u"HKEY_LOCAL_MACHINE"},
                                     {0x80000003U, u"HKEY_USERS"},
                                     {0x80000004U, u"HKEY_PERFORMANCE_DATA"},
                                     {0x80000005U, u"HKEY_CURRENT_CONFIG"},
                                     {0x80000006U, u"HKEY_DYN_DATA"},
                                     {0x80000050U, u"HKEY_PERFORMANCE_TEXT"},
                                     {0x80000060U, u"HKEY_PERFORMANCE_NLSTEXT"},
                                     {0x80000007U, u""}}) {
        CRegistryKey key;
        Platform::SetLastError(0);
        EXPECT_FALSE(key.Open(Platform::RootKey(root), u"a\\b", RK_Read)) << root;
        EXPECT_NE(Platform::GetLastError(), 0U) << root;
        EXPECT_EQ(key.Path, CUnicodeString(name) + u"\\a\\b");
        EXPECT_EQ(key.Mode, RK_Read);
        EXPECT_EQ(key.Handle, nullptr);
        EXPECT_EQ(key.GetStringValue(u"Plain", Default), Default);
        EXPECT_EQ(key.GetValueType(u"Plain"), 0U);
        key.Close();
        EXPECT_EQ(key.Mode, RK_Closed);
        EXPECT_TRUE(key.Path.IsEmpty());
    }
    CRegistryKey missing;
    EXPECT_FALSE(missing.Open(User, u"Software\\TessarixTest\\None\\Below", RK_Read));
    EXPECT_EQ(Platform::GetLastError(), Platform::ErrorFileNotFound);
}

// Wine opens for whatever is asked, and for more; Windows keeps to these.
TEST_F(RegistryKey, AsksForTheAccessThatItNeeds) {
    Asked.clear();
    for (const auto& [path, mode] : {std::pair(TestKey, RK_Read), {TestKey, RK_Write}, {u"", RK_Write}}) {
        CRegistryKey key;
        ASSERT_TRUE(key.Open(User, path, mode));
    }
    EXPECT_EQ(Asked, "open 20119 create 2011f open 2011f ");
    CRegistryKey key;
    ASSERT_TRUE(key.Open(User, TestKey, RK_Read));
    Platform::RegCloseKey(key.Handle); // the registry refuses a handle that is not open
    Platform::SetLastError(0);
    key.Close();
    EXPECT_NE(Platform::GetLastError(), 0U) << "what the closing answers";
}

TEST_F(RegistryKey, WritesWhatAnotherKeyReads) {
    CUnicodeString large;
    std::fill_n(large.GetBuffer(40000), 40000, u'\u20AC');
    large.SetLength(40000);
    CRegistryKey key;
    ASSERT_TRUE(key.Open(User, u"Software\\TessarixTest\\New\\Deep", RK_Write)) << "made where it is not there";
    key.SetStringValue(u"Large", large.Text(), 80002);
    key.SetStringValue(u"", u"text", 10);
    key.SetStringValue(u"", u"", 2);
    CRegistryKey other;
    ASSERT_TRUE(other.Open(User, u"Software\\TessarixTest\\New\\Deep", RK_Read));
    EXPECT_EQ(other.GetValueType(u"Large"), Platform::RegSz);
    EXPECT_EQ(other.GetValueSize(u"Large"), 80002);
    EXPECT_EQ(other.GetStringValue(u"Large", Default), large);
    EXPECT_EQ(other.GetStringValue(u"", Default), u"");
    other.Close();
    EXPECT_EQ(Platform::GetLastError(), 0U);
    CRegistryKey root;
    EXPECT_TRUE(root.Open(User, u"", RK_Write)) << "a root is opened, not made";
    EXPECT_EQ(root.Path, u"HKEY_CURRENT_USER");
}

TEST_F(RegistryKey, AWriteThatFailsNamesTheKeyOrTheValue) {
    CRegistryKey closed;
    EXPECT_FALSE(closed.Open(User, u"\\a", RK_Write)) << "a path begins with a name";
    auto failure = Raised<CCheckException>([&] { closed.SetStringValue(u"v", u"x", 4); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->GetMessageText(), u"Access to the Windows registry key HKEY_CURRENT_USER\\\\a is prohibited.");
    CRegistryKey key;
    ASSERT_TRUE(key.Open(User, TestKey, RK_Write));
    Platform::RegCloseKey(key.Handle); // the registry refuses a handle that is not open
    failure = Raised<CCheckException>([&] { key.SetStringValue(u"v", u"x", 4); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->GetMessageText(),
              u"Access to the Windows registry key HKEY_CURRENT_USER\\Software\\TessarixTest\\v is prohibited.");
}

TEST_F(RegistryKey, MisuseIsAnInternalError) {
    CRegistryKey closed;
    CRegistryKey open;
    CRegistryKey failed;
    CRegistryKey unknownMode;
    ASSERT_TRUE(open.Open(User, TestKey, RK_Read));
    EXPECT_FALSE(failed.Open(User, u"Software\\TessarixTest\\None", RK_Read));
    char buffer[2];
    ExpectInternalErrors("src\\registrykey", {{70, [] { CRegistryKey::GetViewAccess(3); }},
                                              {89, [&] { open.Open(User, TestKey, RK_Read); }},
                                              {90, [&] { failed.Open(User, TestKey, RK_Read); }},
                                              {91, [&] { closed.Open(User, nullptr, RK_Read); }},
                                              {216, [&] { closed.GetValueType(u"v"); }},
                                              {217, [&] { open.GetValueType(nullptr); }},
                                              {233, [&] { closed.GetValueSize(u"v"); }},
                                              {234, [&] { open.GetValueSize(nullptr); }},
                                              {247, [&] { closed.GetBinaryValue(u"v", buffer, 2); }},
                                              {248, [&] { open.GetBinaryValue(nullptr, buffer, 2); }},
                                              {249, [&] { open.GetBinaryValue(u"v", buffer, -1); }},
                                              {250, [&] { open.GetBinaryValue(u"v", nullptr, 1); }},
                                              {263, [&] { closed.GetStringValue(u"v", Default); }},
                                              {264, [&] { open.GetStringValue(nullptr, Default); }},
                                              {264, [&] { open.GetStringValue(u"v", nullptr); }},
                                              {301, [&] { open.SetStringValue(u"v", nullptr, 0); }},
                                              {302, [&] { open.SetStringValue(u"v", u"", 2); }}});
    EXPECT_TRUE(Raised<CInternalError>([&] { unknownMode.Open(User, TestKey, 3); }));
    CRegistryKey written;
    ASSERT_TRUE(written.Open(User, TestKey, RK_Write));
    EXPECT_TRUE(Raised<CInternalError>([&] { written.SetStringValue(u"v", u"", -2); }));
    EXPECT_EQ(CRegistryKey::GetViewAccess(0), 0x100U);
    EXPECT_EQ(CRegistryKey::GetViewAccess(1), 0x200U);
    EXPECT_EQ(CRegistryKey::GetViewAccess(2), 0x100U);
}
