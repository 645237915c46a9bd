#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/words.h"
#include "run/context.h"

namespace quellix {

// The types of files that are unnecessary, ListRow by ListRow.
inline constexpr const char* kFileTypesList = "UNFI.txt";
inline constexpr const char* kFileTypesDefaults = "DefUNFI.txt";

enum class JunkKind {
  kUnnecessaryFiles = 1,
  kEmptyFiles = 2,
  kDeadShortcuts = 3,
  kEmptyFolders = 4
};

// One find, as the results show it.
struct ResultRow {
  std::string name;
  uint64_t bytes = 0;
  std::string date_time;   // last write, as FormatFileTime writes it
  std::string attributes;  // letters of R, A, S, H
  std::string path;        // the folder; ends in "\"
  std::string file_type;   // behind the last dot, in upper case; "" without one
  std::string_view category;

  // What the texts were made of.
  int64_t last_write = 0;       // FILETIME
  uint32_t attribute_bits = 0;  // FileAttribute
  JunkKind kind = JunkKind::kUnnecessaryFiles;
};

// Takes the finds of a search as they come.
class ResultSink {
 public:
  virtual ~ResultSink() = default;
  virtual void Add(ResultRow row) = 0;
};

// "Unnecessary Files", "Empty Files", "Dead Shortcuts", "Empty Folders", named for the catalogues.
std::string_view CategoryText(JunkKind kind);

// Throws NotAvailable when a search for that kind would know nothing to search for: no type of
// unnecessary files is ticked, or their list is missing.
void RequireTypes(const Machine& machine, JunkKind kind);

// Searches the drives of srch.txt, one after another, and hands each find to `sink`; nothing is
// changed. Ends early, with "Aborted by user" in the status, when the user stops. Throws Error when
// options or lists cannot be read, or when the date filter is on and its dates make no sense, and
// NotAvailable as above.
void SearchJunk(CleaningContext& context, JunkKind kind, ResultSink& sink);

// What became of a find that was to be removed.
struct Removal {
  enum Outcome { kRemoved, kVanished, kStays } outcome;
  uint64_t bytes = 0;    // its size just before
  Sentence reason = {};  // why it stays; empty after a stop
};

// Removes the find at `path` by the removal mode and counts it in the totals of the run. A file
// or folder that is no longer empty stays when it was found for that; a folder goes as it is in
// every mode. Never throws Error.
Removal RemoveFind(CleaningContext& context, const std::string& path, JunkKind kind);

// The letters of R, A, S, H that are set, in this order.
std::string AttributeLetters(uint32_t attributes);

}  // namespace quellix
