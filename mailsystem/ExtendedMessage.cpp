#include "mailsystem/ExtendedMessage.h"

#include "mapi/SimpleMapi.h"
#include "platform/linux/text/nativetext.h"
#include <span>

using namespace Mapi;

namespace MailSystem {

namespace {

constexpr std::uint32_t FlagUnsent = 0x8;  // MSGFLAG_UNSENT
constexpr std::uint32_t AccessOwn = 0x7;   // MAPI_ACCESS_MODIFY, MAPI_ACCESS_READ and MAPI_ACCESS_DELETE
constexpr std::uint32_t AllRecipients = 0; // the flags of ModifyRecipients for a list that replaces the one before

// The place of the last bracket that opens outside all others, if the text ends as it closes and every bracket has its
// other half; npos otherwise.
std::size_t OpeningBracket(std::string_view text) {
    std::size_t depth = 0;
    std::size_t open = std::string_view::npos;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '[' && depth++ == 0) {
            open = i;
        } else if (text[i] == ']' && depth-- == 0) {
            return std::string_view::npos;
        }
    }
    return depth == 0 && text.ends_with(']') ? open : std::string_view::npos;
}

} // namespace

Mailbox MailboxOf(std::string_view displayName) {
    const std::size_t open = OpeningBracket(displayName);
    if (open == std::string_view::npos) {
        return {std::string(displayName), ""};
    }
    const std::string_view address = displayName.substr(open + 1, displayName.size() - open - 2);
    return {std::string(displayName.substr(0, open)), WithoutKind(std::string(address))};
}

std::int32_t AttachObject::Set(const SPropValue& property) {
    if (property.ulPropTag != TagAttachmentData) {
        return WithProperties::Set(property);
    }
    const SBinary& data = property.Value.bin;
    path = spool->Keep({reinterpret_cast<const char*>(data.lpb), data.cb});
    return Platform::SOk;
}

std::int32_t AttachObject::SaveChanges(std::uint32_t) {
    return Guarded([this] {
        path = path.empty() ? spool->Keep({}) : path;
        saved = true;
        return Platform::SOk;
    });
}

MessageObject::MessageObject() {
    properties.SetNumber(TagMessageFlags, FlagUnsent);
    properties.SetText(TagMessageClass, u"IPM.Note");
    properties.SetNumber(TagAccess, AccessOwn);
    properties.SetNumber(TagMessageStatus, 0);
}

std::int32_t MessageObject::CreateAttach(const Guid*, std::uint32_t, std::uint32_t* number, IAttach** attachment) {
    *attachment = nullptr;
    return Guarded([&] {
        auto made = Reference<AttachObject>::Adopt(new AttachObject(spool));
        attachments.emplace_back(made.Get());
        *number = static_cast<std::uint32_t>(attachments.size() - 1);
        made->AddRef();
        *attachment = made.Get();
        return Platform::SOk;
    });
}

std::int32_t MessageObject::ModifyRecipients(std::uint32_t flags, ADRLIST* list) {
    if (!list || flags != AllRecipients) {
        return list ? ResultNoSupport : ResultInvalidParameter;
    }
    return Guarded([&] {
        std::vector<Recipient> modified;
        for (const ADRENTRY& entry : std::span(list->aEntries, list->cEntries)) {
            Recipient recipient{{}, RecipientClassTo};
            for (const SPropValue& property : std::span(entry.rgPropVals, entry.rgPropVals ? entry.cValues : 0)) {
                if (property.ulPropTag == TagDisplayName && property.Value.lpszW) {
                    recipient.mailbox = MailboxOf(Platform::Utf8Text(property.Value.lpszW));
                } else if (property.ulPropTag == TagRecipientType) {
                    recipient.recipientClass = property.Value.ul;
                }
            }
            modified.push_back(std::move(recipient));
        }
        recipients = std::move(modified);
        return Platform::SOk;
    });
}

Draft MessageObject::Content() const {
    Draft draft;
    draft.subject = properties.Text(TagSubject);
    draft.body = properties.Text(TagBody);
    for (const Recipient& recipient : recipients) {
        draft.ListFor(recipient.recipientClass).push_back(recipient.mailbox);
    }
    for (const Reference<AttachObject>& attachment : attachments) {
        if (attachment->IsSaved()) {
            draft.attachments.push_back(attachment->Content());
        }
    }
    return draft;
}

} // namespace MailSystem
