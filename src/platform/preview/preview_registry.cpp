#include "platform/preview/preview_registry.h"

#include <deque>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"

namespace quellix {
namespace {

std::string_view RootName(RegistryRoot root) {
  switch (root) {
    case RegistryRoot::kClassesRoot:
      return "HKEY_CLASSES_ROOT";
    case RegistryRoot::kCurrentUser:
      return "HKEY_CURRENT_USER";
    case RegistryRoot::kLocalMachine:
      return "HKEY_LOCAL_MACHINE";
    case RegistryRoot::kUsers:
      return "HKEY_USERS";
  }
  return {};
}

// `place` with a sub-key behind it, without "\" at its end.
std::string Below(const std::string& place, std::string_view path) {
  path = WithoutBackslash(path);
  return path.empty() ? place : place + "\\" + std::string(path);
}

class PreviewKey : public RegistryKey {
 public:
  PreviewKey(std::unique_ptr<RegistryKey> inner, std::string place, RegistryAccess access,
             RegistryChanges& changes, ChangeLog& log)
      : inner_(std::move(inner)),
        place_(std::move(place)),
        id_(UpCase(place_)),
        access_(access),
        changes_(changes),
        log_(log) {}

  std::unique_ptr<RegistryKey> Open(std::string_view path, RegistryAccess access) override;
  std::optional<RegistryValue> QueryValue(std::string_view name) override;
  std::optional<RegistryValueInfo> ValueAt(uint32_t index) override;
  std::optional<std::string> SubKeyAt(uint32_t index) override;
  bool IsLink(std::string_view path) override;
  void SetValue(std::string_view name, const RegistryValue& value) override;
  bool DeleteValue(std::string_view name) override;
  bool DeleteSubKey(std::string_view path) override;
  void Flush() override {}

 private:
  void RequireWrite() const {
    if (access_ == RegistryAccess::kWrite) return;
    throw Error(Error::Kind::kDenied, "The registry key is open for reading only: " + place_);
  }
  bool IsGone(const std::string& sub_key) const {
    return changes_.gone_keys.contains(UpCase(Below(place_, sub_key)));
  }
  const RegistryChanges::SetValue* FindChange(std::string_view name) const;
  void ReadValues();

  std::vector<std::string> MadeBelow() const;

