#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quellix {

enum class RegistryRoot { kClassesRoot, kCurrentUser, kLocalMachine, kUsers };
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

  // Changes. Each throws Error when denied and leaves the key as it was. On a volume they are
  // durable after Flush, or after the registry object is destroyed.
  virtual void SetValue(std::string_view name, const RegistryValue& value) = 0;
  // A name with a NUL inside is found by index alone: by name it is missing, and it is not written.
  virtual bool DeleteValue(std::string_view name) = 0;  // false when missing
  // Removes a sub-key that has no sub-keys of its own; false when missing. Throws Error
  // (kNotEmpty) when it has some, and (kDenied) for a link, where that would reach its target.
  virtual bool DeleteSubKey(std::string_view path) = 0;
  // Returns when the changes of this key are stored. Throws Error.
  virtual void Flush() = 0;
};

class Registry {
 public:
  virtual ~Registry() = default;

  // Null when the key is missing; throws Error as RegistryKey::Open does, also when a hive is
  // damaged.
  virtual std::unique_ptr<RegistryKey> Open(RegistryRoot root, std::string_view path,
                                            RegistryAccess access) = 0;
  // Opens a key for writing, made with those above it where they are missing. Throws Error.
  virtual std::unique_ptr<RegistryKey> Create(RegistryRoot root, std::string_view path) = 0;
};

}  // namespace quellix
