// The Simple side of the recording MAPI library: the one entry that the Simple route asks for. The script calls it
// "MAPISendMail:NAME" by the first recipient, for the library is loaded anew for each delivery.
#include "mapi/SimpleMapi.h"
#include "platform/inc/faults.h"
#include "tests/mapilibrary/ledger.h"
#include <type_traits>

namespace {

std::string Record(const MapiRecipDesc& one) {
    return List(one.ulReserved, one.ulRecipClass, Quoted(one.lpszName), Quoted(one.lpszAddress),
                EntryId{one.ulEIDSize, one.lpEntryID});
}

std::string Record(const MapiFileDesc& one) {
    return List(one.ulReserved, one.flFlags, one.nPosition, Quoted(one.lpszPathName), Quoted(one.lpszFileName),
                one.lpFileType);
}

// The records of an array that is there at all, whatever the count says.
template <class TRecord>
std::string Records(std::uint32_t count, const TRecord* records) {
    std::string text = std::to_string(count) + (records ? "" : " null");
    for (std::uint32_t i = 0; records && i < count; ++i) {
        text += " {" + Record(records[i]) + '}';
    }
    return text;
}

std::string Record(const MapiMessage& one) {
    return List(one.ulReserved, Quoted(one.lpszSubject), Quoted(one.lpszNoteText), Quoted(one.lpszMessageType),
                Quoted(one.lpszDateReceived), Quoted(one.lpszConversationID), one.flFlags, one.lpOriginator,
                Records(one.nRecipCount, one.lpRecips), Records(one.nFileCount, one.lpFiles));
}

} // namespace

extern "C" PLATFORM_EXPORT std::uint32_t MAPISendMail(std::uintptr_t session, std::uintptr_t uiParameter,
                                                      MapiMessage* message, std::uint32_t flags,
                                                      std::uint32_t reserved) {
    static_assert(std::is_same_v<decltype(MAPISendMail), Mapi::SendMailEntry>);
    Platform::DisarmFaults(); // the program is what is tested
    const char* name = message->lpRecips ? message->lpRecips->lpszName : nullptr;
    Call call("MAPISendMail", List(session, uiParameter, '{' + Record(*message) + '}', flags, reserved),
              std::string("MAPISendMail:") + (name ? name : ""));
    return static_cast<std::uint32_t>(call.End());
}
