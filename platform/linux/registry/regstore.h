// The registry on the disk, and the only ways to read and to change it. A file is always read whole and replaced whole,
// so that a reader sees what was there before a change or after it.
#pragma once

#include "platform/linux/registry/regfolders.h"
#include "platform/linux/registry/regtree.h"
#include <functional>
#include <memory>
#include <string>

namespace Platform {

/// The tree of a root as its files have it now, each over those of the folders behind; the root stands below the top. A
/// file that is not there is an empty one. Gives a Windows code. Any thread.
std::uint32_t LoadRegistry(RegistryRoot root, std::shared_ptr<const RegistryNode>& top);

/// Gets the tree of all files and the bytes of the first folder's, which it changes.
using RegistryChange = std::function<std::uint32_t(const RegistryNode& top, std::string& bytes)>;

/// Has `change` work on the file of the first folder, and writes it back, with all other processes and threads held
/// off. Nothing is written when `change` gives another code than ErrorSuccess. After a failure the file is as it was.
std::uint32_t ChangeRegistry(RegistryRoot root, const RegistryChange& change);

} // namespace Platform
