#pragma once

#include <string_view>

#include "platform/registry.h"

// The registry keys without which Windows, or all a user has set, is gone. Nothing that a user's
// list or plug-in names is removed there.
namespace quellix::ProtectedKeys {

// What of a key would go: a value in it, or the key with all below it.
enum class Part { kValue, kTree };

// Whether an opened key keeps that part, by what it is: no spelling and no link leads past it.
// Throws Error when that cannot be told.
bool Keeps(RegistryKey& key, Part part);

// The same by a name that begins with "\REGISTRY\". Of a key that is not there it is but a hint.
bool KeepsName(std::string_view true_name, Part part);
bool KeepsPath(RegistryRoot root, std::string_view path, Part part);
// Whether a key lies in a tree that is kept whole.
bool IsInKeptTree(RegistryRoot root, std::string_view path);

}  // namespace quellix::ProtectedKeys
