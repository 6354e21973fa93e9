#include "foundation/inc/filesystem.h"

#include "foundation/inc/nativefilesystem.h"
#include "foundation/inc/pathkey.h"
#include "foundation/inc/virtualfilesystem.h"
#include "tests/support/text.h"

using namespace Tsx;

namespace {

CUnicodeString Joined(const CArray<CUnicodeString>& parts) {
    CUnicodeString text;
    for (const CUnicodeString& part : parts) {
        text += part + u'|';
    }
    return text;
}

int Sign(std::int32_t order) {
    return (order > 0) - (order < 0);
}

} // namespace

TEST(FileSystem, TypesComponentsAndBack) {
    struct Row {
        const char16_t* path;
        int type;
        const char16_t *parts, *joined;
    };
    constexpr Row rows[] = {{u"", 0, u"", u""},
                            {u" \t\x3000", 0, u"", u""},
                            {u"a\\\\\\b\\", 0, u"a|b|", u"a\\b"},
                            {u"\\", 1, u"", u"\\"},
                            {u"/a", 1, u"a|", u"\\a"},
                            {u"\\/x", 1, u"x|", u"\\x"},
                            {u"/:x", 1, u":x|", u"\\:x"},
                            {u"\\\\", 2, u"", u"\\\\"},
                            {u"\\\\srv\\share\\x", 2, u"srv|share|x|", u"\\\\srv\\share\\x"},
                            {u"//srv", 2, u"srv|", u"\\\\srv"},
                            {u"C:", 3, u"C:|", u"C:"},
                            {u"1:x", 3, u"1:|x|", u"1:x"},
                            {u"C:a\\b", 3, u"C:|a|b|", u"C:a\\b"},
                            {u"C:\\", 4, u"C:|", u"C:\\"},
                            {u"C:/a\\b ", 4, u"C:|a|b|", u"C:\\a\\b"}};
    for (const Row& row : rows) {
        EXPECT_EQ(FileSystem::GetPathType(row.path), row.type) << Readable(row.path);
        CArray<CUnicodeString> parts;
        parts.Append(row.path);
        const TPathType type = FileSystem::SplitPath(parts[0], parts);
        EXPECT_EQ(type, row.type) << Readable(row.path);
        EXPECT_EQ(Joined(parts), row.parts) << Readable(row.path);
        EXPECT_EQ(FileSystem::JoinPath(parts, type), row.joined) << Readable(row.path);
    }
    EXPECT_EQ(FileSystem::GetPathType(u" C:\\"), PT_Relative) << "no trimming here";
    EXPECT_TRUE(Raised<CInternalError>([] { FileSystem::JoinPath({}, static_cast<TPathType>(5)); }));
}

TEST(FileSystem, FieldsAndBack) {
    struct Row {
        const char16_t *path, *drive, *dir, *name, *ext;
    };
    constexpr Row rows[] = {{u"C:\\a\\b.tar.gz", u"C:", u"\\a\\", u"b.tar", u".gz"},
                            {u"a/b", u"", u"a/", u"b", u""},
                            {u"C:.x", u"C:", u"", u"", u".x"},
                            {u"C:x", u"C:", u"", u"x", u""},
                            {u"a.b\\c", u"", u"a.b\\", u"c", u""},
                            {u"a\\b/", u"", u"a\\b/", u"", u""},
                            {u"\\\\srv\\sh\\f.", u"", u"\\\\srv\\sh\\", u"f", u"."},
                            {u"", u"", u"", u"", u""}};
    for (const Row& row : rows) {
        const CUnicodeString whole(row.path);
        CUnicodeString drive;
        CUnicodeString dir;
        CUnicodeString name = whole; // an output may be the path
        CUnicodeString ext;
        FileSystem::SplitName(name, drive, dir, name, ext);
        const auto fields = CUnicodeString::Format(u"%s|%s|%s|%s", row.drive, row.dir, row.name, row.ext);
        EXPECT_EQ(drive + u"|" + dir + u"|" + name + u"|" + ext, fields);
        EXPECT_EQ(FileSystem::GetDrive(whole) + u"|" + FileSystem::GetDirectory(whole) + u"|" +
                      FileSystem::GetName(whole) + u"|" + FileSystem::GetExt(whole),
                  fields);
        EXPECT_EQ(FileSystem::GetPath(whole), CUnicodeString(row.drive) + row.dir);
        EXPECT_EQ(FileSystem::GetNameAndExt(whole), CUnicodeString(row.name) + row.ext);
        EXPECT_EQ(FileSystem::MergeParts(drive, dir, name, ext), whole);
    }
    EXPECT_EQ(FileSystem::MergeParts(u"Cxy", u"a", u"b", u"c"), u"C:a\\b.c") << "what is missing is added";
    CUnicodeString path(u"C:\\a.b\\c.txt");
    FileSystem::ReplaceExt(path, u"log");
    EXPECT_EQ(path, u"C:\\a.b\\c.log");
}

