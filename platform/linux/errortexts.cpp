#include "platform/linux/errortexts.h"

#include "platform/inc/lasterror.h"

namespace Platform {

namespace {

struct Row {
    std::uint32_t code;
    std::u16string_view text;
};

constexpr Row Rows[] = {
    {ErrorSuccess, u"The operation completed successfully.\r\n"},
    {ErrorFileNotFound, u"The system cannot find the file specified.\r\n"},
    {ErrorPathNotFound, u"The system cannot find the path specified.\r\n"},
    {ErrorTooManyOpenFiles, u"The system cannot open the file.\r\n"},
    {ErrorAccessDenied, u"Access is denied.\r\n"},
    {ErrorInvalidHandle, u"The handle is invalid.\r\n"},
    {ErrorNotEnoughMemory, u"Not enough memory resources are available to process this command.\r\n"},
    {ErrorNoMoreFiles, u"There are no more files.\r\n"},
    {ErrorWriteProtect, u"The media is write protected.\r\n"},
    {ErrorGeneralFailure, u"A device attached to the system is not functioning.\r\n"},
    {ErrorSharingViolation, u"The process cannot access the file because it is being used by another process.\r\n"},
    {ErrorBadNetworkPath, u"The network path was not found.\r\n"},
    {ErrorFileExists, u"The file exists.\r\n"},
    {ErrorInvalidParameter, u"The parameter is incorrect.\r\n"},
    {ErrorBrokenPipe, u"The pipe has been ended.\r\n"},
    {ErrorDiskFull, u"There is not enough space on the disk.\r\n"},
    {ErrorInsufficientBuffer, u"The data area passed to a system call is too small.\r\n"},
    {ErrorInvalidName, u"The filename, directory name, or volume label syntax is incorrect.\r\n"},
    {ErrorModuleNotFound, u"The specified module could not be found.\r\n"},
    {ErrorProcedureNotFound, u"The specified procedure could not be found.\r\n"},
    {ErrorNegativeSeek, u"An attempt was made to move the file pointer before the beginning of the file.\r\n"},
    {ErrorSeekOnDevice, u"The file pointer cannot be set on the specified device or file.\r\n"},
    {ErrorAlreadyExists, u"Cannot create a file when that file already exists.\r\n"},
    {ErrorBadExeFormat, u"%1 is not a valid Win32 application.\r\n"},
    {ErrorFilenameExcedRange, u"The filename or extension is too long.\r\n"},
    {ErrorNoMoreItems, u"No more data is available.\r\n"},
    {ErrorDirectory, u"The directory name is invalid.\r\n"},
    {ErrorInvalidFlags, u"Invalid flags.\r\n"},
    {ErrorNoUnicodeTranslation, u"No mapping for the Unicode character exists in the target multi-byte code page.\r\n"},
    {ErrorIoDevice, u"The request could not be performed because of an I/O device error.\r\n"},
    {ErrorResourceDataNotFound, u"The specified image file did not contain a resource section.\r\n"},
    {ErrorResourceTypeNotFound, u"The specified resource type cannot be found in the image file.\r\n"},
    {ErrorResourceNameNotFound, u"The specified resource name cannot be found in the image file.\r\n"},
};

} // namespace

std::u16string_view ErrorText(std::uint32_t code) {
    for (const Row& row : Rows) {
        if (row.code == code) {
            return row.text;
        }
    }
    return {};
}

} // namespace Platform
