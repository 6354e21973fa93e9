// The causes of file failures: the message of each, and the Windows codes that mean it.
#include "foundation/inc/errors.h"
#include "foundation/inc/messagenames.h"
#include "platform/inc/lasterror.h"
#include <algorithm>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\fileerrors";

struct CCauseRow {
    TFileCause cause;
    const CMessageName* message;
    std::uint16_t codes[20]; // 0 behind the last
};

// AS DESIGNED: code 80, "the file exists", is an access that was denied; only 183 means that something already exists.
constexpr CCauseRow Causes[] = {
    {FC_FileNotFound, &ERR_FILE_NOT_FOUND, {2, 6, 18, 107}},
    {FC_BadPath, &ERR_FILE_BAD_PATH, {3,   15,  17,  34,  52,  53,  55,  67,  70,  85,
                                      111, 123, 124, 125, 144, 154, 161, 206, 208, 267}},
    {FC_TooManyOpenFiles, &ERR_FILE_TOO_MANY_OPEN_FILES, {4, 36, 68, 113}},
    {FC_AccessDenied, &ERR_FILE_ACCESS_DENIED, {5, 12, 19, 29, 54, 58, 64, 65, 71, 80, 82, 86, 170, 999}},
    {FC_InvalidFile, &ERR_FILE_INVALID_FILE, {11, 26, 60, 66, 114, 182, 191, 193}},
    {FC_RemoveCurrentDirectory, &ERR_FILE_REMOVE_CURRENT_DIR, {16, 145}},
    {FC_DirectoryFull, &ERR_FILE_DIRECTORY_FULL, {62}},
    {FC_BadSeek, &ERR_FILE_BAD_SEEK, {24, 25, 27, 30, 131, 132}},
    {FC_HardwareFailure, &ERR_FILE_HARD_IO, {20, 21, 22, 23, 57, 59, 88, 117, 995, 996, 997}},
    {FC_SharingViolation, &ERR_FILE_SHARING_VIOLATION, {32}},
    {FC_LockViolation, &ERR_FILE_LOCK_VIOLATION, {33, 108, 167}},
    {FC_DiskFull, &ERR_FILE_DISK_FULL, {39, 112}},
    {FC_EndOfFile, &ERR_FILE_END_OF_FILE, {38}},
    {FC_AlreadyExists, &ERR_FILE_ALREADY_EXISTS, {183}},
};

} // namespace

std::uint32_t GetFileCause(std::uint32_t lastError) {
    if (lastError == Platform::ErrorSuccess) {
        FailAssertion(ModuleName, __LINE__);
        return FC_None;
    }
    const auto* const row = std::ranges::find_if(
        Causes, [lastError](const auto& codes) { return std::ranges::count(codes, lastError) != 0; },
        &CCauseRow::codes);
    return row != std::end(Causes) ? row->cause : FC_Generic;
}

CUnicodeString GetFileErrorText(std::uint32_t cause, std::uint32_t lastError, const CUnicodeString& fileName) {
    TSX_ASSERT(cause != FC_None, ModuleName);
    const auto* const row = std::ranges::find(Causes, cause, &CCauseRow::cause);
    return row != std::end(Causes) ? FormatMessage(*row->message, fileName)
                                   : FormatMessage(ERR_FILE_GENERIC, fileName, GetLastErrorText(lastError));
}

} // namespace Tsx