TEST(FileSystem, TrailingSlashesAndRoots) {
    struct Row {
        const char16_t *path, *added, *removed, *root;
    };
    constexpr Row rows[] = {{u"", u"\\", u"", u"\\"},
                            {u"C:", u"C:\\", u"C:\\", u"C:\\"},
                            {u"C:\\", u"C:\\", u"C:\\", u"C:\\"},
                            {u"1:\\", u"1:\\", u"1:", u"1:\\"},
                            {u"a/b", u"a/b/", u"a/b", u"\\"},
                            {u"a/b\\c", u"a/b\\c\\", u"a/b\\c", u"\\"},
                            {u"\\abc", u"\\abc\\", u"\\abc", u"\\"},
                            {u"x/", u"x/", u"x", u"\\"},
                            {u"/", u"/", u"/", u"\\"},
                            {u"ab\\\\", u"ab\\\\", u"ab\\", u"\\"},
                            {u"\\/", u"\\/", u"\\", u"\\"},
                            {u"\\\\srv", u"\\\\srv\\", u"\\\\srv", u"\\\\srv\\"},
                            {u"\\\\srv\\sh", u"\\\\srv\\sh\\", u"\\\\srv\\sh", u"\\\\srv\\sh\\"},
                            {u"//srv/sh/x", u"//srv/sh/x/", u"//srv/sh/x", u"//srv/sh/"},
                            {u" C:a", u" C:a\\", u" C:a", u"C:\\"}};
    for (const Row& row : rows) {
        EXPECT_EQ(FileSystem::AddTrailingSlash(row.path), row.added) << Readable(row.path);
        CUnicodeString removed = row.path;
        FileSystem::RemoveTrailingSlash(removed);
        EXPECT_EQ(removed, row.removed) << Readable(row.path);
        EXPECT_EQ(FileSystem::GetRoot(row.path), row.root) << Readable(row.path);
    }
}

TEST(FileSystem, TwoPathsGiveOne) {
    using Operation = CUnicodeString (*)(const CUnicodeString&, const CUnicodeString&);
    struct Row {
        const char* name;
        Operation operation;
        const char16_t *first, *second, *result;
    };
    constexpr Operation concat = FileSystem::Concat;
    constexpr Operation merge = FileSystem::MergeName;
    constexpr Operation absolute = FileSystem::GetAbsoluteName;
    constexpr Row rows[] = {{"concat", concat, u"", u"\\b", u"\\b"},
                            {"concat", concat, u"a/b", u"c", u"a/b/c"},
                            {"concat", concat, u"a\\", u"b", u"a\\b"},
                            {"concat", concat, u"a", u"/b", u"a/b"},
                            {"concat", concat, u"a\\", u"/b", u"a/b"},
                            {"concat", concat, u"C:\\a", u"", u"C:\\a\\"},
                            {"merge", merge, u"", u"b\\c.txt", u"c.txt"},
                            {"merge", merge, u"C:\\a", u"b\\c.txt", u"C:\\a\\c.txt"},
                            {"merge", merge, u" a/b ", u"c", u"a/b/c"},
                            {"merge", merge, u"\\\\s\\h", u"C:.x", u"\\\\s\\h\\.x"},
                            {"absolute", absolute, u"C:\\a", u"b", u"C:\\a\\b"},
                            {"absolute", absolute, u"C:\\a", u"\\b", u"C:\\b"},
                            {"absolute", absolute, u"\\\\s\\h\\x", u"/b", u"\\\\s\\h/b"},
                            {"absolute", absolute, u"C:\\a", u"\\\\s\\h", u"\\\\s\\h"},
                            {"absolute", absolute, u"C:\\a", u"D:/b", u"D:/b"}};
    for (const Row& row : rows) {
        EXPECT_EQ(row.operation(row.first, row.second), row.result)
            << row.name << " " << Readable(row.first) << " " << Readable(row.second);
    }
    EXPECT_EQ(FileSystem::MergeName(u"d", u"n", u"e"), u"d\\n.e");
}

