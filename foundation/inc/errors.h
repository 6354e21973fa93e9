// Failures: the exception family and the functions that raise it, for every source that raises or catches. Exceptions
// are thrown and caught as pointers; the catcher owns the object and deletes it. Where a thread must not throw (static
// construction and destruction) a failure is shown at once instead, and the raising function returns; those marked
// noreturn throw in any case.
#pragma once

#include "foundation/inc/assertion.h"
#include "foundation/inc/errorsfwd.h"
#include "foundation/inc/failurereport.h" // this is the module's chief header: with it comes the rest
#include "foundation/inc/lastresort.h"
#include "foundation/inc/memorymanager.h"
#include "foundation/inc/message.h"
#include "foundation/inc/unicodestring.h"
#include "platform/inc/errorinfo.h"

namespace Tsx {

/// The texts that the exceptions render. GetLastErrorText keeps the system's line end, GetCOMErrorText cuts it off.
CUnicodeString GetLastErrorText(std::uint32_t code);
/// The component's own description if there is one; `errorInfo` stays the caller's and may be null.
CUnicodeString GetCOMErrorText(std::int32_t hresult, Platform::IErrorInfo* errorInfo);
CUnicodeString GetFileErrorText(std::uint32_t cause, std::uint32_t lastError, const CUnicodeString& fileName);

class CException : public CAllocatedOn<RuntimeHeap> {
public:
    CException() = default;
    virtual ~CException() = default;
    CException(const CException&) = delete;
    CException& operator=(const CException&) = delete;

    /// The complete text of the failure.
    virtual CUnicodeString GetMessageText() const = 0;
    /// Shows the text through DisplayMessage.
    virtual void ReportToUser() const;
};

/// What a user can cause, raised by message.
class CCheckException : public CException {
public:
    CCheckException(const CMessageName& name, const char16_t* first, const char16_t* second)
        : message(&name), param0(first), param1(second) {}
    CUnicodeString GetMessageText() const override { return FormatMessage(*message, param0, param1, param2); }

    const CMessageName* message;
    CUnicodeString param0;
    CUnicodeString param1;
    CUnicodeString param2;
};

/// A failed COM call, with what its component told of it.
class CCOMException : public CException {
public:
    /// Takes the calling thread's error info along, if there is one.
    explicit CCOMException(std::int32_t result);
    ~CCOMException() override;
    CUnicodeString GetMessageText() const override { return GetCOMErrorText(hresult, errorInfo); }

    std::int32_t hresult;
    Platform::IErrorInfo* errorInfo = nullptr; // owned, or null
};

/// The causes of file failures. All but the first have a message.
enum TFileCause : std::uint32_t {
    FC_None = 0, // asking for its text is an internal error
    FC_Generic = 1,
    FC_FileNotFound = 2,
    FC_BadPath = 3,
    FC_TooManyOpenFiles = 4,
    FC_AccessDenied = 5,
    FC_InvalidFile = 6,
    FC_RemoveCurrentDirectory = 7,
    FC_DirectoryFull = 8,
    FC_BadSeek = 9,
    FC_HardwareFailure = 10,
    FC_SharingViolation = 11,
    FC_LockViolation = 12,
    FC_DiskFull = 13,
    FC_EndOfFile = 14,
    FC_AlreadyExists = 15
};

/// A failed file operation.
class CFileException : public CException {
public:
    CFileException(std::uint32_t windowsCode, std::uint32_t fileCause, const CUnicodeString& name)
        : lastError(windowsCode), cause(fileCause), fileName(name) {}
    CUnicodeString GetMessageText() const override { return GetFileErrorText(cause, lastError, fileName); }

    std::uint32_t lastError; // Windows code, 0 if unknown
    std::uint32_t cause;     // a TFileCause
    CUnicodeString fileName;
};

/// A broken assumption.
class CInternalError : public CException {
public:
    CInternalError(std::uint32_t failureKind, const char16_t* sourceFile, std::uint32_t sourceLine,
                   std::uint32_t windowsCode);
    CUnicodeString GetMessageText() const override;
    void ReportToUser() const override;

    const char16_t* file; // a literal
    std::int32_t line;
    std::uint32_t kind;
    std::uint32_t code;
};

/// A failed Windows call.
class CLastErrorException : public CException {
public:
    explicit CLastErrorException(std::uint32_t windowsCode) : code(windowsCode) {}
    CUnicodeString GetMessageText() const override { return GetLastErrorText(code); }

    std::uint32_t code;
};

/// The first base of CMemoryException, so that its end is the last part of that one's: the slot is another object's
/// room as soon as it is given back.
class CMemoryExceptionSlot {
protected:
    ~CMemoryExceptionSlot();
};

/// Memory is exhausted; the text is fixed. Lives in a pool and gives its slot back when it is destroyed; one that is
/// not in the pool is an assertion, shown at once.
class CMemoryException : private CMemoryExceptionSlot, public CException {
public:
    CUnicodeString GetMessageText() const override;

    static void* operator new(std::size_t, void* slot) noexcept { return slot; }
    static void operator delete(void*) noexcept {}
};

/// Ends a run about which the user knows already, such as one that only prints help: no text, no report.
class CUserException : public CException {
public:
    CUnicodeString GetMessageText() const override { return {}; }
    void ReportToUser() const override {}
};

void GenerateCheckException(const CMessageName& message, const char16_t* param0, const char16_t* param1);
void GenerateLastErrorException(std::uint32_t code);
/// Takes the calling thread's error info along.
void GenerateCOMException(std::int32_t hresult);
[[noreturn]] void GenerateUserException();
[[noreturn]] void GenerateFileException(std::uint32_t lastError, const CUnicodeString& fileName);
/// For a failure that has no Windows code; `cause` is a TFileCause.
[[noreturn]] void GenerateFileCauseException(std::uint32_t cause, const CUnicodeString& fileName);
/// Raises from the calling thread's last error: code 8 is the memory failure, any other CLastErrorException.
void GenerateExceptionFromLastError();

/// The cause of a file failure by its Windows code: FC_Generic for codes that have none of their own. Code 0 is an
/// internal error.
std::uint32_t GetFileCause(std::uint32_t lastError);

} // namespace Tsx
