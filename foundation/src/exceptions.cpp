// The exception family: what each class keeps and how it puts itself into words.
#include "foundation/inc/errors.h"

#include "foundation/inc/failureguard.h"
#include "foundation/inc/messagenames.h"
#include "foundation/inc/privateallocators.h"
#include "foundation/src/internalerrortexts.h"
#include "foundation/src/statics.h"
#include "platform/inc/messagebox.h"

namespace Tsx {

void CException::ReportToUser() const {
    DisplayMessage(GetMessageText(), Platform::MbOk);
}

CCheckException::CCheckException(const CMessageName& name, const char16_t* first, const char16_t* second)
    : message(&name), param0(first), param1(second) {}

CUnicodeString CCheckException::GetMessageText() const {
    return FormatMessage(*message, param0, param1, param2);
}

CCOMException::CCOMException(std::int32_t result) : hresult(result) {
    Platform::GetErrorInfo(0, errorInfo); // none, or none to be had, leaves it null
}

CCOMException::~CCOMException() {
    if (errorInfo) {
        errorInfo->Release();
    }
}

CUnicodeString CCOMException::GetMessageText() const {
    return GetCOMErrorText(hresult, errorInfo);
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
        return SubstituteParams(GetMessageOrBuiltIn(MSG_INTERNAL_ERROR_WITH_CODE, InternalErrorWithCodeText),
                                parameters, 3);
    }
    return SubstituteParams(GetMessageOrBuiltIn(MSG_INTERNAL_ERROR, InternalErrorText), parameters, 2);
}

void CInternalError::ReportToUser() const {
    DisplayMessage(GetMessageText(), FatalMessageStyle);
}

CUnicodeString CLastErrorException::GetMessageText() const {
    return GetLastErrorText(code);
}

CMemoryExceptionSlot::~CMemoryExceptionSlot() {
    // An address alone: the exception, which begins here too, is no object any more.
    GuardDestructor([this] { ReleaseMemoryException(reinterpret_cast<const CMemoryException*>(this)); });
}

CUnicodeString CMemoryException::GetMessageText() const {
    return NotEnoughMemoryString; // no block is taken for it
}

} // namespace Tsx
