// Files of bytes in a folder that goes when the test ends.
#pragma once

#include "foundation/inc/unicodestring.h"
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

class CTextFiles {
public:
    CTextFiles() : folder(std::filesystem::temp_directory_path() / ("text" + std::to_string(std::random_device()()))) {
        std::filesystem::create_directory(folder);
    }
    ~CTextFiles() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    CTextFiles(const CTextFiles&) = delete;
    CTextFiles& operator=(const CTextFiles&) = delete;

    Tsx::CUnicodeString Path(const std::string& name) const { return (folder / name).u16string().c_str(); }

    /// The path of the file that it writes.
    Tsx::CUnicodeString Write(const std::string& name, const std::string& bytes) const {
        std::ofstream(folder / name, std::ios::binary) << bytes;
        return Path(name);
    }
    std::string Read(const std::string& name) const {
        std::ostringstream bytes;
        bytes << std::ifstream(folder / name, std::ios::binary).rdbuf();
        return bytes.str();
    }

private:
    std::filesystem::path folder;
};
