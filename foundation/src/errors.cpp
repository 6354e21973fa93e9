// The raising of failures. All raising functions share one frame: the developer's stop, the scope that moves the thread
// to the runtime heap, the decision whether it may throw, and either the throw or the report at once.
#include "foundation/inc/errors.h"

#include "foundation/inc/debugflags.h"
#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/privateallocators.h"
#include "foundation/inc/threadobject.h"
#include "foundation/src/internalerrortexts.h"
#include "foundation/src/raising.h"
#include "foundation/src/statics.h"
#include "platform/inc/debug.h"
#include "platform/inc/lasterror.h"
#include <utility>

namespace Tsx {

std::atomic<bool> ExceptionsEnabled{true};

namespace {

void StopIfWanted(std::uint32_t mode) {
    if (mode == SM_Always || (mode == SM_InDebugger && Platform::IsDebuggerPresent())) {
        Platform::DebugBreak();
    }
}

bool MayThrow() {
    const CThreadErrorMode* mode = ThreadErrorMode.Get();
    return ExceptionsEnabled && !(mode && mode->NoExceptions);
}

void MarkErrorReported(CThreadErrorMode* mode) {
    if (mode) {
        mode->ErrorReported = true;
    }
}

/// The frame of the failures that a user's error stop mode and the thread's mode decide about.
template <class TException, class... TArguments>
void RaiseOrReport(TArguments&&... arguments) {
    StopIfWanted(GetErrorStopMode());
    const CReentryScope scope(CReentryScope::RS_Raising);
    if (MayThrow()) {
        throw MakeObject<TException>(std::forward<TArguments>(arguments)...).release();
    }
    ReportInternalFailure(TException(std::forward<TArguments>(arguments)...).GetMessageText());
}

// Before strings can be made, and when they no longer can. A thread that fails before is marked, so that it does not
// start the program; afterwards nobody reads the mark, and its record may be gone.
void ReportWithoutStrings(const char16_t* file, std::uint32_t line) {
    char16_t text[256] = {};
    const CFormatArgument arguments[] = {file, line};
    FormatText(text, std::size(text) - 1, PlaceFormat, arguments, 2);
    ShowLastResort(text);
    if (GetStringStage() == SS_Before) {
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
    if (GetStringStage() != SS_Usable) {
        ReportWithoutStrings(file, line); // no setting can be read either
        return false;
    }
    StopIfWanted(GetAssertStopMode());
    const CReentryScope scope(CReentryScope::RS_Raising);
    if (MayThrow()) {
        throw MakeObject<CInternalError>(kind, file, line, code).release();
    }
    ReportInternalFailure(ComposeInternalErrorText(kind, comment, expression, file, line, code));
    return false;
}

void GenerateCheckException(const CMessageName& message, const char16_t* param0, const char16_t* param1) {
    RaiseOrReport<CCheckException>(message, param0, param1);
}

void GenerateLastErrorException(std::uint32_t code) {
    RaiseOrReport<CLastErrorException>(code);
}

void GenerateCOMException(std::int32_t hresult) {
    RaiseOrReport<CCOMException>(hresult);
}

void GenerateExceptionFromLastError() {
    const std::uint32_t code = Platform::GetLastError();
    if (code == Platform::ErrorNotEnoughMemory) {
        GenerateMemoryException();
    }
    GenerateLastErrorException(code);
}

void GenerateUserException() {
    Raise<CUserException>();
}

void GenerateMemoryException() {
    const CReentryScope scope(CReentryScope::RS_Raising, CReentryScope::RU_ExistingOnly);
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
    Raise<CFileException>(lastError, GetFileCause(lastError), fileName);
}

void GenerateFileCauseException(std::uint32_t cause, const CUnicodeString& fileName) {
    constexpr std::uint32_t noCode = Platform::ErrorSuccess;
    Raise<CFileException>(noCode, cause, fileName);
}

void ReportInternalFailure(const CUnicodeString& text) {
    const CReentryScope scope(CReentryScope::RS_InternalError);
    DisplayMessage(text, FatalMessageStyle);
    MarkErrorReported(ThreadErrorMode.Get());
}

} // namespace Tsx
