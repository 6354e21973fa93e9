// A file in memory, which counts what reaches it and fails where it is told to.
#pragma once

#include "foundation/inc/basefile.h"
#include "foundation/inc/errors.h"
#include <algorithm>
#include <string>

class CMemoryFile : public Tsx::CBaseFile {
public:
    explicit CMemoryFile(std::string content = "") : bytes(std::move(content)) {}

    std::string bytes;
    std::int64_t position = 0;
    int reads = 0;
    int writes = 0;
    int flushes = 0;
    bool full = false; // writes fail

    Tsx::CUnicodeString GetFileName() const override { return u"memory.bin"; }
    std::int32_t Read(void* buffer, std::int32_t count) override {
        ++reads;
        const auto rest = std::max<std::int64_t>(static_cast<std::int64_t>(bytes.size()) - position, 0);
        const auto taken = static_cast<std::int32_t>(std::min<std::int64_t>(count, rest));
        std::copy_n(bytes.begin() + position, taken, static_cast<char*>(buffer));
        position += taken;
        return taken;
    }
    void Write(const void* buffer, std::int32_t count) override {
        ++writes;
        if (full) {
            Tsx::GenerateFileException(112, GetFileName());
        }
        bytes.resize(std::max(bytes.size(), static_cast<std::size_t>(position + count)));
        std::copy_n(static_cast<const char*>(buffer), count, bytes.begin() + position);
        position += count;
    }
    std::int64_t GetPosition() const override { return position; }
    std::int64_t Seek(std::int64_t offset, std::uint32_t from) override {
        position = offset + (from == Tsx::SeekFromStart ? 0 : from == Tsx::SeekFromCurrent ? position : GetLength());
        return position;
    }
    void SetLength(std::int64_t length) override { bytes.resize(static_cast<std::size_t>(length)); }
    std::int64_t GetLength() const override { return static_cast<std::int64_t>(bytes.size()); }
    void Abort() override {}
    void Flush() override { ++flushes; }
    void Close() override {}
};
