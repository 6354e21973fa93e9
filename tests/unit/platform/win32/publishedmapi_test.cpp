// Our declarations of Extended and Simple MAPI against the system's own headers: every slot, size, offset and value.
#include "mapi/MapiInterfaces.h"
#include "mapi/SimpleMapi.h"
#include "platform/inc/resources.h"

#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <windows.h>

#include <objbase.h>

namespace Published {
#include <mapi.h>
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

// EACH(check, of, a, b, ...): check(of, a) check(of, b) ...
#define EXPAND(...) EXPAND_1(EXPAND_1(EXPAND_1(EXPAND_1(__VA_ARGS__))))
#define EXPAND_1(...) EXPAND_2(EXPAND_2(EXPAND_2(EXPAND_2(__VA_ARGS__))))
#define EXPAND_2(...) EXPAND_3(EXPAND_3(EXPAND_3(EXPAND_3(__VA_ARGS__))))
#define EXPAND_3(...) __VA_ARGS__
#define EACH_AGAIN() EACH_ONE
#define EACH_ONE(check, of, first, ...) check(of, first) __VA_OPT__(EACH_AGAIN EMPTY()()(check, of, __VA_ARGS__))
#define EMPTY()
#define EACH(check, of, ...) EXPAND(EACH_ONE(check, of, __VA_ARGS__))

#define SAME_SLOT(interface, method)                                                                                   \
    EXPECT_EQ(SlotOf(&Mapi::interface::method), SlotOf(&Published::interface::method)) << #interface "::" #method;
#define SAME_SLOTS(interface, ...) EACH(SAME_SLOT, interface, __VA_ARGS__)

TEST(PublishedMapi, Slots) {
    SAME_SLOTS(IMAPIProp, QueryInterface, AddRef, Release, GetLastError, SaveChanges, GetProps, GetPropList,
               OpenProperty, SetProps, DeleteProps, CopyTo, CopyProps, GetNamesFromIDs, GetIDsFromNames);
    SAME_SLOTS(IMAPITable, QueryInterface, AddRef, Release, GetLastError, Advise, Unadvise, GetStatus, SetColumns,
               QueryColumns, GetRowCount, SeekRow, SeekRowApprox, QueryPosition, FindRow, Restrict, CreateBookmark,
               FreeBookmark, SortTable, QuerySortOrder, QueryRows, Abort, ExpandRow, CollapseRow, WaitForCompletion,
               GetCollapseState, SetCollapseState);
    SAME_SLOTS(IMAPIStatus, ValidateState, SettingsDialog, ChangePassword, FlushQueues);
    SAME_SLOTS(IAttach, SaveChanges);
    SAME_SLOTS(IMessage, GetAttachmentTable, OpenAttach, CreateAttach, DeleteAttach, GetRecipientTable,
               ModifyRecipients, SubmitMessage, SetReadFlag);
    SAME_SLOTS(IMAPIContainer, GetContentsTable, GetHierarchyTable, OpenEntry, SetSearchCriteria, GetSearchCriteria);
    SAME_SLOTS(IMAPIFolder, CreateMessage, CopyMessages, DeleteMessages, CreateFolder, CopyFolder, DeleteFolder,
               SetReadFlags, GetMessageStatus, SetMessageStatus, SaveContentsSort, EmptyFolder);
    SAME_SLOTS(IMsgStore, Advise, Unadvise, CompareEntryIDs, OpenEntry, SetReceiveFolder, GetReceiveFolder,
               GetReceiveFolderTable, StoreLogoff, AbortSubmit, GetOutgoingQueue, SetLockState, FinishedMsg,
               NotifyNewMail);
    SAME_SLOTS(IAddrBook, OpenEntry, CompareEntryIDs, Advise, Unadvise, CreateOneOff, NewEntry, ResolveName, Address,
               Details, RecipOptions, QueryDefaultRecipOpt, GetPAB, SetPAB, GetDefaultDir, SetDefaultDir, GetSearchPath,
               SetSearchPath, PrepareRecips);
    SAME_SLOTS(IMAPISession, QueryInterface, AddRef, Release, GetLastError, GetMsgStoresTable, OpenMsgStore,
               OpenAddressBook, OpenProfileSection, GetStatusTable, OpenEntry, CompareEntryIDs, Advise, Unadvise,
               MessageOptions, QueryDefaultMessageOpt, EnumAdrTypes, QueryIdentity, Logoff, SetDefaultStore,
               AdminServices, ShowForm, PrepareForm);
}

#define SAME_FIELD(record, field) SAME_FIELD_OF(Mapi::record, record, field)
#define SAME_SIMPLE_FIELD(record, field) SAME_FIELD_OF(record, record, field)
#define SAME_FIELD_OF(ours, record, field)                                                                             \
    static_assert(offsetof(ours, field) == offsetof(Published::record, field) &&                                       \
                  sizeof(ours::field) == sizeof(Published::record::field));
#define SAME_RECORD(record, ...)                                                                                       \
    static_assert(sizeof(Mapi::record) == sizeof(Published::record));                                                  \
    EACH(SAME_FIELD, record, __VA_ARGS__)
#define SAME_SIMPLE_RECORD(record, ...)                                                                                \
    static_assert(sizeof(record) == sizeof(Published::record));                                                        \
    EACH(SAME_SIMPLE_FIELD, record, __VA_ARGS__)
#define SAME_VALUE(record, member)                                                                                     \
    static_assert(sizeof(Mapi::record{}.Value.member) == sizeof(Published::record{}.Value.member));
// NOLINTBEGIN(bugprone-sizeof-expression): of a field that is a pointer, the size of the pointer is what is meant.
SAME_RECORD(ENTRYID, abFlags, ab);
SAME_RECORD(SBinary, cb, lpb);
SAME_RECORD(ENTRYLIST, cValues, lpbin);
SAME_RECORD(SPropTagArray, cValues, aulPropTag);
SAME_RECORD(SPropValue, ulPropTag, dwAlignPad, Value);
SAME_RECORD(ADRENTRY, ulReserved1, cValues, rgPropVals);
SAME_RECORD(ADRLIST, cEntries, aEntries);
SAME_RECORD(SRow, ulAdrEntryPad, cValues, lpProps);
SAME_RECORD(SRowSet, cRows, aRow);
SAME_SIMPLE_RECORD(MapiRecipDesc, ulReserved, ulRecipClass, lpszName, lpszAddress, ulEIDSize, lpEntryID);
SAME_SIMPLE_RECORD(MapiFileDesc, ulReserved, flFlags, nPosition, lpszPathName, lpszFileName, lpFileType);
SAME_SIMPLE_RECORD(MapiMessage, ulReserved, lpszSubject, lpszNoteText, lpszMessageType, lpszDateReceived,
                   lpszConversationID, flFlags, lpOriginator, nRecipCount, lpRecips, nFileCount, lpFiles);
// NOLINTEND(bugprone-sizeof-expression)
static_assert(sizeof(Platform::FixedFileInfo) == sizeof(VS_FIXEDFILEINFO));
EACH(SAME_VALUE, SPropValue, l, ul, b, li, lpszA, lpszW, bin, err);

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
    SAME_CONSTANT(RecipientTypeTo, MAPI_TO);
    SAME_CONSTANT(ResultUnexpected, E_UNEXPECTED);
    SAME_CONSTANT(ResultPointer, E_POINTER);
    SAME_CONSTANT(ResultFail, E_FAIL);
    SAME_CONSTANT(ResultOutOfMemory, E_OUTOFMEMORY);
    SAME_CONSTANT(ResultUserCancel, MAPI_E_USER_CANCEL);
    SAME_CONSTANT(ResultErrorsReturned, MAPI_W_ERRORS_RETURNED);
    SAME_CONSTANT(RecipientClassTo, MAPI_TO);
    SAME_CONSTANT(FlagLogonUi, MAPI_LOGON_UI);
    SAME_CONSTANT(FlagDialog, MAPI_DIALOG);
    SAME_CONSTANT(ErrorUserAbort, MAPI_E_USER_ABORT);
    SAME_CONSTANT(ErrorDiskFull, MAPI_E_DISK_FULL);
    SAME_CONSTANT(ErrorInsufficientMemory, MAPI_E_INSUFFICIENT_MEMORY);
    SAME_CONSTANT(ErrorAttachmentNotFound, MAPI_E_ATTACHMENT_NOT_FOUND);
    SAME_CONSTANT(ErrorAttachmentOpenFailure, MAPI_E_ATTACHMENT_OPEN_FAILURE);
    SAME_CONSTANT(ErrorAttachmentWriteFailure, MAPI_E_ATTACHMENT_WRITE_FAILURE);
}

// The header has it at 32 bits, which is what it was when pointers were of that size.
static_assert(sizeof(Mapi::MessageToken) == 8 && sizeof(Mapi::WindowParameter) == 8);
