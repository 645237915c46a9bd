#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "browsers/database_cleaning.h"
#include "platform/error.h"
#include "run/context.h"

namespace quellix {

// A profile of a browser; paths end in "\".
struct BrowserProfile {
  std::string name;
  std::string path;
  std::string cache_path;  // where what can be fetched again lies; may be `path`, or missing
  std::shared_ptr<Folder> folder;
};

// The folders in an open folder, links left out, by name; none where it cannot be listed.
std::vector<std::string> FoldersIn(Folder& folder, std::string_view mask);

// Writes what a kind of a browser came to into RunLog, by the item's counters.
void AppendBrowserLine(CleaningContext& context, std::string_view browser, std::string_view label,
                       uint64_t rows);

// Empties the folders of those names, of what can be fetched again, in a profile and where its
// caches lie besides.
void CleanCaches(CleaningContext& context, const BrowserProfile& profile,
                 std::span<const std::string_view> names);

// Cleans in one folder of a browser, held open, and in those below it. Whole files and folders go
// by the removal mode; everything asks the guard, the keep list and what was chosen in a preview.
// What stays is noted. Nothing more is done once the user has stopped.
class ProfileCleaner {
 public:
  // `path` is that of the folder and ends in "\". Both must outlive the object.
  ProfileCleaner(CleaningContext& context, std::shared_ptr<Folder> folder, std::string path)
      : context_(context), folder_(std::move(folder)), path_(std::move(path)) {}

  // Whether a browser works with the folder, by the files that it then holds, or leaves as links on
  // other systems. Its user may close it now (see IsOutOfTheWay), before `what` is cleaned; else it
  // is noted as in use.
  bool IsInUse(std::span<const std::string_view> lock_files, std::string_view browser,
               std::string_view what);

  // The files of the folder that fit one of the masks, in their order.
  void Files(std::span<const std::string_view> masks);
  // A database that goes whole, before what lies beside it: without it that means nothing.
  void WholeDatabase(std::string_view name);
  // All that is below a folder, "a\b"; the folder itself stays.
  void Below(std::string_view names);
  // Each folder directly below `names` for which `site_of` gives a site, with all below it, unless
  // the keep list names the site.
  void Sites(std::string_view names,
             const std::function<std::string(Folder&, const std::string&)>& site_of);
  // Rows of a database, "a\b".
  void Rows(std::string_view names, const DatabaseJob& job);
  // A file or folder of all sites stays while some site is kept; that is then noted.
  bool IsKeptForSites(std::string_view name);
  // It stays.
  void Leave(std::string_view name, const Sentence& why);

  Folder& folder() { return *folder_; }
  uint64_t rows() const { return rows_; }

 private:
  struct Lock {
    std::string path;
    Sentence why;
    Error::Kind kind;
    bool is_link = false;
  };

  std::optional<Lock> FindLock(std::span<const std::string_view> lock_files);
  void CleanTree(std::shared_ptr<Folder> folder, const std::string& path);
  void Remove(const std::vector<std::string>& names);

  CleaningContext& context_;
  std::shared_ptr<Folder> folder_;
  std::string path_;
  uint64_t rows_ = 0;
};

}  // namespace quellix
