// What the exception classes do that takes more than a line.
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

CCOMException::CCOMException(std::int32_t result) : hresult(result) {
    Platform::GetErrorInfo(0, errorInfo); // none, or none to be had, leaves it null
}

CCOMException::~CCOMException() {
    if (errorInfo) {
        errorInfo->Release();
    }
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

CMemoryExceptionSlot::~CMemoryExceptionSlot() {
    // Used as an address alone: the derived exception has been destroyed by now.
    GuardDestructor([this] { ReleaseMemoryException(reinterpret_cast<const CMemoryException*>(this)); });
}

CUnicodeString CMemoryException::GetMessageText() const {
    return NotEnoughMemoryString; // no block is taken for it
}

} // namespace Tsx
