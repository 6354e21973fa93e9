#include "foundation/inc/format.h"

#include "foundation/inc/assertion.h"
#include <algorithm>
#include <string_view>

namespace Tsx {

namespace {

constexpr const char16_t* ModuleName = u"src\\format";

// What stands between the percent sign and the conversion character.
struct CDirective {
    bool leftAligned = false;
    bool plus = false;
    bool blank = false;
    bool alternate = false;
    bool zeros = false;
    std::int32_t width = 0;
    std::int32_t precision = -1;
    char16_t conversion = 0;
};

class CFormatter {
public:
    CFormatter(char16_t* target, std::int32_t room, const CFormatArgument* list, std::int32_t count)
        : buffer(target), capacity(room), arguments(list), argumentsLeft(count) {}

    std::int32_t Run(const char16_t* format) {
        while (*format != 0) {
            if (*format != u'%') {
                Put(*format++);
            } else if (format[1] == u'%') {
                Put(u'%');
                format += 2;
            } else {
                const CDirective directive = ReadDirective(++format);
                if (!Convert(directive)) {
                    FailAssertion(ModuleName, __LINE__);
                }
            }
        }
        return length <= capacity ? static_cast<std::int32_t>(length) : -1;
    }

private:
    char16_t* buffer;
    std::int64_t capacity;
    const CFormatArgument* arguments;
    std::int32_t argumentsLeft;
    std::int64_t length = 0;

    void Put(char16_t c) {
        if (length < capacity) {
            buffer[length] = c;
        }
        ++length;
    }

    void Repeat(char16_t c, std::int64_t times) {
        for (; times > 0; --times) {
            Put(c);
        }
    }

    void PutText(std::u16string_view text) {
        for (const char16_t c : text) {
            Put(c);
        }
    }

    const CFormatArgument* Next() { return argumentsLeft > 0 ? (--argumentsLeft, arguments++) : nullptr; }

    // A number in the format, or the next argument where a star stands for it.
    std::int32_t ReadNumber(const char16_t*& format) {
        constexpr std::int64_t most = 0xFFFFFF;
        if (*format == u'*') {
            ++format;
            const CFormatArgument* argument = Next();
            const bool fits = argument && argument->Kind == CFormatArgument::FK_Signed;
            return fits ? static_cast<std::int32_t>(std::clamp(static_cast<std::int64_t>(argument->Bits), -most, most))
                        : 0;
        }
        std::int64_t number = 0;
        for (; *format >= u'0' && *format <= u'9'; ++format) {
            number = std::min(number * 10 + (*format - u'0'), most);
        }
        return static_cast<std::int32_t>(number);
    }

    static bool ReadFlag(char16_t c, CDirective& directive) {
        switch (c) {
        case u'-':
            return directive.leftAligned = true;
        case u'+':
            return directive.plus = true;
        case u' ':
            return directive.blank = true;
        case u'#':
            return directive.alternate = true;
        case u'0':
            return directive.zeros = true;
        default:
            return false;
        }
    }

    CDirective ReadDirective(const char16_t*& format) {
        CDirective directive;
        while (ReadFlag(*format, directive)) {
            ++format;
        }
        directive.width = ReadNumber(format);
        if (directive.width < 0) {
            directive.leftAligned = true;
            directive.width = -directive.width;
        }
        if (*format == u'.') {
            directive.precision = ReadNumber(++format);
        }
        while (std::u16string_view(u"hlwI64").find(*format) != std::u16string_view::npos && *format != 0) {
            ++format;
        }
        directive.conversion = *format;
        format += *format != 0 ? 1 : 0;
        return directive;
    }

    bool Convert(const CDirective& directive) {
        const CFormatArgument* argument = Next();
        if (!argument) {
            return false;
        }
        const bool isNumber =
            argument->Kind == CFormatArgument::FK_Signed || argument->Kind == CFormatArgument::FK_Unsigned;
        switch (directive.conversion) {
        case u'd':
        case u'i':
            return isNumber && PutSigned(directive, *argument);
        case u'u':
            return isNumber && PutUnsigned(directive, *argument, 10, u"");
        case u'o':
            return isNumber && PutUnsigned(directive, *argument, 8, directive.alternate ? u"0" : u"");
        case u'x':
            return isNumber && PutUnsigned(directive, *argument, 16, directive.alternate ? u"0x" : u"");
        case u'X':
            return isNumber && PutUnsigned(directive, *argument, 16, directive.alternate ? u"0X" : u"");
        case u'c':
            return isNumber && PutCharacter(directive, *argument);
        case u's':
            return argument->Kind == CFormatArgument::FK_Text && PutString(directive, *argument);
        case u'p':
            return !isNumber && PutPointer(directive, *argument);
        default:
            return false;
        }
    }

