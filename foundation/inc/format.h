// Formatting in the language of wide print, with the arguments' real types in place of what the format claims. Behind
// CUnicodeString::Format, the traces, and the notices that do without strings.
#pragma once

#include <concepts>
#include <cstdint>
#include <type_traits>

namespace Tsx {

/// A type that holds wide text, such as CUnicodeString.
template <class T>
concept WideTextHolder = requires(const T& value) {
    { value.Text() } -> std::convertible_to<const char16_t*>;
};

/// One argument: its kind and its value. Text is borrowed and must outlive the formatting.
class CFormatArgument {
public:
    enum TKind { FK_Signed, FK_Unsigned, FK_Text, FK_Pointer };

    template <std::integral T>
    CFormatArgument(T number) // NOLINT(google-explicit-constructor): made at the call of a formatted operation
        : Kind(std::is_signed_v<T> ? FK_Signed : FK_Unsigned), Bits(static_cast<std::uint64_t>(number)),
          Size(sizeof(T)) {}
    CFormatArgument(const char16_t* text) : Kind(FK_Text), Pointer(text) {}      // NOLINT(google-explicit-constructor)
    CFormatArgument(const void* address) : Kind(FK_Pointer), Pointer(address) {} // NOLINT(google-explicit-constructor)
    template <WideTextHolder T>
    CFormatArgument(const T& text) : CFormatArgument(text.Text()) {} // NOLINT(google-explicit-constructor)

    TKind Kind;
    union {
        std::uint64_t Bits; // sign-extended for FK_Signed
        const void* Pointer;
    };
    std::uint32_t Size = sizeof(void*); // bytes of the argument's own type
};

/// Writes the formatted text, not terminated, into `capacity` characters and returns its length; -1 if it does not fit.
///
/// Conversions: %d %i %u %x %X %o %c %s %p %%, with the flags "-+ 0#", a width, a precision (both may be `*`) and any
/// of the length words h l ll I64 w, which are read and ignored: the argument's own size counts. An argument of another
/// kind than its conversion asks for, a missing one or an unknown conversion is an internal error.
std::int32_t FormatText(char16_t* buffer, std::int32_t capacity, const char16_t* format,
                        const CFormatArgument* arguments, std::int32_t count);

} // namespace Tsx
