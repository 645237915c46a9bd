#pragma once

#include <algorithm>
#include <map>

#include "browsers/database.h"
#include "platform/path.h"
#include "support/run_fixture.h"

namespace quellix {

// How a browser left a database: whole, or killed before its log of writes ahead was copied into
// it, or in the middle of a change.
enum class Left { kWhole, kLog, kJournal };

// The table of today, and behind "--cut" what a browser was about to do when it was killed.
inline constexpr const char* kFirefoxCookies = R"(
CREATE TABLE moz_cookies (id INTEGER PRIMARY KEY, originAttributes TEXT NOT NULL DEFAULT '',
  name TEXT, value TEXT, host TEXT, path TEXT, expiry INTEGER, lastAccessed INTEGER,
  creationTime INTEGER, isSecure INTEGER, isHttpOnly INTEGER, inBrowserElement INTEGER DEFAULT 0,
  sameSite INTEGER DEFAULT 0, schemeMap INTEGER DEFAULT 0,
  isPartitionedAttributeSet INTEGER DEFAULT 0, updateTime INTEGER,
  CONSTRAINT moz_uniqueid UNIQUE (name, host, path, originAttributes));
CREATE TABLE of_a_later_version (x);
PRAGMA user_version=17;
PRAGMA secure_delete=OFF;
INSERT INTO moz_cookies(name, value, host, path) VALUES
  ('a', 'secret-one', '.gone.example', '/'), ('b', 'secret-two', 'www.gone.example', '/'),
  ('c', 'dear-one', '.sub.dear.example', '/'), ('d', 'dear-two', 'dear.example', '/x'),
  ('o', 'secret-old', 'old.example', '/');
DELETE FROM moz_cookies WHERE name = 'o';
--cut
DELETE FROM moz_cookies;)";

// A machine with browsers' profiles, whose databases are made by SQLite itself.
class BrowserFixture : public RunFixture {
 protected:
  using Picture = std::map<std::string, std::string>;

  BrowserFixture() { RemoveAll(); }
  ~BrowserFixture() override { RemoveAll(); }

  // The statements make what is there; those of a change that was cut off come behind "--cut".
  void MakeDatabase(const std::string& path, std::string_view sql, Left left = Left::kWhole) {
    const size_t cut = std::min(sql.find("--cut"), sql.size());
    const auto folder = ports.files.OpenFolder(scratch);
    const std::string made = "made" + std::to_string(++made_);
    auto open = std::make_unique<Database>(*folder, made, made, Database::Use::kChange);
    Database& database = *open;
    database.Run("PRAGMA synchronous=OFF");
    if (left == Left::kLog) database.Run("PRAGMA journal_mode=WAL");
    database.Begin();
    database.Run(sql.substr(0, cut));
    database.Commit();
    if (left == Left::kJournal) {
      // More than the cache holds is written before it is whole.
      database.Run("PRAGMA cache_size=1; PRAGMA cache_spill=1; BEGIN");
      database.Run(sql.substr(cut));
      database.Run(
          "CREATE TABLE cut_off(x); WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 "
          "FROM n WHERE i<200) INSERT INTO cut_off SELECT zeroblob(3000) FROM n");
    }
    if (left == Left::kWhole) open.reset();
    for (const char* ending : {"", "-wal", "-journal"}) {
      const auto bytes = ports.files.ReadWholeFile(scratch + made + ending);
      if (bytes && (!bytes->empty() || *ending == '\0')) machine->MakeFile(path + ending, *bytes);
    }
  }

  // "a|b\n" for each row.
  std::string Query(const std::string& path, std::string_view sql, int columns = 1) {
    const auto folder = ports.files.OpenFolder(FolderPart(path));
    Database database(*folder, NamePart(path), path, Database::Use::kLook);
    std::string text;
    database.ForEach(sql, [&](const Database::Row& row) {
      for (int i = 0; i < columns; ++i)
        text += std::string(i == 0 ? "" : "|") + std::string(row.Text(i));
      text += "\n";
    });
    return text;
  }

  // Every file below a folder, with a number that its bytes make.
  Picture PictureOf(const std::string& folder) {
    Picture picture;
    for (const std::string& name : machine->Tree(folder)) {
      if (name.ends_with('\\')) continue;
      const std::string bytes = Bytes(folder + "\\" + name);
      picture[name] =
          std::to_string(bytes.size()) + " " + std::to_string(std::hash<std::string>()(bytes));
    }
    return picture;
  }
  // The bytes of all files below a folder, one behind the other.
  std::string AllBytes(const std::string& folder) {
    std::string all;
    for (const std::string& name : machine->Tree(folder)) {
      if (!name.ends_with('\\')) all += Bytes(folder + "\\" + name) + "\n";
    }
    return all;
  }
  static bool IsIn(const std::string& bytes, const std::string& text) {
    return bytes.find(text) != bytes.npos;
  }
  // "part fate" of each entry of a kind, in order.
  static std::string Entries(const RunState& state, EntryKind kind) {
    std::string text;
    for (const RunEntry& entry : state.Entries->all) {
      if (entry.kind != kind) continue;
      text += entry.part + (entry.fate == Fate::kRemoved ? " removed\n"
                            : entry.fate == Fate::kKept  ? " kept\n"
                                                         : " stayed\n");
    }
    return text;
  }

  std::string roaming = ports.system.Environment("APPDATA").value();
  std::string local = ports.system.Environment("LOCALAPPDATA").value();
  std::string firefox = roaming + "\\Mozilla\\Firefox";
  std::string chrome = local + "\\Google\\Chrome\\User Data";

  void RemoveAll() {
    for (const std::string& folder :
         {roaming + "\\Mozilla", local + "\\Mozilla", local + "\\Google", local + "\\Packages",
          local + "\\Microsoft\\Edge", roaming + "\\Opera Software", local + "\\Opera Software"}) {
      Names names = machine->Tree(folder);
      std::ranges::reverse(names);
      for (const std::string& name : names) {
        const std::string path = folder + "\\" + std::string(WithoutBackslash(name));
        name.ends_with('\\') ? ports.files.RemoveFolder(path) : ports.files.RemoveFile(path);
      }
    }
  }

 private:
  // What someone holds open need not be readable.
  std::string Bytes(const std::string& path) try {
    return ports.files.ReadWholeFile(path).value_or("?");
  } catch (const Error&) {
    return "held";
  }

  int made_ = 0;
};

}  // namespace quellix
