// How a value is written in the registry's text form.
#pragma once

#include "platform/linux/registry/regtree.h"
#include <string>
#include <string_view>

namespace Platform {

/// Appends the name of a value and the = behind it.
void AppendValueName(std::u16string& out, std::u16string_view name);

/// Appends what stands behind the =. The last line of `out` is the one that the data begin in.
void AppendValueData(std::u16string& out, const RegistryValue& value, std::u16string_view lineBreak);

} // namespace Platform
