// The reader of version blocks: every question stays within the block.
#include "fuzz/target.h"
#include "platform/inc/resources.h"
#include <vector>

using namespace Platform;

void RunInput(const std::string& bytes) {
    // In a block of exactly its size, so that a step beyond it is seen.
    const std::vector<char> block(bytes.begin(), bytes.end());
    const char* end = block.data() + block.size();
    for (const char16_t* question : {u"\\", u"\\VarFileInfo\\Translation", u"\\StringFileInfo\\040904b0\\InternalName",
                                     u"\\StringFileInfo\\040904B0\\ProductVersion", u"\\StringFileInfo", u""}) {
        const void* value = nullptr;
        std::uint32_t length = 0;
        if (VerQueryValue(block.data(), static_cast<std::uint32_t>(block.size()), question, value, length) && value) {
            const auto* start = static_cast<const char*>(value);
            Require(start >= block.data() && start <= end && length <= static_cast<std::size_t>(end - start));
        }
    }
}
