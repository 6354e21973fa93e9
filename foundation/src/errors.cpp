#include "foundation/inc/errors.h"

#include "foundation/inc/debugflags.h"
#include "foundation/inc/foundation.h"
#include "foundation/inc/messagehandlers.h"
#include "foundation/inc/messagenames.h"
#include "foundation/inc/privateallocators.h"
#include "foundation/inc/threadobject.h"
#include "foundation/src/statics.h"
#include "platform/inc/debug.h"
#include "platform/inc/lasterror.h"
#include "platform/inc/messagebox.h"
#include "platform/inc/process.h"
#include "platform/inc/text.h"
#include <utility>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\errors";

constexpr const char16_t* InternalErrorText = u"Internal Program Error:\n%s, %u.";

bool MayThrow() {
    const CThreadErrorMode* mode = ThreadErrorMode.Get();
    return AreExceptionsEnabled() && !(mode && mode->NoExceptions);
}

template <class TException, class... TArguments>
[[noreturn]] void Throw(TArguments&&... arguments) {
    auto* exception = new TException(std::forward<TArguments>(arguments)...);
    if (!exception) {
        GenerateMemoryException();
    }
    throw exception;
}

struct KindTexts {
    const CMessageName& name;
    const char16_t* builtIn;
};

// The texts that work before any catalogue does.
const KindTexts& TextsOf(std::uint32_t kind) {
    static const KindTexts texts[] = {
        {MSG_ASSERT, u"Internal Program Error:\nAssertion failed: ( %0 )\n%2, %3.\n( %1 )."},
        {MSG_ASSERTLASTERROR,
         u"Internal Program Error:\nAssertion failed: ( %0 )\n%2, %3.\n( %1 ).\nError code: %4 - %5"},
        {MSG_PRESUME, u"Internal Program Error:\nPresumption failed: ( %0 )\n%2, %3.\n( %1 )."},
        {MSG_PRESUMELASTERROR,
         u"Internal Program Error:\nPresumption failed: ( %0 )\n%2, %3.\n( %1 ).\nError code: %4 - %5"},
    };
    TSX_ASSERT(kind < std::size(texts), ModuleName);
    return texts[kind];
}

bool CarriesCode(std::uint32_t kind) {
    return kind == InternalAssertLastError || kind == InternalPresumeLastError;
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
    FormatText(text, std::size(text) - 1, InternalErrorText, arguments, 2);
    Platform::MessageBox(nullptr, text, FoundationTitle, FatalMessageStyle);
    if (GetStringStage() == EStringStage::Before) {
        MarkErrorReported(ThreadErrorMode.Find());
    }
}

CUnicodeString CodeText(std::uint32_t code) {
    return u"0x" + CUnicodeString::FromHex(code);
}

} // namespace

void CException::ReportToUser() const {
    DisplayMessage(GetMessageText(), Platform::MbOk);
}

CCheckException::CCheckException(const CMessageName& name, const char16_t* first, const char16_t* second)
    : message(&name), param0(first), param1(second) {}

CUnicodeString CCheckException::GetMessageText() const {
    return FormatMessage(*message, param0, param1, param2);
}

CFileException::CFileException(std::uint32_t windowsCode, std::uint32_t fileCause, const CUnicodeString& name)
    : lastError(windowsCode), cause(fileCause), fileName(name) {}

CUnicodeString CFileException::GetMessageText() const {
    return GetFileErrorText(cause, lastError, fileName);
}

CInternalError::CInternalError(std::uint32_t failureKind, const char16_t* sourceFile, std::uint32_t sourceLine,
                               std::uint32_t windowsCode)
    : file(sourceFile), line(static_cast<std::int32_t>(sourceLine)), kind(failureKind), code(windowsCode) {}

CUnicodeString CInternalError::GetMessageText() const {
    const CUnicodeString lineText = CUnicodeString::FromInt(line);
    const CUnicodeString codeText = CodeText(code);
    const char16_t* const parameters[] = {file, lineText.Text(), codeText.Text()};
    if (CarriesCode(kind)) {
        return SubstituteParams(
            GetMessageOrBuiltIn(MSG_INTERNAL_ERROR_WITH_CODE, u"Internal Program Error:\n%0, %1.\nError code: %2"),
            parameters, 3);
    }
    return SubstituteParams(GetMessageOrBuiltIn(MSG_INTERNAL_ERROR, u"Internal Program Error:\n%0, %1."), parameters,
                            2);
}

void CInternalError::ReportToUser() const {
    DisplayMessage(GetMessageText(), FatalMessageStyle);
}

