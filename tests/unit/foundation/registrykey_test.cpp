#include "foundation/inc/registrykey.h"

#include "platform/inc/lasterror.h"
#include "tests/support/folder.h"
#include "tests/support/text.h"
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <numeric>
#include <random>
#include <string>
#include <string_view>
#include <vector>

using namespace Tsx;
using namespace std::string_view_literals;

namespace {

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

TEST_F(RegistryKey, ReadsValuesByTypeAndSize) {
    struct Row {
        const char16_t* name;
        std::uint32_t type;
        std::int32_t size;
        std::u16string_view text;
    };
    const Row rows[] = {{u"Plain", 1, 10, u"text"},
                        {u"pLAIN", 1, 10, u"text"},
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
                        {u"Bytes", 3, 3, Default},
                        {u"Gone", 0, 0, Default},
                        {u"Unterminated", 1, 4, u"ab"},
                        {u"Unterminated expand", 2, 2, u"%"}};
    CRegistryKey key;
    ASSERT_TRUE(key.Open(User, u"SOFTWARE\\tessarixtest", RK_Write));
    // An import may add terminators; bytes behind the ones that are stored may not.
    const char16_t bytes[] = {u'a', u'b', u'x'};
    EXPECT_EQ(Platform::RegSetValueEx(key.Handle, u"Unterminated", Platform::RegSz, bytes, 4), 0U);
    EXPECT_EQ(Platform::RegSetValueEx(key.Handle, u"Unterminated expand", Platform::RegExpandSz, u"%x", 2), 0U);
    for (const Row& row : rows) {
        const CUnicodeString name = row.name;
        EXPECT_EQ(key.GetValueType(row.name), row.type) << Readable(name.View());
        EXPECT_EQ(key.GetValueSize(row.name), row.size) << Readable(name.View());
        EXPECT_EQ(key.GetStringValue(row.name, Default).View(), row.text) << Readable(name.View());
    }
}

// The fixture is what `reg export` of Wine wrote of these values.
TEST_F(RegistryKey, AnExportGivesTheValuesThatWerePutIn) {
    const auto wide = [](std::u16string_view text) {
        return std::string(reinterpret_cast<const char*>(text.data()), 2 * text.size());
    };
    struct Row {
        const char16_t* name;
        std::uint32_t type;
        std::string bytes;
    };
    std::string all(64, '\0');
    std::iota(all.begin(), all.end(), '\0');
    const Row rows[] = {{u"", 1, wide(u"d\0"sv)},
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
    for (const Row& row : rows) {
        const CUnicodeString name = row.name;
        std::string bytes(100, '\0');
        std::uint32_t type = 4711;
        auto size = static_cast<std::uint32_t>(bytes.size());
        EXPECT_EQ(Platform::RegQueryValueEx(key.Handle, row.name, &type, bytes.data(), &size), 0U)
            << Readable(name.View());
        EXPECT_EQ(type, row.type) << Readable(name.View());
        EXPECT_EQ(bytes.substr(0, size), row.bytes) << Readable(name.View());
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
    struct Row {
        std::uint32_t root;
        const char16_t* name;
    };
    constexpr Row rows[] = {{0x80000000, u"HKEY_CLASSES_ROOT"},
                            {0x80000001, u"HKEY_CURRENT_USER"},
                            {0x80000002, u"HKEY_LOCAL_MACHINE"},
                            {0x80000003, u"HKEY_USERS"},
                            {0x80000004, u"HKEY_PERFORMANCE_DATA"},
                            {0x80000005, u"HKEY_CURRENT_CONFIG"},
                            {0x80000006, u"HKEY_DYN_DATA"},
                            {0x80000050, u"HKEY_PERFORMANCE_TEXT"},
                            {0x80000060, u"HKEY_PERFORMANCE_NLSTEXT"},
                            {0x80000007, u""},
                            {0x00000001, u""}};
    for (const Row& row : rows) {
        CRegistryKey key;
        Platform::SetLastError(0);
        EXPECT_FALSE(key.Open(Platform::RootKey(row.root), u"a\\b", RK_Read)) << row.root;
        EXPECT_NE(Platform::GetLastError(), 0U) << row.root;
        EXPECT_EQ(key.Path, CUnicodeString(row.name) + u"\\a\\b");
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
