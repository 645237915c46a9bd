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
constexpr uint32_t kMostValues = 256;

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
    if (rights == RegistryAccess::kWrite) key->Flush();
  } catch (const Error&) {
    return;
  }
}

bool FitsListBuffer(const RegistryValueInfo& value) {
  return ToUtf16(value.name).size() < kListBuffer &&
         Characters(value.type, value.size) <= kListBuffer;
}

void DeleteTreeBelow(RegistryKey& key) {
  while (const std::optional<std::string> name = key.SubKeyAt(0)) {
    const auto child = key.Open(*name, RegistryAccess::kWrite);
    if (child != nullptr) DeleteTreeBelow(*child);
    if (!key.DeleteSubKey(*name)) return;
  }
}

}  // namespace

std::string ReadRegString(Access access, RegistryRoot root, std::string_view key,
                          std::string_view name) {
  std::string result;
  WithKey(access, root, key, RegistryAccess::kRead, [&](RegistryKey& opened) {
    const std::optional<RegistryValue> value = opened.QueryValue(name);
    if (!value || Characters(value->type, value->bytes.size()) > kStringBuffer) return;
    result = IsText(value->type) ? TrimNull(FromUtf16Bytes(value->bytes))
                                 : access.system.FromAnsi(TrimNull(value->bytes));
  });
  return result;
}

std::string ListRegValues(Access access, RegistryRoot root, std::string_view key) {
  std::string names;
  WithKey(access, root, key, RegistryAccess::kRead, [&](RegistryKey& opened) {
    for (uint32_t index = 0; index < kMostValues; ++index) {
      const std::optional<RegistryValueInfo> value = opened.ValueAt(index);
      if (!value || !FitsListBuffer(*value)) break;
      names.append(TrimBlanks(value->name)).push_back('\0');
    }
  });
  if (!names.empty()) names.pop_back();
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
  WithKey(access, root, key, RegistryAccess::kWrite,
          [](RegistryKey& opened) { DeleteTreeBelow(opened); });
  RegDeleteSubKey(access, root, key);
}

void RequireWritable(Access access, RegistryRoot root, std::string_view key) {
  access.registry.Open(root, WithoutBackslash(key), RegistryAccess::kWrite);
}

}  // namespace quellix::modRegistry
