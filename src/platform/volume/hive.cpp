#include "platform/volume/hive.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "platform/path.h"
#include "platform/text.h"
#include "platform/volume/volume_error.h"

namespace quellix {
namespace {

struct Freeer {
  void operator()(void* memory) const { std::free(memory); }
};
template <class T>
using Allocated = std::unique_ptr<T, Freeer>;

// Contents kept at a time; those with changes are kept beyond it.
constexpr size_t kMostContents = 256;

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
  const UniqueFd fd = files.OpenForRead(path);
  if (!fd) return nullptr;
  std::string reason = ReadOnlyReason(files, path, fd.get());
  const int flags = reason.empty() ? HIVEX_OPEN_WRITE : 0;
  std::unique_ptr<hive_h, Closer> hive(hivex_open(ProcPath(fd.get()).c_str(), flags));
  if (!hive && errno == ENOMEM) ThrowErrno(errno, path);
  if (!hive) throw Error(Error::Kind::kOther, "The registry hive is damaged: " + path);
  return std::shared_ptr<Hive>(new Hive(files, path, std::move(reason), std::move(hive)));
}

Hive::Hive(VolumeFileSystem& files, std::string path, std::string read_only_reason,
           std::unique_ptr<hive_h, Closer> hive)
    : files_(files),
      path_(std::move(path)),
      read_only_reason_(std::move(read_only_reason)),
      hive_(std::move(hive)),
      root_(hivex_root(hive_.get())) {
  if (root_ == 0) ThrowDamaged();
}

Hive::~Hive() {
  try {
    Commit();
  } catch (const Error&) {
  }
}

void Hive::ThrowDamaged() const {
  throw Error(Error::Kind::kOther, "The registry hive is damaged: " + path_);
}

void Hive::RequireWritable() const {
  if (!read_only_reason_.empty()) throw Error(Error::Kind::kDenied, read_only_reason_);
}

Hive::Content& Hive::Cached(HiveNode node) {
  if (removed_.contains(node)) {
    throw Error(Error::Kind::kMissing, "This registry key was removed meanwhile.");
  }
  if (contents_.size() >= kMostContents && !contents_.contains(node)) {
    std::erase_if(contents_, [](const auto& entry) { return !entry.second.changed; });
  }
  return contents_[node];
}

Hive::Content& Hive::Children(HiveNode node) {
  Content& content = Cached(node);
  if (content.has_children) return content;
  const Allocated<hive_node_h> nodes(hivex_node_children(hive_.get(), node));
  if (!nodes) ThrowDamaged();
  for (const hive_node_h* child = nodes.get(); *child != 0; ++child) {
    const Allocated<char> name(hivex_node_name(hive_.get(), *child));
    // A name that cannot be told is left alone: nothing could name it either.
    if (!name) continue;
    content.by_upper_name.emplace(UpCase(std::string_view(name.get())), content.names.size());
    content.names.emplace_back(name.get());
    content.nodes.push_back(*child);
  }
  content.has_children = true;
  return content;
}

void Hive::ForgetChildren(HiveNode node) {
  Content& content = Cached(node);
  content.has_children = false;
  content.names.clear();
  content.nodes.clear();
  content.by_upper_name.clear();
  changed_ = true;
  ++generation_;
}

std::optional<HiveNode> Hive::Descend(HiveNode from, std::string_view path) {
  for (const std::string& name : Split(path, '\\')) {
    if (name.empty()) continue;
    const Content& content = Children(from);
    const auto found = content.by_upper_name.find(UpCase(std::string_view(name)));
    if (found == content.by_upper_name.end()) return std::nullopt;
    from = content.nodes[found->second];
  }
  return from;
}

const std::vector<std::string>& Hive::SubKeys(HiveNode node) { return Children(node).names; }

Hive::Value Hive::LoadValue(hive_value_h handle) const {
  Value value;
  const Allocated<char> name(hivex_value_key(hive_.get(), handle));
  hive_type type;
  if (hivex_value_type(hive_.get(), handle, &type, &value.size) != 0) ThrowDamaged();
  value.type = FromHiveType(type);
  value.stored = handle;
  if (name) value.name = name.get();
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
  content.has_values = true;
  return content;
}

const std::vector<Hive::Value>& Hive::Values(HiveNode node) { return LoadedValues(node).values; }

const Hive::Value* Hive::FindValue(HiveNode node, std::string_view name) {
  const std::vector<Value>& values = Values(node);
  const auto found = std::find_if(values.begin(), values.end(), [name](const Value& value) {
    return EqualsNoCase(value.name, name);
  });
  return found == values.end() ? nullptr : &*found;
}

std::string Hive::Bytes(const Value& value) const {
  if (value.stored == 0 || value.size == 0) return value.bytes;
  hive_type type;
  size_t size = 0;
  const Allocated<char> bytes(hivex_value_value(hive_.get(), value.stored, &type, &size));
  if (!bytes) ThrowDamaged();
  return std::string(bytes.get(), size);
}

// hivex sets all values of a key at once, so the unchanged ones are held ready too. A name it
// cannot give back whole would be lost by that.
Hive::Content& Hive::ChangeableValues(HiveNode node) {
  RequireWritable();
  Content& content = LoadedValues(node);
  if (content.changed) return content;
  std::vector<Value> values = content.values;
  for (Value& value : values) {
    const Allocated<char> name(hivex_value_key(hive_.get(), value.stored));
    const size_t length = hivex_value_key_len(hive_.get(), value.stored);
    if (!name || (length != 0) != (*name.get() != 0)) {
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
  Content& content = ChangeableValues(node);
  const Value* found = FindValue(node, name);
  const size_t at =
      found ? static_cast<size_t>(found - content.values.data()) : content.values.size();
  if (!found) content.values.push_back({std::string(name), 0, 0, 0, {}});
  Value& target = content.values[at];
  target.type = value.type;
  target.bytes = value.bytes;
  target.size = value.bytes.size();
  ++generation_;
}

bool Hive::DeleteValue(HiveNode node, std::string_view name) {
  RequireWritable();
  if (!FindValue(node, name)) return false;
  Content& content = ChangeableValues(node);
  content.values.erase(content.values.begin() + (FindValue(node, name) - content.values.data()));
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
