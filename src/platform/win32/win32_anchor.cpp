#include "platform/win32/win32_anchor.h"

#include "platform/path.h"
#include "platform/text.h"
#include "platform/win32/win32_error.h"
#include "platform/win32/win32_file_info.h"
#include "platform/win32/win32_path.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

UniqueFile OpenFolder(const std::wstring& wide, DWORD access, DWORD share) {
  return UniqueFile(CreateFileW(wide.c_str(), access, share, nullptr, OPEN_EXISTING,
                                FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

// Without sharing deletion, so that the folder stays in its place while it is held. Where someone
// else has it open for that, or it may not be listed, it is at least looked at.
UniqueFile HoldFolder(std::string_view folder) {
  const std::wstring wide = WidePath("open", folder);
  UniqueFile held = OpenFolder(wide, FILE_LIST_DIRECTORY, FILE_SHARE_READ | FILE_SHARE_WRITE);
  if (!held) held = OpenFolder(wide, FILE_READ_ATTRIBUTES, kShareAll);
  if (!held) ThrowLastError("open", folder);
  return held;
}

// `folder` with short names such as "PROGRA~1" written out.
std::wstring LongPath(std::string_view folder) {
  const std::wstring wide = WidePath("open", folder);
  std::wstring path = GrowingText(
      [&](wchar_t* text, uint32_t size) { return GetLongPathNameW(wide.c_str(), text, size); });
  if (path.ends_with(L'\\')) path.pop_back();
  return path;
}

bool IsAtOrBelow(std::string_view path, std::string_view folder) {
  return path.size() >= folder.size() && EqualsNoCase(path.substr(0, folder.size()), folder) &&
         (path.size() == folder.size() || path[folder.size()] == '\\');
}

}  // namespace

void Win32Anchor::Set(std::string_view folder) {
  held_.Reset();
  held_parent_.clear();
  folder_.clear();
  real_.clear();
  if (folder.empty()) return;
  folder_ = WithoutBackslash(folder);
  const auto wide = ToWidePath(folder);
  if (!wide) return;
  const UniqueFile opened = OpenFolder(*wide, FILE_READ_ATTRIBUTES, kShareAll);
  if (opened) real_ = FinalPath(opened);
}

void Win32Anchor::CheckParentOf(std::string_view path) {
  if (folder_.empty()) return;
  const std::string_view parent = WithoutBackslash(FolderPart(WithoutBackslash(path)));
  if (held_ && parent == held_parent_) return;
  if (!Covers(parent)) return;
  held_ = HoldFolder(parent);
  held_parent_ = parent;
  if (IsInPlace(parent, held_)) return;
  held_.Reset();
  throw Error(Error::Kind::kDenied,
              std::string(path) + " leads out of the folder being cleaned through a link.");
}

void Win32Anchor::ReleaseBelow(std::string_view path) {
  if (held_ && IsAtOrBelow(held_parent_, WithoutBackslash(path))) held_.Reset();
}

bool Win32Anchor::Covers(std::string_view parent) const { return IsAtOrBelow(parent, folder_); }

bool Win32Anchor::IsInPlace(std::string_view parent, const UniqueFile& opened) const {
  if (real_.empty()) return false;
  const std::wstring place = FinalPath(opened);
  if (place.empty()) return IsNoLinkAndItsParentInPlace(parent);
  if (SamePath(place, real_ + Wide(parent.substr(folder_.size())))) return true;
  const std::wstring long_anchor = LongPath(folder_), long_parent = LongPath(parent);
  return !long_anchor.empty() && long_parent.size() >= long_anchor.size() &&
         SamePath(place, real_ + long_parent.substr(long_anchor.size()));
}

// Wine cannot tell the place of an open folder whose path is long; the way up to a folder it can
// tell is then gone step by step.
bool Win32Anchor::IsNoLinkAndItsParentInPlace(std::string_view folder) const {
  if (folder.size() <= folder_.size()) return false;
  const auto info = LookAt(WidePath("open", folder));
  if (!info || info->is_link) return false;
  const std::string_view parent = WithoutBackslash(FolderPart(folder));
  const UniqueFile opened = OpenFolder(WidePath("open", parent), FILE_READ_ATTRIBUTES, kShareAll);
  return opened && IsInPlace(parent, opened);
}

}  // namespace quellix
