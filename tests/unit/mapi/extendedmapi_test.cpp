// The Extended route against the recording MAPI library, in one process with it.
#include "mapi/ExtendedMapi.h"

#include "platform/inc/faults.h"
#include "platform/inc/modules.h"
#include "tests/support/folder.h"
#include "tests/support/text.h"
#include <functional>
#include <memory>

using namespace Tsx;
using namespace Mapi;

namespace {

/// The recording library, under a name that the search finds among the loaded ones; it stays loaded to the end.
class CRecordingLibrary {
public:
    CRecordingLibrary() : module(Platform::LoadLibraryEx(TestFile(RECORDING_LIBRARY).Text(), 0)) {}
    bool IsLoaded() const { return module != nullptr; }
    std::uint32_t ThingsOut() const {
        return reinterpret_cast<std::uint32_t (*)()>(Platform::GetProcAddress(module, "CorvaneThingsOut"))();
    }

private:
    Platform::Module module;
};

const CRecordingLibrary& RecordingLibrary() {
    static const CRecordingLibrary library;
    return library;
}

/// The text of what the action raised; empty for nothing.
CUnicodeString TextOfRaised(const std::function<void()>& action) {
    try {
        action();
        return {};
    } catch (CException* exception) {
        const std::unique_ptr<CException> owner(exception);
        return exception->GetMessageText();
    }
}

struct CMail {
    CTestFolder folder;
    CArray<CNamedAddress> recipients;
    CArray<CUnicodeString> paths;

    CMail() {
        for (std::int32_t i = 0; i < 9; ++i) {
            recipients.Append({u"Ann", u"ann@example.org"});
        }
        folder.Write(u"x.txt", "content");
        paths.Append(folder / u"x.txt");
    }
    std::int32_t Send(CMapiContext& context) const {
        return SendThroughExtendedMapi(context, u"subject", u"body", recipients, paths);
    }
};

} // namespace

TEST(ExtendedMapi, AWrapperOfNothingFailsAtItsFirstUse) {
    CMapiSession session(nullptr);
    CMapiMessageStore store(nullptr);
    CMapiFolder folder(nullptr);
    CMapiMessage message(nullptr);
    const struct {
        const char* name;
        std::function<void()> use;
    } table[] = {
        {"OpenDefaultMessageStore", [&] { session.OpenDefaultMessageStore(); }},
        {"OpenReceiveFolder", [&] { store.OpenReceiveFolder(); }},
        {"CreateMessage", [&] { folder.CreateMessage(); }},
        {"SetSubject", [&] { message.SetSubject(u"x"); }},
        {"ShowForm", [&] { message.ShowForm(session, store, folder); }},
    };
    for (const auto& row : table) {
        const auto raised = Raised<CCOMException>(row.use);
        EXPECT_TRUE(raised && raised->hresult == ResultPointer) << row.name;
    }
}

TEST(ExtendedMapi, TheContextIsFilledOnceAndEmptiedByTheSend) {
    ASSERT_TRUE(RecordingLibrary().IsLoaded());
    EXPECT_TRUE(IsExtendedMapiAvailable());
    EXPECT_EQ(RecordingLibrary().ThingsOut(), 0U);
    CMapiContext context;
    context.Open();
    const CMapiSession* session = context.Session.Get();
    context.Open();
    EXPECT_EQ(context.Session.Get(), session);
    EXPECT_EQ(RecordingLibrary().ThingsOut(), 5U) << "session, store, two folders, address book";
    EXPECT_EQ(CMail().Send(context), 0);
    EXPECT_TRUE(context.Library.IsEmpty() && context.Session.IsEmpty() && context.AddressBook.IsEmpty());
    EXPECT_EQ(RecordingLibrary().ThingsOut(), 0U);
}

// Whatever of ours fails on the way (memory, a file, a text): the library gets back all that it gave.
TEST(ExtendedMapi, NothingStaysOutWhateverFails) {
    SKIP_WITHOUT_FAULTS();
    ASSERT_TRUE(RecordingLibrary().IsLoaded());
    const CMail mail;
    CMapiContext first; // binds the entries: what gives back must be known before anything is given out
    ASSERT_EQ(mail.Send(first), 0);
    for (const char* function : {"allocation", "*"}) {
        std::int32_t nth = 1;
        for (bool reached = true; reached; ++nth) {
            CUnicodeString text;
            std::int32_t result = 0;
            {
                CMapiContext context;
                Platform::ArmFault(function, nth, 8, Platform::FaultMode::Once);
                text = TextOfRaised([&] { result = mail.Send(context); });
            }
            reached = Platform::FaultCallsSeen() >= nth;
            Platform::DisarmFaults();
            ASSERT_EQ(RecordingLibrary().ThingsOut(), 0U) << function << ' ' << nth << ": " << Readable(text.View());
            ASSERT_TRUE(reached || (text.IsEmpty() && result == 0)) << "the run that nothing disturbs";
        }
        EXPECT_GT(nth, 15) << function;
    }
}
