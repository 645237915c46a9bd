#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/error.h"
#include "platform/pause.h"

namespace quellix {

// The root keys in the order of their handles; those without a RegistryRoot belong to no machine's
// registry that this program works on.
inline constexpr std::string_view kRootKeys[] = {
    "HKEY_CLASSES_ROOT",     "HKEY_CURRENT_USER",   "HKEY_LOCAL_MACHINE", "HKEY_USERS",
    "HKEY_PERFORMANCE_DATA", "HKEY_CURRENT_CONFIG", "HKEY_DYN_DATA"};

enum class RegistryRoot { kClassesRoot, kCurrentUser, kLocalMachine, kUsers };
inline constexpr RegistryRoot kRegistryRoots[] = {
    RegistryRoot::kClassesRoot, RegistryRoot::kCurrentUser, RegistryRoot::kLocalMachine,
    RegistryRoot::kUsers};
constexpr std::string_view RootName(RegistryRoot root) {
  return kRootKeys[static_cast<size_t>(root)];
}
enum class RegistryAccess { kRead, kWrite };

// Value types as Windows documents them for REG_*.
enum RegistryType : uint32_t {
  kRegNone = 0,
  kRegSz = 1,
  kRegExpandSz = 2,
  kRegBinary = 3,
  kRegDword = 4,
  kRegMultiSz = 7,
};

struct RegistryValue {
  uint32_t type = kRegNone;
  std::string bytes;  // raw, as stored; texts are UTF-16LE, usually with their final NUL
};

struct RegistryValueInfo {
  std::string name;  // UTF-8; "" is the default value
  uint32_t type = kRegNone;
  size_t size = 0;  // bytes of data, as stored
};

// One open key; closes itself. Names are UTF-8 and compare without regard to case. Sub-key paths
// use "\", and one trailing "\" is ignored. "" as a path is the key itself.
class RegistryKey {
 public:
  virtual ~RegistryKey() = default;

  // Null when the sub-key is missing. Throws Error (kDenied) when it may not be opened so; for a
  // volume the text says why its hive cannot be written.
  virtual std::unique_ptr<RegistryKey> Open(std::string_view path, RegistryAccess access) = 0;

  virtual std::optional<RegistryValue> QueryValue(std::string_view name) = 0;

  // Index 0 upward, in the registry's own order; nothing behind the last, and none in a key that
  // was deleted meanwhile.
  virtual std::optional<RegistryValueInfo> ValueAt(uint32_t index) = 0;
  // The same with its data, into buffers that a walk hands in again and again; false behind the
  // last.
  virtual bool ReadValueAt(uint32_t index, std::string& name, RegistryValue& value);
  virtual std::optional<std::string> SubKeyAt(uint32_t index) = 0;
  // Whether a sub-key is a link, which Open follows; false when it is missing or cannot be opened.
  virtual bool IsLink(std::string_view /*path*/) { return false; }

  // What this key is, however it was spelled and whatever links led to it: "\REGISTRY\MACHINE\..."
  // or "\REGISTRY\USER\" and a user's identifier, without "\" at its end, compared without regard
  // to case. Of a key of HKEY_CLASSES_ROOT the one that stands in front. Throws Error.
  virtual std::string TrueName() = 0;

  // When a value of this key was last written, or a sub-key made or deleted: a FILETIME, 0 where
  // that is not known. Which of them it was nobody keeps.
  virtual int64_t LastWrite() { return 0; }

  // Changes. Each throws Error when denied and leaves the key as it was. On a volume they are only
  // in memory until Flush: what nobody flushes is stored at the end, and told nobody when that
  // fails. So whoever says that something is gone from the registry has called Flush before.
  virtual void SetValue(std::string_view name, const RegistryValue& value) = 0;
  // A name with a NUL inside is found by index alone: by name it is missing, and it is not written.
  virtual bool DeleteValue(std::string_view name) = 0;  // false when missing
  // Removes a sub-key that has no sub-keys of its own; false when missing. Throws Error
  // (kNotEmpty) when it has some, and (kDenied) for a link, where that would reach its target.
  virtual bool DeleteSubKey(std::string_view path) = 0;
  // Returns when the changes of this key, and on a volume all of its hive, are stored. Throws
  // Error: then none since the last Flush may be counted as made, whatever the key shows, and each
  // further Flush tries again.
  virtual void Flush() = 0;
};

// All sub-key names, cut at their first NUL, as they can be opened; without empty ones, which would
// be the key itself. A stop leaves out the rest.
std::vector<std::string> SubKeyNames(RegistryKey& key, const Pause& pause = {});

// What a walk through a key and all keys below it does. Links are not entered.
struct KeyWalkSteps {
  // At each key, before those below it; `path` is "" for the top, else begins with "\\".
  std::function<void(RegistryKey& key, const std::string& path)> enter = {};
  // Behind all that is below a sub-key, which is closed by then.
  std::function<void(RegistryKey& parent, const std::string& name)> leave = {};
  // A sub-key that is a link (no error) or cannot be opened. Not set: such an error ends the walk.
  std::function<void(const std::string& path, const Error* error)> skip = {};
};

// Walks so, as deep as the registry is, each level as it was listed when it was entered. There is a
// pause for each key, when it is listed and when its turn comes; false when one ended the walk.
// Throws what the steps throw, and Error.
bool WalkKeys(RegistryKey& top, RegistryAccess access, const KeyWalkSteps& steps,
              const Pause& pause = {});

struct KeyHome {
  RegistryRoot root;
  std::string key;  // without "\" at its end
};

class Registry {
 public:
  virtual ~Registry() = default;

  // What a key is called where it is kept for later, as in an undo file: as here, unless this
  // registry is another user's, whose keys are not found in HKEY_CURRENT_USER then.
  virtual KeyHome LastingName(RegistryRoot root, std::string_view key) {
    return {root, std::string(key)};
  }

  // Clears away what killed runs left beside that which the registry stores, for a run that is to
  // change something. Throws Error.
  virtual void ClearLeftovers() {}

  // Of what was opened so far, the parts that show an older state than the true one, so that what
  // is missing there may be there all the same: a sentence for each, told once.
  virtual std::vector<std::string> TakeOutdated() { return {}; }

  // Null when the key is missing; throws Error as RegistryKey::Open does, also when a hive is
  // damaged.
  virtual std::unique_ptr<RegistryKey> Open(RegistryRoot root, std::string_view path,
                                            RegistryAccess access) = 0;
  // Opens a key for writing, made with those above it where they are missing. Throws Error.
  virtual std::unique_ptr<RegistryKey> Create(RegistryRoot root, std::string_view path) = 0;
};

// Where a key is kept: HKEY_CLASSES_ROOT shows the user's classes over the machine's, and what is
// written to it or deleted from it does not always reach the one that is meant.
std::vector<KeyHome> KeyHomes(RegistryRoot root, std::string_view key);

}  // namespace quellix
