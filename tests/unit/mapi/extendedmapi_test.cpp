// The Extended route against the recording MAPI library, in one process with it.
#include "mapi/ExtendedMapi.h"

#include "platform/inc/modules.h"
#include "tests/support/folder.h"
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

} // namespace

TEST(ExtendedMapi, TheContextIsFilledOnceAndEmptiedByTheSend) {
    EXPECT_EQ(ThingsOut(), 0U);
    EXPECT_TRUE(IsExtendedMapiAvailable());
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
    ASSERT_EQ(ThingsOut(), 0U);
    const CMail mail;
    CMapiContext first; // binds the entries: what gives back must be known before anything is given out
    ASSERT_EQ(mail.Send(first), 0);
    for (const char* function : {"allocation", "*"}) {
        std::int32_t nth = 1;
        for (bool reached = true; reached; ++nth) {
            CUnicodeString text;
            std::int32_t result = 0;
            try {
                CMapiContext context;
                Platform::ArmFault(function, nth, 8, Platform::FaultMode::Once);
                result = mail.Send(context);
            } catch (CException* exception) {
                text = exception->GetMessageText();
                delete exception;
            }
            reached = Platform::FaultCallsSeen() >= nth;
            Platform::DisarmFaults();
            ASSERT_EQ(ThingsOut(), 0U) << function << ' ' << nth << ": " << Readable(text.View());
            ASSERT_TRUE(reached || (text.IsEmpty() && result == 0)) << "the run that nothing disturbs";
        }
        EXPECT_GT(nth, 15) << function;
    }
}
