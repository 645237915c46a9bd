#pragma once

#include <string>
#include <string_view>

#include "platform/win32/unique.h"

namespace quellix {

// Keeps changes below one folder inside it. Before a change, the parent folder of what is changed
// is opened and the place it really is in compared with the place it should be in; it stays open,
// and so cannot be exchanged for a link, until another parent is checked.
class Win32Anchor {
 public:
  // Resolves links in `folder` and above it and trusts them from now on; "" drops the anchor.
  // Below a folder that cannot be opened now, nothing may be changed later.
  void Set(std::string_view folder);

  // Throws Error (kDenied) when the parent folder of `path` has left the anchor through a link.
  // Paths not below the anchor are let through.
  void CheckParentOf(std::string_view path);

  // To be called before `path` itself is removed or renamed: closes a folder held in it.
  void ReleaseBelow(std::string_view path);

 private:
  bool Covers(std::string_view parent) const;
  bool IsInPlace(std::string_view parent, const UniqueFile& opened) const;
  bool IsNoLinkAndItsParentInPlace(std::string_view folder) const;

  std::string folder_;       // without "\" at the end; empty for no anchor
  std::wstring real_;        // the anchor's final path; empty when it could not be opened
  std::string held_parent_;  // the parent checked last
  UniqueFile held_;
};

}  // namespace quellix
