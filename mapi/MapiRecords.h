// The published records, property tags, flags and codes of Extended MAPI, for all of mapi/ and for the MAPI libraries
// in mailsystem/ and the tests. Field for field those of the system's <mapidefs.h>; a test of the Windows build
// compares sizes, offsets and values.
#pragma once

#include "platform/inc/errorinfo.h"
#include <cstdint>

namespace Mapi {

// Records that only the declarations of unused slots name.
struct ADRPARM;
struct MAPIERROR;
struct MAPINAMEID;
struct MAPIUID;
struct NOTIFICATION;
struct SPropProblemArray;
struct SRestriction;
struct SSortOrderSet;

// Arrays at the end of a record are as long as its count says, whatever their declaration.

/// An identifier whose bytes only the MAPI library understands; its length stands beside the pointer.
struct ENTRYID {
    std::uint8_t abFlags[4];
    std::uint8_t ab[1];
};

struct SBinary {
    std::uint32_t cb;
    std::uint8_t* lpb;
};

struct ENTRYLIST {
    std::uint32_t cValues;
    SBinary* lpbin;
};

struct SPropTagArray {
    std::uint32_t cValues;
    std::uint32_t aulPropTag[1];
};

/// The tag tells which member of the value counts; one of type PropertyTypeError holds a code in place of the value.
struct SPropValue {
    std::uint32_t ulPropTag;
    std::uint32_t dwAlignPad;
    union {
        std::int32_t l;
        std::uint32_t ul;
        std::uint16_t b;
        std::int64_t li;
        char* lpszA;
        char16_t* lpszW;
        SBinary bin;
        std::int32_t err;
    } Value;
};

/// A row of an address list; its properties are an allocation of their own.
struct ADRENTRY {
    std::uint32_t ulReserved1;
    std::uint32_t cValues;
    SPropValue* rgPropVals;
};

struct ADRLIST {
    std::uint32_t cEntries;
    ADRENTRY aEntries[1];
};

/// A row of a table; its properties are an allocation of their own.
struct SRow {
    std::uint32_t ulAdrEntryPad;
    std::uint32_t cValues;
    SPropValue* lpProps;
};

struct SRowSet {
    std::uint32_t cRows;
    SRow aRow[1];
};

// Property tags: the identifier in the upper half, the type in the lower one.
constexpr std::uint32_t PropertyTypeMask = 0x0000FFFF;      // PROP_TYPE_MASK
constexpr std::uint32_t PropertyTypeError = 10;             // PT_ERROR
constexpr std::uint32_t TagMessageClass = 0x001A001F;       // PR_MESSAGE_CLASS_W
constexpr std::uint32_t TagSubject = 0x0037001F;            // PR_SUBJECT_W
constexpr std::uint32_t TagRecipientType = 0x0C150003;      // PR_RECIPIENT_TYPE
constexpr std::uint32_t TagDeleteAfterSubmit = 0x0E01000B;  // PR_DELETE_AFTER_SUBMIT
constexpr std::uint32_t TagMessageFlags = 0x0E070003;       // PR_MESSAGE_FLAGS
constexpr std::uint32_t TagMessageStatus = 0x0E170003;      // PR_MSG_STATUS
constexpr std::uint32_t TagAccess = 0x0FF40003;             // PR_ACCESS
constexpr std::uint32_t TagEntryId = 0x0FFF0102;            // PR_ENTRYID
constexpr std::uint32_t TagBody = 0x1000001F;               // PR_BODY_W
constexpr std::uint32_t TagDisplayName = 0x3001001F;        // PR_DISPLAY_NAME_W
constexpr std::uint32_t TagResourceFlags = 0x30090003;      // PR_RESOURCE_FLAGS
constexpr std::uint32_t TagOutboxEntryId = 0x35E20102;      // PR_IPM_OUTBOX_ENTRYID
constexpr std::uint32_t TagAttachmentData = 0x37010102;     // PR_ATTACH_DATA_BIN
constexpr std::uint32_t TagAttachmentFileName = 0x3704001F; // PR_ATTACH_FILENAME_W
constexpr std::uint32_t TagAttachmentMethod = 0x37050003;   // PR_ATTACH_METHOD
constexpr std::uint32_t TagResourceType = 0x3E030003;       // PR_RESOURCE_TYPE

// Flags of MAPILogonEx.
constexpr std::uint32_t LogonNewSession = 0x2;  // MAPI_NEW_SESSION
constexpr std::uint32_t LogonExtended = 0x20;   // MAPI_EXTENDED
constexpr std::uint32_t LogonUseDefault = 0x40; // MAPI_USE_DEFAULT
constexpr std::uint32_t LogonNoMail = 0x8000;   // MAPI_NO_MAIL

// Flags of the interfaces' calls.
constexpr std::uint32_t FlagUnicode = 0x80000000;      // MAPI_UNICODE
constexpr std::uint32_t FlagModify = 0x1;              // MAPI_MODIFY
constexpr std::uint32_t FlagStoreWrite = 0x4;          // MDB_WRITE
constexpr std::uint32_t FlagNoAddressBookDialog = 0x1; // AB_NO_DIALOG
constexpr std::uint32_t FlagKeepOpenReadWrite = 0x2;   // KEEP_OPEN_READWRITE
constexpr std::uint32_t FlagPostMessage = 0x1;         // MAPI_POST_MESSAGE
constexpr std::uint32_t FlushUpload = 0x2;             // FLUSH_UPLOAD
constexpr std::uint32_t FlushForce = 0x8;              // FLUSH_FORCE
constexpr std::uint32_t FlushNoUi = 0x10;              // FLUSH_NO_UI

// Property values.
constexpr std::uint32_t StatusDefaultStore = 0x2;    // STATUS_DEFAULT_STORE
constexpr std::uint32_t StatusPrimaryIdentity = 0x4; // STATUS_PRIMARY_IDENTITY
constexpr std::uint32_t StatusPrimaryStore = 0x1000; // STATUS_PRIMARY_STORE
constexpr std::int32_t ResourceTypeSpooler = 37;     // MAPI_SPOOLER
constexpr std::int32_t AttachByValue = 1;            // ATTACH_BY_VALUE
constexpr std::uint32_t RecipientTypeTo = 1;         // MAPI_TO

// Results; a negative one is a failure.
constexpr std::int32_t ResultUnexpected = static_cast<std::int32_t>(0x8000FFFF);  // E_UNEXPECTED
constexpr std::int32_t ResultPointer = static_cast<std::int32_t>(0x80004003);     // E_POINTER
constexpr std::int32_t ResultFail = static_cast<std::int32_t>(0x80004005);        // E_FAIL
constexpr std::int32_t ResultOutOfMemory = static_cast<std::int32_t>(0x8007000E); // E_OUTOFMEMORY
constexpr std::int32_t ResultUserCancel = static_cast<std::int32_t>(0x80040113);  // MAPI_E_USER_CANCEL
constexpr std::int32_t ResultErrorsReturned = 0x00040380;                         // MAPI_W_ERRORS_RETURNED

} // namespace Mapi
