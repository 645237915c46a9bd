#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "browsers/database_files.h"
#include "platform/pause.h"

struct sqlite3;
struct sqlite3_stmt;

namespace quellix {

// One SQLite database, open. Its changes are SQLite's own transactions: a kill at any moment leaves
// the old or the new content, which the next who opens it, a browser or we, finds whole. What is
// deleted is overwritten. Not for two threads at once.
//
// All functions throw Error: what the disk said, kOther with a sentence that the database is
// damaged or has another form than is known here, or kOther when the pause said stop. Statements
// outside Begin and Commit are transactions of their own; without Commit nothing stays changed.
class Database {
 public:
  using Use = DatabaseFiles::Use;

  // The folder must outlive it; `shown` is the path, for sentences. With kChange it is made
  // when it is missing; with kLook that is an Error (kMissing).
  Database(Folder& folder, std::string_view name, std::string_view shown, Use use,
           Pause pause = {});
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  // A row of a result; columns from 0, texts valid during the visit only.
  class Row {
   public:
    explicit Row(sqlite3_stmt* statement) : statement_(statement) {}
    std::string_view Text(int column) const;  // "" for nothing
    int64_t Number(int column) const;

   private:
    sqlite3_stmt* statement_;
  };

  // One or more statements whose rows do not count.
  void Run(std::string_view sql);
  void ForEach(std::string_view sql, const std::function<void(const Row&)>& visit);
  int64_t Number(std::string_view sql);  // of the first row; 0 without one
  void Begin() { Run("BEGIN IMMEDIATE"); }
  void Commit() { Run("COMMIT"); }

  bool HasTable(std::string_view table);
  bool HasColumn(std::string_view table, std::string_view column);
  // Throws Error when it is damaged somewhere, as far as reading it through tells.
  void RequireSound();
  // Functions of one text for statements; they must not throw.
  void AddTest(const char* name, std::function<bool(std::string_view)> test);
  void AddText(const char* name, std::string (*text)(std::string_view));
  // Gives back the room of what was deleted.
  void Compact() { Run("VACUUM"); }

 private:
  [[noreturn]] void Fail(int code);
  int Step(sqlite3_stmt* statement);

  DatabaseFiles files_;
  std::string shown_;
  Pause pause_;
  sqlite3* handle_ = nullptr;
};

}  // namespace quellix
