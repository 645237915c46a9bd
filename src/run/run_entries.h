#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/words.h"

namespace quellix {

enum class EntryKind : uint8_t {
  kFile,
  kFolder,
  kRegistryValue,
  kRegistryKey,  // with all below it
  kIniKey,
  kIniSection,
  kCacheEntry,
  kRecycleBin,  // all that is in it
  kAddressHistory,
  kClipboard,
  kRows,          // of a database that stays, as those of one site
  kSystemCleaner  // what one of Windows' own cleaners takes
};

// What became of it; in a preview, what would.
enum class Fate : uint8_t { kRemoved, kStayed, kKept };

// How it went.
enum class Way : uint8_t { kDeleted, kRecycled, kWiped, kBackedUp };

// Something that a run came by.
struct RunEntry {
  EntryKind kind = EntryKind::kFile;
  Fate fate = Fate::kRemoved;
  Way way = Way::kDeleted;
  uint8_t item = 0;        // run order of the item that names it; 0 for what was chosen by hand
  uint16_t archive = 0;    // that it was backed up in; an index of RunEntries::archives
  uint32_t rule = 0;       // an index of RunEntries::rules
  uint32_t count = 1;      // how many it stands for: of the recycle bin, all in it
  uint64_t bytes = 0;      // of a file, or of all in the recycle bin
  int64_t last_write = 0;  // FILETIME; 0 where it is not known
  std::string place = {};  // path, key with its root's name, or address; "" for one of a kind
  std::string part =
      {};  // value name; of an INI file "[section]" and the key behind it; which rows
  std::string note = {};  // why it stays, a sentence; the line that keeps it
};

// All of them, in the order they were come by.
struct RunEntries {
  // Beyond these they are only counted.
  static constexpr size_t kMost = 1'000'000;

  std::deque<RunEntry> all;  // never moved, and no more room than they need
  uint64_t left_out = 0;
  std::vector<std::string> rules = {""};     // by name: a plug-in, a line of a list
  std::vector<std::string> archives = {""};  // full paths

  // What follows is named by that rule; "" ends it.
  void BeginRule(std::string_view name);
  void Add(RunEntry entry);
  const std::string& RuleInWork() const { return rules[rule_]; }
  // Of the archive in `archives`, for entries; 0 of "".
  uint16_t ArchiveNumber(std::string_view path);
  // Notes why an entry of this run stays: in English, and beside it as windows show it.
  void Note(RunEntry& entry, const Sentence& why);
  // An entry's note; of a run that was kept windows have no other one.
  Sentence NoteOf(const RunEntry& entry) const;

 private:
  uint32_t rule_ = 0;
  std::unordered_map<std::string, std::string> shown_;  // of notes that windows show otherwise
};

// A file, or the files in the recycle bin.
bool CountsAsFiles(const RunEntry& entry);
// In one or two words: "File", "Registry value".
std::string_view KindText(EntryKind kind);
// Where it is, on one line: with the value or the key of an INI file.
std::string PlaceText(const RunEntry& entry);

}  // namespace quellix
