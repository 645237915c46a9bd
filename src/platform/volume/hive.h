#pragma once

#include <hivex.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/registry.h"
#include "platform/volume/hive_editor.h"
#include "platform/volume/hive_state.h"

namespace quellix {

using HiveNode = hive_node_h;

// One hive file, which hivex reads. Changes are made to a copy of its bytes in memory until Commit,
// which replaces the file in one step. Names are UTF-8 and compare as Windows compares them.
//
// A hive that Windows had no time to close is what its transaction logs make of it. One that they
// do not bring up to date can only be read: writing it would lose or mix changes. Neither is a
// damaged one written.
class Hive {
 public:
  struct Value {
    std::string name;
    uint32_t type = kRegNone;
    size_t size = 0;
    size_t cell = 0;         // its place in the file
    bool is_stored = false;  // the bytes are there, else in `bytes`
    std::string bytes;
  };

  // Null when the file is missing; throws Error when it is damaged or cannot be read. Damage
  // further in shows when it is reached; before the first change all of the hive is looked through.
  static std::shared_ptr<Hive> Open(VolumeFileSystem& files, const std::string& path);
  // Commits; what fails then is lost and told nobody, so whoever changed something calls Commit.
  ~Hive();
  Hive(const Hive&) = delete;
  Hive& operator=(const Hive&) = delete;

  HiveNode root() const { return root_; }
  const std::string& path() const { return path_; }
  // A sentence; "" while nothing is known that keeps it from being changed.
  const std::string& read_only_reason() const { return state_.read_only_reason; }
  // Grows with every change.
  uint64_t generation() const { return generation_; }
  // Throws Error (kDenied) with the reason when the hive can only be read. Before the first change
  // it clears away what killed runs left beside it.
  void RequireWritable();

  // The node of a sub-key path; nothing when it is missing.
  std::optional<HiveNode> Descend(HiveNode from, std::string_view path);
  // The names of a key and those above it, each behind a "\"; "" for the root.
  std::string PathOf(HiveNode node) const;
  const std::vector<std::string>& SubKeys(HiveNode node);
  const std::vector<Value>& Values(HiveNode node);
  const Value* FindValue(HiveNode node, std::string_view name);
  std::string Bytes(const Value& value) const;
  // A FILETIME; 0 where the hive holds none.
  int64_t LastWrite(HiveNode node) const;
  void ReadBytes(const Value& value, std::string& bytes) const;

  // Changes; all throw Error and then have changed nothing.
  void SetValue(HiveNode node, std::string_view name, const RegistryValue& value);
  bool DeleteValue(HiveNode node, std::string_view name);
  HiveNode CreateSubKey(HiveNode parent, std::string_view name);
  void DeleteKey(HiveNode node);  // kNotEmpty when it has sub-keys

  // Stores all changes. Throws Error; the old file then stays, and the changes wait for the next
  // call, which throws again while the disk does not take them. Before the first of them the
  // original is kept beside the hive (OriginalName); what later ones replace is overwritten.
  void Commit();
  // Once nothing more will change: overwrites the logs, which hold what the hive was, and the
  // original, which then goes unless it is to be `kept`. Does nothing where nothing was changed.
  // Throws Error.
  void Finish(bool kept);
  // The hive and its logs count as unchanged from now on: this program itself changed what is
  // beside it. Else a hive that others changed since it was opened is not replaced.
  void Restamp() { state_.stamps = StampsOf(files_, path_); }

 private:
  struct Closer {
    void operator()(hive_h* hive) const { hivex_close(hive); }
  };

  // What one key holds, read when first asked for; once changed, kept until it is stored.
  struct Content {
    bool has_children = false, has_values = false, changed = false;
    std::vector<std::string> names;
    std::vector<HiveNode> nodes;
    std::unordered_map<std::string, size_t> by_upper_name;  // filled when first searched
    size_t last_found = 0;
    std::vector<Value> values;
    std::vector<size_t> name_hashes;  // of the values' upper names, or empty
  };

  // A key that hivex does not know yet.
  struct Made {
    HiveNode parent = 0;
    std::string name;
  };

  // Where a key was seen. A second place for it means a loop, or a list that names it twice.
  struct Place {
    HiveNode parent = 0;
    uint64_t reading = 0;
  };

  Hive(VolumeFileSystem& files, std::string path, HiveState state,
       std::unique_ptr<hive_h, Closer> hive);

  [[noreturn]] void ThrowDamaged() const;
  Content& Cached(HiveNode node);
  Content& Children(HiveNode node);
  void NoteParent(HiveNode child, HiveNode parent);
  const HiveNode* FindChild(HiveNode node, const std::string& name);
  Content& LoadedValues(HiveNode node);
  std::optional<Value> LoadValue(hive_value_h handle) const;
  template <class Change>
  auto Edit(const Change& change);
  void RequireUsableName(std::string_view name, size_t most) const;
  bool OpenEditor();
  const std::string& Edited();
  void RequireUnchanged();
  Content& ChangedChildren(HiveNode parent);

  VolumeFileSystem& files_;
  std::string path_;
  HiveState state_;
  std::unique_ptr<hive_h, Closer> hive_;
  HiveNode root_ = 0;
  // Contents kept before those without changes are dropped.
  static constexpr size_t kMostContents = 4096;
  size_t most_contents_ = kMostContents;
  std::unordered_map<HiveNode, Content> contents_;
  std::unordered_set<HiveNode> removed_;
  std::unordered_map<HiveNode, Made> made_;
  std::unordered_map<HiveNode, Place> places_;
  uint64_t reading_ = 0;              // of a list of sub-keys
  std::optional<HiveEditor> editor_;  // once it is known that the hive may be written
  bool changed_ = false;
  bool is_replaced_ = false;     // on the disk
  bool original_is_due_ = true;  // to be kept before the first replacement
  uint64_t generation_ = 0;
};

}  // namespace quellix
