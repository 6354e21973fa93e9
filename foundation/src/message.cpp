#include "foundation/inc/message.h"

#include "foundation/inc/foundation.h"
#include "foundation/src/statics.h"
#include <limits>

namespace Tsx {

namespace {

CMessageName* firstMessageName = nullptr;

// The run of digits at `position`; its number, or -1 if there is none in the range of 32 signed bits.
std::int32_t ReadIndex(const CUnicodeString& text, std::int32_t& position) {
    const std::int32_t start = position;
    std::int64_t number = 0;
    for (; position < text.Length() && DigitChars.Contains(text[position]); ++position) {
        number = std::min<std::int64_t>(number * 10 + (text[position] - u'0'),
                                        std::numeric_limits<std::int64_t>::max() / 16);
    }
    return position > start && number <= std::numeric_limits<std::int32_t>::max() ? static_cast<std::int32_t>(number)
                                                                                  : -1;
}

} // namespace

CMessageName::CMessageName(const char16_t* name) : Name(name) {
    const CCriticalSectionLock guard(MessageListLock);
    Next = firstMessageName;
    if (Next) {
        Next->Prev = this;
    }
    firstMessageName = this;
}

CMessageName::~CMessageName() {
    const CCriticalSectionLock guard(MessageListLock);
    (Prev ? Prev->Next : firstMessageName) = Next;
    if (Next) {
        Next->Prev = Prev;
    }
}

bool HasMessage(const CMessageName& name) {
    const CRuntimeHeapSwitcher switcher;
    CUnicodeString text;
    return ResourceBase.LookupMessage(name.Name, text);
}

CUnicodeString GetMessage(const CMessageName& name) {
    const CRuntimeHeapSwitcher switcher;
    CUnicodeString text;
    return ResourceBase.LookupMessage(name.Name, text) ? text : CUnicodeString(name.Name);
}

CUnicodeString GetMessageOrBuiltIn(const CMessageName& name, const char16_t* builtIn) {
    const CRuntimeHeapSwitcher switcher;
    return GetFoundationState() == FS_Initialised && HasMessage(name) ? GetMessage(name) : CUnicodeString(builtIn);
}

CUnicodeString SubstituteParams(const CUnicodeString& text, const char16_t* const* parameters, std::int32_t count) {
    CUnicodeString result;
    result.GetBuffer(text.Length());
    std::int32_t position = 0;
    while (position < text.Length()) {
        const std::int32_t percent = text.Find(u'%', position);
        if (percent < 0) {
            result += text.Mid(position);
            break;
        }
        result.Append(text.Text() + position, percent - position);
        position = percent + 1;
        const std::int32_t index = ReadIndex(text, position);
        if (index < 0) {
            result.Append(text.Text() + percent, position - percent);
        } else if (index < count) {
            result += parameters[index];
        }
    }
    return result;
}

CUnicodeString FormatMessageFrom(const CMessageName& name, const char16_t* const* parameters, std::int32_t count) {
    const CRuntimeHeapSwitcher switcher;
    if (HasMessage(name)) {
        return SubstituteParams(GetMessage(name), parameters, count);
    }
    CUnicodeString text(name.Name);
    for (std::int32_t i = 0; i < count; ++i) {
        text += u' ';
        text += parameters[i];
    }
    return text;
}

CUnicodeString FormatMessageList(const CUnicodeString& text, const CArray<CUnicodeString>& parameters) {
    const CRuntimeHeapSwitcher switcher;
    CArray<const char16_t*> list;
    for (const CUnicodeString& parameter : parameters) {
        list.Append(parameter.Text());
    }
    return SubstituteParams(text, list.Data(), list.Size());
}

} // namespace Tsx
