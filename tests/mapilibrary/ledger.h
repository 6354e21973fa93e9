// The books of a recording MAPI library: each call as one line of the file that CORVANE_TRANSCRIPT names, and all that
// the library has given out and not got back. The line "end:" is written when the library goes. Nothing is open between
// two calls, since the process may end in any of them. For one thread.
#pragma once

#include "mapi/MapiInterfaces.h"
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// What is given out, by what it is called in the transcript. Returning something that is not out ends the process with
/// a line on standard error.
void GiveOut(const void* thing, const std::string& name);
void TakeBack(const void* thing);

/// The words of an environment variable, or of another text without it.
std::vector<std::string> Words(const char* variable, const char* otherwise);

/// A terminated text in quotes, controls, quotes and backslashes as "\x0A"; "null" for null. Narrow text is in the ANSI
/// code page.
std::string Quoted(const char* text);
std::string Quoted(const char16_t* text);

/// An identifier or other bytes: shown as their number and their content, of more than 64 the first and the last 32.
struct EntryId {
    std::uint32_t size;
    const void* bytes;
};

/// One argument as the transcript has it: a number below 10 in decimal, any other in hexadecimal digits after "0x".
std::string Shown(std::uint64_t number);
std::string Shown(const EntryId& id);
std::string Shown(const Mapi::SPropTagArray* tags);
std::string Shown(const Mapi::SPropValue& property);
/// "null", or a thing's name, or "given" for what is not the library's.
std::string Shown(const void* thing);
inline std::string Shown(const std::string& text) {
    return text;
}

template <class TFirst, class... T>
std::string List(const TFirst& first, const T&... more) {
    return (Shown(first) + ... + (", " + Shown(more)));
}

/// The line "NAME(ARGUMENTS) = RESULT", and what is to become of the call. A crash leaves the line without an end.
///
/// CORVANE_MAPI_SCRIPT holds rules "CALL=ACTION" or "CALL#n=ACTION" (the n-th call of that name alone), separated by
/// blanks. Without a rule a call does what it is for.
///   IMAPISession::ShowForm=80040113    fails with that code, in hexadecimal digits
///   MAPILogonEx#2=nothing              succeeds and gives nothing
///   IAttach::SaveChanges=read          dies
///   IAttach::SaveChanges=read:dying    dies so, and from then on whenever something is given back
class Call {
public:
    /// `rule` is what the script calls it, the name as a rule.
    Call(std::string_view name, const std::string& arguments, std::string_view rule = {});

    /// Whether it does what it is for.
    bool Performs() const { return performs; }
    /// Ends the line with the result of a call that performs, or what the script tells; without one for a call that has
    /// none.
    std::int32_t End(std::int32_t result = 0);
    void EndWithoutResult();

private:
    bool performs = true;
    std::int32_t refusal = 0;
};

/// Memory that counts as given out until FreeBuffer.
template <class T>
T* AllocateBuffer(std::size_t size, const std::string& name) {
    void* buffer = ::operator new(size);
    GiveOut(buffer, name);
    return static_cast<T*>(buffer);
}
void FreeBuffer(void* buffer);
