// A message of the Extended side, with its attachments: what is put into it becomes a draft when its form is shown.
#pragma once

#include "mailsystem/AttachmentSpool.h"
#include "mailsystem/Draft.h"
#include "mailsystem/PropertyBag.h"
#include <string_view>
#include <vector>

namespace MailSystem {

/// A recipient from the display name that the program makes of name and address.
///
///   Ann Lee[ann@example.org]    name and address
///   [ann@example.org]           the address alone
///   Ann[ann@[192.0.2.1]]        the last brackets that are in no others
///   Ann[ann@[example.org]        the name alone, as is any text whose brackets don't match
///   Ann Lee                     the name alone
Mailbox MailboxOf(std::string_view displayName);

/// Part of its message once it is saved. Its bytes go to the disk as they arrive.
class AttachObject final : public WithProperties<Mapi::Slots::PropSlots<Mapi::IAttach, NoSupport>> {
public:
    explicit AttachObject(std::shared_ptr<AttachmentSpool> messageSpool) : spool(std::move(messageSpool)) {}
    std::int32_t SaveChanges(std::uint32_t flags) override;

    bool IsSaved() const { return saved; }
    Attachment Content() const { return {path, properties.Text(Mapi::TagAttachmentFileName)}; }

protected:
    std::int32_t Set(const Mapi::SPropValue& property) override;

private:
    std::shared_ptr<AttachmentSpool> spool;
    std::string path; // of the bytes
    bool saved = false;
};

class MessageObject final : public WithProperties<Mapi::Slots::MessageSlots<NoSupport>> {
public:
    MessageObject();
    std::int32_t CreateAttach(const Mapi::Guid* interfaceId, std::uint32_t flags, std::uint32_t* number,
                              Mapi::IAttach** attachment) override;
    /// Replaces all recipients; flags that ask for anything else are not supported.
    std::int32_t ModifyRecipients(std::uint32_t flags, Mapi::ADRLIST* list) override;

    Draft Content() const;

private:
    struct Recipient {
        Mailbox mailbox;
        std::uint32_t recipientClass;
    };
    std::vector<Recipient> recipients;
    std::shared_ptr<AttachmentSpool> spool = std::make_shared<AttachmentSpool>(); // as long as an attachment is held
    std::vector<Reference<AttachObject>> attachments;
};

} // namespace MailSystem
