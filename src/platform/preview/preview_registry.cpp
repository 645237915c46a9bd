#include "platform/preview/preview_registry.h"

#include <algorithm>
#include <deque>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"

namespace quellix {
namespace {

// Behind the id of a key whose name differs in case alone from one that is gone.
constexpr char kTwin = '\x01';

// `place` with a sub-key behind it, without "\" at its end.
std::string Below(const std::string& place, std::string_view path) {
  path = WithoutBackslash(path);
  return path.empty() ? place : place + "\\" + std::string(path);
}

class PreviewKey : public RegistryKey {
 public:
  PreviewKey(std::unique_ptr<RegistryKey> inner, std::string place, std::string id,
             RegistryAccess access, RegistryChanges& changes)
      : inner_(std::move(inner)),
        place_(std::move(place)),
        id_(std::move(id)),
        access_(access),
        changes_(changes) {}

  std::unique_ptr<RegistryKey> Open(std::string_view path, RegistryAccess access) override;
  std::optional<RegistryValue> QueryValue(std::string_view name) override;
  std::optional<RegistryValueInfo> ValueAt(uint32_t index) override;
  std::optional<std::string> SubKeyAt(uint32_t index) override;
  bool IsLink(std::string_view path) override;
  // One that was made leads nowhere else.
  std::string TrueName() override { return inner_ ? inner_->TrueName() : place_; }
  int64_t LastWrite() override { return inner_ ? inner_->LastWrite() : 0; }
  void SetValue(std::string_view name, const RegistryValue& value) override;
  bool DeleteValue(std::string_view name) override;
  bool DeleteSubKey(std::string_view path) override;
  void Flush() override {}

 private:
  void RequireWrite() const {
    if (access_ == RegistryAccess::kWrite) return;
    throw Error(Error::Kind::kDenied, Say("The registry key is open for reading only: %1", place_));
  }
  std::string IdBelow(std::string_view path) const { return Below(id_, UpCase(path)); }
  bool Drop(const std::string& sub_key);
  std::unique_ptr<RegistryKey> OpenTwin(std::string_view name, size_t gone, RegistryAccess access);
  const RegistryChanges::Values* Changes() const;
  void ReadValues();

  std::vector<std::string> MadeBelow() const;