CUnicodeString CLastErrorException::GetMessageText() const {
    return GetLastErrorText(code);
}

CMemoryException::~CMemoryException() {
    ReleaseMemoryException(this);
}

CUnicodeString CMemoryException::GetMessageText() const {
    return NotEnoughMemoryText;
}

void FailAssertion(const char16_t* file, std::uint32_t line) {
    GenerateInternalError(InternalAssert, u"", u"", file, line, 0);
}

void FailAssertionWithLastError(const char16_t* file, std::uint32_t line) {
    GenerateInternalError(InternalAssertLastError, u"", u"", file, line, Platform::GetLastError());
}

bool GenerateInternalError(std::uint32_t kind, const char16_t* comment, const char16_t* expression,
                           const char16_t* file, std::uint32_t line, std::uint32_t code) {
    if (GetStringStage() != EStringStage::Usable) {
        ReportWithoutStrings(file, line);
        return false;
    }
    const CReentryScope scope(0);
    if (MayThrow()) {
        Throw<CInternalError>(kind, file, line, code);
    }
    ReportInternalFailure(ComposeInternalErrorText(kind, comment, expression, file, line, code));
    return false;
}

void GenerateCheckException(const CMessageName& message, const char16_t* param0, const char16_t* param1) {
    const CReentryScope scope(0);
    if (MayThrow()) {
        Throw<CCheckException>(message, param0, param1);
    }
    ReportInternalFailure(FormatMessage(message, param0, param1, u""));
}

void GenerateLastErrorException(std::uint32_t code) {
    const CReentryScope scope(0);
    if (MayThrow()) {
        Throw<CLastErrorException>(code);
    }
    ReportInternalFailure(GetLastErrorText(code));
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
    Throw<CUserException>();
}

void GenerateMemoryException() {
    const CReentryScope scope(0, CReentryScope::ExistingState);
    if (HasDebugFlag(DebugBreakOnMemoryException)) {
        Platform::DebugBreak();
    }
    void* slot = MemoryExceptionPool.TakeSlot();
    if (!slot) {
        Platform::MessageBox(nullptr, NotEnoughMemoryText, FoundationTitle, FatalMessageStyle);
        Platform::Abort();
    }
    throw new (slot) CMemoryException;
}

void GenerateFileException(std::uint32_t lastError, const CUnicodeString& fileName) {
    const CReentryScope scope(0);
    Throw<CFileException>(lastError, GetFileCause(lastError), fileName);
}

void GenerateFileCauseException(std::uint32_t cause, const CUnicodeString& fileName) {
    const CReentryScope scope(0);
    Throw<CFileException>(0U, cause, fileName);
}

CUnicodeString ComposeInternalErrorText(std::uint32_t kind, const char16_t* comment, const char16_t* expression,
                                        const char16_t* file, std::uint32_t line, std::uint32_t code) {
    const KindTexts& texts = TextsOf(kind);
    const CUnicodeString lineText = CUnicodeString::FromInt(static_cast<std::int32_t>(line));
    const CUnicodeString codeText = CodeText(code);
    const CUnicodeString systemText = CarriesCode(kind) ? GetLastErrorText(code) : CUnicodeString();
    const char16_t* const parameters[] = {expression,      comment,         file,
                                          lineText.Text(), codeText.Text(), systemText.Text()};
    return SubstituteParams(GetMessageOrBuiltIn(texts.name, texts.builtIn), parameters, CarriesCode(kind) ? 6 : 5);
}

void ReportInternalFailure(const CUnicodeString& text) {
    const CReentryScope scope(1);
    DisplayMessage(text, FatalMessageStyle);
    MarkErrorReported(ThreadErrorMode.Get());
}

CUnicodeString GetLastErrorText(std::uint32_t code) {
    if (code == Platform::ErrorSuccess) {
        return FormatMessage(ERR_UNKNOWN_LAST_ERROR_TEXT, u"0");
    }
    CUnicodeString text;
    for (std::int32_t capacity = 512; capacity <= 0x10000; capacity *= 2) {
        char16_t* buffer = text.GetBuffer(capacity);
        const std::uint32_t length = Platform::FormatMessage(code, 0, buffer, static_cast<std::uint32_t>(capacity));
        if (length > 0) {
            text.SetLength(static_cast<std::int32_t>(length));
            return text;
        }
        if (Platform::GetLastError() != Platform::ErrorInsufficientBuffer) {
            break;
        }
    }
    return FormatMessage(ERR_UNKNOWN_LAST_ERROR_TEXT, CUnicodeString::FromHex(code));
}

} // namespace Tsx
