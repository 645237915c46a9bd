#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry.h"
#include "platform/system.h"

namespace quellix::modRegistry {

// The registry helpers of cleaners and tools. None of them reports an error: what cannot be opened
// reads as empty and is left as it is, as what the RegistryEraser tells is not told. Sub-key paths
// may end in "\".
struct Access {
  Registry& registry;
  System& system;  // knows the ANSI code page
};

// How much of a key's values a list names.
enum class Reach {
  kFew,        // 256 at most, and none behind one whose name or data is longer than 254 characters
  kUntilLong,  // all up to such a one
  kAll,        // every one that can be named, with the blanks around its name
};

// Whether a key is there, also one that cannot be opened.
bool KeyExists(Access access, RegistryRoot root, std::string_view key);

// A value as text, whatever its type: texts up to their first NUL, other data as its bytes taken
// for ANSI characters, cut at the first zero byte. "" when it is missing or longer than 260
// characters with its NUL.
std::string ReadRegString(Access access, RegistryRoot root, std::string_view key,
                          std::string_view name);

// The same of an open key.
std::string ReadRegString(Access access, RegistryKey& key, std::string_view name);

// A text value, of any length and with variables as they are; "" where it is missing or of another
// type. A number; nothing likewise. Both throw Error.
std::string ReadText(RegistryKey& key, std::string_view name);
std::optional<uint32_t> ReadNumber(RegistryKey& key, std::string_view name);

// The value names of a key, each but the last followed by a NUL; "" for none. Blanks around a name
// are lost, except where all are asked for. A stop leaves out the rest.
std::string ListRegValues(Access access, RegistryRoot root, std::string_view key,
                          Reach reach = Reach::kFew, const Pause& pause = {});
// The same of an open key.
std::string ListRegValues(RegistryKey& key, Reach reach, const Pause& pause = {});

// The sub-key names of a key, cut at their first NUL, in the registry's order. A stop leaves out
// the rest.
std::vector<std::string> ListSubKeys(Access access, RegistryRoot root, std::string_view key,
                                     const Pause& pause = {});

// Deletes the one value named, or every value of a list as ListRegValues gives it.
void DeleteRegValues(Access access, RegistryRoot root, std::string_view names,
                     std::string_view key);

// Removes one key that has no sub-keys.
void RegDeleteSubKey(Access access, RegistryRoot root, std::string_view key);

// Writes a REG_SZ value of an existing key, stored without its final NUL.
void RegSetString(Access access, RegistryRoot root, std::string_view key, std::string_view name,
                  std::string_view text);

// Deletes the values of a key of the user; the key stays.
void ClearRegKeyValues(Access access, std::string_view key, Reach reach = Reach::kFew);

// Removes a key with all its sub-keys, depth first; what is denied stays, and so do links, with the
// keys above them.
void DeleteRegKeyTree(Access access, RegistryRoot root, std::string_view key);

}  // namespace quellix::modRegistry
