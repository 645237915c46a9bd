#pragma once

#include <map>
#include <optional>
#include <string>
#include <unordered_map>

#include "platform/registry.h"

namespace quellix {

// What was deleted and set in a previewed registry. Keys are known by their root and path: a change
// seen through one root is not seen through another that shows the same key. A hive made elsewhere
// may hold names that differ in case alone; of those the first ones go first.
struct RegistryChanges {
  struct SetValue {
    std::string name;
    RegistryValue value;
  };
  struct Values {
    std::map<std::string, SetValue> set;           // by name in upper case
    std::unordered_map<std::string, size_t> gone;  // how many of that name, likewise
  };

  std::unordered_map<std::string, size_t> gone_keys;  // how many at a comparable place
  std::map<std::string, std::string> made_keys;       // names of keys that were not there, likewise
  std::unordered_map<std::string, Values> values;     // of the key at a comparable place
  uint64_t generation = 0;                            // counts the changes
};

// The registry of another machine, every change remembered instead of made. Keys are opened with
// the access that is asked for, so that a denied one is denied here as well.
class PreviewRegistry : public Registry {
 public:
  explicit PreviewRegistry(Registry& inner) : inner_(inner) {}

  std::unique_ptr<RegistryKey> Open(RegistryRoot root, std::string_view path,
                                    RegistryAccess access) override;
  // Opens a key that is there. Throws Error for one that is not: what is previewed makes none.
  std::unique_ptr<RegistryKey> Create(RegistryRoot root, std::string_view path) override;
  KeyHome LastingName(RegistryRoot root, std::string_view key) override {
    return inner_.LastingName(root, key);
  }
  std::vector<std::string> TakeOutdated() override { return inner_.TakeOutdated(); }

 private:
  Registry& inner_;
  RegistryChanges changes_;
};

}  // namespace quellix
