// The text file in which a recording MAPI library notes what it was handed: UTF-8, one value a line, in the order of
// the calls. It knows nothing of messages, so that both sides can record through it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// A number in decimal digits. The standard library's own conversion has a table of which a process keeps one for all
/// libraries, and a library that shares it is never unloaded.
std::string Decimal(std::uint64_t value);

/// A terminated text in quotes, with escapes where the rows below show them; "null" for null. Narrow text is in the
/// system's ANSI code page.
std::string Quoted(const char* text);
std::string Quoted(const char16_t* text);

/// Two upper-case digits a byte; "null" for null.
std::string Hex(const void* bytes, std::size_t size);

/// Collects lines and appends them to the file that the environment variable CORVANE_TRANSCRIPT names; without the
/// variable all of it is dropped. Nothing is open between two calls, since the process may end in any of them. For one
/// thread.
///
///   Line("attach")                          attach
///   Number("flags", 9)                      flags 9
///   Pointer("lpFiles", nullptr)             lpFiles null (otherwise: given)
///   Text("subject", "a\n\"b\"\x01")         subject "a\n\"b\"\x01"
///   Text("subject", nullptr)                subject null
///   Bytes("id", "\x01\xAB", 2)              id 01AB
///   Bytes("id", nullptr, 0)                 id null
class Transcript {
public:
    void Line(std::string_view text);
    void Number(std::string_view name, std::uint64_t value);
    /// Whether there is something; addresses differ from run to run.
    void Pointer(std::string_view name, const void* pointer);
    void Text(std::string_view name, const char* text);
    void Bytes(std::string_view name, const void* bytes, std::size_t size);

    /// Appends what was collected to the file and forgets it. Ends the process if the file cannot be written: a
    /// transcript with a gap would be believed.
    void Write();

    /// How many lines of the file are exactly `wanted`; 0 without a file.
    static int CountLines(std::string_view wanted);

private:
    std::string lines;
};
