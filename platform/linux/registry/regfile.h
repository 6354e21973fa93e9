// A file of the registry in the text form in which Windows exports and imports it (regstatements.h): what it holds, and
// how it is changed. A change touches nothing but the place that it is about: comments, lines that make no sense, the
// order and the encoding stay.
#pragma once

#include "platform/linux/registry/regtree.h"
#include <string>
#include <string_view>
#include <vector>

namespace Platform {

/// The text of a file, in UTF-16 with a mark, or in UTF-8 with or without one. A byte that is no UTF-8 is kept as the
/// lone surrogate 0xDC00 + byte.
std::u16string DecodeRegistryText(std::string_view bytes);

/// Applies a file to a tree whose topmost keys are the roots (HKEY_CURRENT_USER and so on); what the tree holds already
/// is what the file lies over. A line that makes no sense is skipped, and with a key line the values under it; all
/// others count. Takes time in proportion to the size.
void ReadRegistryText(std::string_view bytes, RegistryNode& top);

/// The file with a key, the root's name first, that it doesn't hold yet. An empty file becomes one of version 5.00, in
/// UTF-16 with a mark and with CR LF.
std::string AddRegistryKey(std::string_view bytes, const std::vector<std::u16string>& names);

/// The same with a value of a key, which is made where it isn't there. A file of the older version becomes one of 5.00,
/// and one in UTF-8 becomes one in UTF-16 where that can't say the value's name.
std::string SetRegistryValue(std::string_view bytes, const std::vector<std::u16string>& names, std::u16string_view name,
                             const RegistryValue& value);

} // namespace Platform
