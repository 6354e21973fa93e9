// Our declarations of Simple MAPI against the system's own header.
#include "mapi/SimpleMapi.h"
#include "platform/inc/resources.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <type_traits>
#include <windows.h>

namespace Published {
#include <mapi.h>
} // namespace Published

#define SAME_FIELD(record, field)                                                                                      \
    static_assert(offsetof(record, field) == offsetof(Published::record, field) &&                                     \
                  sizeof(record::field) == sizeof(Published::record::field))

static_assert(sizeof(MapiRecipDesc) == sizeof(Published::MapiRecipDesc));
SAME_FIELD(MapiRecipDesc, ulReserved);
SAME_FIELD(MapiRecipDesc, ulRecipClass);
SAME_FIELD(MapiRecipDesc, lpszName);
SAME_FIELD(MapiRecipDesc, lpszAddress);
SAME_FIELD(MapiRecipDesc, ulEIDSize);
SAME_FIELD(MapiRecipDesc, lpEntryID);

static_assert(sizeof(MapiFileDesc) == sizeof(Published::MapiFileDesc));
SAME_FIELD(MapiFileDesc, ulReserved);
SAME_FIELD(MapiFileDesc, flFlags);
SAME_FIELD(MapiFileDesc, nPosition);
SAME_FIELD(MapiFileDesc, lpszPathName);
SAME_FIELD(MapiFileDesc, lpszFileName);
SAME_FIELD(MapiFileDesc, lpFileType);

static_assert(sizeof(MapiMessage) == sizeof(Published::MapiMessage));
SAME_FIELD(MapiMessage, ulReserved);
SAME_FIELD(MapiMessage, lpszSubject);
SAME_FIELD(MapiMessage, lpszNoteText);
SAME_FIELD(MapiMessage, lpszMessageType);
SAME_FIELD(MapiMessage, lpszDateReceived);
SAME_FIELD(MapiMessage, lpszConversationID);
SAME_FIELD(MapiMessage, flFlags);
SAME_FIELD(MapiMessage, lpOriginator);
SAME_FIELD(MapiMessage, nRecipCount);
SAME_FIELD(MapiMessage, lpRecips);
SAME_FIELD(MapiMessage, nFileCount);
SAME_FIELD(MapiMessage, lpFiles);

static_assert(sizeof(Platform::FixedFileInfo) == sizeof(VS_FIXEDFILEINFO));

TEST(PublishedRecords, Constants) {
    EXPECT_EQ(Mapi::FlagLogonUi, static_cast<std::uint32_t>(MAPI_LOGON_UI));
    EXPECT_EQ(Mapi::FlagDialog, static_cast<std::uint32_t>(MAPI_DIALOG));
    EXPECT_EQ(Mapi::RecipientClassTo, static_cast<std::uint32_t>(MAPI_TO));
    EXPECT_EQ(Mapi::ErrorUserAbort, static_cast<std::uint32_t>(MAPI_E_USER_ABORT));
    EXPECT_EQ(Mapi::ErrorDiskFull, static_cast<std::uint32_t>(MAPI_E_DISK_FULL));
    EXPECT_EQ(Mapi::ErrorInsufficientMemory, static_cast<std::uint32_t>(MAPI_E_INSUFFICIENT_MEMORY));
    EXPECT_EQ(Mapi::ErrorAttachmentNotFound, static_cast<std::uint32_t>(MAPI_E_ATTACHMENT_NOT_FOUND));
    EXPECT_EQ(Mapi::ErrorAttachmentOpenFailure, static_cast<std::uint32_t>(MAPI_E_ATTACHMENT_OPEN_FAILURE));
    EXPECT_EQ(Mapi::ErrorAttachmentWriteFailure, static_cast<std::uint32_t>(MAPI_E_ATTACHMENT_WRITE_FAILURE));
}
