#include "foundation/inc/filesystem.h"

#include "foundation/inc/nativefilesystem.h"
#include "foundation/inc/pathkey.h"
#include "foundation/inc/virtualfilesystem.h"
#include "tests/support/text.h"

using namespace Tsx;

namespace {

int Sign(std::int32_t order) {
    return (order > 0) - (order < 0);
}

} // namespace

TEST(FileSystem, TypesComponentsAndBack) {
    // Each row: the paths of one type, their components, and the path that these give.
    using TRow = const char16_t* [3];
    constexpr TRow rows[][4] = {
        {{u"", u"", u""}, {u" \t\x3000", u"", u""}, {u"a\\\\\\b\\", u"a|b|", u"a\\b"}},
        {{u"\\", u"", u"\\"}, {u"/a", u"a|", u"\\a"}, {u"\\/x", u"x|", u"\\x"}, {u"/:x", u":x|", u"\\:x"}},
        {{u"\\\\", u"", u"\\\\"}, {u"\\\\srv\\share\\x", u"srv|share|x|", u"\\\\srv\\share\\x"}},
        {{u"C:", u"C:|", u"C:"}, {u"1:x", u"1:|x|", u"1:x"}, {u"C:a\\b", u"C:|a|b|", u"C:a\\b"}},
        {{u"C:\\", u"C:|", u"C:\\"}, {u"C:/a\\b ", u"C:|a|b|", u"C:\\a\\b"}}};
    for (int type = PT_Relative; type <= PT_DriveAbsolute; ++type) {
        for (const auto& [path, components, joined] : rows[type]) {
            CArray<CUnicodeString> parts;
            CUnicodeString text;
            parts.Append(path);
            EXPECT_TRUE(!path || FileSystem::GetPathType(path) == type) << Readable(path);
            EXPECT_TRUE(!path || FileSystem::SplitPath(parts[0], parts) == type) << Readable(path);
            for (std::int32_t i = 0; path && i < parts.Size(); ++i) {
                text += parts[i] + u'|';
            }
            EXPECT_EQ(text, components);
            EXPECT_TRUE(!path || FileSystem::JoinPath(parts, static_cast<TPathType>(type)) == joined)
                << Readable(joined);
        }
    }
    EXPECT_EQ(FileSystem::GetPathType(u" C:\\"), PT_Relative) << "no trimming here";
    EXPECT_TRUE(Raised<CInternalError>([] { FileSystem::JoinPath({}, static_cast<TPathType>(5)); }));
}

TEST(FileSystem, FieldsAndBack) {
    constexpr const char16_t* rows[][5] = {{u"C:\\a\\b.tar.gz", u"C:", u"\\a\\", u"b.tar", u".gz"},
                                           {u"a/b", u"", u"a/", u"b", u""},
                                           {u"C:.x", u"C:", u"", u"", u".x"},
                                           {u"a\\b/", u"", u"a\\b/", u"", u""},
                                           {u"\\\\srv\\sh\\f.", u"", u"\\\\srv\\sh\\", u"f", u"."},
                                           {u"", u"", u"", u"", u""}};
    for (const auto& [path, drive, dir, name, ext] : rows) {
        const CUnicodeString whole(path);
        CUnicodeString parts[] = {u"", u"", whole, u""}; // an output may be the path
        FileSystem::SplitName(parts[2], parts[0], parts[1], parts[2], parts[3]);
        const auto fields = CUnicodeString::Format(u"%s|%s|%s|%s", drive, dir, name, ext);
        EXPECT_EQ(parts[0] + u"|" + parts[1] + u"|" + parts[2] + u"|" + parts[3], fields);
        EXPECT_EQ(FileSystem::GetDrive(whole) + u"|" + FileSystem::GetDirectory(whole) + u"|" +
                      FileSystem::GetName(whole) + u"|" + FileSystem::GetExt(whole),
                  fields);
        EXPECT_EQ(FileSystem::MergeParts(drive, dir, name, ext), whole);
    }
    EXPECT_EQ(FileSystem::MergeParts(u"Cxy", u"a", u"b", u"c"), u"C:a\\b.c") << "what is missing is added";
    CUnicodeString path(u"C:\\a.b\\c.txt");
    FileSystem::ReplaceExt(path, u"log");
    EXPECT_EQ(path, u"C:\\a.b\\c.log");
}

TEST(FileSystem, TrailingSlashesAndRoots) {
    // Each row: the path, with a separator, without one, and its root.
    constexpr const char16_t* rows[][4] = {{u"", u"\\", u"", u"\\"},
                                           {u"C:", u"C:\\", u"C:\\", u"C:\\"},
                                           {u"C:\\", u"C:\\", u"C:\\", u"C:\\"},
                                           {u"1:\\", u"1:\\", u"1:", u"1:\\"},
                                           {u"a/b", u"a/b/", u"a/b", u"\\"},
                                           {u"a/b\\c", u"a/b\\c\\", u"a/b\\c", u"\\"},
                                           {u"/", u"/", u"/", u"\\"},
                                           {u"ab\\\\", u"ab\\\\", u"ab\\", u"\\"},
                                           {u"\\\\srv", u"\\\\srv\\", u"\\\\srv", u"\\\\srv\\"},
                                           {u"//srv/sh/x", u"//srv/sh/x/", u"//srv/sh/x", u"//srv/sh/"},
                                           {u" C:a", u" C:a\\", u" C:a", u"C:\\"}};
    for (const auto& [path, added, without, root] : rows) {
        CUnicodeString removed = path;
        FileSystem::RemoveTrailingSlash(removed);
        EXPECT_EQ(FileSystem::AddTrailingSlash(path) + u'|' + removed + u'|' + FileSystem::GetRoot(path),
                  CUnicodeString::Format(u"%s|%s|%s", added, without, root));
    }
}

