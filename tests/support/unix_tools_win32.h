#pragma once

#include <string>

namespace quellix {

// Wine makes no junctions, and removes and renames a Unix symlink's target instead of the link. The
// tests' links are therefore made and removed by the Unix tools themselves, which Wine can start.
// Every path is checked to lie below the scratch folder, so that a link never leads out of it.

bool RunsUnderWine();

// A symlink `link` to `target`, both Windows paths without "\" at the end. Throws when it cannot
// be made.
void MakeUnixLink(const std::wstring& link, const std::wstring& target);

// Removes every Unix symlink below `folder`, none of them followed.
void RemoveUnixLinks(const std::wstring& folder);

}  // namespace quellix
