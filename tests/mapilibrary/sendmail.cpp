// The Simple side of the recording MAPI library: the one entry that the Simple route asks for. The script calls it
// "MAPISendMail:NAME" by the first recipient, for the library is loaded anew for each delivery.
#include "mapi/SimpleMapi.h"
#include "platform/inc/faults.h"
#include "tests/mapilibrary/ledger.h"
#include <type_traits>

namespace {

std::string ShownRecord(const MapiRecipDesc& recipient) {
    return '{' +
           List(recipient.ulReserved, recipient.ulRecipClass, Quoted(recipient.lpszName), Quoted(recipient.lpszAddress),
                EntryId{recipient.ulEIDSize, recipient.lpEntryID}) +
           '}';
}

std::string ShownRecord(const MapiFileDesc& file) {
    return '{' +
           List(file.ulReserved, file.flFlags, file.nPosition, Quoted(file.lpszPathName), Quoted(file.lpszFileName),
                Shown(static_cast<const void*>(file.lpFileType))) +
           '}';
}

// The records of an array that is there at all, whatever the count says.
template <class TRecord>
std::string ShownRecords(std::uint32_t count, const TRecord* records) {
    std::string text = Decimal(count) + (records ? "" : " null");
    for (std::uint32_t i = 0; records && i < count; ++i) {
        text += ' ' + ShownRecord(records[i]);
    }
    return text;
}

std::string ShownMessage(const MapiMessage& message) {
    return '{' +
           List(message.ulReserved, Quoted(message.lpszSubject), Quoted(message.lpszNoteText),
                Quoted(message.lpszMessageType), Quoted(message.lpszDateReceived), Quoted(message.lpszConversationID),
                message.flFlags, static_cast<const void*>(message.lpOriginator),
                ShownRecords(message.nRecipCount, message.lpRecips),
                ShownRecords(message.nFileCount, message.lpFiles)) +
           '}';
}

} // namespace

extern "C" PLATFORM_EXPORT std::uint32_t MAPISendMail(std::uintptr_t session, std::uintptr_t uiParameter,
                                                      MapiMessage* message, std::uint32_t flags,
                                                      std::uint32_t reserved) {
    static_assert(std::is_same_v<decltype(MAPISendMail), Mapi::SendMailEntry>);
    Platform::DisarmFaults(); // the program is what is tested
    const char* name = message && message->lpRecips ? message->lpRecips->lpszName : nullptr;
    Call call("MAPISendMail", List(session, uiParameter, message ? ShownMessage(*message) : "null", flags, reserved),
              std::string("MAPISendMail:") + (name ? name : ""));
    return static_cast<std::uint32_t>(call.End());
}
