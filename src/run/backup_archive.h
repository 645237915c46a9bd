#pragma once

#include <string>
#include <string_view>

#include "platform/file_system.h"
#include "platform/words.h"

namespace quellix {

// Where the removal mode "back up, then delete" puts files before they go. What fails throws Error.
class BackupArchive {
 public:
  virtual ~BackupArchive() = default;

  // Why no archive can be made in `folder`; empty when one can. Makes the folder. Never throws.
  virtual Sentence WhyUnusable(std::string_view folder) = 0;
  // Starts a new archive in `folder` (ends in "\") whose name begins with `prefix`; the one before
  // is finished, as far as that goes. The archive and its folder are made with the first file.
  virtual void MakeBackupArchiveName(std::string_view folder, std::string_view prefix) = 0;
  // Adds the file NamePart(path) of an open folder, under its whole path; after an Error it is not
  // in the archive. Returns what of it could not be stored, empty for nothing; in strict mode that
  // is an Error.
  virtual Sentence BackupFile(Folder& folder, std::string_view path) = 0;
  // Brings the files added since the last call onto the disk: not before that may they be removed.
  // After an Error all of them are to be taken as not archived.
  virtual void Flush() = 0;
  // Deletes the archive being filled, if any; failures are ignored. Files that an earlier run put
  // into it stay in it. With KeepOnAbort it is finished instead.
  virtual void DeleteBackupArchive() = 0;
  // The archive being filled, its full path; "" before its first file.
  virtual std::string_view Path() const { return {}; }
  // Finishes the archive being filled, if any.
  virtual void Close() = 0;
};

}  // namespace quellix
