#include "tests/bundle/text.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

std::wstring Wide(std::string_view text) {
    const int size = static_cast<int>(text.size());
    std::wstring wide(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0)), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

std::string Narrow(std::wstring_view text) {
    const int size = static_cast<int>(text.size());
    const int length = WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), size, narrow.data(), length, nullptr, nullptr);
    return narrow;
}

std::wstring Unescaped(std::string_view text) {
    std::wstring plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '\\') {
            plain += static_cast<wchar_t>(std::stoul(std::string(text.substr(at + 1, 4)), nullptr, 16));
            at += 4;
        } else {
            plain += static_cast<wchar_t>(text[at]);
        }
    }
    return plain;
}

std::string UnescapedBytes(std::string_view text) {
    std::string bytes;
    for (const wchar_t unit : Unescaped(text)) {
        bytes += static_cast<char>(unit);
    }
    return bytes;
}

std::string Replaced(std::string text, std::string_view from, std::string_view to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

std::string ReadWhole(const std::wstring& path) {
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}
