// The Simple side of the recording MAPI library: the one entry that the Simple route asks for. It writes
// down all that it is handed, shows nothing and answers as it is told.
#include "mapi/SimpleMapi.h"
#include "platform/inc/faults.h"
#include "tests/mapilibrary/answer.h"
#include "tests/mapilibrary/transcript.h"
#include <string>
#include <type_traits>

namespace {

constexpr const char* EntryName = "MAPISendMail";

void RecordRecipient(Transcript& transcript, const std::string& name, const MapiRecipDesc& recipient) {
    transcript.Number(name + ".ulReserved", recipient.ulReserved);
    transcript.Number(name + ".ulRecipClass", recipient.ulRecipClass);
    transcript.Text(name + ".lpszName", recipient.lpszName);
    transcript.Text(name + ".lpszAddress", recipient.lpszAddress);
    transcript.Number(name + ".ulEIDSize", recipient.ulEIDSize);
    transcript.Bytes(name + ".lpEntryID", recipient.lpEntryID, recipient.ulEIDSize);
}

void RecordFile(Transcript& transcript, const std::string& name, const MapiFileDesc& file) {
    transcript.Number(name + ".ulReserved", file.ulReserved);
    transcript.Number(name + ".flFlags", file.flFlags);
    transcript.Number(name + ".nPosition", file.nPosition);
    transcript.Text(name + ".lpszPathName", file.lpszPathName);
    transcript.Text(name + ".lpszFileName", file.lpszFileName);
    transcript.Pointer(name + ".lpFileType", file.lpFileType);
}

// The records of an array that is there at all, whatever the count says.
template <class TRecord>
void RecordArray(Transcript& transcript, const std::string& name, std::uint32_t count, const TRecord* records,
                 void (*record)(Transcript&, const std::string&, const TRecord&)) {
    for (std::uint32_t i = 0; records && i < count; ++i) {
        record(transcript, name + '[' + Decimal(i) + ']', records[i]);
    }
}

void RecordMessage(Transcript& transcript, const MapiMessage& message) {
    transcript.Number("message.ulReserved", message.ulReserved);
    transcript.Text("message.lpszSubject", message.lpszSubject);
    transcript.Text("message.lpszNoteText", message.lpszNoteText);
    transcript.Text("message.lpszMessageType", message.lpszMessageType);
    transcript.Text("message.lpszDateReceived", message.lpszDateReceived);
    transcript.Text("message.lpszConversationID", message.lpszConversationID);
    transcript.Number("message.flFlags", message.flFlags);
    transcript.Pointer("message.lpOriginator", message.lpOriginator);
    RecordArray(transcript, "originator", 1, message.lpOriginator, &RecordRecipient);
    transcript.Number("message.nRecipCount", message.nRecipCount);
    transcript.Pointer("message.lpRecips", message.lpRecips);
    RecordArray(transcript, "recipient", message.nRecipCount, message.lpRecips, &RecordRecipient);
    transcript.Number("message.nFileCount", message.nFileCount);
    transcript.Pointer("message.lpFiles", message.lpFiles);
    RecordArray(transcript, "file", message.nFileCount, message.lpFiles, &RecordFile);
}

// Loading and freeing the library shows in the transcript: the program does both for each delivery.
struct LoadWatch {
    LoadWatch() { Record("attach"); }
    ~LoadWatch() { Record("detach"); }
    LoadWatch(const LoadWatch&) = delete;
    LoadWatch& operator=(const LoadWatch&) = delete;

    static void Record(const char* event) {
        Transcript transcript;
        transcript.Line(event);
        transcript.Write();
    }
};

const LoadWatch Watch;

} // namespace

extern "C" PLATFORM_EXPORT std::uint32_t MAPISendMail(std::uintptr_t session, std::uintptr_t uiParameter,
                                                      MapiMessage* message, std::uint32_t flags,
                                                      std::uint32_t reserved) {
    static_assert(std::is_same_v<decltype(MAPISendMail), Mapi::SendMailEntry>);
    Platform::DisarmFaults(); // the program is what is tested
    Transcript transcript;
    transcript.Line(EntryName);
    transcript.Number("session", session);
    transcript.Number("uiParam", uiParameter);
    transcript.Number("flags", flags);
    transcript.Number("reserved", reserved);
    if (message) {
        RecordMessage(transcript, *message);
    } else {
        transcript.Pointer("message", message);
    }
    transcript.Write();
    // The library is loaded anew for each delivery, so that the file alone knows how many there have been.
    const std::optional<std::uint32_t> answer = AnswerToCall(Transcript::CountLines(EntryName));
    if (!answer) {
        Crash();
    }
    transcript.Number("result", answer.value_or(Mapi::ErrorFailure));
    transcript.Write();
    return answer.value_or(Mapi::ErrorFailure);
}
