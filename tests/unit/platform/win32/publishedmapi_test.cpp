// Our declarations of Extended MAPI against the system's own headers: every slot, size, offset and value.
#include "mapi/MapiInterfaces.h"
#include "mapi/SimpleMapi.h"

#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <windows.h>

#include <objbase.h>

namespace Published {
#include <mapix.h>
} // namespace Published

namespace {

// Where a virtual function stands in the table of its class: the first half of a pointer to it.
template <class TFunction>
std::size_t SlotOf(TFunction function) {
    static_assert(sizeof(function) == 2 * sizeof(std::size_t));
    std::size_t halves[2];
    std::memcpy(halves, &function, sizeof(halves));
    return halves[0] / sizeof(void*);
}

} // namespace

#define SAME_SLOT(interface, method)                                                                                   \
    EXPECT_EQ(SlotOf(&Mapi::interface::method), SlotOf(&Published::interface::method)) << #interface "::" #method

TEST(PublishedMapi, SlotsOfIMAPIProp) {
    SAME_SLOT(IMAPIProp, QueryInterface);
    SAME_SLOT(IMAPIProp, AddRef);
    SAME_SLOT(IMAPIProp, Release);
    SAME_SLOT(IMAPIProp, GetLastError);
    SAME_SLOT(IMAPIProp, SaveChanges);
    SAME_SLOT(IMAPIProp, GetProps);
    SAME_SLOT(IMAPIProp, GetPropList);
    SAME_SLOT(IMAPIProp, OpenProperty);
    SAME_SLOT(IMAPIProp, SetProps);
    SAME_SLOT(IMAPIProp, DeleteProps);
    SAME_SLOT(IMAPIProp, CopyTo);
    SAME_SLOT(IMAPIProp, CopyProps);
    SAME_SLOT(IMAPIProp, GetNamesFromIDs);
    SAME_SLOT(IMAPIProp, GetIDsFromNames);
}

TEST(PublishedMapi, SlotsOfIMAPITable) {
    SAME_SLOT(IMAPITable, QueryInterface);
    SAME_SLOT(IMAPITable, AddRef);
    SAME_SLOT(IMAPITable, Release);
    SAME_SLOT(IMAPITable, GetLastError);
    SAME_SLOT(IMAPITable, Advise);
    SAME_SLOT(IMAPITable, Unadvise);
    SAME_SLOT(IMAPITable, GetStatus);
    SAME_SLOT(IMAPITable, SetColumns);
    SAME_SLOT(IMAPITable, QueryColumns);
    SAME_SLOT(IMAPITable, GetRowCount);
    SAME_SLOT(IMAPITable, SeekRow);
    SAME_SLOT(IMAPITable, SeekRowApprox);
    SAME_SLOT(IMAPITable, QueryPosition);
    SAME_SLOT(IMAPITable, FindRow);
    SAME_SLOT(IMAPITable, Restrict);
    SAME_SLOT(IMAPITable, CreateBookmark);
    SAME_SLOT(IMAPITable, FreeBookmark);
    SAME_SLOT(IMAPITable, SortTable);
    SAME_SLOT(IMAPITable, QuerySortOrder);
    SAME_SLOT(IMAPITable, QueryRows);
    SAME_SLOT(IMAPITable, Abort);
    SAME_SLOT(IMAPITable, ExpandRow);
    SAME_SLOT(IMAPITable, CollapseRow);
    SAME_SLOT(IMAPITable, WaitForCompletion);
    SAME_SLOT(IMAPITable, GetCollapseState);
    SAME_SLOT(IMAPITable, SetCollapseState);
}

TEST(PublishedMapi, SlotsOfIMAPIStatus) {
    SAME_SLOT(IMAPIStatus, ValidateState);
    SAME_SLOT(IMAPIStatus, SettingsDialog);
    SAME_SLOT(IMAPIStatus, ChangePassword);
    SAME_SLOT(IMAPIStatus, FlushQueues);
}

TEST(PublishedMapi, SlotsOfIAttach) {
    SAME_SLOT(IAttach, SaveChanges);
}

