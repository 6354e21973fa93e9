// The message catalogue: texts for people by symbolic name, and the filling of their parameters. Whoever raises by
// message or prints one uses it; the texts come from the resource base.
#pragma once

#include "foundation/inc/array.h"
#include "foundation/inc/unicodestring.h"

namespace Tsx {

/// The static record of one message name. Code refers to a message by this record; the process-wide list of all records
/// holds exactly the names that the linked code can ask for. Static storage only.
class CMessageName {
public:
    explicit CMessageName(const char16_t* name);
    ~CMessageName();
    CMessageName(const CMessageName&) = delete;
    CMessageName& operator=(const CMessageName&) = delete;

    const char16_t* Name;
    CMessageName* Next = nullptr;
    CMessageName* Prev = nullptr;
};

/// The newest record of the process-wide list. Under MessageListLock.
const CMessageName* FirstMessageName();

/// Whether a module has a text for the name.
bool HasMessage(const CMessageName& name);
/// The text; the name itself if there is none, so that a missing text never hides a failure.
CUnicodeString GetMessage(const CMessageName& name);
/// The catalogue's text once the foundation is initialised and if there is one; `builtIn` otherwise.
CUnicodeString GetMessageOrBuiltIn(const CMessageName& name, const char16_t* builtIn);

/// Fills a text: %N becomes parameter N, nothing if there are fewer; a percent sign without digits, or with a number
/// beyond 32 signed bits, stays as it stands.
///
///   "%1 of %0" with a, b     "b of a"
///   "100%", "50% off"        unchanged
///   "%7" with two            ""
///
/// With the debug flag CheckMessagesParamsCount a text that uses other parameters than are given is complained about
/// through DisplayMessage; the result is the same.
CUnicodeString SubstituteParams(const CUnicodeString& text, const char16_t* const* parameters, std::int32_t count);

/// The message with its parameters; without a text the name, a blank and each parameter in turn.
CUnicodeString FormatMessageFrom(const CMessageName& name, const char16_t* const* parameters, std::int32_t count);

template <class... TParameters>
CUnicodeString FormatMessage(const CMessageName& name, const TParameters&... parameters) {
    static_assert(sizeof...(parameters) >= 1 && sizeof...(parameters) <= 4);
    const auto text = [](const auto& parameter) -> const char16_t* {
        if constexpr (requires { parameter.Text(); }) {
            return parameter.Text();
        } else {
            return parameter;
        }
    };
    const char16_t* const list[] = {text(parameters)...};
    return FormatMessageFrom(name, list, static_cast<std::int32_t>(sizeof...(parameters)));
}

/// Fills a text that is already in hand.
CUnicodeString FormatMessageList(const CUnicodeString& text, const CArray<CUnicodeString>& parameters);

/// The names that the linked code can ask for and no module has a text for; and the names that have a text and nobody
/// asks for. Sorted by code units, each once.
void CollectUndefinedMessages(CArray<CUnicodeString>& names);
void CollectUnusedMessages(CArray<CUnicodeString>& names);

/// The lists for developers and translators, as UTF-16 text with a mark; an old file is replaced. The first raises
/// CFileException; the second swallows it.
///
///   all messages         a table: name, path of the module with the record, whether it has a text, whether it is used
///   undefined messages   the undefined names, then the unused ones behind a line of their own
void SaveAllMessagesList(const CUnicodeString& path);
void SaveUndefinedMessagesList(const CUnicodeString& path);

} // namespace Tsx
