#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/error.h"
#include "platform/file_system.h"

struct sqlite3_vfs;

namespace quellix {

// The files of one SQLite database in an open folder: the database, its journal and its log of
// writes ahead. SQLite reaches them through the folder alone, whatever their path comes to mean,
// and no other file.
class DatabaseFiles {
 public:
  // kLook changes nothing on the disk: what SQLite writes, as when it recovers what a killed
  // program left, stays in memory. With kChange the database is held alone, and recovered in place.
  enum class Use { kLook, kChange };

  // The folder must outlive the object.
  DatabaseFiles(Folder& folder, std::string_view name, Use use);
  ~DatabaseFiles();
  DatabaseFiles(const DatabaseFiles&) = delete;
  DatabaseFiles& operator=(const DatabaseFiles&) = delete;

  // What SQLite knows them by.
  const char* system_name() const { return system_name_.c_str(); }
  const std::string& name() const { return name_; }
  // What went wrong first on the disk; nothing when nothing did.
  const std::optional<Error>& failure() const { return failure_; }

  // For SQLite's calls; none may throw into it. Used by the .cpp alone.
  class Bytes;
  std::shared_ptr<Bytes> Open(const std::string& name, bool may_create);
  void Remove(const std::string& name, bool flush);
  bool Exists(const std::string& name);
  void Fail(const std::exception& error);

 private:
  Folder& folder_;
  std::string name_;
  Use use_;
  std::string system_name_;
  std::unique_ptr<sqlite3_vfs> system_;
  std::optional<Error> failure_;
  std::map<std::string, std::shared_ptr<Bytes>> in_memory_;  // kLook; null for one that is gone
};

}  // namespace quellix
