// The published records, constants and entry of Simple MAPI, for the Simple route (MapiMailSender, SimpleMapiMessage)
// and for the MAPI libraries in mailsystem/ and the tests. Field for field those of the system's <mapi.h>; a test of
// the Windows build compares sizes and offsets.
#pragma once

#include <cstdint>

struct MapiRecipDesc {
    std::uint32_t ulReserved;
    std::uint32_t ulRecipClass;
    char* lpszName;
    char* lpszAddress;
    std::uint32_t ulEIDSize;
    void* lpEntryID;
};

struct MapiFileDesc {
    std::uint32_t ulReserved;
    std::uint32_t flFlags;
    std::uint32_t nPosition;
    char* lpszPathName;
    char* lpszFileName;
    void* lpFileType;
};

struct MapiMessage {
    std::uint32_t ulReserved;
    char* lpszSubject;
    char* lpszNoteText;
    char* lpszMessageType;
    char* lpszDateReceived;
    char* lpszConversationID;
    std::uint32_t flFlags;
    MapiRecipDesc* lpOriginator;
    std::uint32_t nRecipCount;
    MapiRecipDesc* lpRecips;
    std::uint32_t nFileCount;
    MapiFileDesc* lpFiles;
};

namespace Mapi {

constexpr std::uint32_t RecipientClassOriginator = 0; // MAPI_ORIG
constexpr std::uint32_t RecipientClassTo = 1;         // MAPI_TO
constexpr std::uint32_t RecipientClassCc = 2;         // MAPI_CC
constexpr std::uint32_t RecipientClassBcc = 3;        // MAPI_BCC
constexpr std::uint32_t NoPosition = 0xFFFFFFFF;      // MapiFileDesc::nPosition: nowhere in the text

constexpr std::uint32_t FlagLogonUi = 0x1; // MAPI_LOGON_UI
constexpr std::uint32_t FlagDialog = 0x8;  // MAPI_DIALOG

constexpr std::uint32_t SuccessSuccess = 0;               // SUCCESS_SUCCESS
constexpr std::uint32_t ErrorUserAbort = 1;               // MAPI_E_USER_ABORT
constexpr std::uint32_t ErrorFailure = 2;                 // MAPI_E_FAILURE
constexpr std::uint32_t ErrorDiskFull = 4;                // MAPI_E_DISK_FULL
constexpr std::uint32_t ErrorInsufficientMemory = 5;      // MAPI_E_INSUFFICIENT_MEMORY
constexpr std::uint32_t ErrorAttachmentNotFound = 11;     // MAPI_E_ATTACHMENT_NOT_FOUND
constexpr std::uint32_t ErrorAttachmentOpenFailure = 12;  // MAPI_E_ATTACHMENT_OPEN_FAILURE
constexpr std::uint32_t ErrorAttachmentWriteFailure = 13; // MAPI_E_ATTACHMENT_WRITE_FAILURE

/// MAPISendMail: delivers or shows a message and returns one of the codes above.
using SendMailEntry = std::uint32_t(std::uintptr_t session, std::uintptr_t uiParameter, MapiMessage* message,
                                    std::uint32_t flags, std::uint32_t reserved);

} // namespace Mapi