  std::unique_ptr<RegistryKey> inner_;  // null for a key that was made
  std::string place_;                   // root name and path
  std::string id_;
  RegistryAccess access_;
  RegistryChanges& changes_;
  ChangeLog& log_;
  std::optional<uint64_t> values_generation_;  // for which the values were read
  std::vector<RegistryValueInfo> values_;
  bool names_are_read_ = false;
  std::optional<uint64_t> names_generation_;  // for which no name is gone
  std::deque<std::string> names_;
};

// A key at a place, found in what was made or by `open` on the inner machine; null when it is gone
// or was never there.
template <typename Open>
std::unique_ptr<RegistryKey> OpenAt(std::string place, RegistryAccess access,
                                    RegistryChanges& changes, ChangeLog& log, Open open) {
  const std::string id = UpCase(place);
  const bool is_made = changes.made_keys.contains(id);
  if (!is_made && changes.gone_keys.contains(id)) return nullptr;
  std::unique_ptr<RegistryKey> key = is_made ? nullptr : open();
  if (key == nullptr && !is_made) return nullptr;
  return std::make_unique<PreviewKey>(std::move(key), std::move(place), access, changes, log);
}

std::unique_ptr<RegistryKey> PreviewKey::Open(std::string_view path, RegistryAccess access) {
  return OpenAt(Below(place_, path), access, changes_, log_, [&]() -> std::unique_ptr<RegistryKey> {
    return inner_ ? inner_->Open(path, access) : nullptr;
  });
}

const RegistryChanges::SetValue* PreviewKey::FindChange(std::string_view name) const {
  const auto values = changes_.values.find(id_);
  if (values == changes_.values.end()) return nullptr;
  const auto found = values->second.find(UpCase(name));
  return found == values->second.end() ? nullptr : &found->second;
}

std::optional<RegistryValue> PreviewKey::QueryValue(std::string_view name) {
  if (const auto* change = FindChange(name)) return change->value;
  return inner_ ? inner_->QueryValue(name) : std::nullopt;
}

void PreviewKey::ReadValues() {
  values_.clear();
  for (uint32_t i = 0; inner_ != nullptr; ++i) {
    const auto value = inner_->ValueAt(i);
    if (!value) break;
    if (FindChange(value->name) == nullptr) values_.push_back(*value);
  }
  const auto changed = changes_.values.find(id_);
  if (changed != changes_.values.end()) {
    for (const auto& [id, set] : changed->second) {
      if (set.value) values_.push_back({set.name, set.value->type, set.value->bytes.size()});
    }
  }
  values_generation_ = changes_.generation;
}

std::optional<RegistryValueInfo> PreviewKey::ValueAt(uint32_t index) {
  if (values_generation_ != changes_.generation) ReadValues();
  if (index >= values_.size()) return std::nullopt;
  return values_[index];
}

std::vector<std::string> PreviewKey::MadeBelow() const {
  std::vector<std::string> names;
  const std::string start = id_ + "\\";
  for (auto made = changes_.made_keys.lower_bound(start);
       made != changes_.made_keys.end() && made->first.starts_with(start); ++made) {
    if (made->first.find('\\', start.size()) == std::string::npos) names.push_back(made->second);
  }
  return names;
}

// A sub-key that is gone stays gone (one that is made again stands behind the others), so that
// those in front are dropped for good: deleting a large key from its front takes linear time.
std::optional<std::string> PreviewKey::SubKeyAt(uint32_t index) {
  for (uint32_t i = 0; inner_ != nullptr && !names_are_read_; ++i) {
    const auto name = inner_->SubKeyAt(i);
    if (name) names_.push_back(*name);
    names_are_read_ = !name;
  }
  while (!names_.empty() && IsGone(names_.front())) names_.pop_front();
  if (index > 0 && names_generation_ != changes_.generation) {
    std::erase_if(names_, [this](const std::string& name) { return IsGone(name); });
    names_generation_ = changes_.generation;
  }
  if (index < names_.size()) return names_[index];
  const std::vector<std::string> made = MadeBelow();
  index -= static_cast<uint32_t>(names_.size());
  return index < made.size() ? std::optional(made[index]) : std::nullopt;
}

void PreviewKey::SetValue(std::string_view name, const RegistryValue& value) {
  RequireWrite();
  changes_.values[id_][UpCase(name)] = {std::string(name), value};
  ++changes_.generation;
  log_.push_back({ChangeKind::kSetValue, place_, std::string(name), value.bytes.size()});
}

bool PreviewKey::DeleteValue(std::string_view name) {
  RequireWrite();
  if (!QueryValue(name)) return false;
  changes_.values[id_][UpCase(name)] = {std::string(name), std::nullopt};
  ++changes_.generation;
  log_.push_back({ChangeKind::kDeleteValue, place_, std::string(name), 0});
  return true;
}

bool PreviewKey::IsLink(std::string_view path) { return inner_ && inner_->IsLink(path); }

bool PreviewKey::DeleteSubKey(std::string_view path) {
  RequireWrite();
  if (WithoutBackslash(path).empty()) {
    throw Error(Error::Kind::kOther, "No registry key is named to be deleted.");
  }
  const auto child = Open(path, RegistryAccess::kRead);
  if (child == nullptr) return false;
  if (IsLink(path)) throw Error(Error::Kind::kDenied, "The registry key is a link.");
  if (child->SubKeyAt(0)) throw Error(Error::Kind::kNotEmpty, "The registry key has sub-keys.");
  const std::string place = Below(place_, path), id = UpCase(place);
  const bool was_made = changes_.made_keys.erase(id) != 0;
  changes_.gone_keys.insert(id);
  changes_.values.erase(id);
  ++changes_.generation;
  if (!was_made) log_.push_back({ChangeKind::kDeleteKey, place, "", 0});
  return true;
}

}  // namespace

std::unique_ptr<RegistryKey> PreviewRegistry::Create(RegistryRoot root, std::string_view path) {
  if (auto key = Open(root, path, RegistryAccess::kWrite)) return key;
  std::string place(RootName(root)), below;
  for (const std::string& name : Split(WithoutBackslash(path), '\\')) {
    place += "\\" + name;
    below += (below.empty() ? "" : "\\") + name;
    if (Open(root, below, RegistryAccess::kRead)) continue;
    changes_.made_keys[UpCase(place)] = name;
    ++changes_.generation;
  }
  log_.push_back({ChangeKind::kMakeKey, place, "", 0});
  return Open(root, path, RegistryAccess::kWrite);
}

std::unique_ptr<RegistryKey> PreviewRegistry::Open(RegistryRoot root, std::string_view path,
                                                   RegistryAccess access) {
  return OpenAt(Below(std::string(RootName(root)), path), access, changes_, log_,
                [&] { return inner_.Open(root, path, access); });
}

}  // namespace quellix
