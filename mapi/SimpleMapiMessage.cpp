#include "mapi/SimpleMapiMessage.h"

#include "foundation/inc/filesystem.h"

using namespace Tsx;

namespace {

constexpr const char16_t* ModuleName = u"..\\Src\\MapiMailSender";

} // namespace

CSimpleMapiMessage::CSimpleMapiMessage(const CUnicodeString& subject, const CArray<CNamedAddress>& attachments,
                                       const CUnicodeString& body, const CUnicodeString& address,
                                       const CUnicodeString& name, const CUnicodeString& originator) {
    message.lpszSubject = AddNarrowUnlessEmpty(subject);
    message.lpszNoteText = AddNarrowUnlessEmpty(body);
    AddOriginator(originator);
    AddRecipient(address, name, Mapi::RecipientClassTo);
    AddFiles(attachments);
}

char* CSimpleMapiMessage::AddNarrow(const CUnicodeString& text) {
    CString& narrow = narrowStrings.Append(text.ToNarrow(AnsiCodePage));
    return narrow.GetBuffer(narrow.Length());
}

char* CSimpleMapiMessage::AddNarrowUnlessEmpty(const CUnicodeString& text) {
    return text.IsEmpty() ? nullptr : AddNarrow(text);
}

void CSimpleMapiMessage::AddOriginator(const CUnicodeString& originator) {
    if (originator.IsEmpty()) {
        return;
    }
    MapiRecipDesc& record = originators.Append({});
    record.ulRecipClass = Mapi::RecipientClassOriginator;
    record.lpszName = AddNarrow(originator);
    message.lpOriginator = originators.Data();
}

// AS DESIGNED: a recipient without a name is left out, although its address alone would do; the user then fills in the
// To line. The Extended route takes the address.
void CSimpleMapiMessage::AddRecipient(const CUnicodeString& address, const CUnicodeString& name,
                                      std::uint32_t recipientClass) {
    if (name.IsEmpty()) {
        return;
    }
    MapiRecipDesc& record = recipients.Append({});
    record.ulRecipClass = recipientClass;
    record.lpszAddress = AddNarrow(address);
    record.lpszName = AddNarrow(name);
    message.lpRecips = recipients.Data();
    message.nRecipCount = static_cast<std::uint32_t>(recipients.Size());
}

void CSimpleMapiMessage::AddFiles(const CArray<CNamedAddress>& attachments) {
    if (attachments.IsEmpty()) {
        return;
    }
    files.Reserve(attachments.Size());
    for (const CNamedAddress& attachment : attachments) {
        TSX_ASSERT_AT(!attachment.Name.IsEmpty(), ModuleName, 191);
        TSX_ASSERT_AT(!attachment.Address.IsEmpty(), ModuleName, 192);
        MapiFileDesc& record = files.Append({});
        record.nPosition = Mapi::NoPosition;
        record.lpszPathName = AddNarrow(attachment.Address);
        record.lpszFileName = AddNarrow(FileSystem::GetNameAndExt(attachment.Name));
    }
    message.nFileCount = static_cast<std::uint32_t>(files.Size());
    message.lpFiles = files.Data();
}
