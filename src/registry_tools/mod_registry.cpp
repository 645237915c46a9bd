#include "registry_tools/mod_registry.h"

#include <functional>
#include <vector>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "registry_tools/registry_eraser.h"

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

// The helpers' contract is silence.
RegistryEraser Eraser(Access access) {
  return RegistryEraser(access.registry, RegistryEraser::OnError::kSilent);
}

void EraseKey(Access access, RegistryTarget::Kind kind, RegistryRoot root, std::string_view key) {
  Eraser(access).Erase(RegistryTarget{kind, root, std::string(key)});
}

}  // namespace

bool KeyExists(Access access, RegistryRoot root, std::string_view key) {
  if (key.starts_with('\\')) return false;
  try {
    return access.registry.Open(root, WithoutBackslash(key), RegistryAccess::kRead) != nullptr;
  } catch (const Error&) {
    return true;
  }
}

std::string ReadRegString(Access access, RegistryKey& key, std::string_view name) {
  const std::optional<RegistryValue> value = key.QueryValue(name);
  if (!value || Characters(value->type, value->bytes.size()) > kStringBuffer) return {};
  if (IsText(value->type)) return std::string(TrimNull(FromUtf16Bytes(value->bytes)));
  return access.system.FromAnsi(TrimNull(value->bytes));
}

std::string ReadText(RegistryKey& key, std::string_view name) {
  const std::optional<RegistryValue> value = key.QueryValue(name);
  if (!value || (value->type != kRegSz && value->type != kRegExpandSz)) return {};
  return std::string(TrimNull(FromUtf16Bytes(value->bytes)));
}

std::optional<uint32_t> ReadNumber(RegistryKey& key, std::string_view name) {
  const std::optional<RegistryValue> value = key.QueryValue(name);
  if (!value || value->type != kRegDword || value->bytes.size() < 4) return std::nullopt;
  uint32_t number = 0;
  for (size_t i = 4; i-- > 0;) number = number << 8 | static_cast<unsigned char>(value->bytes[i]);
  return number;
}

std::string ReadRegString(Access access, RegistryRoot root, std::string_view key,
                          std::string_view name) {
  std::string result;
  WithKey(access, root, key, RegistryAccess::kRead,
          [&](RegistryKey& opened) { result = ReadRegString(access, opened, name); });
  return result;
}

std::string ListRegValues(RegistryKey& key, Reach reach, const Pause& pause) {
  std::string names;
  const uint32_t most = reach == Reach::kFew ? kMostValues : UINT32_MAX;
  for (uint32_t index = 0; index < most && !pause(); ++index) {
    const std::optional<RegistryValueInfo> value = key.ValueAt(index);
    if (!value) break;
    if (reach == Reach::kAll) {
      if (value->name.find('\0') == std::string::npos) names.append(value->name).push_back('\0');
      continue;
    }
    if (!FitsListBuffer(*value)) break;
    names.append(TrimBlanks(value->name)).push_back('\0');
  }
  if (!names.empty()) names.pop_back();
  return names;
}

std::string ListRegValues(Access access, RegistryRoot root, std::string_view key, Reach reach,
                          const Pause& pause) {
  std::string names;
  WithKey(access, root, key, RegistryAccess::kRead,
          [&](RegistryKey& opened) { names = ListRegValues(opened, reach, pause); });
  return names;
}

std::vector<std::string> ListSubKeys(Access access, RegistryRoot root, std::string_view key,
                                     const Pause& pause) {
  std::vector<std::string> names;
  WithKey(access, root, key, RegistryAccess::kRead,
          [&](RegistryKey& opened) { names = SubKeyNames(opened, pause); });
  return names;
}

void DeleteRegValues(Access access, RegistryRoot root, std::string_view names,
                     std::string_view key) {
  Eraser(access).EraseValues(root, key, names);
}

void RegDeleteSubKey(Access access, RegistryRoot root, std::string_view key) {
  EraseKey(access, RegistryTarget::Kind::kKey, root, key);
}

void RegSetString(Access access, RegistryRoot root, std::string_view key, std::string_view name,
                  std::string_view text) {
  WithKey(access, root, key, RegistryAccess::kWrite, [&](RegistryKey& opened) {
    opened.SetValue(name, {kRegSz, ToUtf16Bytes(text)});
  });
}

void ClearRegKeyValues(Access access, std::string_view key, Reach reach) {
  const std::string names = ListRegValues(access, RegistryRoot::kCurrentUser, key, reach);
  if (!names.empty()) DeleteRegValues(access, RegistryRoot::kCurrentUser, names, key);
}

void DeleteRegKeyTree(Access access, RegistryRoot root, std::string_view key) {
  EraseKey(access, RegistryTarget::Kind::kTree, root, key);
}

}  // namespace quellix::modRegistry
