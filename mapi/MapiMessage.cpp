#include "mapi/MapiMessage.h"

#include "foundation/inc/filesystem.h"
#include "mapi/AttachmentContent.h"
#include "mapi/MapiBuffers.h"
#include "mapi/MapiProperties.h"
#include "mapi/MapiSession.h"
#include "mapi/MapiStore.h"

using namespace Tsx;

namespace Mapi {

namespace {

/// The properties that the form is shown by.
struct CFormTags {
    std::uint32_t count = 5;
    // AS DESIGNED: the identifier is asked for, although ShowForm does not take it.
    std::uint32_t tags[5] = {TagMessageFlags, TagMessageClass, TagAccess, TagEntryId, TagMessageStatus};
};

} // namespace

void CMapiMessage::SetSubject(const CUnicodeString& text) {
    SetText(Interface(), TagSubject, text);
}

void CMapiMessage::SetBody(const CUnicodeString& text) {
    SetText(Interface(), TagBody, text);
}

void CMapiMessage::ModifyRecipients(const CMapiAddressList& recipients) {
    CheckResult(Interface()->ModifyRecipients(0, recipients.List()));
}

void CMapiMessage::AddAttachment(const CUnicodeString& path) {
    IMessage* message = Interface();
    CInterface<IAttach> attachment;
    std::uint32_t number = 0;
    attachment.Receive([&](IAttach** out) { return message->CreateAttach(nullptr, 0, &number, out); });
    SetNumber(Required(attachment.Get()), TagAttachmentMethod, AttachByValue);
    SetText(attachment.Get(), TagAttachmentFileName, FileSystem::GetNameAndExt(path));
    const CHeldObject<CAttachmentContent> content(new CAttachmentContent(path));
    SetBytes(attachment.Get(), TagAttachmentData, content->Data());
    CheckResult(attachment->SaveChanges(FlagKeepOpenReadWrite));
}

void CMapiMessage::ShowForm(const CMapiSession& session, const CMapiMessageStore& store, const CMapiFolder& folder) {
    IMessage* message = Interface();
    MessageToken token = 0;
    CheckResult(session.Interface()->PrepareForm(nullptr, message, &token));
    CFormTags tags;
    std::uint32_t count = 0;
    CMapiBuffer<SPropValue> properties;
    properties.Receive(
        [&](SPropValue** out) { return message->GetProps(reinterpret_cast<SPropTagArray*>(&tags), 0, &count, out); });
    TSX_ASSERT_AT(properties.Get(), u"..\\Src\\ExtendedMapi", 309);
    const CPropertyReader reader(properties.Get(), count);
    CString messageClass = CUnicodeString(reader.Text(TagMessageClass)).ToNarrow(AnsiCodePage);
    CheckResult(session.Interface()->ShowForm(0, store.Interface(), folder.Interface(), nullptr, token, nullptr,
                                              FlagPostMessage, reader.Number(TagMessageStatus),
                                              reader.Number(TagMessageFlags), reader.Number(TagAccess),
                                              messageClass.GetBuffer(messageClass.Length())));
}

void CMapiMessage::Submit() {
    CheckResult(Interface()->SubmitMessage(0));
}

} // namespace Mapi
