#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/volume/unique_fd.h"

namespace quellix {

// What stands in the way of changing what is on the drives of a Windows, as `user` ("" for any) has
// it, and what to do about it: a sentence each. What cannot be looked at stands in the way; a
// further drive that can only be read does not. Throws Error where there is no Windows, which tells
// what was looked for.
std::vector<std::string> HindrancesOf(const std::string& volume,
                                      const std::map<char, std::string>& drives,
                                      const std::string& user);

// What hinders nobody but could not be found out about the disks that some folders are on.
std::vector<std::string> UnknownsOf(const std::vector<std::string>& folders);

// Whether a folder, or its nearest parent that is there, is on the disk of one of some places.
bool IsOnDiskOf(const std::string& folder, const std::vector<std::string>& places);

// A text that is the same for all spellings of a folder of this system; the path itself where
// nothing is there.
std::string IdentityOf(const std::string& place);

// Why a place that is no folder is none, and how to make one of it: a disk or its image is to be
// mounted, one that is encrypted unlocked. "" for a folder. Throws Error when it is not there.
std::string WhyNoFolder(const std::string& place);

// Keeps all other runs from some folders while this lives, where their disks know locks; the system
// lets go of what a killed run held, and nothing is written for it.
class FolderLocks {
 public:
  FolderLocks() = default;
  // What is no folder is left out. Throws Error (kInUse) when another run works on one of them.
  explicit FolderLocks(const std::vector<std::string>& folders);

 private:
  std::vector<UniqueFd> held_;
};

}  // namespace quellix
