#include "platform/volume/hive.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <new>
#include <utility>

#include "platform/damaged.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/volume/entry_info.h"
#include "platform/volume/hive_check.h"
#include "platform/volume/hive_format.h"
#include "platform/volume/hive_store.h"
#include "platform/volume/volume_error.h"
#include "platform/volume/volume_random_file.h"

namespace quellix {
namespace {

struct Freeer {
  void operator()(void* memory) const { std::free(memory); }
};
template <class T>
using Allocated = std::unique_ptr<T, Freeer>;

// Deeper than Windows allows, and what it allows in UTF-16.
constexpr size_t kMostLevels = 520, kLongestKeyName = 255, kLongestValueName = 16383;

std::string ProcPath(int fd) { return "/proc/self/fd/" + std::to_string(fd); }

// hivex knows the documented types only by an enumeration; others pass through it unharmed.
uint32_t FromHiveType(const hive_type& type) {
  uint32_t number;
  static_assert(sizeof number == sizeof type);
  std::memcpy(&number, &type, sizeof number);
  return number;
}

// Whether a key leads elsewhere, so that hivex takes what is no count of values for one.
bool IsPredefined(int fd, HiveNode node) {
  using namespace hive_format;  // NOLINT(google-build-using-namespace): the places of one format
  return (ReadNumber(fd, static_cast<off_t>(node + kKeyFlags), 2) & kKeyIsPredefined) != 0;
}

// One without data may name no cell, which hivex does not expect.
bool ReadsValue(hive_h* hive, hive_value_h value) {
  hive_type type;
  size_t size = 0;
  if (hivex_value_type(hive, value, &type, &size) != 0) return false;
  return size == 0 || Allocated<char>(hivex_value_value(hive, value, &type, &size)) != nullptr;
}

// Whether hivex reads every key, value and datum of a hive that is put together as one must be;
// `fd` is the same file.
bool ReadsWhole(hive_h* hive, int fd) {
  struct Step {
    HiveNode node;
    size_t level;
  };
  std::vector<Step> open = {{hivex_root(hive), 1}};
  while (!open.empty()) {
    const Step step = open.back();
    open.pop_back();
    const Allocated<hive_value_h> values(hivex_node_values(hive, step.node));
    const Allocated<hive_node_h> nodes(hivex_node_children(hive, step.node));
    const bool has_values = values != nullptr || IsPredefined(fd, step.node);
    if (step.level > kMostLevels || !has_values || !nodes) return false;
    for (const hive_value_h* value = values.get(); value && *value != 0; ++value) {
      if (!ReadsValue(hive, *value)) return false;
    }
    for (const hive_node_h* node = nodes.get(); *node != 0; ++node) {
      open.push_back({*node, step.level + 1});
    }
  }
  return true;
}

int64_t Now() {
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  return ToFileTime(now);
}

// One that needs more memory than there is fails alone.
template <class Work>
auto InMemory(const std::string& path, const Work& work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    ThrowErrno(ENOMEM, path);
  }
}

}  // namespace

