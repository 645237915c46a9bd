#pragma once

#include <string>
#include <vector>

#include "platform/forwarding_file_system.h"
#include "platform/user_profiles.h"

namespace quellix {

// The files of this Windows for a run on what is another user's. He may lay links in his profile
// and name what paths he likes in his registry and files, and must have nothing changed that he
// could not change himself. So in his profile no link is followed, and everything outside it is for
// reading alone (else kDenied) but for the program's own folders; what lies on other machines,
// which would be told who asks, counts as missing.
class OtherUserFiles : public ForwardingFileSystem {
 public:
  // `own`: folders that the program writes in; they may be missing yet. A drive's root, or one that
  // holds the profile, is none.
  OtherUserFiles(FileSystem& inner, const UserProfile& user, const std::vector<std::string>& own);

  std::unique_ptr<Folder> OpenFolder(std::string_view path) override;
  std::unique_ptr<Folder> OpenLinked(std::string_view path) override;
  std::optional<FileInfo> Look(std::string_view path, Detail detail = Detail::kFull) override;
  bool IsGone(std::string_view path) override;
  std::optional<std::string> ReadWholeFile(std::string_view path, uint64_t limit) override;
  void WriteWholeFile(std::string_view path, std::string_view bytes) override;

  // Throws Error (kDenied), naming a path outside.
  [[noreturn]] void Refuse(std::string_view path) const;
  // Whether a folder is one of the program's own, or one that such a one lies in.
  bool LeadsToOwn(std::string_view folder) const;

 private:
  enum class Place { kProfile, kBelow, kOwn, kOutside, kNowhere };
  Place PlaceOf(std::string_view path) const;
  std::unique_ptr<Folder> Wrapped(std::string_view path, std::unique_ptr<Folder> folder) const;

  const std::string name_, profile_;
  std::vector<std::string> own_;
};

// Whether a path is that of a folder, or of something in it, by names alone: none is "." or "..".
bool IsAtOrBelow(std::string_view folder, std::string_view path);

}  // namespace quellix
