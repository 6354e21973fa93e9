#include "platform/linux/text/errortexts.h"

#include <algorithm>
#include <functional>
#include <iterator>

namespace Platform {

namespace {

struct Row {
    std::uint32_t code; // of winerror.h
    std::u16string_view text;
};

// In ascending order of the codes; the COM results stand behind all others. They have no full stop on Windows either.
constexpr Row Rows[] = {
    {0, u"The operation completed successfully.\r\n"},
    {1, u"Incorrect function.\r\n"},
    {2, u"The system cannot find the file specified.\r\n"},
    {3, u"The system cannot find the path specified.\r\n"},
    {4, u"The system cannot open the file.\r\n"},
    {5, u"Access is denied.\r\n"},
    {6, u"The handle is invalid.\r\n"},
    {8, u"Not enough memory resources are available to process this command.\r\n"},
    {11, u"An attempt was made to load a program with an incorrect format.\r\n"},
    {12, u"The access code is invalid.\r\n"},
    {13, u"The data is invalid.\r\n"},
    {14, u"Not enough memory resources are available to complete this operation.\r\n"},
    {15, u"The system cannot find the drive specified.\r\n"},
    {16, u"The directory cannot be removed.\r\n"},
    {17, u"The system cannot move the file to a different disk drive.\r\n"},
    {18, u"There are no more files.\r\n"},
    {19, u"The media is write protected.\r\n"},
    {20, u"The system cannot find the device specified.\r\n"},
    {21, u"The device is not ready.\r\n"},
    {22, u"The device does not recognize the command.\r\n"},
    {23, u"Data error (cyclic redundancy check).\r\n"},
    {24, u"The program issued a command but the command length is incorrect.\r\n"},
    {25, u"The drive cannot locate a specific area or track on the disk.\r\n"},
    {26, u"The specified disk or diskette cannot be accessed.\r\n"},
    {27, u"The drive cannot find the sector requested.\r\n"},
    {29, u"The system cannot write to the specified device.\r\n"},
    {30, u"The system cannot read from the specified device.\r\n"},
    {31, u"A device attached to the system is not functioning.\r\n"},
    {32, u"The process cannot access the file because it is being used by another process.\r\n"},
    {33, u"The process cannot access the file because another process has locked a portion of the file.\r\n"},
    {34, u"The wrong diskette is in the drive.\r\nInsert %2 (Volume Serial Number: %3) into drive %1.\r\n"},
    {36, u"Too many files opened for sharing.\r\n"},
    {38, u"Reached the end of the file.\r\n"},
    {39, u"The disk is full.\r\n"},
    {50, u"The request is not supported.\r\n"},
    {52, u"You were not connected because a duplicate name exists on the network. If joining a domain, go to System in "
         u"Control Panel to change the computer name and try again. If joining a workgroup, choose another workgroup "
         u"name.\r\n"},
    {53, u"The network path was not found.\r\n"},
    {54, u"The network is busy.\r\n"},
    {55, u"The specified network resource or device is no longer available.\r\n"},
    {57, u"A network adapter hardware error occurred.\r\n"},
    {58, u"The specified server cannot perform the requested operation.\r\n"},
    {59, u"An unexpected network error occurred.\r\n"},
    {60, u"The remote adapter is not compatible.\r\n"},
    {62, u"Space to store the file waiting to be printed is not available on the server.\r\n"},
    {64, u"The specified network name is no longer available.\r\n"},
    {65, u"Network access is denied.\r\n"},
    {66, u"The network resource type is not correct.\r\n"},
    {67, u"The network name cannot be found.\r\n"},
    {68, u"The name limit for the local computer network adapter card was exceeded.\r\n"},
    {70, u"The remote server has been paused or is in the process of being started.\r\n"},
    {71, u"No more connections can be made to this remote computer at this time because there are already as many "
         u"connections as the computer can accept.\r\n"},
    {80, u"The file exists.\r\n"},
    {82, u"The directory or file cannot be created.\r\n"},
    {85, u"The local device name is already in use.\r\n"},
    {86, u"The specified network password is not correct.\r\n"},
    {87, u"The parameter is incorrect.\r\n"},
    {88, u"A write fault occurred on the network.\r\n"},
    {107, u"The program stopped because an alternate diskette was not inserted.\r\n"},
    {108, u"The disk is in use or locked by another process.\r\n"},
    {109, u"The pipe has been ended.\r\n"},
    {110, u"The system cannot open the device or file specified.\r\n"},
    {111, u"The file name is too long.\r\n"},
    {112, u"There is not enough space on the disk.\r\n"},
    {113, u"No more internal file identifiers available.\r\n"},
    {114, u"The target internal file identifier is incorrect.\r\n"},
    {117, u"The IOCTL call made by the application program is not correct.\r\n"},
    {120, u"This function is not supported on this system.\r\n"},
    {122, u"The data area passed to a system call is too small.\r\n"},
    {123, u"The filename, directory name, or volume label syntax is incorrect.\r\n"},
    {124, u"The system call level is not correct.\r\n"},
    {125, u"The disk has no volume label.\r\n"},
    {126, u"The specified module could not be found.\r\n"},
    {127, u"The specified procedure could not be found.\r\n"},
    {131, u"An attempt was made to move the file pointer before the beginning of the file.\r\n"},
    {132, u"The file pointer cannot be set on the specified device or file.\r\n"},
    {144, u"The directory is not a subdirectory of the root directory.\r\n"},
    {145, u"The directory is not empty.\r\n"},
    {154, u"The volume label you entered exceeds the label character limit of the target file system.\r\n"},
    {161, u"The specified path is invalid.\r\n"},
    {167, u"Unable to lock a region of a file.\r\n"},
    {170, u"The requested resource is in use.\r\n"},
    {182, u"The operating system cannot run %1.\r\n"},
    {183, u"Cannot create a file when that file already exists.\r\n"},
    {191, u"Cannot run %1 in Win32 mode.\r\n"},
    {193, u"%1 is not a valid Win32 application.\r\n"},
    {203, u"The system could not find the environment option that was entered.\r\n"},
    {206, u"The filename or extension is too long.\r\n"},
    {208, u"The global filename characters, * or ?, are entered incorrectly or too many global filename characters are "
          u"specified.\r\n"},
    {223, u"The file size exceeds the limit allowed and cannot be saved.\r\n"},
    {232, u"The pipe is being closed.\r\n"},
    {234, u"More data is available.\r\n"},
    {259, u"No more data is available.\r\n"},
    {267, u"The directory name is invalid.\r\n"},
    {317, u"The system cannot find message text for message number 0x%1 in the message file for %2.\r\n"},
    {487, u"Attempt to access invalid address.\r\n"},
    {995, u"The I/O operation has been aborted because of either a thread exit or an application request.\r\n"},
    {996, u"Overlapped I/O event is not in a signaled state.\r\n"},
    {997, u"Overlapped I/O operation is in progress.\r\n"},
    {998, u"Invalid access to memory location.\r\n"},
    {999, u"Error performing inpage operation.\r\n"},
    {1004, u"Invalid flags.\r\n"},
    {1006, u"The volume for a file has been externally altered so that the opened file is no longer valid.\r\n"},
    {1009, u"The configuration registry database is corrupt.\r\n"},
    {1010, u"The configuration registry key is invalid.\r\n"},
    {1018, u"Illegal operation attempted on a registry key that has been marked for deletion.\r\n"},
    {1113, u"No mapping for the Unicode character exists in the target multi-byte code page.\r\n"},
    {1117, u"The request could not be performed because of an I/O device error.\r\n"},
    {1132, u"The base address or the file offset specified does not have the proper alignment.\r\n"},
    {1142, u"An attempt was made to create more links on a file than the file system supports.\r\n"},
    {1225, u"The remote computer refused the network connection.\r\n"},
    {1231, u"The network location cannot be reached. For information about network troubleshooting, see Windows "
           u"Help.\r\n"},
    {1232, u"The network location cannot be reached. For information about network troubleshooting, see Windows "
           u"Help.\r\n"},
    {1256, u"The remote system is not available. For information about network troubleshooting, see Windows "
           u"Help.\r\n"},
    {1392, u"The file or directory is corrupted and unreadable.\r\n"},
    {1450, u"Insufficient system resources exist to complete the requested service.\r\n"},
    {1455, u"The paging file is too small for this operation to complete.\r\n"},
    {1460, u"This operation returned because the timeout period expired.\r\n"},
    {1607, u"Component ID not registered.\r\n"},
    {1812, u"The specified image file did not contain a resource section.\r\n"},
    {1813, u"The specified resource type cannot be found in the image file.\r\n"},
    {1814, u"The specified resource name cannot be found in the image file.\r\n"},
    {2250, u"This network connection does not exist.\r\n"},
    {0x80004001, u"Not implemented\r\n"},
    {0x80004002, u"No such interface supported\r\n"},
    {0x80004003, u"Invalid pointer\r\n"},
    {0x80004004, u"Operation aborted\r\n"},
    {0x80004005, u"Unspecified error\r\n"},
    {0x8000FFFF, u"Catastrophic failure\r\n"},
    {0x80040154, u"Class not registered\r\n"},
};
static_assert(std::ranges::adjacent_find(Rows, std::ranges::greater_equal(), &Row::code) == std::end(Rows));

} // namespace

std::u16string_view ErrorText(std::uint32_t code) {
    const Row* row = std::ranges::lower_bound(Rows, code, {}, &Row::code);
    return row != std::end(Rows) && row->code == code ? row->text : std::u16string_view();
}

} // namespace Platform