TEST(FileSystem, ComparesPaths) {
    struct Row {
        const char16_t *a, *b;
        int order;
    };
    constexpr Row rows[] = {{u"C:\\a\\", u"c:/A", 0}, {u"a\\", u"A/", 0},   {u"a", u"a\\\\", 0},
                            {u"", u"/\\", 0},         {u"a", u"ab", -1},    {u"B", u"a", 1},
                            {u"a\\b", u"a", 1},       {u"a\\b", u"ab", -1}, {u"a/b", u"A\\B\\", 0},
                            {u"a!", u"a\\", -1},      {u"a!", u"a", 1},     {u"a\\\\b", u"a\\b", -1}};
    for (const Row& row : rows) {
        EXPECT_EQ(Sign(FileSystem::Compare(row.a, row.b)), row.order) << Readable(row.a) << " " << Readable(row.b);
        EXPECT_EQ(Sign(FileSystem::Compare(row.b, row.a)), -row.order) << Readable(row.b) << " " << Readable(row.a);
        if (row.order == 0) {
            EXPECT_EQ(HashPath(row.a), HashPath(row.b)) << Readable(row.a) << " " << Readable(row.b);
        }
    }
    EXPECT_EQ(HashPath(u"/\\"), 0U);
    EXPECT_EQ(HashPath(u"a/b\\"), (65U * 33 + 92) * 33 + 66);
}

TEST(FileSystem, ComparesAsAnOrderAmongNames) {
    const CUnicodeString names[] = {u"",   u"a",  u"A!", u"a b",  u"a\\b", u"a/b.c",
                                    u"AB", u"a_", u"b",  u"B\\a", u"\xE9", u"z"};
    for (const CUnicodeString& a : names) {
        for (const CUnicodeString& b : names) {
            EXPECT_EQ(Sign(FileSystem::Compare(a, b)), -Sign(FileSystem::Compare(b, a)));
            for (const CUnicodeString& c : names) {
                EXPECT_FALSE(FileSystem::Compare(a, b) <= 0 && FileSystem::Compare(b, c) <= 0 &&
                             FileSystem::Compare(a, c) > 0)
                    << Readable(a.View()) << ", " << Readable(b.View()) << ", " << Readable(c.View());
            }
        }
    }
}

TEST(FileSystem, WalksComponents) {
    const CUnicodeString path(u"\\a//b\\");
    CUnicodeString walk;
    CUnicodeString component;
    char16_t separator = 0;
    std::int32_t pos = 0;
    while (FileSystem::NextComponent(path, pos, component, separator)) {
        walk += component + u'<' + (separator != 0 ? CUnicodeString(&separator, 1) : CUnicodeString(u"end")) + u'>';
    }
    EXPECT_EQ(walk, u"<\\>a</><"
                    u"/>b<\\>");
    pos = 0;
    EXPECT_TRUE(FileSystem::NextComponent(u"ab", pos, component, separator));
    EXPECT_EQ(component + u'@' + CUnicodeString::FromInt(pos), u"ab@2");
    EXPECT_EQ(separator, u'\0');
    for (const std::int32_t outside : {-1, 3}) {
        pos = outside;
        EXPECT_TRUE(Raised<CInternalError>([&] { FileSystem::NextComponent(u"ab", pos, component, separator); }));
    }
}

TEST(FileSystem, RoutesByTheRoot) {
    struct Row {
        const char16_t* path;
        bool isVirtual;
    };
    constexpr Row rows[] = {{u"\\\\Ostrel\\Tessarix\\VirtualFiles$\\a", true},
                            {u"\\\\OSTREL\\tessarix\\virtualfiles$\\", true},
                            {u"\\\\Ostrel\\Tessarix\\VirtualFiles$", false},
                            {u"\\\\Ostrel\\Tessarix/VirtualFiles$\\a", false},
                            {u" \\\\Ostrel\\Tessarix\\VirtualFiles$\\a", false},
                            {u"VirtualFiles$\\a", false},
                            {u"", false}};
    for (const Row& row : rows) {
        CFileSystemBase* system = &FileSystem::GetFileSystem(row.path);
        EXPECT_EQ(dynamic_cast<CVirtualFileSystem*>(system) != nullptr, row.isVirtual) << Readable(row.path);
        EXPECT_EQ(dynamic_cast<CNativeFileSystem*>(system) != nullptr, !row.isVirtual) << Readable(row.path);
    }
    EXPECT_EQ(CVirtualFileSystem::GetRootName(), u"\\\\Ostrel\\Tessarix\\VirtualFiles$\\");
    EXPECT_TRUE(Raised<CInternalError>([] { const CNativeFileSystem second; }));
    EXPECT_TRUE(Raised<CInternalError>([] { const CVirtualFileSystem second; }));
    EXPECT_FALSE(FileSystem::GetFileSystem(u"x").CheckFile(u"", FA_Exists)) << "the first ones stay in their places";
}