std::shared_ptr<Hive> Hive::Open(VolumeFileSystem& files, const std::string& path) {
  HiveState state = InMemory(path, [&] { return OpenHiveState(files, path); });
  if (!state.fd) return nullptr;
  struct stat status;
  if (fstat(state.fd.get(), &status) != 0) ThrowErrno(errno, path);
  if (static_cast<uint64_t>(status.st_size) > kLargestHive) ThrowErrno(EFBIG, path);
  std::unique_ptr<hive_h, Closer> hive(hivex_open(ProcPath(state.fd.get()).c_str(), 0));
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
      root_(hivex_root(hive_.get())) {
  if (root_ == 0) ThrowDamaged();
}

Hive::~Hive() {
  try {
    Commit();
  } catch (const Error&) {
  }
}

// What hivex has no memory for is not damaged.
void Hive::ThrowDamaged() const {
  if (errno == ENOMEM) ThrowErrno(errno, path_);
  throw Damaged("The registry hive is damaged: " + path_);
}

void Hive::RequireWritable() {
  if (!editor_ && state_.read_only_reason.empty()) {
    files_.RequireWritable(path_);
    if (!InMemory(path_, [this] { return OpenEditor(); }))
      state_.read_only_reason = "The registry hive is damaged, so it is only read: " + path_;
  }
  if (!state_.read_only_reason.empty()) {
    throw Error(Error::Kind::kDenied, state_.read_only_reason);
  }
}

// False where the hive is not put together as one must be.
bool Hive::OpenEditor() {
  try {
    errno = 0;
    if (!ReadsWhole(hive_.get(), state_.fd.get())) {
      if (errno == ENOMEM) ThrowErrno(errno, path_);
      return false;
    }
    editor_.emplace(ReadAll(state_.fd.get(), kLargestHive, path_));
    return true;
  } catch (const UnsoundHive&) {
    return false;
  }
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
    content.names.emplace_back(name.get(), hivex_node_name_len(hive_.get(), *child));
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

Hive::Content& Hive::ChangedChildren(HiveNode parent) {
  Content& content = Children(parent);
  content.changed = true;
  content.by_upper_name.clear();
  content.last_found = 0;
  ++generation_;
  return content;
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
    const auto made = made_.find(node);
    const bool is_made = made != made_.end();
    const Allocated<char> name(is_made ? nullptr : hivex_node_name(hive_.get(), node));
    if ((!is_made && !name) || level > kMostLevels) ThrowDamaged();
    const auto stored = [&] {
      return std::string(name.get(), hivex_node_name_len(hive_.get(), node));
    };
    path.insert(0, is_made ? made->second.name : stored()).insert(0, "\\");
    node = is_made ? made->second.parent : hivex_node_parent(hive_.get(), node);
    if (node == 0) ThrowDamaged();
  }
  return path;
}

int64_t Hive::LastWrite(HiveNode node) const {
  if (editor_) return editor_->LastWrite(node);
  return std::max<int64_t>(hivex_node_timestamp(hive_.get(), node), 0);
}

const std::vector<std::string>& Hive::SubKeys(HiveNode node) { return Children(node).names; }

// Nothing for one whose name cannot be told: it is left alone, as nothing could name it either.
std::optional<Hive::Value> Hive::LoadValue(hive_value_h handle) const {
  Value value;
  const Allocated<char> name(hivex_value_key(hive_.get(), handle));
  if (!name) return std::nullopt;
  hive_type type;
  if (hivex_value_type(hive_.get(), handle, &type, &value.size) != 0) ThrowDamaged();
  value.type = FromHiveType(type);
  value.cell = handle;
  value.is_stored = true;
  value.name.assign(name.get(), hivex_value_key_len(hive_.get(), handle));
  return value;
}

Hive::Content& Hive::LoadedValues(HiveNode node) {
  Content& content = Cached(node);
  if (content.has_values) return content;
  const Allocated<hive_value_h> handles(hivex_node_values(hive_.get(), node));
  if (!handles && !IsPredefined(state_.fd.get(), node)) ThrowDamaged();
  std::vector<Value> values;
  for (const hive_value_h* handle = handles.get(); handle && *handle != 0; ++handle) {
    if (auto value = LoadValue(*handle)) values.push_back(std::move(*value));
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
  if (!value.is_stored || value.size == 0) return;
  hive_type type;
  size_t size = 0;
  const Allocated<char> stored(hivex_value_value(hive_.get(), value.cell, &type, &size));
  if (!stored) ThrowDamaged();
  bytes.assign(stored.get(), size);
}

// What an edit left half done is never stored, nor is anything after it.
template <class Change>
auto Hive::Edit(const Change& change) {
  RequireWritable();
  try {
    changed_ = true;
    return change(*editor_);
  } catch (const UnsoundHive&) {
    state_.read_only_reason = "The registry hive is damaged, so it is only read: " + path_;
  } catch (const std::bad_alloc&) {
    state_.read_only_reason = "There is not enough memory to change the registry hive: " + path_;
  } catch (const Error& error) {
    state_.read_only_reason = error.what() + (": " + path_);
  }
  throw Error(Error::Kind::kOther, state_.read_only_reason);
}

// As Windows would refuse it.
void Hive::RequireUsableName(std::string_view name, size_t most) const {
  if (name.find('\0') == name.npos && ToUtf16(name).size() <= most) return;
  throw Error(Error::Kind::kOther, "Such a name cannot be written to the registry: " + path_);
}

void Hive::SetValue(HiveNode node, std::string_view name, const RegistryValue& value) {
  RequireWritable();
  RequireUsableName(name, kLongestValueName);
  const Value* const found = FindValue(node, name);
  if (!made_.contains(node) && IsPredefined(state_.fd.get(), node)) {
    throw Error(Error::Kind::kDenied, "This registry key leads to another one: " + path_);
  }
  Content& content = LoadedValues(node);
  const size_t at =
      found ? static_cast<size_t>(found - content.values.data()) : content.values.size();
  const size_t cell = Edit([&](HiveEditor& editor) {
    if (!found) return editor.AddValue(node, name, value);
    editor.ChangeValue(node, found->cell, value);
    return found->cell;
  });
  if (!found) {
    content.values.push_back({std::string(name), 0, 0, cell, false, {}});
    content.name_hashes.clear();
  }
  Value& target = content.values[at];
  target.type = value.type;
  target.bytes = value.bytes;
  target.size = value.bytes.size();
  target.is_stored = false;
  content.changed = true;
  ++generation_;
}

bool Hive::DeleteValue(HiveNode node, std::string_view name) {
  RequireWritable();
  const Value* const found = name.find('\0') == name.npos ? FindValue(node, name) : nullptr;
  if (!found) return false;
  Content& content = LoadedValues(node);
  const auto at = found - content.values.data();
  Edit([&](HiveEditor& editor) { editor.DeleteValue(node, found->cell); });
  content.values.erase(content.values.begin() + at);
  content.name_hashes.erase(content.name_hashes.begin() + at);
  content.changed = true;
  ++generation_;
  return true;
}

HiveNode Hive::CreateSubKey(HiveNode parent, std::string_view name) {
  RequireWritable();
  if (const auto found = Descend(parent, name)) return *found;
  RequireUsableName(name, kLongestKeyName);
  const HiveNode node =
      Edit([&](HiveEditor& editor) { return editor.CreateSubKey(parent, name, Now()); });
  Content& content = ChangedChildren(parent);
  const auto behind = std::ranges::find_if(
      content.names, [&name](const std::string& other) { return CompareNoCase(other, name) > 0; });
  content.nodes.insert(content.nodes.begin() + (behind - content.names.begin()), node);
  content.names.insert(behind, std::string(name));
  made_[node] = {parent, std::string(name)};
  Content& empty = Cached(node);
  empty.has_children = empty.has_values = empty.changed = true;
  return node;
}

void Hive::DeleteKey(HiveNode node) {
  RequireWritable();
  const bool is_made = made_.contains(node);
  if (!Children(node).names.empty() || editor_->HasSubKeys(node)) {
    throw Error(Error::Kind::kNotEmpty, "The registry key has sub-keys.");
  }
  if (node == root_) {
    throw Error(Error::Kind::kDenied, "The top key of a registry hive is not deleted: " + path_);
  }
  const HiveNode parent = is_made ? made_.at(node).parent : hivex_node_parent(hive_.get(), node);
  if (parent == 0) ThrowDamaged();
  Content& content = ChangedChildren(parent);
  Edit([node](HiveEditor& editor) { editor.DeleteKey(node); });
  const auto at = std::ranges::find(content.nodes, node) - content.nodes.begin();
  content.nodes.erase(content.nodes.begin() + at);
  content.names.erase(content.names.begin() + at);
  contents_.erase(node);
  places_.erase(node);
  made_.erase(node);
  removed_.insert(node);
}

// The new file is looked at before it takes the old one's place: whether all of it is put together
// as it must be, and whether hivex reads it.
void Hive::Commit() {
  if (!changed_) return;
  RequireWritable();
  const auto fill = [&](int fd) {
    if (const int code = WriteAll(fd, Edited(), 0)) ThrowErrno(code, path_);
    std::unique_ptr<hive_h, Closer> written(hivex_open(ProcPath(fd).c_str(), 0));
    if (!written || !ReadsWhole(written.get(), fd)) ThrowDamaged();
    // Nothing holds the old file open: ntfs-3g would give it one more name when it is removed.
    hive_ = std::move(written);
    state_.fd = UniqueFd(open(ProcPath(fd).c_str(), O_RDONLY | O_CLOEXEC));
  };
  const auto replaced =
      StoreHive(files_, path_, original_is_due_, fill, [this] { RequireUnchanged(); });
  Restamp();
  root_ = hivex_root(hive_.get());
  contents_.clear();
  made_.clear();
  changed_ = false;
  is_replaced_ = true;
  if (replaced) Overwrite(*replaced);
}

void Hive::RequireUnchanged() {
  if (StampsOf(files_, path_) == state_.stamps) return;
  throw Error(Error::Kind::kInUse,
              "Another program changed this registry hive or its logs meanwhile, so it is not "
              "written: " +
                  path_);
}

const std::string& Hive::Edited() {
  try {
    return *InMemory(path_, [this] { return &editor_->Finish(Now()); });
  } catch (const UnsoundHive&) {
    ThrowDamaged();
  }
}

void Hive::Finish(bool kept) {
  if (std::exchange(is_replaced_, false)) FinishHive(files_, path_, kept);
}

}  // namespace quellix
