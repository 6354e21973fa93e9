// Texts and files, as the test runner needs them: it has the Windows API and the C++ library alone.
#pragma once

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

inline std::string Utf8(const std::wstring& text) {
    const std::u8string bytes = std::filesystem::path(text).u8string();
    return {bytes.begin(), bytes.end()};
}

/// A file's content; empty if it can't be read.
inline std::string ReadBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

/// The same of a file in UTF-16.
inline std::wstring ReadText(const std::filesystem::path& path) {
    const std::string bytes = ReadBytes(path);
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
    return text;
}

/// The text with every occurrence replaced.
template <class TText>
TText Replaced(TText text, const TText& from, const TText& to) {
    for (std::size_t at = text.find(from); at != TText::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}
