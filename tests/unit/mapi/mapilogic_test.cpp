// What no MAPI library is asked: a file on its way into a message, what is held when a fault comes, and the record of
// the Simple route.
#include "mapi/AttachmentContent.h"
#include "mapi/FaultCleanup.h"
#include "mapi/SimpleMapiMessage.h"

#include "tests/support/folder.h"
#include "tests/support/memoryfile.h"
#include "tests/support/text.h"
#include <string>

using namespace Tsx;
using namespace Mapi;

TEST(MapiLogic, NobodyWritesToAnAttachmentThatIsHeld) {
    const CTestFolder folder;
    const CUnicodeString path = folder.Write(u"file", "12345678");
    CFile file;
    {
        const CAttachmentContent content(path);
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(content.Data().lpb), content.Data().cb), "12345678");
        file.Open(path, OM_Read | OM_ShareDenyNone);
        file.Close();
        EXPECT_TRUE(Raised<CFileException>([&] { file.Open(path, OM_Write | OM_ShareDenyNone); }));
    }
    file.Open(path, OM_Write | OM_ShareExclusive);
}

TEST(MapiLogic, AnAttachmentThatChangesWhileItIsRead) {
    struct CChangingFile : CMemoryFile {
        std::int64_t told = 0;
        std::int64_t GetLength() const override { return told; }
    };
    // The length that is told, what can be read, what is taken of it or becomes of it.
    const struct {
        std::int64_t told;
        const char *content, *taken;
    } table[] = {
        {4, "1234", "1234 1"},        {4, "123456", "1234 1"},  {0, "12", "(null) 1"},
        {4, "123", "memory.bin 14"},  {4, "", "memory.bin 14"}, {std::int64_t{1} << 31, "", "inc\\basefile 56"},
        {-1, "", "inc\\basefile 56"},
    };
    for (const auto& row : table) {
        CChangingFile file;
        file.bytes = row.content;
        file.told = row.told;
        std::string taken;
        try {
            const CFileBytes bytes = ReadWholeFile(file);
            const SBinary data = bytes.Data();
            taken = (data.lpb ? std::string(reinterpret_cast<const char*>(data.lpb), data.cb) : "(null)") + ' ' +
                    std::to_string(file.reads);
        } catch (CException* exception) {
            const std::unique_ptr<CException> owner(exception);
            if (const auto* const failure = dynamic_cast<CFileException*>(exception)) {
                taken = Readable(failure->fileName.View()) + ' ' + std::to_string(failure->cause);
            } else if (const auto* const error = dynamic_cast<CInternalError*>(exception)) {
                taken = Readable(error->file) + ' ' + std::to_string(error->line);
            }
        }
        EXPECT_EQ(taken, row.taken) << row.told << ' ' << row.content;
    }
}

TEST(MapiLogic, AFaultLeavesNothingHeld) {
    static std::string released;
    struct CThing {
        char name;
        static void Release(CThing* thing) { released += thing->name; }
    };
    using CHeldThing = CHeld<CThing, CThing>;
    CThing a{'a'};
    CThing b{'b'};
    CThing c{'c'};
    CThing d{'d'};
    // Frames that a fault leaves never destroy what is in them.
    alignas(CHeldThing) unsigned char frame[3][sizeof(CHeldThing)];
    {
        const CFaultCleanup outer;
        new (frame[0]) CHeldThing(&a);
        {
            const CFaultCleanup inner;
            new (frame[1]) CHeldThing(&b);
            CHeldThing detached(&c);
            { const CHeldThing orderly(&d); }
            new (frame[2]) CHeldThing(&c);
            EXPECT_EQ(detached.Detach(), &c);
        }
        EXPECT_EQ(released, "dcb") << "what was held by the end, the last one first";
        const CHeldThing orderly(&d);
    }
    EXPECT_EQ(released, "dcbda");
    const CHeldThing unguarded(&a);
    EXPECT_EQ(CFaultCleanup::Current(), nullptr);
}

TEST(SimpleMapiMessage, EveryTextOutlivesTheGrowthOfThePool) {
    CArray<CNamedAddress> files;
    for (std::int32_t i = 0; i < 100; ++i) {
        const CUnicodeString number = CUnicodeString::FromInt(i);
        files.Append({u"folder\\shown " + number, u"path " + number});
    }
    CSimpleMapiMessage filled(u"subject", files, u"body", u"ann@example.org", u"Ann", u"Me");
    const MapiMessage& message = filled.Record();
    const std::string people = std::string(message.lpszSubject) + '|' + message.lpszNoteText + '|' +
                               message.lpOriginator->lpszName + '|' + message.lpRecips->lpszName + '|' +
                               message.lpRecips->lpszAddress;
    EXPECT_EQ(people, "subject|body|Me|Ann|ann@example.org");
    EXPECT_TRUE(!message.lpOriginator->lpszAddress && message.lpOriginator->ulRecipClass == 0);
    EXPECT_TRUE(message.nRecipCount == 1 && message.lpRecips->ulRecipClass == 1 && message.nFileCount == 100);
    for (std::int32_t i = 0; i < 100; ++i) {
        const MapiFileDesc& file = message.lpFiles[i];
        EXPECT_EQ(file.nPosition, 0xFFFFFFFFU);
        EXPECT_EQ(std::string(file.lpszPathName) + '|' + file.lpszFileName,
                  "path " + std::to_string(i) + "|shown " + std::to_string(i));
    }
}

TEST(SimpleMapiMessage, AnAttachmentNeedsNameAndPath) {
    const auto fill = [](const CNamedAddress& file) {
        CArray<CNamedAddress> files;
        files.Append(file);
        CSimpleMapiMessage(u"", files, u"", u"", u"", u"");
    };
    ExpectInternalErrors("..\\Src\\MapiMailSender", {{191,
                                                      [&] {
                                                          fill({u"", u"x"});
                                                      }},
                                                     {192, [&] {
                                                          fill({u"x", u""});
                                                      }}});
}
