// What no run against the recording MAPI library shows of a message's content: files that change, and the growth of
// records.
#include "mapi/AttachmentContent.h"

#include "mapi/SimpleMapiMessage.h"
#include "tests/support/folder.h"
#include "tests/support/memoryfile.h"
#include "tests/support/text.h"

using namespace Tsx;
using namespace Mapi;

static std::string Bytes(const SBinary& data) {
    return data.lpb ? std::string(reinterpret_cast<const char*>(data.lpb), data.cb) : "(null)";
}

TEST(AttachmentContent, NobodyWritesToAFileThatIsHeld) {
    const CTestFolder folder;
    const CUnicodeString path = folder.Write(u"file", "12345678");
    CFile file;
    {
        const CAttachmentContent content(path);
        EXPECT_EQ(Bytes(content.Data()), "12345678");
        file.Open(path, OM_Read | OM_ShareDenyNone);
        file.Close();
        EXPECT_TRUE(Raised<CFileException>([&] { file.Open(path, OM_Write | OM_ShareDenyNone); }));
    }
    file.Open(path, OM_Write | OM_ShareExclusive);
}

TEST(AttachmentContent, AFileThatChangesWhileItIsRead) {
    struct CChangingFile : CMemoryFile {
        using CMemoryFile::CMemoryFile;
        std::int64_t told = 0;
        std::int64_t GetLength() const override { return told; }
    };
    const auto read = [](std::int64_t told, const char* content) {
        CChangingFile file(content);
        file.told = told;
        const std::string bytes = Bytes(ReadWholeFile(file).Data());
        return bytes + " in " + std::to_string(file.reads);
    };
    EXPECT_EQ(read(4, "1234"), "1234 in 1");
    EXPECT_EQ(read(4, "123456"), "1234 in 1");
    EXPECT_EQ(read(0, "12"), "(null) in 1");
    for (const char* shrunk : {"123", ""}) {
        const auto end = Raised<CFileException>([&] { read(4, shrunk); });
        EXPECT_TRUE(end && end->cause == 14 && end->fileName == u"memory.bin") << shrunk;
    }
    for (const std::int64_t told : {std::int64_t{1} << 31, std::int64_t{-1}}) {
        EXPECT_EQ(InternalErrorOf([&] { read(told, ""); }), "inc\\basefile 56") << told;
    }
}

TEST(SimpleMapiMessage, EveryTextOutlivesTheGrowthOfThePool) {
    CArray<CNamedAddress> files;
    for (std::int32_t i = 0; i < 100; ++i) {
        const CUnicodeString number = CUnicodeString::FromInt(i);
        files.Append({u"folder\\shown " + number, u"path " + number});
    }
    CSimpleMapiMessage filled(u"subject", files, u"body", u"ann@example.org", u"Ann", u"Me");
    const MapiMessage& message = filled.Record();
    EXPECT_EQ(std::string(message.lpszSubject) + '|' + message.lpszNoteText + '|' + message.lpOriginator->lpszName,
              "subject|body|Me");
    EXPECT_TRUE(!message.lpOriginator->lpszAddress && message.lpOriginator->ulRecipClass == 0);
    ASSERT_EQ(message.nFileCount, 100U);
    EXPECT_EQ(std::string(message.lpFiles[0].lpszPathName) + '|' + message.lpFiles[99].lpszFileName, "path 0|shown 99");
}
