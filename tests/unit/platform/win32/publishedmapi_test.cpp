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

namespace Mapi {
using ::MapiFileDesc, ::MapiMessage, ::MapiRecipDesc;
} // namespace Mapi

#define SAME_FIELD(record, field)                                                                                      \
    static_assert(offsetof(Mapi::record, field) == offsetof(Published::record, field) &&                               \
                  sizeof(Mapi::record::field) == sizeof(Published::record::field));
#define SAME_RECORD(record, ...)                                                                                       \
    static_assert(sizeof(Mapi::record) == sizeof(Published::record));                                                  \
    EACH(SAME_FIELD, record, __VA_ARGS__)
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
SAME_RECORD(MapiRecipDesc, ulReserved, ulRecipClass, lpszName, lpszAddress, ulEIDSize, lpEntryID);
SAME_RECORD(MapiFileDesc, ulReserved, flFlags, nPosition, lpszPathName, lpszFileName, lpFileType);
SAME_RECORD(MapiMessage, ulReserved, lpszSubject, lpszNoteText, lpszMessageType, lpszDateReceived, lpszConversationID,
            flFlags, lpOriginator, nRecipCount, lpRecips, nFileCount, lpFiles);
// NOLINTEND(bugprone-sizeof-expression)
static_assert(sizeof(Platform::FixedFileInfo) == sizeof(VS_FIXEDFILEINFO));
EACH(SAME_VALUE, SPropValue, l, ul, b, li, lpszA, lpszW, bin, err);

#define SAME_CONSTANT(of, pair) SAME_CONSTANT_OF pair
#define SAME_CONSTANT_OF(ours, published)                                                                              \
    EXPECT_EQ(static_cast<std::uint32_t>(Mapi::ours), static_cast<std::uint32_t>(published)) << #ours;

TEST(PublishedMapi, Constants) {
    // The macros speak of the headers' own types.
    using namespace Published;
    EACH(SAME_CONSTANT, , (PropertyTypeMask, PROP_TYPE_MASK), (PropertyTypeError, PT_ERROR),
         (TagMessageClass, PR_MESSAGE_CLASS_W), (TagSubject, PR_SUBJECT_W), (TagRecipientType, PR_RECIPIENT_TYPE),
         (TagDeleteAfterSubmit, PR_DELETE_AFTER_SUBMIT), (TagMessageFlags, PR_MESSAGE_FLAGS),
         (TagMessageStatus, PR_MSG_STATUS), (TagAccess, PR_ACCESS), (TagEntryId, PR_ENTRYID), (TagBody, PR_BODY_W),
         (TagDisplayName, PR_DISPLAY_NAME_W), (TagResourceFlags, PR_RESOURCE_FLAGS),
         (TagOutboxEntryId, PR_IPM_OUTBOX_ENTRYID), (TagAttachmentData, PR_ATTACH_DATA_BIN),
         (TagAttachmentFileName, PR_ATTACH_FILENAME_W), (TagAttachmentMethod, PR_ATTACH_METHOD),
         (TagResourceType, PR_RESOURCE_TYPE), (LogonNewSession, MAPI_NEW_SESSION), (LogonExtended, MAPI_EXTENDED),
         (LogonUseDefault, MAPI_USE_DEFAULT), (LogonNoMail, MAPI_NO_MAIL), (FlagUnicode, MAPI_UNICODE),
         (FlagModify, MAPI_MODIFY), (FlagStoreWrite, MDB_WRITE), (FlagNoAddressBookDialog, AB_NO_DIALOG),
         (FlagKeepOpenReadWrite, KEEP_OPEN_READWRITE), (FlagPostMessage, MAPI_POST_MESSAGE),
         (FlushUpload, FLUSH_UPLOAD), (FlushForce, FLUSH_FORCE), (FlushNoUi, FLUSH_NO_UI),
         (StatusDefaultStore, STATUS_DEFAULT_STORE), (StatusPrimaryIdentity, STATUS_PRIMARY_IDENTITY),
         (StatusPrimaryStore, STATUS_PRIMARY_STORE), (ResourceTypeSpooler, MAPI_SPOOLER),
         (AttachByValue, ATTACH_BY_VALUE), (RecipientTypeTo, MAPI_TO), (ResultUnexpected, E_UNEXPECTED),
         (ResultPointer, E_POINTER), (ResultFail, E_FAIL), (ResultOutOfMemory, E_OUTOFMEMORY),
         (ResultUserCancel, MAPI_E_USER_CANCEL), (ResultErrorsReturned, MAPI_W_ERRORS_RETURNED),
         (RecipientClassTo, MAPI_TO), (FlagLogonUi, MAPI_LOGON_UI), (FlagDialog, MAPI_DIALOG),
         (ErrorUserAbort, MAPI_E_USER_ABORT), (ErrorDiskFull, MAPI_E_DISK_FULL),
         (ErrorInsufficientMemory, MAPI_E_INSUFFICIENT_MEMORY), (ErrorAttachmentNotFound, MAPI_E_ATTACHMENT_NOT_FOUND),
         (ErrorAttachmentOpenFailure, MAPI_E_ATTACHMENT_OPEN_FAILURE),
         (ErrorAttachmentWriteFailure, MAPI_E_ATTACHMENT_WRITE_FAILURE))
}

// The header has it at 32 bits, which is what it was when pointers were of that size.
static_assert(sizeof(Mapi::MessageToken) == 8 && sizeof(Mapi::WindowParameter) == 8);
