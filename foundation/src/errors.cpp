// The raising of failures. All raising functions share one frame: the developer's stop, the scope that moves the thread
// to the runtime heap, the decision whether it may throw, and either the throw or the report at once.
#include "foundation/inc/errors.h"

#include "foundation/inc/debugflags.h"
#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/privateallocators.h"
#include "foundation/inc/threadobject.h"
#include "foundation/src/internalerrortexts.h"
#include "foundation/src/statics.h"
#include "platform/inc/debug.h"
#include "platform/inc/lasterror.h"
#include <memory>
#include <utility>

namespace Tsx {

std::atomic<bool> ExceptionsEnabled{true};

namespace {

void StopIfWanted(std::uint32_t mode) {
    if (mode == StopAlways || (mode == StopInDebugger && Platform::IsDebuggerPresent())) {
        Platform::DebugBreak();
    }
}

bool MayThrow() {
    const CThreadErrorMode* mode = ThreadErrorMode.Get();
    return ExceptionsEnabled && !(mode && mode->NoExceptions);
}

template <class TException, class... TArguments>
TException* Make(TArguments&&... arguments) {
    auto* exception = new TException(std::forward<TArguments>(arguments)...);
    if (!exception) {
        GenerateMemoryException();
    }
    return exception;
}

struct CReleaseErrorInfo {
    void operator()(Platform::IErrorInfo* info) const { info->Release(); }
};
using CErrorInfoHolder = std::unique_ptr<Platform::IErrorInfo, CReleaseErrorInfo>;

// Null if the thread has none, or none can be had.
CErrorInfoHolder TakeErrorInfo() {
    Platform::IErrorInfo* info = nullptr;
    Platform::GetErrorInfo(0, info);
    return CErrorInfoHolder(info);
}

void MarkErrorReported(CThreadErrorMode* mode) {
    if (mode) {
        mode->ErrorReported = true;
    }
}

// For the first and the last moments of the process. A thread that fails before strings are there must not start the
// program either; afterwards nobody asks, and its record may be gone.
void ReportWithoutStrings(const char16_t* file, std::uint32_t line) {
    char16_t text[256] = {};
    const CFormatArgument arguments[] = {file, line};
    FormatText(text, std::size(text) - 1, PlaceFormat, arguments, 2);
    ShowLastResort(text);
    if (GetStringStage() == EStringStage::Before) {
        MarkErrorReported(ThreadErrorMode.Find());
    }
}

} // namespace

void FailAssertion(const char16_t* file, std::uint32_t line) {
    GenerateInternalError(InternalAssert, u"", u"", file, line, 0);
}

void FailAssertionWithLastError(const char16_t* file, std::uint32_t line) {
    GenerateInternalError(InternalAssertLastError, u"", u"", file, line, Platform::GetLastError());
}

bool GenerateInternalError(std::uint32_t kind, const char16_t* comment, const char16_t* expression,
                           const char16_t* file, std::uint32_t line, std::uint32_t code) {
    if (GetStringStage() != EStringStage::Usable) {
        ReportWithoutStrings(file, line); // no setting can be read either
        return false;
    }
    StopIfWanted(GetAssertStopMode());
    const CReentryScope scope(0);
    if (MayThrow()) {
        throw Make<CInternalError>(kind, file, line, code);
    }
    ReportInternalFailure(ComposeInternalErrorText(kind, comment, expression, file, line, code));
    return false;
}

void GenerateCheckException(const CMessageName& message, const char16_t* param0, const char16_t* param1) {
    StopIfWanted(GetErrorStopMode());
    const CReentryScope scope(0);
    if (MayThrow()) {
        throw Make<CCheckException>(message, param0, param1);
    }
    ReportInternalFailure(FormatMessage(message, param0, param1, u""));
}

void GenerateLastErrorException(std::uint32_t code) {
    StopIfWanted(GetErrorStopMode());
    const CReentryScope scope(0);
    if (MayThrow()) {
        throw Make<CLastErrorException>(code);
    }
    ReportInternalFailure(GetLastErrorText(code));
}

void GenerateCOMException(std::int32_t hresult) {
    StopIfWanted(GetErrorStopMode());
    const CReentryScope scope(0);
    CErrorInfoHolder info = TakeErrorInfo();
    if (MayThrow()) {
        auto* exception = Make<CCOMException>(hresult, info.get());
        static_cast<void>(info.release()); // the exception's now
        throw exception;
    }
    ReportInternalFailure(GetCOMErrorText(hresult, info.get()));
}

void GenerateExceptionFromLastError() {
    const std::uint32_t code = Platform::GetLastError();
    if (code == Platform::ErrorNotEnoughMemory) {
        GenerateMemoryException();
    }
    GenerateLastErrorException(code);
}

void GenerateUserException() {
    const CReentryScope scope(0);
    throw Make<CUserException>();
}

void GenerateMemoryException() {
    const CReentryScope scope(0, CReentryScope::ExistingState);
    if (HasDebugFlag(DebugBreakOnMemoryException)) {
        Platform::DebugBreak();
    }
    void* slot = MemoryExceptionPool.TakeSlot();
    if (!slot) {
        EndWithLastResort(NotEnoughMemoryText);
    }
    throw new (slot) CMemoryException;
}

void GenerateFileException(std::uint32_t lastError, const CUnicodeString& fileName) {
    const CReentryScope scope(0);
    throw Make<CFileException>(lastError, GetFileCause(lastError), fileName);
}

void GenerateFileCauseException(std::uint32_t cause, const CUnicodeString& fileName) {
    const CReentryScope scope(0);
    throw Make<CFileException>(0U, cause, fileName);
}

void ReportInternalFailure(const CUnicodeString& text) {
    const CReentryScope scope(1);
    DisplayMessage(text, FatalMessageStyle);
    MarkErrorReported(ThreadErrorMode.Get());
}

} // namespace Tsx
