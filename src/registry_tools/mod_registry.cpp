#include "registry_tools/mod_registry.h"

#include <functional>
#include <vector>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"

namespace quellix::modRegistry {
namespace {

constexpr size_t kStringBuffer = 260;  // characters, the final NUL included
constexpr size_t kListBuffer = 255;    // characters of a name or a text, bytes of other data

bool IsText(uint32_t type) { return type == kRegSz || type == kRegExpandSz || type == kRegMultiSz; }

size_t Characters(uint32_t type, size_t bytes) { return IsText(type) ? bytes / 2 : bytes; }

// Runs `use` on the opened key; missing and denied alike do nothing.
void WithKey(Access access, RegistryRoot root, std::string_view path, RegistryAccess rights,
             const std::function<void(RegistryKey&)>& use) {
  if (path.starts_with('\\')) return;  // names no key
  try {
    const auto key = access.registry.Open(root, WithoutBackslash(path), rights);
    if (key == nullptr) return;
    use(*key);
    if (rights == RegistryAccess::kWrite && access.store_at_once) key->Flush();
  } catch (const Error&) {
    return;
  }
}

bool FitsListBuffer(const RegistryValueInfo& value) {
  return ToUtf16(value.name).size() < kListBuffer &&
         Characters(value.type, value.size) <= kListBuffer;
}

std::vector<std::string> SubKeysOf(RegistryKey& key) {
  std::vector<std::string> names;
  for (uint32_t i = 0; const std::optional<std::string> name = key.SubKeyAt(i); ++i) {
    // An empty one would name the key itself.
    if (const std::string_view cut = TrimNull(*name); !cut.empty()) names.emplace_back(cut);
  }
  return names;
}

void DeleteTreeBelow(RegistryKey& key) {
  for (const std::string& name : SubKeysOf(key)) {
    if (key.IsLink(name)) continue;  // what it leads to is no part of the tree
    try {
      const auto child = key.Open(name, RegistryAccess::kWrite);
      if (child != nullptr) DeleteTreeBelow(*child);
      key.DeleteSubKey(name);
    } catch (const Error&) {
      continue;  // one denied key does not keep its neighbours
    }
  }
}

}  // namespace

std::string ReadRegString(Access access, RegistryKey& key, std::string_view name) {
  const std::optional<RegistryValue> value = key.QueryValue(name);
  if (!value || Characters(value->type, value->bytes.size()) > kStringBuffer) return {};
  if (IsText(value->type)) return std::string(TrimNull(FromUtf16Bytes(value->bytes)));
  return access.system.FromAnsi(TrimNull(value->bytes));
}

std::string ReadRegString(Access access, RegistryRoot root, std::string_view key,
                          std::string_view name) {
  std::string result;
  WithKey(access, root, key, RegistryAccess::kRead,
          [&](RegistryKey& opened) { result = ReadRegString(access, opened, name); });
  return result;
}

std::string ListRegValues(RegistryKey& key, uint32_t most) {
  std::string names;
  for (uint32_t index = 0; index < most; ++index) {
    const std::optional<RegistryValueInfo> value = key.ValueAt(index);
    if (!value || !FitsListBuffer(*value)) break;
    names.append(TrimBlanks(value->name)).push_back('\0');
  }
  if (!names.empty()) names.pop_back();
  return names;
}

std::string ListRegValues(Access access, RegistryRoot root, std::string_view key, uint32_t most) {
  std::string names;
  WithKey(access, root, key, RegistryAccess::kRead,
          [&](RegistryKey& opened) { names = ListRegValues(opened, most); });
  return names;
}

std::vector<std::string> ListSubKeys(Access access, RegistryRoot root, std::string_view key) {
  std::vector<std::string> names;
  WithKey(access, root, key, RegistryAccess::kRead,
          [&](RegistryKey& opened) { names = SubKeysOf(opened); });
  return names;
}

void DeleteRegValues(Access access, RegistryRoot root, std::string_view names,
                     std::string_view key) {
  WithKey(access, root, key, RegistryAccess::kWrite, [&](RegistryKey& opened) {
    for (const std::string& name : Split(names, '\0')) {
      try {
        opened.DeleteValue(name);
      } catch (const Error&) {
        continue;  // one denied value does not keep the others
      }
    }
  });
}

void RegDeleteSubKey(Access access, RegistryRoot root, std::string_view key) {
  WithKey(access, root, "", RegistryAccess::kWrite,
          [key](RegistryKey& opened) { opened.DeleteSubKey(WithoutBackslash(key)); });
}

void RegSetString(Access access, RegistryRoot root, std::string_view key, std::string_view name,
                  std::string_view text) {
  WithKey(access, root, key, RegistryAccess::kWrite, [&](RegistryKey& opened) {
    opened.SetValue(name, {kRegSz, ToUtf16Bytes(text)});
  });
}

void ClearRegKeyValues(Access access, std::string_view key) {
  const std::string names = ListRegValues(access, RegistryRoot::kCurrentUser, key);
  if (!names.empty()) DeleteRegValues(access, RegistryRoot::kCurrentUser, names, key);
}

void DeleteRegKeyTree(Access access, RegistryRoot root, std::string_view key) {
  bool is_link = false;
  WithKey(access, root, "", RegistryAccess::kRead,
          [&](RegistryKey& opened) { is_link = opened.IsLink(key); });
  if (is_link) return;
  WithKey(access, root, key, RegistryAccess::kWrite,
          [](RegistryKey& opened) { DeleteTreeBelow(opened); });
  RegDeleteSubKey(access, root, key);
}

void StoreChanges(Access access, RegistryRoot root, std::string_view key) {
  const auto opened = access.registry.Open(root, WithoutBackslash(key), RegistryAccess::kWrite);
  if (opened != nullptr) opened->Flush();
}

void RequireWritable(Access access, RegistryRoot root, std::string_view key) {
  access.registry.Open(root, WithoutBackslash(key), RegistryAccess::kWrite);
}

}  // namespace quellix::modRegistry
