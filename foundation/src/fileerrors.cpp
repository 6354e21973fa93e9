// The causes of file failures: which Windows code means which cause, and the message of each.
#include "foundation/inc/errors.h"
#include "foundation/inc/messagenames.h"
#include "platform/inc/lasterror.h"

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\fileerrors";

constexpr std::uint32_t GenericCause = 1;

struct CauseOfCode {
    std::uint16_t code;
    std::uint8_t cause;
};

// AS DESIGNED: code 80, "the file exists", is an access that was denied (5); only 183 means that something already
// exists (15).
constexpr CauseOfCode Causes[] = {
    {2, 2},    {6, 2},    {18, 2},   {107, 2},                                                              //
    {3, 3},    {15, 3},   {17, 3},   {34, 3},  {52, 3},  {53, 3},  {55, 3},  {67, 3},   {70, 3},  {85, 3},  //
    {111, 3},  {123, 3},  {124, 3},  {125, 3}, {144, 3}, {154, 3}, {161, 3}, {206, 3},  {208, 3}, {267, 3}, //
    {4, 4},    {36, 4},   {68, 4},   {113, 4},                                                              //
    {5, 5},    {12, 5},   {19, 5},   {29, 5},  {54, 5},  {58, 5},  {64, 5},  {65, 5},   {71, 5},  {80, 5},  //
    {82, 5},   {86, 5},   {170, 5},  {999, 5},                                                              //
    {11, 6},   {26, 6},   {60, 6},   {66, 6},  {114, 6}, {182, 6}, {191, 6}, {193, 6},                      //
    {16, 7},   {145, 7},                                                                                    //
    {62, 8},                                                                                                //
    {24, 9},   {25, 9},   {27, 9},   {30, 9},  {131, 9}, {132, 9},                                          //
    {20, 10},  {21, 10},  {22, 10},  {23, 10}, {57, 10}, {59, 10}, {88, 10}, {117, 10},                     //
    {995, 10}, {996, 10}, {997, 10},                                                                        //
    {32, 11},                                                                                               //
    {33, 12},  {108, 12}, {167, 12},                                                                        //
    {39, 13},  {112, 13},                                                                                   //
    {38, 14},                                                                                               //
    {183, 15},
};

// By cause, from 2 on.
const CMessageName* const CauseMessages[] = {
    &ERR_FILE_NOT_FOUND,    &ERR_FILE_BAD_PATH,           &ERR_FILE_TOO_MANY_OPEN_FILES, &ERR_FILE_ACCESS_DENIED,
    &ERR_FILE_INVALID_FILE, &ERR_FILE_REMOVE_CURRENT_DIR, &ERR_FILE_DIRECTORY_FULL,      &ERR_FILE_BAD_SEEK,
    &ERR_FILE_HARD_IO,      &ERR_FILE_SHARING_VIOLATION,  &ERR_FILE_LOCK_VIOLATION,      &ERR_FILE_DISK_FULL,
    &ERR_FILE_END_OF_FILE,  &ERR_FILE_ALREADY_EXISTS,
};
constexpr std::uint32_t FirstCauseWithMessage = 2;

} // namespace

std::uint32_t GetFileCause(std::uint32_t lastError) {
    if (lastError == Platform::ErrorSuccess) {
        FailAssertion(ModuleName, __LINE__);
        return 0;
    }
    for (const CauseOfCode& row : Causes) {
        if (row.code == lastError) {
            return row.cause;
        }
    }
    return GenericCause;
}

CUnicodeString GetFileErrorText(std::uint32_t cause, std::uint32_t lastError, const CUnicodeString& fileName) {
    TSX_ASSERT(cause != 0, ModuleName);
    const std::uint32_t index = cause - FirstCauseWithMessage;
    if (cause >= FirstCauseWithMessage && index < std::size(CauseMessages)) {
        return FormatMessage(*CauseMessages[index], fileName);
    }
    return FormatMessage(ERR_FILE_GENERIC, fileName, GetLastErrorText(lastError));
}

} // namespace Tsx
