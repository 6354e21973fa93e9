// The file system in memory against its model: the bytes choose the operations.
#include "fuzz/target.h"
#include "tests/support/virtualmodel.h"
#include <cstdio>

namespace {

/// The bytes, one for each small choice and three for any other; zero behind the last.
class CChoices {
public:
    explicit CChoices(const std::string& input) : bytes(input) {}
    bool IsAtEnd() const { return next >= bytes.size(); }

    std::uint32_t Choose(std::uint32_t bound) {
        std::uint32_t value = Take();
        for (std::uint32_t range = 256; range < bound; range *= 256) {
            value = value * 256 + Take();
        }
        return value % bound;
    }

private:
    const std::string& bytes;
    std::size_t next = 0;

    std::uint32_t Take() { return IsAtEnd() ? 0 : static_cast<std::uint8_t>(bytes[next++]); }
};

void RequireSame(const std::string& wrong, const std::string& done) {
    if (!wrong.empty()) {
        std::fprintf(stderr, "%s: %s\n", done.c_str(), wrong.c_str());
    }
    Require(wrong.empty());
}

} // namespace

void RunInput(const std::string& bytes) {
    CChoices choices(bytes);
    CVirtualModel model([&](std::uint32_t bound) { return choices.Choose(bound); });
    while (!choices.IsAtEnd()) {
        std::string done;
        const std::string wrong = model.Step(done);
        RequireSame(wrong, done);
    }
    RequireSame(model.CompareContents(), "contents");
}
