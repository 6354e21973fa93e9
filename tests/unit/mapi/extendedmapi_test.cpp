// What no run against the recording MAPI library shows of the way of a message: failures of our own in its midst, files
// that change, and the growth of records.
#include "mapi/ExtendedMapi.h"

#include "mapi/AttachmentContent.h"
#include "mapi/SimpleMapiMessage.h"
#include "platform/inc/modules.h"
#include "tests/support/folder.h"
#include "tests/support/memoryfile.h"
#include "tests/support/text.h"

using namespace Tsx;
using namespace Mapi;

namespace {

/// What the library has given out and not got back. It has a name that the search finds among the loaded ones, and
/// stays loaded to the end.
std::uint32_t ThingsOut() {
    static const Platform::Module library = Platform::LoadLibraryEx(TestFile(RECORDING_LIBRARY).Text(), 0);
    return reinterpret_cast<std::uint32_t (*)()>(Platform::GetProcAddress(library, "CorvaneThingsOut"))();
}

struct CMail {
    CTestFolder folder;
    CArray<CNamedAddress> recipients;
    CArray<CUnicodeString> paths;

    CMail() {
        for (std::int32_t i = 0; i < 9; ++i) {
            recipients.Append({u"Ann", u"ann@example.org"});
        }
        paths.Append(folder.Write(u"x.txt"));
    }
    std::int32_t Send(CMapiContext& context) const {
        return SendThroughExtendedMapi(context, u"subject", u"body", recipients, paths);
    }
};

std::string Bytes(const SBinary& data) {
    return data.lpb ? std::string(reinterpret_cast<const char*>(data.lpb), data.cb) : "(null)";
}

} // namespace

TEST(ExtendedMapi, TheContextIsFilledOnceAndEmptiedByTheSend) {
    EXPECT_EQ(ThingsOut(), 0U);
    CMapiContext context;
    context.Open();
    const CMapiSession* session = context.Session.Get();
    context.Open();
    EXPECT_EQ(context.Session.Get(), session);
    EXPECT_EQ(ThingsOut(), 5U) << "session, store, two folders, address book";
    EXPECT_EQ(CMail().Send(context), 0);
    EXPECT_TRUE(context.Library.IsEmpty() && context.Session.IsEmpty() && context.AddressBook.IsEmpty());
    EXPECT_EQ(ThingsOut(), 0U);
}

// Whatever of ours fails on the way (memory, a file, a text): the library gets back all that it gave.
TEST(ExtendedMapi, NothingStaysOutWhateverFails) {
    SKIP_WITHOUT_FAULTS();
    const CMail mail;
    CMapiContext first; // binds the entries: what gives back must be known before anything is given out
    ASSERT_EQ(mail.Send(first), 0);
    for (const char* function : {"allocation", "*"}) {
        std::int32_t result = 0;
        std::int32_t last = 0;
        const auto send = [&] {
            result = 1;
            CMapiContext context;
            result = mail.Send(context);
        };
        const int raised = FailEachCall(
            function, 8, Platform::FaultMode::Once, [&](std::int32_t nth) { last = nth; }, send,
            [&](std::int32_t nth) { EXPECT_EQ(ThingsOut(), 0U) << function << ' ' << nth; });
        EXPECT_TRUE(result == 0 && raised < last && last > 15) << function << ": the last run is not disturbed";
    }
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
