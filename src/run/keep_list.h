#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/machine.h"
#include "settings/keep_file.h"

namespace quellix {

// What the user wants to keep (keep.txt), known by what it is: a folder or key that a line names is
// compared by identity, as far as it is there when a run begins; masks and what comes later by
// their texts. Whoever asks gets the line that keeps it; "" when nothing does.
class KeepList {
 public:
  KeepList() = default;
  // Throws Error when keep.txt cannot be read. Lines with a fault keep nothing and are told.
  explicit KeepList(const Machine& machine);

  bool empty() const { return count_ == 0; }
  // About lines that keep nothing, and masks that keep everything; a sentence each, with CR LF.
  const std::string& remarks() const { return remarks_; }

  // A folder with all below it; with those above it also what lies in one that is kept.
  std::string_view ForFolder(const FileId& id) const;
  std::string_view ForFolder(const FileId& id, const std::vector<FileId>& above) const;
  // A file in an open folder; nothing is asked of the folder but for files that lines name there.
  std::string_view ForFile(Folder& folder, const FileId& folder_id, std::string_view path) const;
  // The same by its text alone.
  std::string_view ForPath(std::string_view path) const;
  // The key of a TrueName, or a value of it.
  std::string_view ForKey(std::string_view true_name) const;
  std::string_view ForValue(std::string_view true_name, std::string_view value) const;
  // Something in the key or below it.
  std::string_view ForTree(std::string_view true_name) const;
  // The cookies of a host.
  std::string_view ForSite(std::string_view host) const;
  bool has_sites() const { return !sites_.empty(); }

 private:
  using Lines = std::map<std::string, std::string, std::less<>>;  // by name in upper case

  // A folder that lines name something in; lines in a row that name the same one open it once.
  struct Holder {
    std::string path;
    std::unique_ptr<Folder> folder = nullptr;
    std::string problem = {};  // why it cannot be opened
    bool is_missing = false;   // nothing is in it
  };

  static Holder Hold(FileSystem& files, std::string_view path);
  void Add(const Machine& machine, const std::string& text, Holder& holder);
  void AddPath(const Machine& machine, const std::string& path, const std::string& text,
               Holder& holder);
  void Remark(const std::string& sentence);
  void AddKey(const Machine& machine, const KeepLine& line);

  size_t count_ = 0;
  std::string remarks_;
  std::map<FileId, std::string> folders_;
  std::map<FileId, std::map<FileId, std::string>> files_;  // by folder
  Lines paths_, keys_, values_, sites_;                    // a value: its key, "\n" and its name
  std::vector<std::pair<std::string, std::string>> name_masks_, path_masks_;  // with their lines
};

}  // namespace quellix
