#include "platform/volume/hive.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "platform/damaged.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/volume/hive_check.h"
#include "platform/volume/hive_format.h"
#include "platform/volume/volume_error.h"
#include "platform/volume/volume_random_file.h"

namespace quellix {
namespace {

struct Freeer {
  void operator()(void* memory) const { std::free(memory); }
};
template <class T>
using Allocated = std::unique_ptr<T, Freeer>;

// Deeper than Windows allows.
constexpr size_t kMostLevels = 520;

// Data beyond the first limit may be stored in pieces, which hivex reads but does not write; beyond
// the second it writes none at all.
constexpr size_t kMostInOnePiece = hive_format::kMostInPiece, kMostWritten = 999'000;  // bytes

std::string ProcPath(int fd) { return "/proc/self/fd/" + std::to_string(fd); }

// hivex knows the documented types only by an enumeration; others pass through it unharmed.
uint32_t FromHiveType(const hive_type& type) {
  uint32_t number;
  static_assert(sizeof number == sizeof type);
  std::memcpy(&number, &type, sizeof number);
  return number;
}

hive_set_value MakeSetValue(const Hive::Value& value) {
  hive_set_value result = {};
  result.key = const_cast<char*>(value.name.c_str());
  std::memcpy(&result.t, &value.type, sizeof value.type);
  result.len = value.bytes.size();
  result.value = const_cast<char*>(value.bytes.data());
  return result;
}

}  // namespace

std::shared_ptr<Hive> Hive::Open(VolumeFileSystem& files, const std::string& path) {
  HiveState state = OpenHiveState(files, path);
  if (!state.fd) return nullptr;
  const int flags = state.read_only_reason.empty() ? HIVEX_OPEN_WRITE : 0;
  std::unique_ptr<hive_h, Closer> hive(hivex_open(ProcPath(state.fd.get()).c_str(), flags));
  if (!hive && errno == ENOMEM) ThrowErrno(errno, path);
  if (!hive) throw Damaged("The registry hive is damaged: " + path);
  return std::shared_ptr<Hive>(new Hive(files, path, std::move(state), std::move(hive)));
}

Hive::Hive(VolumeFileSystem& files, std::string path, HiveState state,
           std::unique_ptr<hive_h, Closer> hive)
    : files_(files),
      path_(std::move(path)),
      state_(std::move(state)),
      hive_(std::move(hive)),
      root_(hivex_root(hive_.get())),
      minor_version_(ReadNumber(state_.fd.get(), hive_format::kMinorVersion)) {
  if (root_ == 0) ThrowDamaged();
}

Hive::~Hive() {
  try {
    Commit();
  } catch (const Error&) {
  }
}

void Hive::ThrowDamaged() const { throw Damaged("The registry hive is damaged: " + path_); }

// Every key, value and datum is read once: hivex writes what it holds, sound or not.
void Hive::LookThrough() {
  struct Step {
    HiveNode node;
    size_t level;
  };
  std::string bytes;
  std::vector<Step> open = {{root_, 1}};
  while (!open.empty()) {
    const Step step = open.back();
    open.pop_back();
    if (step.level > kMostLevels) ThrowDamaged();
    for (const Value& value : Values(step.node)) ReadBytes(value, bytes);
    for (const HiveNode child : Children(step.node).nodes) open.push_back({child, step.level + 1});
  }
}

void Hive::RequireWritable() {
  if (!is_looked_through_ && state_.read_only_reason.empty()) {
    is_looked_through_ = true;
    files_.RequireWritable(path_);
    try {
      LookThrough();
      if (!IsSoundHive(ReadAll(state_.fd.get(), kLargestHive, path_))) ThrowDamaged();
    } catch (const Error&) {
      state_.read_only_reason = "The registry hive is damaged, so it is only read: " + path_;
    }
  }
  if (!state_.read_only_reason.empty()) throw Error(Error::Kind::kDenied, state_.read_only_reason);
}

Hive::Content& Hive::Cached(HiveNode node) {
  if (removed_.contains(node)) {
    throw Error(Error::Kind::kMissing, "This registry key was removed meanwhile.");
  }
  if (contents_.size() >= most_contents_ && !contents_.contains(node)) {
    std::erase_if(contents_, [](const auto& entry) { return !entry.second.changed; });
    // Looking through those with changes again for each key would take the square of their number.
    most_contents_ = std::max(kMostContents, 2 * contents_.size());
  }
  return contents_[node];
}

Hive::Content& Hive::Children(HiveNode node) {
  Content& content = Cached(node);
  if (content.has_children) return content;
  const Allocated<hive_node_h> nodes(hivex_node_children(hive_.get(), node));
  if (!nodes) ThrowDamaged();
  ++reading_;
  for (const hive_node_h* child = nodes.get(); *child != 0; ++child) {
    NoteParent(*child, node);
    const Allocated<char> name(hivex_node_name(hive_.get(), *child));
    // A name that cannot be told is left alone: nothing could name it either.
    if (!name) continue;
    content.names.emplace_back(name.get());
    content.nodes.push_back(*child);
  }
  content.has_children = true;
  return content;
}

void Hive::NoteParent(HiveNode child, HiveNode parent) {
  const auto [known, is_new] = places_.try_emplace(child);
  Place& place = known->second;
  const bool is_elsewhere = !is_new && (place.parent != parent || place.reading == reading_);
  if (child == root_ || is_elsewhere) ThrowDamaged();
  place = {parent, reading_};
}

// A walk asks for one sub-key after another, spelled as it is.
const HiveNode* Hive::FindChild(HiveNode node, const std::string& name) {
  Content& content = Children(node);
  for (const size_t at : {content.last_found, content.last_found + 1}) {
    if (at >= content.names.size() || content.names[at] != name) continue;
    content.last_found = at;
    return &content.nodes[at];
  }
  if (content.by_upper_name.empty()) {
    for (size_t i = 0; i < content.names.size(); ++i) {
      content.by_upper_name.emplace(UpCase(std::string_view(content.names[i])), i);
    }
  }
  const auto found = content.by_upper_name.find(UpCase(std::string_view(name)));
  if (found == content.by_upper_name.end()) return nullptr;
  content.last_found = found->second;
  return &content.nodes[found->second];
}

void Hive::ForgetChildren(HiveNode node) {
  Content& content = Cached(node);
  content.has_children = false;
  content.names.clear();
  content.nodes.clear();
  content.by_upper_name.clear();
  content.last_found = 0;
  changed_ = true;
  ++generation_;
}

std::optional<HiveNode> Hive::Descend(HiveNode from, std::string_view path) {
  for (const std::string& name : Split(path, '\\')) {
    if (name.empty()) continue;
    const HiveNode* const child = FindChild(from, name);
    if (!child) return std::nullopt;
    from = *child;
  }
  return from;
}

std::string Hive::PathOf(HiveNode node) const {
  std::string path;
  for (size_t level = 0; node != root_; ++level) {
    const Allocated<char> name(hivex_node_name(hive_.get(), node));
    node = hivex_node_parent(hive_.get(), node);
    if (!name || node == 0 || level > kMostLevels) ThrowDamaged();
    path.insert(0, name.get()).insert(0, "\\");
  }
  return path;
}

const std::vector<std::string>& Hive::SubKeys(HiveNode node) { return Children(node).names; }

Hive::Value Hive::LoadValue(hive_value_h handle) const {
  Value value;
  const Allocated<char> name(hivex_value_key(hive_.get(), handle));
  hive_type type;
  if (hivex_value_type(hive_.get(), handle, &type, &value.size) != 0) ThrowDamaged();
  value.type = FromHiveType(type);
  value.stored = handle;
  if (name) value.name.assign(name.get(), hivex_value_key_len(hive_.get(), handle));
  return value;
}

Hive::Content& Hive::LoadedValues(HiveNode node) {
  Content& content = Cached(node);
  if (content.has_values) return content;
  const Allocated<hive_value_h> handles(hivex_node_values(hive_.get(), node));
  if (!handles) ThrowDamaged();
  std::vector<Value> values;
  for (const hive_value_h* handle = handles.get(); *handle != 0; ++handle) {
    values.push_back(LoadValue(*handle));
  }
  content.values = std::move(values);
  content.name_hashes.clear();
  content.has_values = true;
  return content;
}

const std::vector<Hive::Value>& Hive::Values(HiveNode node) { return LoadedValues(node).values; }

const Hive::Value* Hive::FindValue(HiveNode node, std::string_view name) {
  Content& content = LoadedValues(node);
  const std::hash<std::string> hash;
  if (content.name_hashes.size() != content.values.size()) {
    content.name_hashes.clear();
    for (const Value& value : content.values) {
      content.name_hashes.push_back(hash(UpCase(std::string_view(value.name))));
    }
  }
  const size_t wanted = hash(UpCase(name));
  const Value* found = nullptr;  // of names that differ in case alone the one that is spelled so
  for (size_t i = 0; i < content.values.size(); ++i) {
    const Value& value = content.values[i];
    if (content.name_hashes[i] != wanted || !EqualsNoCase(value.name, name)) continue;
    if (value.name == name) return &value;
    if (found == nullptr) found = &value;
  }
  return found;
}

std::string Hive::Bytes(const Value& value) const {
  std::string bytes;
  ReadBytes(value, bytes);
  return bytes;
}

void Hive::ReadBytes(const Value& value, std::string& bytes) const {
  bytes = value.bytes;
  if (value.stored == 0 || value.size == 0) return;
  hive_type type;
  size_t size = 0;
  const Allocated<char> stored(hivex_value_value(hive_.get(), value.stored, &type, &size));
  if (!stored) ThrowDamaged();
  bytes.assign(stored.get(), size);
}

void Hive::RequireStorable(const Content& content, const Value* but) const {
  const size_t limit =
      minor_version_ < hive_format::kFirstVersionWithPieces ? kMostWritten : kMostInOnePiece;
  for (const Value& value : content.values) {
    if (&value == but || value.size <= limit) continue;
    throw Error(
        Error::Kind::kOther,
        "A value of this key is too large to be written, so the key is only read: " + path_);
  }
}

// hivex sets all values of a key at once, so the unchanged ones are held ready too, all but the one
// that goes. A name it cannot give back whole would be lost by that.
Hive::Content& Hive::ChangeableValues(HiveNode node, const Value* but) {
  RequireWritable();
  Content& content = LoadedValues(node);
  RequireStorable(content, but);
  if (content.changed) return content;
  std::vector<Value> values = content.values;
  for (Value& value : values) {
    const Allocated<char> name(hivex_value_key(hive_.get(), value.stored));
    if (!name || value.name.find('\0') != std::string::npos) {
      throw Error(Error::Kind::kOther,
                  "A value name of this key cannot be kept, so the key is only read: " + path_);
    }
    value.bytes = Bytes(value);
    value.stored = 0;
  }
  content.values = std::move(values);
  content.changed = changed_ = true;
  return content;
}

void Hive::SetValue(HiveNode node, std::string_view name, const RegistryValue& value) {
  RequireWritable();
  Content probe;
  probe.values.push_back({std::string(name), value.type, value.bytes.size(), 0, {}});
  RequireStorable(probe, nullptr);
  if (name.find('\0') != name.npos) {
    throw Error(Error::Kind::kOther, "A value name with a NUL inside cannot be written: " + path_);
  }
  const Value* found = FindValue(node, name);
  Content& content = ChangeableValues(node, found);
  found = FindValue(node, name);
  const size_t at =
      found ? static_cast<size_t>(found - content.values.data()) : content.values.size();
  if (!found) {
    content.values.push_back({std::string(name), 0, 0, 0, {}});
    content.name_hashes.clear();
  }
  Value& target = content.values[at];
  target.type = value.type;
  target.bytes = value.bytes;
  target.size = value.bytes.size();
  ++generation_;
}

bool Hive::DeleteValue(HiveNode node, std::string_view name) {
  RequireWritable();
  const Value* const found = name.find('\0') == name.npos ? FindValue(node, name) : nullptr;
  if (!found) return false;
  const auto at = found - LoadedValues(node).values.data();
  Content& content = ChangeableValues(node, found);
  content.values.erase(content.values.begin() + at);
  content.name_hashes.erase(content.name_hashes.begin() + at);
  ++generation_;
  return true;
}

HiveNode Hive::CreateSubKey(HiveNode parent, std::string_view name) {
  RequireWritable();
  if (const auto found = Descend(parent, name)) return *found;
  const HiveNode node = hivex_node_add_child(hive_.get(), parent, std::string(name).c_str());
  if (node == 0) ThrowErrno(errno, path_);
  ForgetChildren(parent);
  return node;
}

void Hive::DeleteKey(HiveNode node) {
  RequireWritable();
  if (!Children(node).names.empty() || hivex_node_nr_children(hive_.get(), node) != 0) {
    throw Error(Error::Kind::kNotEmpty, "The registry key has sub-keys.");
  }
  if (node == root_) {
    throw Error(Error::Kind::kDenied, "The top key of a registry hive is not deleted: " + path_);
  }
  const HiveNode parent = hivex_node_parent(hive_.get(), node);
  if (parent == 0) ThrowDamaged();
  if (hivex_node_delete_child(hive_.get(), node) != 0) ThrowErrno(errno, path_);
  contents_.erase(node);
  places_.erase(node);
  removed_.insert(node);
  ForgetChildren(parent);
}

void Hive::StoreValues(HiveNode node, const Content& content) {
  std::vector<hive_set_value> values;
  for (const Value& value : content.values) values.push_back(MakeSetValue(value));
  if (hivex_node_set_values(hive_.get(), node, values.size(), values.data(), 0) != 0) {
    ThrowErrno(errno, path_);
  }
}

void Hive::Commit() {
  if (!changed_) return;
  for (auto& [node, content] : contents_) {
    if (!content.changed) continue;
    StoreValues(node, content);
    content.changed = content.has_values = false;
  }
  files_.Replace(path_, [this](int fd) {
    if (hivex_commit(hive_.get(), ProcPath(fd).c_str(), 0) != 0) ThrowErrno(errno, path_);
  });
  changed_ = false;
}

}  // namespace quellix
