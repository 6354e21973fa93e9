// The reader of registry files, and what is written of what it read.
#include "fuzz/target.h"
#include "platform/linux/regfile.h"

using namespace Platform;

void RunInput(const std::string& bytes) {
    RegistryNode first;
    ReadRegistryText(bytes, first);
    const std::string written = WriteRegistryText(first);
    RegistryNode second;
    ReadRegistryText(written, second);
    Require(WriteRegistryText(second) == written);
}
