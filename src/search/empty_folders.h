#pragma once

#include <string>
#include <vector>

#include "platform/words.h"
#include "run/context.h"
#include "search/junk_search.h"

namespace quellix {

// Tells which folders stay although nothing is in them: those that are precious or known to
// Windows, users and programs, what lies where Windows or programs are installed, and what version
// control keeps.
class EmptyFolderGuard {
 public:
  explicit EmptyFolderGuard(CleaningContext& context);

  // Whether a search goes into it; a hint by its path, which ends in "\\".
  bool Enters(const std::string& path) const;
  // Why it stays; empty where it may go. Throws Error: also of a link.
  Sentence WhyNot(const std::string& path);

 private:
  void AddProfiles();

  CleaningContext& context_;
  std::vector<std::string> installed_;  // where Windows and programs are, each ends in "\\"
  std::vector<FileId> installed_ids_;
  std::vector<FileId> temporary_, of_shell_;  // of the users that are listed
};

// Removes a folder in which nothing is, and notes it; one that is not empty at that moment stays.
// Never throws Error.
Removal RemoveEmptyFolder(CleaningContext& context, const std::string& path);

}  // namespace quellix
