#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/machine.h"

namespace quellix {

inline constexpr const char* kKeepFile = "keep.txt";

// A line of keep.txt: what nothing removes. Variables such as %APPDATA% stand for what they name.
//
//   C:\Work                      that file, or that folder with all below it
//   *.doc                        a mask of names, wherever they are
//   C:\Work\*.tmp                one of whole paths; "*" stands for any text, with folders in it
//   HKEY_CURRENT_USER\Software   that key with all below it
//   HKEY_CURRENT_USER\A|Name     that value; without a name the key's default value
//   site:example.com             the cookies of that site and of those below it
//   ; text                       a remark
struct KeepLine {
  enum Kind { kRemark, kPath, kNameMask, kPathMask, kKey, kValue, kSite, kFault } kind = kRemark;
  std::string text;                                // of the line
  std::string name = {};                           // a path, mask, key or site
  RegistryRoot root = RegistryRoot::kCurrentUser;  // of a key
  std::string value = {};                          // of kValue
  std::string fault = {};                          // why it keeps nothing, a sentence
};

KeepLine ParseKeepLine(System& system, std::string_view line);

// All lines; none without the file. Throws Error when it is there and cannot be read.
std::vector<std::string> ReadKeepFile(const Machine& machine);

// Adds a line, or takes it out wherever it stands, in any case. A line with a fault is refused by
// its sentence; "" when the file is as wanted. Throws Error; the old file then stays.
std::string AddToKeepFile(const Machine& machine, std::string_view line);
std::string RemoveFromKeepFile(const Machine& machine, std::string_view line);

}  // namespace quellix
