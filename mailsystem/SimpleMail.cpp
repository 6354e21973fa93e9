// MAPISendMail for this system: the message becomes a draft that the user finds among the others. Nothing is sent.

#include "mailsystem/AttachmentSpool.h"
#include "mailsystem/Delivery.h"
#include "mailsystem/MailFailure.h"
#include "mapi/SimpleMapi.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/text/nativetext.h"
#include <cerrno>
#include <cstdio>
#include <span>
#include <string_view>

namespace MailSystem {

namespace {

std::string Text(const char* text) {
    return text ? text : "";
}

Mailbox MailboxOf(const MapiRecipDesc& record) {
    return {Text(record.lpszName), WithoutKind(Text(record.lpszAddress))};
}

// File names keep every byte, so that also one that is no UTF-8 is found.
std::string NativePath(const std::string& path) {
    std::string native;
    if (!Platform::MapPath(Platform::WideName(path), native)) {
        throw AttachmentFailure(path, ENOENT);
    }
    return native;
}

std::string WithoutFolders(const std::string& name) {
    return name.substr(name.find_last_of("\\/") + 1); // npos + 1 is 0: the whole name
}

Draft DraftOf(const MapiMessage& message, AttachmentSpool& spool) {
    Draft draft;
    draft.subject = Text(message.lpszSubject);
    draft.body = Text(message.lpszNoteText);
    if (message.lpOriginator) {
        draft.from = MailboxOf(*message.lpOriginator);
    }
    for (const MapiRecipDesc& record : std::span(message.lpRecips, message.lpRecips ? message.nRecipCount : 0)) {
        draft.ListFor(record.ulRecipClass).push_back(MailboxOf(record));
    }
    for (const MapiFileDesc& record : std::span(message.lpFiles, message.lpFiles ? message.nFileCount : 0)) {
        const std::string path = NativePath(Text(record.lpszPathName));
        const std::string name = WithoutFolders(Text(record.lpszFileName));
        draft.attachments.push_back({spool.KeepIfWithoutLength(path), name.empty() ? LastComponent(path) : name});
    }
    return draft;
}

const MapiMessage& Required(const MapiMessage* message) {
    return message ? *message : throw OtherFailure("there is no message");
}

} // namespace

} // namespace MailSystem

/// Saves the message as a draft and says where; on a failure says why. With MAPI_DIALOG among the flags the draft is
/// then opened in the user's mail client. Session and window have no meaning here: no one logs on.
extern "C" PLATFORM_EXPORT std::uint32_t MAPISendMail(std::uintptr_t, std::uintptr_t, MapiMessage* message,
                                                      std::uint32_t flags, std::uint32_t) {
    using namespace MailSystem;
    try {
        AttachmentSpool spool;
        Deliver(DraftOf(Required(message), spool), (flags & Mapi::FlagDialog) != 0 ? EShow::InClient : EShow::Nowhere);
        return Mapi::SuccessSuccess;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "Draft not saved: %s\n", ReasonOf(failure));
        return CodeOf(failure).simple;
    }
}
