#pragma once

#include <string>

namespace quellix {

// Where the program lies, and where its user's settings, lists, logs and backups are: beside it
// where he may make files there, as on a stick; else, as in Program Files and on a disc, in his
// roaming application data. Both without trailing "\". Looks only.
struct ProgramFolders {
  std::string installed, own;
};
ProgramFolders FindProgramFolders();

// The second of them. A folder "Data" beside the program is taken in its stead, at its real place
// where it is a link: a package manager that swaps the program's folder keeps it. winget, which
// removes that folder whole, keeps none: then it is the roaming one.
std::string OwnFolder(const std::string& installed);

// Whether the user may make files in a folder, and replace Settings.ini where it is there. With
// administrator rights it is asked what he may without them, so that his settings are the same ones
// in both cases.
bool MayMakeFiles(const std::string& folder);

}  // namespace quellix