TEST(PublishedMapi, SlotsOfIMessage) {
    SAME_SLOT(IMessage, GetAttachmentTable);
    SAME_SLOT(IMessage, OpenAttach);
    SAME_SLOT(IMessage, CreateAttach);
    SAME_SLOT(IMessage, DeleteAttach);
    SAME_SLOT(IMessage, GetRecipientTable);
    SAME_SLOT(IMessage, ModifyRecipients);
    SAME_SLOT(IMessage, SubmitMessage);
    SAME_SLOT(IMessage, SetReadFlag);
}

TEST(PublishedMapi, SlotsOfIMAPIContainer) {
    SAME_SLOT(IMAPIContainer, GetContentsTable);
    SAME_SLOT(IMAPIContainer, GetHierarchyTable);
    SAME_SLOT(IMAPIContainer, OpenEntry);
    SAME_SLOT(IMAPIContainer, SetSearchCriteria);
    SAME_SLOT(IMAPIContainer, GetSearchCriteria);
}

TEST(PublishedMapi, SlotsOfIMAPIFolder) {
    SAME_SLOT(IMAPIFolder, CreateMessage);
    SAME_SLOT(IMAPIFolder, CopyMessages);
    SAME_SLOT(IMAPIFolder, DeleteMessages);
    SAME_SLOT(IMAPIFolder, CreateFolder);
    SAME_SLOT(IMAPIFolder, CopyFolder);
    SAME_SLOT(IMAPIFolder, DeleteFolder);
    SAME_SLOT(IMAPIFolder, SetReadFlags);
    SAME_SLOT(IMAPIFolder, GetMessageStatus);
    SAME_SLOT(IMAPIFolder, SetMessageStatus);
    SAME_SLOT(IMAPIFolder, SaveContentsSort);
    SAME_SLOT(IMAPIFolder, EmptyFolder);
}

TEST(PublishedMapi, SlotsOfIMsgStore) {
    SAME_SLOT(IMsgStore, Advise);
    SAME_SLOT(IMsgStore, Unadvise);
    SAME_SLOT(IMsgStore, CompareEntryIDs);
    SAME_SLOT(IMsgStore, OpenEntry);
    SAME_SLOT(IMsgStore, SetReceiveFolder);
    SAME_SLOT(IMsgStore, GetReceiveFolder);
    SAME_SLOT(IMsgStore, GetReceiveFolderTable);
    SAME_SLOT(IMsgStore, StoreLogoff);
    SAME_SLOT(IMsgStore, AbortSubmit);
    SAME_SLOT(IMsgStore, GetOutgoingQueue);
    SAME_SLOT(IMsgStore, SetLockState);
    SAME_SLOT(IMsgStore, FinishedMsg);
    SAME_SLOT(IMsgStore, NotifyNewMail);
}

TEST(PublishedMapi, SlotsOfIAddrBook) {
    SAME_SLOT(IAddrBook, OpenEntry);
    SAME_SLOT(IAddrBook, CompareEntryIDs);
    SAME_SLOT(IAddrBook, Advise);
    SAME_SLOT(IAddrBook, Unadvise);
    SAME_SLOT(IAddrBook, CreateOneOff);
    SAME_SLOT(IAddrBook, NewEntry);
    SAME_SLOT(IAddrBook, ResolveName);
    SAME_SLOT(IAddrBook, Address);
    SAME_SLOT(IAddrBook, Details);
    SAME_SLOT(IAddrBook, RecipOptions);
    SAME_SLOT(IAddrBook, QueryDefaultRecipOpt);
    SAME_SLOT(IAddrBook, GetPAB);
    SAME_SLOT(IAddrBook, SetPAB);
    SAME_SLOT(IAddrBook, GetDefaultDir);
    SAME_SLOT(IAddrBook, SetDefaultDir);
    SAME_SLOT(IAddrBook, GetSearchPath);
    SAME_SLOT(IAddrBook, SetSearchPath);
    SAME_SLOT(IAddrBook, PrepareRecips);
}