  std::unique_ptr<RegistryKey> inner_;  // null for a key that was made
  std::string place_;                   // root name and path
  std::string id_;                      // comparable
  RegistryAccess access_;
  RegistryChanges& changes_;
  std::optional<uint64_t> values_generation_;  // for which the values were read
  std::vector<RegistryValueInfo> values_;
  bool names_are_read_ = false;
  std::optional<uint64_t> names_generation_;  // for which no name is gone
  std::deque<std::string> names_;
  std::unordered_map<std::string, size_t> dropped_;  // of names_, by name in upper case
};

size_t CountIn(const std::unordered_map<std::string, size_t>& counts, const std::string& id) {
  const auto found = counts.find(id);
  return found == counts.end() ? 0 : found->second;
}

std::unique_ptr<RegistryKey> PreviewKey::Open(std::string_view path, RegistryAccess access) {
  const std::string id = IdBelow(path);
  std::unique_ptr<RegistryKey> inner;
  if (!changes_.made_keys.contains(id)) {
    if (const size_t gone = CountIn(changes_.gone_keys, id)) return OpenTwin(path, gone, access);
    if (inner_) inner = inner_->Open(path, access);
    if (!inner) return nullptr;
  }
  return std::make_unique<PreviewKey>(std::move(inner), Below(place_, path), id, access, changes_);
}

// Behind those that are gone the next one whose name differs in case alone; null when there is
// none.
std::unique_ptr<RegistryKey> PreviewKey::OpenTwin(std::string_view name, size_t gone,
                                                  RegistryAccess access) {
  name = WithoutBackslash(name);
  if (const auto parent = FolderPart(name); !parent.empty()) {
    const auto opened = Open(parent, RegistryAccess::kRead);
    return opened ? opened->Open(NamePart(name), access) : nullptr;
  }
  size_t at = 0;
  for (uint32_t i = 0; inner_ != nullptr; ++i) {
    const auto sub_key = inner_->SubKeyAt(i);
    if (!sub_key) break;
    if (!EqualsNoCase(*sub_key, name) || at++ != gone) continue;
    auto inner = inner_->Open(*sub_key, access);
    if (!inner) return nullptr;
    return std::make_unique<PreviewKey>(std::move(inner), Below(place_, *sub_key),
                                        IdBelow(name) + std::string(gone, kTwin), access, changes_);
  }
  return nullptr;
}

const RegistryChanges::Values* PreviewKey::Changes() const {
  const auto values = changes_.values.find(id_);
  return values == changes_.values.end() ? nullptr : &values->second;
}

std::optional<RegistryValue> PreviewKey::QueryValue(std::string_view name) {
  if (const RegistryChanges::Values* const changes = Changes()) {
    const std::string upper = UpCase(name);
    if (const auto set = changes->set.find(upper); set != changes->set.end()) {
      return set->second.value;
    }
    if (changes->gone.contains(upper)) {
      if (values_generation_ != changes_.generation) ReadValues();
      const auto left = std::ranges::find_if(
          values_, [name](const auto& value) { return EqualsNoCase(value.name, name); });
      return left == values_.end() ? std::nullopt : inner_->QueryValue(left->name);
    }
  }
  return inner_ ? inner_->QueryValue(name) : std::nullopt;
}

void PreviewKey::ReadValues() {
  static const RegistryChanges::Values kNone;
  const RegistryChanges::Values& changes = Changes() ? *Changes() : kNone;
  std::unordered_map<std::string, size_t> gone = changes.gone;
  values_.clear();
  for (uint32_t i = 0; inner_ != nullptr; ++i) {
    const auto value = inner_->ValueAt(i);
    if (!value) break;
    const std::string upper = UpCase(std::string_view(value->name));
    const auto left = gone.find(upper);
    if (left != gone.end() && left->second > 0) {
      --left->second;
    } else if (!changes.set.contains(upper)) {
      values_.push_back(*value);
    }
  }
  for (const auto& [id, set] : changes.set) {
    values_.push_back({set.name, set.value.type, set.value.bytes.size()});
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

// Whether a listed name is that of a sub-key that is gone.
bool PreviewKey::Drop(const std::string& sub_key) {
  const size_t gone = CountIn(changes_.gone_keys, IdBelow(sub_key));
  if (gone == 0) return false;
  size_t& dropped = dropped_[UpCase(std::string_view(sub_key))];
  if (dropped >= gone) return false;
  ++dropped;
  return true;
}

// A sub-key that is gone stays gone (one that is made again stands behind the others), so that
// those in front are dropped for good: deleting a large key from its front takes linear time.
std::optional<std::string> PreviewKey::SubKeyAt(uint32_t index) {
  for (uint32_t i = 0; inner_ != nullptr && !names_are_read_; ++i) {
    const auto name = inner_->SubKeyAt(i);
    if (name) names_.push_back(*name);
    names_are_read_ = !name;
  }
  while (!names_.empty() && Drop(names_.front())) names_.pop_front();
  if (index > 0 && names_generation_ != changes_.generation) {
    std::erase_if(names_, [this](const std::string& name) { return Drop(name); });
    names_generation_ = changes_.generation;
  }
  if (index < names_.size()) return names_[index];
  const std::vector<std::string> made = MadeBelow();
  index -= static_cast<uint32_t>(names_.size());
  return index < made.size() ? std::optional(made[index]) : std::nullopt;
}

void PreviewKey::SetValue(std::string_view name, const RegistryValue& value) {
  RequireWrite();
  changes_.values[id_].set[UpCase(name)] = {std::string(name), value};
  ++changes_.generation;
}

bool PreviewKey::DeleteValue(std::string_view name) {
  RequireWrite();
  if (!QueryValue(name)) return false;
  RegistryChanges::Values& changes = changes_.values[id_];
  const std::string upper = UpCase(name);
  const bool was_set = changes.set.erase(upper) != 0;
  if (!was_set || (inner_ && inner_->QueryValue(name))) ++changes.gone[upper];
  ++changes_.generation;
  return true;
}

bool PreviewKey::IsLink(std::string_view path) { return inner_ && inner_->IsLink(path); }

bool PreviewKey::DeleteSubKey(std::string_view path) {
  RequireWrite();
  if (WithoutBackslash(path).empty()) {
    throw Error(Error::Kind::kOther, Say("No registry key is named to be deleted."));
  }
  const auto child = Open(path, RegistryAccess::kRead);
  if (child == nullptr) return false;
  if (IsLink(path)) throw Error(Error::Kind::kDenied, Say("The registry key is a link."));
  if (child->SubKeyAt(0))
    throw Error(Error::Kind::kNotEmpty, Say("The registry key has sub-keys."));
  const std::string id = IdBelow(path);
  if (changes_.made_keys.erase(id) == 0) ++changes_.gone_keys[id];
  changes_.values.erase(id);
  ++changes_.generation;
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
  return Open(root, path, RegistryAccess::kWrite);
}

std::unique_ptr<RegistryKey> PreviewRegistry::Open(RegistryRoot root, std::string_view path,
                                                   RegistryAccess access) {
  const std::string place = Below(std::string(RootName(root)), path), id = UpCase(place);
  const bool is_made = changes_.made_keys.contains(id);
  if (!is_made && changes_.gone_keys.contains(id)) {
    path = WithoutBackslash(path);
    const auto parent = Open(root, WithoutBackslash(FolderPart(path)), RegistryAccess::kRead);
    return parent ? parent->Open(NamePart(path), access) : nullptr;
  }
  std::unique_ptr<RegistryKey> key = is_made ? nullptr : inner_.Open(root, path, access);
  if (key == nullptr && !is_made) return nullptr;
  return std::make_unique<PreviewKey>(std::move(key), place, id, access, changes_);
}

}  // namespace quellix
