#include "platform/registry.h"

#include "platform/path.h"
#include "platform/text.h"

namespace quellix {
namespace {

// A key whose sub-keys are being visited.
struct Level {
  std::unique_ptr<RegistryKey> own;  // null for the top
  RegistryKey* key;
  size_t path_length;
  std::vector<std::string> names;
  size_t next = 0;
};

class Walk {
 public:
  Walk(RegistryAccess access, const KeyWalkSteps& steps, const Pause& pause)
      : access_(access), steps_(steps), pause_(pause) {}

  bool Run(RegistryKey& top) {
    Enter(nullptr, top);
    while (!pause_()) {
      Level& level = levels_.back();
      if (level.next < level.names.size()) {
        Descend(level, level.names[level.next]);
      } else if (!Leave()) {
        return true;
      }
    }
    return false;
  }

 private:
  void Enter(std::unique_ptr<RegistryKey> own, RegistryKey& key) {
    if (steps_.enter) steps_.enter(key, path_);
    levels_.push_back({std::move(own), &key, path_.size(), SubKeyNames(key, pause_)});
  }

  // False behind the top.
  bool Leave() {
    levels_.pop_back();
    if (levels_.empty()) return false;
    Level& parent = levels_.back();
    path_.resize(parent.path_length);
    if (steps_.leave) steps_.leave(*parent.key, parent.names[parent.next]);
    ++parent.next;
    return true;
  }

  void Descend(Level& level, const std::string& name) {
    path_.append("\\").append(name);
    std::unique_ptr<RegistryKey> child;
    try {
      const bool is_link = level.key->IsLink(name);
      if (is_link && steps_.skip) steps_.skip(path_, nullptr);
      if (!is_link) child = level.key->Open(name, access_);
      if (child != nullptr) {
        RegistryKey& key = *child;
        return Enter(std::move(child), key);
      }
    } catch (const Error& error) {
      if (!steps_.skip) throw;
      steps_.skip(path_, &error);
    }
    path_.resize(level.path_length);
    ++level.next;
  }

  RegistryAccess access_;
  const KeyWalkSteps& steps_;
  const Pause& pause_;
  std::string path_;
  std::vector<Level> levels_;
};

}  // namespace

std::vector<std::string> SubKeyNames(RegistryKey& key, const Pause& pause) {
  std::vector<std::string> names;
  for (uint32_t i = 0; const std::optional<std::string> name = key.SubKeyAt(i); ++i) {
    if (pause()) break;
    if (const std::string_view cut = TrimNull(*name); !cut.empty()) names.emplace_back(cut);
  }
  return names;
}

std::vector<KeyHome> KeyHomes(RegistryRoot root, std::string_view key) {
  const std::string plain(WithoutBackslash(key));
  if (root != RegistryRoot::kClassesRoot) return {{root, plain}};
  return {{RegistryRoot::kCurrentUser, "Software\\Classes\\" + plain},
          {RegistryRoot::kLocalMachine, "Software\\Classes\\" + plain}};
}

bool WalkKeys(RegistryKey& top, RegistryAccess access, const KeyWalkSteps& steps,
              const Pause& pause) {
  return Walk(access, steps, pause).Run(top);
}

bool RegistryKey::ReadValueAt(uint32_t index, std::string& name, RegistryValue& value) {
  const std::optional<RegistryValueInfo> info = ValueAt(index);
  if (!info) return false;
  name = info->name;
  value = QueryValue(name).value_or(RegistryValue{info->type, {}});
  return true;
}

}  // namespace quellix
