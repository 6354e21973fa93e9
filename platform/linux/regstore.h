// The registry on the disk, and the only ways to read and to change it. A file is always read whole and replaced whole,
// so that a reader sees what was there before a change or after it.
#pragma once

#include "platform/linux/regfolders.h"
#include "platform/linux/regtree.h"
#include <functional>
#include <memory>

namespace Platform {

/// The tree of a root as its file has it now; the root stands below the top. A file that is not there is an empty one.
/// Gives a Windows code. Any thread.
std::uint32_t LoadRegistry(RegistryRoot root, std::shared_ptr<const RegistryNode>& top);

/// Reads the file, has `change` work on the tree, and writes it back, with all other processes and threads held off.
/// Nothing is written when `change` gives another code than ErrorSuccess. After a failure the file is as it was. What
/// was read elsewhere is written to the first folder, where it counts from then on; comments are not kept.
std::uint32_t ChangeRegistry(RegistryRoot root, const std::function<std::uint32_t(RegistryNode& top)>& change);

} // namespace Platform
