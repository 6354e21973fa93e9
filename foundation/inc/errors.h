// Failures: the exception family and the functions that raise it. Exceptions are thrown and caught as pointers; the
// catcher owns the object and deletes it. Where a thread must not throw (static construction and destruction) a failure
// is shown at once instead, and the raising function returns; those marked noreturn throw in any case.
#pragma once

#include "foundation/inc/assertion.h"
#include "foundation/inc/errorsfwd.h"
#include "foundation/inc/lastresort.h"
#include "foundation/inc/memorymanager.h"
#include "foundation/inc/message.h"
#include "foundation/inc/unicodestring.h"
#include "platform/inc/errorinfo.h"
#include <atomic>

namespace Tsx {

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
    CCheckException(const CMessageName& name, const char16_t* first, const char16_t* second);
    CUnicodeString GetMessageText() const override;

    const CMessageName* message;
    CUnicodeString param0;
    CUnicodeString param1;
    CUnicodeString param2;
};

/// A failed COM call, with what its component told of it.
class CCOMException : public CException {
public:
    /// Takes over the reference to `info`, which may be null.
    CCOMException(std::int32_t result, Platform::IErrorInfo* info) : hresult(result), errorInfo(info) {}
    ~CCOMException() override;
    CUnicodeString GetMessageText() const override;

    std::int32_t hresult;
    Platform::IErrorInfo* errorInfo; // owned, or null
};

/// A failed file operation.
class CFileException : public CException {
public:
    CFileException(std::uint32_t windowsCode, std::uint32_t fileCause, const CUnicodeString& name);
    CUnicodeString GetMessageText() const override;

    std::uint32_t lastError; // Windows code, 0 if unknown
    std::uint32_t cause;     // see GetFileCause
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
    CUnicodeString GetMessageText() const override;

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

/// What had to be said has been said: no text, no report.
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
/// For a failure that has no Windows code.
[[noreturn]] void GenerateFileCauseException(std::uint32_t cause, const CUnicodeString& fileName);
/// Raises from the calling thread's last error: code 8 is the memory failure, any other CLastErrorException.
void GenerateExceptionFromLastError();

/// Whether failures may be thrown at all; the calling thread's own mode decides beside it. Start and stop of the
/// foundation set it for their duration.
extern std::atomic<bool> ExceptionsEnabled;

/// The texts that the exceptions render. GetLastErrorText keeps the system's line end, GetCOMErrorText cuts it off.
CUnicodeString GetLastErrorText(std::uint32_t code);
/// The component's own description if there is one; `errorInfo` stays the caller's and may be null.
CUnicodeString GetCOMErrorText(std::int32_t hresult, Platform::IErrorInfo* errorInfo);
CUnicodeString GetFileErrorText(std::uint32_t cause, std::uint32_t lastError, const CUnicodeString& fileName);
/// What a thread that must not throw shows. A kind that does not exist is an internal error of its own.
CUnicodeString ComposeInternalErrorText(std::uint32_t kind, const char16_t* comment, const char16_t* expression,
                                        const char16_t* file, std::uint32_t line, std::uint32_t code);

/// Shows an internal failure without any exception and marks the thread. A second one inside the first ends the
/// process.
void ReportInternalFailure(const CUnicodeString& text);

/// The cause of a file failure by its Windows code: 2 to 15 for the codes that have one, 1 for all others. Code 0 is an
/// internal error.
std::uint32_t GetFileCause(std::uint32_t lastError);

/// The causes that are raised without a Windows code.
constexpr std::uint32_t CauseTooManyOpenFiles = 4; // ERR_FILE_TOO_MANY_OPEN_FILES
constexpr std::uint32_t CauseEndOfFile = 14;       // ERR_FILE_END_OF_FILE

/// Where a developer wants to stop at a failure.
constexpr std::uint32_t StopNever = 1;
constexpr std::uint32_t StopInDebugger = 2;
constexpr std::uint32_t StopAlways = 3;

/// The user's settings "AssertStopMode" and "ErrorStopMode" ("Always", "Debug", "Never"), read once. Any thread.
std::uint32_t GetAssertStopMode();
std::uint32_t GetErrorStopMode();

} // namespace Tsx
