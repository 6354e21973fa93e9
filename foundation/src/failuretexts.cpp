// The rendering of failures: system texts, COM texts, and the texts of internal failures.
#include "foundation/inc/errors.h"

#include "foundation/inc/messagenames.h"
#include "foundation/src/internalerrortexts.h"
#include "platform/inc/lasterror.h"
#include "platform/inc/text.h"
#include <memory>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\failuretexts";

struct CKindTexts {
    const CMessageName& name;
    const char16_t* builtIn;
};

const CKindTexts& TextsOf(std::uint32_t kind) {
    static const CKindTexts texts[] = {
        {MSG_ASSERT, AssertText},
        {MSG_ASSERTLASTERROR, AssertLastErrorText},
        {MSG_PRESUME, PresumeText},
        {MSG_PRESUMELASTERROR, PresumeLastErrorText},
    };
    const bool known = kind < std::size(texts);
    TSX_ASSERT(known, ModuleName);
    return texts[known ? kind : InternalAssert]; // the assertion returns on a thread that must not throw
}

struct CSystemBuffer {
    void operator()(char16_t* text) const { Platform::LocalFree(text); }
};
struct CComString {
    void operator()(char16_t* text) const { Platform::SysFreeString(text); }
};

// The system's text for a code; false if it has none.
bool FindSystemText(std::uint32_t flags, std::uint32_t code, std::uint32_t language, CUnicodeString& text) {
    char16_t* buffer = nullptr;
    const std::uint32_t length = Platform::FormatMessage(flags, code, language, buffer);
    const std::unique_ptr<char16_t, CSystemBuffer> owner(buffer);
    if (length == 0 || !buffer) {
        return false;
    }
    text = CUnicodeString::FromBuffer(buffer, static_cast<std::int32_t>(length));
    return true;
}

bool FindDescription(Platform::IErrorInfo* errorInfo, CUnicodeString& text) {
    char16_t* description = nullptr;
    if (!errorInfo || errorInfo->GetDescription(&description) < 0 || !description) {
        return false;
    }
    const std::unique_ptr<char16_t, CComString> owner(description);
    text = description;
    return !text.IsEmpty();
}

// A COM result that wraps a Windows code stands for that code.
std::uint32_t SystemCodeOf(std::int32_t hresult) {
    constexpr std::uint32_t facilityMask = 0x1FFF0000;
    constexpr std::uint32_t facilityWin32 = 0x70000; // FACILITY_WIN32
    const auto code = static_cast<std::uint32_t>(hresult);
    return (code & facilityMask) == facilityWin32 ? code & 0xFFFF : code;
}

void CutLast(CUnicodeString& text, char16_t c) {
    const std::int32_t last = text.Length() - 1;
    if (last >= 0 && text[last] == c) {
        text.SetLength(last);
    }
}

} // namespace

CUnicodeString GetLastErrorText(std::uint32_t code) {
    // IgnoreInserts (0x200), not ArgumentArray (0x2000): no values are given for a text's inserts, and with the latter
    // such a text fails with code 87.
    constexpr std::uint32_t flags = Platform::FormatMessageAllocateBuffer | Platform::FormatMessageFromSystem |
                                    Platform::FormatMessageIgnoreInserts;
    constexpr std::uint32_t anyLanguage = 0;
    CUnicodeString text;
    if (code == Platform::ErrorSuccess || !FindSystemText(flags, code, anyLanguage, text)) {
        return FormatMessage(ERR_UNKNOWN_LAST_ERROR_TEXT, CUnicodeString::FromHex(code));
    }
    return text;
}

CUnicodeString GetCOMErrorText(std::int32_t hresult, Platform::IErrorInfo* errorInfo) {
    CUnicodeString text;
    if (FindDescription(errorInfo, text)) {
        return text;
    }
    constexpr std::uint32_t flags = Platform::FormatMessageAllocateBuffer | Platform::FormatMessageFromSystem;
    constexpr std::uint32_t userLanguage = 0x400; // MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT)
    if (!FindSystemText(flags, SystemCodeOf(hresult), userLanguage, text)) {
        return FormatMessage(ERR_UNKNOWN_COM_ERROR, CUnicodeString::FromHex(static_cast<std::uint32_t>(hresult)));
    }
    CutLast(text, u'\n');
    CutLast(text, u'\r');
    return text;
}

CUnicodeString ComposeInternalErrorText(std::uint32_t kind, const char16_t* comment, const char16_t* expression,
                                        const char16_t* file, std::uint32_t line, std::uint32_t code) {
    const CKindTexts& texts = TextsOf(kind);
    const CUnicodeString lineText = CUnicodeString::FromInt(static_cast<std::int32_t>(line));
    const CUnicodeString codeText = CodeText(code);
    const CUnicodeString systemText = CarriesCode(kind) ? GetLastErrorText(code) : CUnicodeString();
    const char16_t* const parameters[] = {expression,      comment,         file,
                                          lineText.Text(), codeText.Text(), systemText.Text()};
    return SubstituteParams(GetMessageOrBuiltIn(texts.name, texts.builtIn), parameters, CarriesCode(kind) ? 6 : 5);
}

} // namespace Tsx
