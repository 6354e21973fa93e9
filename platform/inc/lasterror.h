// The last-error word of the calling thread, and the Windows codes that this system names or the Linux layer gives. A
// function of this layer that fails sets the word as its Windows namesake does; one that succeeds leaves it alone
// unless it says otherwise.
#pragma once

#include <cstdint>

namespace Platform {

constexpr std::uint32_t ErrorSuccess = 0;                 // ERROR_SUCCESS
constexpr std::uint32_t ErrorFileNotFound = 2;            // ERROR_FILE_NOT_FOUND
constexpr std::uint32_t ErrorPathNotFound = 3;            // ERROR_PATH_NOT_FOUND
constexpr std::uint32_t ErrorTooManyOpenFiles = 4;        // ERROR_TOO_MANY_OPEN_FILES
constexpr std::uint32_t ErrorAccessDenied = 5;            // ERROR_ACCESS_DENIED
constexpr std::uint32_t ErrorInvalidHandle = 6;           // ERROR_INVALID_HANDLE
constexpr std::uint32_t ErrorNotEnoughMemory = 8;         // ERROR_NOT_ENOUGH_MEMORY
constexpr std::uint32_t ErrorNotSameDevice = 17;          // ERROR_NOT_SAME_DEVICE
constexpr std::uint32_t ErrorNoMoreFiles = 18;            // ERROR_NO_MORE_FILES
constexpr std::uint32_t ErrorWriteProtect = 19;           // ERROR_WRITE_PROTECT
constexpr std::uint32_t ErrorGeneralFailure = 31;         // ERROR_GEN_FAILURE
constexpr std::uint32_t ErrorSharingViolation = 32;       // ERROR_SHARING_VIOLATION
constexpr std::uint32_t ErrorNotSupported = 50;           // ERROR_NOT_SUPPORTED
constexpr std::uint32_t ErrorBadNetworkPath = 53;         // ERROR_BAD_NETPATH
constexpr std::uint32_t ErrorFileExists = 80;             // ERROR_FILE_EXISTS
constexpr std::uint32_t ErrorInvalidParameter = 87;       // ERROR_INVALID_PARAMETER
constexpr std::uint32_t ErrorBrokenPipe = 109;            // ERROR_BROKEN_PIPE
constexpr std::uint32_t ErrorDiskFull = 112;              // ERROR_DISK_FULL
constexpr std::uint32_t ErrorInsufficientBuffer = 122;    // ERROR_INSUFFICIENT_BUFFER
constexpr std::uint32_t ErrorInvalidName = 123;           // ERROR_INVALID_NAME
constexpr std::uint32_t ErrorModuleNotFound = 126;        // ERROR_MOD_NOT_FOUND
constexpr std::uint32_t ErrorProcedureNotFound = 127;     // ERROR_PROC_NOT_FOUND
constexpr std::uint32_t ErrorNegativeSeek = 131;          // ERROR_NEGATIVE_SEEK
constexpr std::uint32_t ErrorSeekOnDevice = 132;          // ERROR_SEEK_ON_DEVICE
constexpr std::uint32_t ErrorDirectoryNotEmpty = 145;     // ERROR_DIR_NOT_EMPTY
constexpr std::uint32_t ErrorBadPathname = 161;           // ERROR_BAD_PATHNAME
constexpr std::uint32_t ErrorAlreadyExists = 183;         // ERROR_ALREADY_EXISTS
constexpr std::uint32_t ErrorBadExeFormat = 193;          // ERROR_BAD_EXE_FORMAT
constexpr std::uint32_t ErrorFilenameExcedRange = 206;    // ERROR_FILENAME_EXCED_RANGE
constexpr std::uint32_t ErrorFileTooLarge = 223;          // ERROR_FILE_TOO_LARGE
constexpr std::uint32_t ErrorMoreData = 234;              // ERROR_MORE_DATA
constexpr std::uint32_t ErrorNoMoreItems = 259;           // ERROR_NO_MORE_ITEMS
constexpr std::uint32_t ErrorDirectory = 267;             // ERROR_DIRECTORY
constexpr std::uint32_t ErrorMessageNotFound = 317;       // ERROR_MR_MID_NOT_FOUND
constexpr std::uint32_t ErrorInvalidAddress = 487;        // ERROR_INVALID_ADDRESS
constexpr std::uint32_t ErrorNoAccess = 998;              // ERROR_NOACCESS
constexpr std::uint32_t ErrorInvalidFlags = 1004;         // ERROR_INVALID_FLAGS
constexpr std::uint32_t ErrorKeyDeleted = 1018;           // ERROR_KEY_DELETED
constexpr std::uint32_t ErrorNoUnicodeTranslation = 1113; // ERROR_NO_UNICODE_TRANSLATION
constexpr std::uint32_t ErrorIoDevice = 1117;             // ERROR_IO_DEVICE
constexpr std::uint32_t ErrorMappedAlignment = 1132;      // ERROR_MAPPED_ALIGNMENT
constexpr std::uint32_t ErrorCommitmentLimit = 1455;      // ERROR_COMMITMENT_LIMIT
constexpr std::uint32_t ErrorUnknownComponent = 1607;     // ERROR_UNKNOWN_COMPONENT
constexpr std::uint32_t ErrorResourceDataNotFound = 1812; // ERROR_RESOURCE_DATA_NOT_FOUND
constexpr std::uint32_t ErrorResourceTypeNotFound = 1813; // ERROR_RESOURCE_TYPE_NOT_FOUND
constexpr std::uint32_t ErrorResourceNameNotFound = 1814; // ERROR_RESOURCE_NAME_NOT_FOUND

std::uint32_t GetLastError();
void SetLastError(std::uint32_t code);

} // namespace Platform
