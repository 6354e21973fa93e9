// The books of the Extended side: each call as one line of the transcript, and all that the library has given out and
// not got back.
#pragma once

#include "mapi/MapiRecords.h"
#include "tests/mapilibrary/extended/script.h"
#include <cstddef>
#include <string>
#include <string_view>

/// One argument as the transcript has it: a number below 10 in decimal, any other in hexadecimal digits after "0x".
std::string Shown(std::uint64_t number);
/// An identifier: its length and its bytes.
std::string Shown(std::uint32_t size, const void* entryId);
/// "null", or "given": addresses differ from run to run.
std::string Shown(const void* pointer);
std::string Shown(const Mapi::SPropTagArray* tags);
/// A property with its value. More than 64 bytes are told by their number and their Adler-32 checksum.
std::string Shown(const Mapi::SPropValue& property);

template <class... T>
std::string Joined(const std::string& first, const T&... more) {
    return (first + ... + (", " + std::string(more)));
}

/// Begins the line "NAME(ARGUMENTS)" and says what is to become of the call. A crash leaves the line without an end.
Action BeginCall(std::string_view name, const std::string& arguments);
/// Ends the line with " = RESULT"; a call without a result ends it without.
void EndCall();
std::int32_t EndCall(std::int32_t result);

/// A call whose work `perform` does, given the call's own word; its result is that of the call.
template <class TPerform>
std::int32_t Answer(std::string_view name, const std::string& arguments, TPerform perform) {
    const Action action = BeginCall(name, arguments);
    return EndCall(action.performs ? perform(action.word) : action.result);
}

/// What is given out, by what it is called in the transcript. Returning something that is not out, or under no name of
/// ours, ends the process with a line on standard error.
void GiveOut(const void* thing, const std::string& name);
std::string NameOf(const void* thing);
void TakeBack(const void* thing);
std::uint32_t ThingsOut();

/// Memory that counts as given out until FreeBuffer.
void* AllocateBuffer(std::size_t size, const std::string& name);
void FreeBuffer(void* buffer);
template <class T>
T* AllocateBuffer(std::size_t size, const std::string& name) {
    return static_cast<T*>(AllocateBuffer(size, name));
}
