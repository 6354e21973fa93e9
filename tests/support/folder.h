// Files of the tests: a folder for the length of one, and what is built or copied for them.
#pragma once

#include "foundation/inc/unicodestring.h"
#include <filesystem>
#include <string>
#include <string_view>

class CTestFolder {
public:
    /// Makes a fresh, empty one.
    CTestFolder();
    /// Removes it with all that is in it, read-only or not.
    ~CTestFolder();
    CTestFolder(const CTestFolder&) = delete;
    CTestFolder& operator=(const CTestFolder&) = delete;

    /// Its absolute path, without a closing separator.
    const Tsx::CUnicodeString& Path() const { return path; }
    /// The same as the C++ library takes it.
    const std::filesystem::path& Place() const { return place; }
    /// The path of something in it; `name` may hold `\`.
    Tsx::CUnicodeString operator/(const char16_t* name) const { return path + u'\\' + name; }

    /// Makes a file, and the folders on the way to it; returns its path.
    Tsx::CUnicodeString Write(const char16_t* name, std::string_view content = "x") const;
    /// A file's bytes; "(missing)" if there is none.
    std::string Content(const char16_t* name) const;

private:
    std::filesystem::path place;
    Tsx::CUnicodeString path;

    std::filesystem::path PlaceOf(const char16_t* name) const;
};

/// The path of a file that a test is given, from its name as seen from the program's folder: so the programs and their
/// files can be taken elsewhere together. It holds before main too.
Tsx::CUnicodeString TestFile(std::u16string_view name);
/// The same as the C++ library takes it.
std::filesystem::path TestFilePlace(std::u16string_view name);