    void PutPadded(const CDirective& directive, std::u16string_view prefix, std::int64_t zeros,
                   std::u16string_view body) {
        const auto size = static_cast<std::int64_t>(prefix.size() + body.size()) + zeros;
        const std::int64_t padding = std::max<std::int64_t>(directive.width - size, 0);
        Repeat(u' ', directive.leftAligned ? 0 : padding);
        PutText(prefix);
        Repeat(u'0', zeros);
        PutText(body);
        Repeat(u' ', directive.leftAligned ? padding : 0);
    }

    bool PutDigits(const CDirective& directive, std::uint64_t value, unsigned radix, std::u16string_view prefix) {
        char16_t digits[64];
        char16_t* const end = std::end(digits);
        char16_t* first = end;
        const char16_t* const alphabet =
            directive.conversion == u'X' || directive.conversion == u'p' ? u"0123456789ABCDEF" : u"0123456789abcdef";
        for (; value != 0; value /= radix) {
            *--first = alphabet[value % radix];
        }
        const auto count = static_cast<std::int64_t>(end - first);
        std::int64_t zeros = std::max<std::int64_t>((directive.precision < 0 ? 1 : directive.precision) - count, 0);
        if (directive.zeros && !directive.leftAligned && directive.precision < 0) {
            zeros = std::max(zeros, directive.width - count - static_cast<std::int64_t>(prefix.size()));
        }
        PutPadded(directive, prefix, zeros, {first, static_cast<std::size_t>(count)});
        return true;
    }

    // The argument's bits cut to its own size, so that -1 of 32 bits is eight digits f.
    static std::uint64_t OwnBits(const CFormatArgument& argument) {
        return argument.Size >= 8 ? argument.Bits : argument.Bits & ((std::uint64_t{1} << argument.Size * 8) - 1);
    }

    bool PutSigned(const CDirective& directive, const CFormatArgument& argument) {
        const auto value = static_cast<std::int64_t>(argument.Bits);
        const bool negative = argument.Kind == CFormatArgument::FK_Signed && value < 0;
        const char16_t* sign = negative ? u"-" : directive.plus ? u"+" : directive.blank ? u" " : u"";
        return PutDigits(directive, negative ? 0 - argument.Bits : argument.Bits, 10, sign);
    }

    bool PutUnsigned(const CDirective& directive, const CFormatArgument& argument, unsigned radix,
                     const char16_t* prefix) {
        const std::uint64_t value = OwnBits(argument);
        return PutDigits(directive, value, radix, value == 0 ? u"" : prefix);
    }

    bool PutCharacter(const CDirective& directive, const CFormatArgument& argument) {
        const auto c = static_cast<char16_t>(argument.Bits);
        PutPadded(directive, u"", 0, {&c, 1});
        return true;
    }

    bool PutString(const CDirective& directive, const CFormatArgument& argument) {
        const auto* text = static_cast<const char16_t*>(argument.Pointer);
        std::u16string_view view = text ? std::u16string_view(text) : u"(null)";
        if (directive.precision >= 0) {
            view = view.substr(0, static_cast<std::size_t>(directive.precision));
        }
        PutPadded(directive, u"", 0, view);
        return true;
    }

    // As the Windows run-time has it: all sixteen digits, upper case, no prefix.
    bool PutPointer(const CDirective& directive, const CFormatArgument& argument) {
        CDirective digits = directive;
        digits.precision = 2 * sizeof(void*);
        return PutDigits(digits, argument.Bits, 16, u"");
    }
};

} // namespace

std::int32_t FormatText(char16_t* buffer, std::int32_t capacity, const char16_t* format,
                        const CFormatArgument* arguments, std::int32_t count) {
    return CFormatter(buffer, capacity, arguments, count).Run(format);
}

} // namespace Tsx