TEST(PublishedMapi, SlotsOfIMAPISession) {
    SAME_SLOT(IMAPISession, QueryInterface);
    SAME_SLOT(IMAPISession, AddRef);
    SAME_SLOT(IMAPISession, Release);
    SAME_SLOT(IMAPISession, GetLastError);
    SAME_SLOT(IMAPISession, GetMsgStoresTable);
    SAME_SLOT(IMAPISession, OpenMsgStore);
    SAME_SLOT(IMAPISession, OpenAddressBook);
    SAME_SLOT(IMAPISession, OpenProfileSection);
    SAME_SLOT(IMAPISession, GetStatusTable);
    SAME_SLOT(IMAPISession, OpenEntry);
    SAME_SLOT(IMAPISession, CompareEntryIDs);
    SAME_SLOT(IMAPISession, Advise);
    SAME_SLOT(IMAPISession, Unadvise);
    SAME_SLOT(IMAPISession, MessageOptions);
    SAME_SLOT(IMAPISession, QueryDefaultMessageOpt);
    SAME_SLOT(IMAPISession, EnumAdrTypes);
    SAME_SLOT(IMAPISession, QueryIdentity);
    SAME_SLOT(IMAPISession, Logoff);
    SAME_SLOT(IMAPISession, SetDefaultStore);
    SAME_SLOT(IMAPISession, AdminServices);
    SAME_SLOT(IMAPISession, ShowForm);
    SAME_SLOT(IMAPISession, PrepareForm);
}

#define SAME_RECORD(record) static_assert(sizeof(Mapi::record) == sizeof(Published::record))
#define SAME_FIELD(record, field)                                                                                      \
    static_assert(offsetof(Mapi::record, field) == offsetof(Published::record, field) &&                               \
                  sizeof(Mapi::record::field) == sizeof(Published::record::field))
#define SAME_VALUE(member)                                                                                             \
    static_assert(sizeof(Mapi::SPropValue{}.Value.member) == sizeof(Published::SPropValue{}.Value.member))

SAME_RECORD(ENTRYID);
SAME_FIELD(ENTRYID, abFlags);
SAME_FIELD(ENTRYID, ab);
SAME_RECORD(SBinary);
SAME_FIELD(SBinary, cb);
SAME_FIELD(SBinary, lpb);
SAME_RECORD(ENTRYLIST);
SAME_FIELD(ENTRYLIST, cValues);
SAME_FIELD(ENTRYLIST, lpbin);
SAME_RECORD(SPropTagArray);
SAME_FIELD(SPropTagArray, cValues);
SAME_FIELD(SPropTagArray, aulPropTag);
SAME_RECORD(SPropValue);
SAME_FIELD(SPropValue, ulPropTag);
SAME_FIELD(SPropValue, dwAlignPad);
SAME_FIELD(SPropValue, Value);
SAME_RECORD(ADRENTRY);
SAME_FIELD(ADRENTRY, ulReserved1);
SAME_FIELD(ADRENTRY, cValues);
SAME_FIELD(ADRENTRY, rgPropVals);
SAME_RECORD(ADRLIST);
SAME_FIELD(ADRLIST, cEntries);
SAME_FIELD(ADRLIST, aEntries);
SAME_RECORD(SRow);
SAME_FIELD(SRow, ulAdrEntryPad);
SAME_FIELD(SRow, cValues);
SAME_FIELD(SRow, lpProps);
SAME_RECORD(SRowSet);
SAME_FIELD(SRowSet, cRows);
SAME_FIELD(SRowSet, aRow);
SAME_VALUE(l);
SAME_VALUE(ul);
SAME_VALUE(b);
SAME_VALUE(li);
SAME_VALUE(lpszA);
SAME_VALUE(lpszW);
SAME_VALUE(bin);
SAME_VALUE(err);

#define SAME_CONSTANT(ours, published)                                                                                 \
    EXPECT_EQ(static_cast<std::uint32_t>(Mapi::ours), static_cast<std::uint32_t>(published)) << #published

