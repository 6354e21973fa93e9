#include "platform/linux/people/standarderror.h"

#include "platform/linux/files/transfer.h"
#include "platform/linux/text/utf8.h"
#include <array>
#include <unistd.h>

namespace Platform {

namespace {

/// Collects bytes on the stack and writes them when the room is used up and at its end.
class ErrorOutput {
public:
    ErrorOutput() = default;
    ~ErrorOutput() { Flush(); }
    ErrorOutput(const ErrorOutput&) = delete;
    ErrorOutput& operator=(const ErrorOutput&) = delete;

    void Put(char32_t character) {
        if (!writer.HasRoom(4)) { // the longest form of a character
            Flush();
        }
        PutUtf8(writer, character);
    }

private:
    std::array<char, 1024> buffer;
    UnitWriter<char> writer{buffer.data(), buffer.size()};

    void Flush() {
        WriteWhole(STDERR_FILENO, buffer.data(), writer.Size()); // there is nowhere left to say that it failed
        writer = UnitWriter<char>(buffer.data(), buffer.size());
    }
};

} // namespace

void WriteToStandardError(std::initializer_list<std::u16string_view> texts) noexcept {
    ErrorOutput output;
    for (const std::u16string_view text : texts) {
        for (std::size_t i = 0; i < text.size(); ++i) {
            const char32_t unit = text[i];
            const bool pair = IsHighSurrogate(unit) && i + 1 < text.size() && IsLowSurrogate(text[i + 1]);
            if (pair) {
                output.Put(JoinSurrogates(unit, text[++i]));
            } else {
                output.Put(IsHighSurrogate(unit) || IsLowSurrogate(unit) ? ReplacementCharacter : unit);
            }
        }
    }
}

} // namespace Platform
