#include "foundation/inc/message.h"

#include "foundation/inc/debugflags.h"
#include "foundation/inc/dynamicbitset.h"
#include "foundation/inc/foundation.h"
#include "foundation/inc/messagehandlers.h"
#include "foundation/src/statics.h"
#include "platform/inc/messagebox.h"
#include <limits>

namespace Tsx {

namespace {

CMessageName* firstMessageName = nullptr;

// The run of digits at `position`; its number, or -1 if there is none in the range of 32 signed bits.
std::int32_t ReadIndex(const CUnicodeString& text, std::int32_t& position) {
    constexpr std::int64_t largest = std::numeric_limits<std::int32_t>::max();
    const std::int32_t start = position;
    std::int64_t number = 0;
    for (; position < text.Length() && DigitChars.Contains(text[position]); ++position) {
        number = std::min(number * 10 + (text[position] - u'0'), largest + 1);
    }
    return position > start && number <= largest ? static_cast<std::int32_t>(number) : -1;
}

// Walks a text: `plain(start, length)` gets each piece that stays as it is, `parameter(index)` each place to fill.
template <class TPlain, class TParameter>
void ScanParameters(const CUnicodeString& text, TPlain plain, TParameter parameter) {
    std::int32_t position = 0;
    while (position < text.Length()) {
        const std::int32_t percent = text.Find(u'%', position);
        if (percent < 0) {
            plain(position, text.Length() - position);
            return;
        }
        plain(position, percent - position);
        position = percent + 1;
        const std::int32_t index = ReadIndex(text, position);
        if (index < 0) {
            plain(percent, position - percent);
        } else {
            parameter(index);
        }
    }
}

// The indexes below the highest used one that nothing uses.
CUnicodeString MissingIndexes(const CDynamicBitSet& used, std::int32_t highest) {
    CUnicodeString missing;
    for (std::int32_t i = 0; i < highest; ++i) {
        if (!used.Has(i)) {
            // AS DESIGNED: a blank, then the comma; the list of missing languages has them the other way round.
            missing += missing.IsEmpty() ? u"" : u" ,";
            missing += CUnicodeString::FromInt(i);
        }
    }
    return missing;
}

// The developer's check of a text against the number of parameters that it gets.
void CheckParameters(const CUnicodeString& text, std::int32_t count) {
    CDynamicBitSet used;
    std::int32_t different = 0;
    std::int32_t highest = -1;
    ScanParameters(
        text, [](std::int32_t, std::int32_t) {},
        [&](std::int32_t index) {
            if (!used.Has(index)) {
                used.Set(index);
                ++different;
                highest = std::max(highest, index);
            }
        });
    constexpr std::uint32_t style = Platform::MbOkCancel | Platform::MbIconExclamation;
    if (different != count) {
        DisplayMessage(CUnicodeString::Format(u"Number of params in message \"%s\" is invalid: %d, expected %d.", text,
                                              different, count),
                       style);
    }
    const CUnicodeString missing = MissingIndexes(used, highest);
    if (!missing.IsEmpty()) {
        DisplayMessage(CUnicodeString::Format(u"Some parameters in message \"%s\" are missing: %s.", text, missing),
                       style);
    }
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

const CMessageName* FirstMessageName() {
    return firstMessageName;
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
    CUnicodeString text;
    const bool stands = GetFoundationState() == FS_Initialised;
    return stands && ResourceBase.LookupMessage(name.Name, text) ? text : CUnicodeString(builtIn);
}

CUnicodeString SubstituteParams(const CUnicodeString& text, const char16_t* const* parameters, std::int32_t count) {
    if (HasDebugFlag(DebugCheckMessagesParamsCount)) {
        CheckParameters(text, count);
    }
    CUnicodeString result;
    result.GetBuffer(text.Length()); // reserves room once, for the result is about as long; the pointer is not used
    ScanParameters(
        text, [&](std::int32_t start, std::int32_t length) { result.Append(text.Text() + start, length); },
        [&](std::int32_t index) {
            if (index < count) {
                result += parameters[index];
            }
        });
    return result;
}

CUnicodeString FormatMessageFrom(const CMessageName& name, const char16_t* const* parameters, std::int32_t count) {
    const CRuntimeHeapSwitcher switcher;
    CUnicodeString text;
    if (ResourceBase.LookupMessage(name.Name, text)) {
        return SubstituteParams(text, parameters, count);
    }
    text = name.Name;
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