TEST(PublishedMapi, Constants) {
    // The macros speak of the headers' own types.
    using namespace Published;
    SAME_CONSTANT(PropertyTypeMask, PROP_TYPE_MASK);
    SAME_CONSTANT(PropertyTypeError, PT_ERROR);
    SAME_CONSTANT(TagMessageClass, PR_MESSAGE_CLASS_W);
    SAME_CONSTANT(TagSubject, PR_SUBJECT_W);
    SAME_CONSTANT(TagRecipientType, PR_RECIPIENT_TYPE);
    SAME_CONSTANT(TagDeleteAfterSubmit, PR_DELETE_AFTER_SUBMIT);
    SAME_CONSTANT(TagMessageFlags, PR_MESSAGE_FLAGS);
    SAME_CONSTANT(TagMessageStatus, PR_MSG_STATUS);
    SAME_CONSTANT(TagAccess, PR_ACCESS);
    SAME_CONSTANT(TagEntryId, PR_ENTRYID);
    SAME_CONSTANT(TagBody, PR_BODY_W);
    SAME_CONSTANT(TagDisplayName, PR_DISPLAY_NAME_W);
    SAME_CONSTANT(TagResourceFlags, PR_RESOURCE_FLAGS);
    SAME_CONSTANT(TagOutboxEntryId, PR_IPM_OUTBOX_ENTRYID);
    SAME_CONSTANT(TagAttachmentData, PR_ATTACH_DATA_BIN);
    SAME_CONSTANT(TagAttachmentFileName, PR_ATTACH_FILENAME_W);
    SAME_CONSTANT(TagAttachmentMethod, PR_ATTACH_METHOD);
    SAME_CONSTANT(TagResourceType, PR_RESOURCE_TYPE);
    SAME_CONSTANT(LogonNewSession, MAPI_NEW_SESSION);
    SAME_CONSTANT(LogonExtended, MAPI_EXTENDED);
    SAME_CONSTANT(LogonUseDefault, MAPI_USE_DEFAULT);
    SAME_CONSTANT(LogonNoMail, MAPI_NO_MAIL);
    SAME_CONSTANT(FlagUnicode, MAPI_UNICODE);
    SAME_CONSTANT(FlagModify, MAPI_MODIFY);
    SAME_CONSTANT(FlagStoreWrite, MDB_WRITE);
    SAME_CONSTANT(FlagNoAddressBookDialog, AB_NO_DIALOG);
    SAME_CONSTANT(FlagKeepOpenReadWrite, KEEP_OPEN_READWRITE);
    SAME_CONSTANT(FlagPostMessage, MAPI_POST_MESSAGE);
    SAME_CONSTANT(FlushUpload, FLUSH_UPLOAD);
    SAME_CONSTANT(FlushForce, FLUSH_FORCE);
    SAME_CONSTANT(FlushNoUi, FLUSH_NO_UI);
    SAME_CONSTANT(StatusDefaultStore, STATUS_DEFAULT_STORE);
    SAME_CONSTANT(StatusPrimaryIdentity, STATUS_PRIMARY_IDENTITY);
    SAME_CONSTANT(StatusPrimaryStore, STATUS_PRIMARY_STORE);
    SAME_CONSTANT(ResourceTypeSpooler, MAPI_SPOOLER);
    SAME_CONSTANT(AttachByValue, ATTACH_BY_VALUE);
    SAME_CONSTANT(ResultUnexpected, E_UNEXPECTED);
    SAME_CONSTANT(ResultPointer, E_POINTER);
    SAME_CONSTANT(ResultFail, E_FAIL);
    SAME_CONSTANT(ResultOutOfMemory, E_OUTOFMEMORY);
    SAME_CONSTANT(ResultUserCancel, MAPI_E_USER_CANCEL);
    SAME_CONSTANT(ResultErrorsReturned, MAPI_W_ERRORS_RETURNED);
    SAME_CONSTANT(RecipientClassTo, MAPI_TO);
}

// The header has it at 32 bits, which is what it was when pointers were of that size.
static_assert(sizeof(Mapi::MessageToken) == 8 && sizeof(Mapi::WindowParameter) == 8);
