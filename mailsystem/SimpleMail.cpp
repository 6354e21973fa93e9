// MAPISendMail for this system: the message becomes a draft that the user finds among the others. Nothing is sent.

#include "mailsystem/Draft.h"
#include "mailsystem/DraftFolder.h"
#include "mailsystem/MailFailure.h"
#include "mapi/SimpleMapi.h"
#include "platform/linux/nativetext.h"
#include "platform/linux/paths.h"
#include <cerrno>
#include <cstdio>
#include <exception>
#include <new>
#include <span>
#include <string_view>
#include <utility>

namespace MailSystem {

namespace {

constexpr std::uint32_t RecipientClassCc = 2;  // MAPI_CC
constexpr std::uint32_t RecipientClassBcc = 3; // MAPI_BCC

std::string Text(const char* text) {
    return text ? text : "";
}

// An address of the kind "SMTP:ann@example.org" names its kind before the address proper.
std::string WithoutKind(std::string address) {
    constexpr std::string_view kind = "SMTP:";
    const bool present = g_ascii_strncasecmp(address.c_str(), kind.data(), kind.size()) == 0;
    return present ? address.substr(kind.size()) : std::move(address);
}

Mailbox MailboxOf(const MapiRecipDesc& record) {
    return {Text(record.lpszName), WithoutKind(Text(record.lpszAddress))};
}

// A class that is none of the published ones counts as To, where the user sees it.
std::vector<Mailbox>& ListFor(Draft& draft, std::uint32_t recipientClass) {
    switch (recipientClass) {
    case RecipientClassCc:
        return draft.cc;
    case RecipientClassBcc:
        return draft.bcc;
    default:
        return draft.to;
    }
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

Draft DraftOf(const MapiMessage& message) {
    Draft draft;
    draft.subject = Text(message.lpszSubject);
    draft.body = Text(message.lpszNoteText);
    if (message.lpOriginator) {
        draft.from = MailboxOf(*message.lpOriginator);
    }
    for (const MapiRecipDesc& record : std::span(message.lpRecips, message.lpRecips ? message.nRecipCount : 0)) {
        ListFor(draft, record.ulRecipClass).push_back(MailboxOf(record));
    }
    for (const MapiFileDesc& record : std::span(message.lpFiles, message.lpFiles ? message.nFileCount : 0)) {
        draft.attachments.push_back({NativePath(Text(record.lpszPathName)), WithoutFolders(Text(record.lpszFileName))});
    }
    return draft;
}

std::string Save(const Draft& draft) {
    const DraftMessage message(draft);
    DraftFile file(DraftFolder());
    message.WriteTo(file);
    return file.Keep();
}

std::uint32_t Refuse(std::uint32_t code, const char* reason) {
    std::fprintf(stderr, "Draft not saved: %s\n", reason);
    return code;
}

} // namespace

} // namespace MailSystem

/// Saves the message as a draft and says where; on a failure says why. Session, window and flags have no meaning here:
/// no one logs on, and no dialog is shown.
extern "C" PLATFORM_EXPORT std::uint32_t MAPISendMail(std::uintptr_t, std::uintptr_t, MapiMessage* message,
                                                      std::uint32_t, std::uint32_t) {
    using namespace MailSystem;
    if (!message) {
        return Refuse(Mapi::ErrorFailure, "there is no message");
    }
    try {
        const std::string path = Save(DraftOf(*message));
        std::fprintf(stderr, "Draft saved: %s\n", path.c_str());
        return Mapi::SuccessSuccess;
    } catch (const MailFailure& failure) {
        return Refuse(failure.Code(), failure.what());
    } catch (const std::bad_alloc&) {
        return Refuse(Mapi::ErrorInsufficientMemory, "out of memory");
    } catch (const std::exception& failure) {
        return Refuse(Mapi::ErrorFailure, failure.what());
    }
}