TEST(FileSystem, TwoPathsGiveOne) {
    using Operation = CUnicodeString (*)(const CUnicodeString&, const CUnicodeString&);
    constexpr Operation operations[] = {FileSystem::Concat, FileSystem::MergeName, FileSystem::GetAbsoluteName};
    for (const auto& [operation, first, second, result] : {std::tuple(0, u"", u"\\b", u"\\b"),
                                                           {0, u"a/b", u"c", u"a/b/c"},
                                                           {0, u"a", u"/b", u"a/b"},
                                                           {0, u"a\\", u"/b", u"a/b"},
                                                           {0, u"C:\\a", u"", u"C:\\a\\"},
                                                           {1, u"C:\\a", u"b\\c.txt", u"C:\\a\\c.txt"},
                                                           {1, u" a/b ", u"c", u"a/b/c"},
                                                           {1, u"\\\\s\\h", u"C:.x", u"\\\\s\\h\\.x"},
                                                           {2, u"C:\\a", u"b", u"C:\\a\\b"},
                                                           {2, u"C:\\a", u"\\b", u"C:\\b"},
                                                           {2, u"\\\\s\\h\\x", u"/b", u"\\\\s\\h/b"},
                                                           {2, u"C:\\a", u"\\\\s\\h", u"\\\\s\\h"},
                                                           {2, u"C:\\a", u"D:/b", u"D:/b"}}) {
        EXPECT_EQ(operations[operation](first, second), result) << operation;
    }
    EXPECT_EQ(FileSystem::MergeName(u"d", u"n", u"e"), u"d\\n.e");
}

TEST(FileSystem, ComparesPaths) {
    for (const auto& [a, b, order] : {std::tuple(u"C:\\a\\", u"c:/A", 0),
                                      {u"a", u"a\\\\", 0},
                                      {u"", u"/\\", 0},
                                      {u"a", u"ab", -1},
                                      {u"B", u"a", 1},
                                      {u"a\\b", u"a", 1},
                                      {u"a\\b", u"ab", -1},
                                      {u"a!", u"a\\", -1},
                                      {u"a!", u"a", 1},
                                      {u"a\\\\b", u"a\\b", -1}}) {
        EXPECT_EQ(Sign(FileSystem::Compare(a, b)), order) << Readable(a) << " " << Readable(b);
        EXPECT_EQ(Sign(FileSystem::Compare(b, a)), -order) << Readable(b) << " " << Readable(a);
        EXPECT_EQ(HashPath(a) == HashPath(b), order == 0) << Readable(a) << " " << Readable(b);
    }
    EXPECT_EQ(HashPath(u"/\\"), 0U);
    EXPECT_EQ(HashPath(u"a/b\\"), (65U * 33 + 92) * 33 + 66);
    CUnicodeString component;
    char16_t separator = 0;
    std::int32_t pos = 2;
    EXPECT_TRUE(FileSystem::NextComponent(u"a/bc", pos, component, separator) && pos == 4 && separator == 0);
    EXPECT_FALSE(FileSystem::NextComponent(u"a/bc", pos, component, separator));
    pos = -1;
    EXPECT_TRUE(Raised<CInternalError>([&] { FileSystem::NextComponent(u"ab", pos, component, separator); }));
    pos = 3;
    EXPECT_TRUE(Raised<CInternalError>([&] { FileSystem::NextComponent(u"ab", pos, component, separator); }));
}

TEST(FileSystem, RoutesByTheRoot) {
    for (const auto& [path, isVirtual] : {std::pair(u"\\\\OSTREL\\tessarix\\virtualfiles$\\", true),
                                          {u"\\\\Ostrel\\Tessarix/VirtualFiles$\\a", false},
                                          {u" \\\\Ostrel\\Tessarix\\VirtualFiles$\\a", false},
                                          {u"", false}}) {
        CFileSystemBase* system = &FileSystem::GetFileSystem(path);
        EXPECT_EQ(dynamic_cast<CVirtualFileSystem*>(system) != nullptr, isVirtual) << Readable(path);
        EXPECT_EQ(dynamic_cast<CNativeFileSystem*>(system) != nullptr, !isVirtual) << Readable(path);
    }
    EXPECT_EQ(CVirtualFileSystem::GetRootName(), u"\\\\Ostrel\\Tessarix\\VirtualFiles$\\");
    EXPECT_TRUE(Raised<CInternalError>([] { const CNativeFileSystem second; }));
    EXPECT_TRUE(Raised<CInternalError>([] { const CVirtualFileSystem second; }));
    EXPECT_FALSE(FileSystem::GetFileSystem(u"x").CheckFile(u"", FA_Exists)) << "the first ones stay in their places";
}
