// What the system's loader says when it refuses a library. A Windows code has no room for the name of what is missing,
// so the words are kept beside the code, for whoever asks for its text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Platform {

/// Sets the last error for a module that cannot be loaded. `words` are the details that the code's own text lacks.
void SetModuleError(std::uint32_t code, std::string_view words = {});

/// The same from what dlerror has to say of `file`, which goes to the debug trace as well.
void SetModuleErrorFromLoader(const std::string& file);

/// The words of the calling thread's latest module error, cut to some hundred bytes, if it was `code`; else empty.
std::string_view ModuleErrorWords(std::uint32_t code);

} // namespace Platform
