// Texts and files, as the test runner needs them: it has the Windows API and the C++ library alone.
#pragma once

#include <string>
#include <string_view>

/// UTF-16 from and to UTF-8; what is malformed is replaced.
std::wstring Wide(std::string_view text);
std::string Narrow(std::wstring_view text);

/// Undoes `\XXXX`: each unit is one character of the text. Other characters stand for themselves.
std::wstring Unescaped(std::string_view text);
/// The same for bytes.
std::string UnescapedBytes(std::string_view text);

/// The text with every occurrence replaced.
std::string Replaced(std::string text, std::string_view from, std::string_view to);

/// A file's content; empty if it can't be read.
std::string ReadWhole(const std::wstring& path);
