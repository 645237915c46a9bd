#pragma once

#include <memory>
#include <optional>
#include <string>

#include "backup/zip_reader.h"
#include "backup/zip_scan.h"
#include "platform/words.h"

namespace quellix {

// What an archive without a whole directory holds.
struct Repair {
  uint64_t kept = 0;        // entries that are whole
  uint64_t damaged = 0;     // entries in between that are not
  uint64_t unverified = 0;  // encrypted, or packed in a way that only others know
  uint64_t cut_off = 0;     // bytes behind the last entry
  // "3 file(s) whole, 1 damaged, …".
  Sentence Counts() const;
};

// An archive, for reading: nothing is written, whatever its state. One without a whole directory is
// read entry by entry as far as they are whole, and `found` says how far. Where `pause` ends that,
// and for what is no archive, it throws Error.
std::unique_ptr<ZipReader> OpenZip(FileSystem& files, std::string_view path,
                                   std::optional<Repair>& found, const Pause& pause = {});
// The same of an archive that is open; `name` is for messages.
std::unique_ptr<ZipReader> ReadZip(std::unique_ptr<RandomFile> file, std::string_view name,
                                   std::optional<Repair>& found, const Pause& pause);

// Makes one of this program's archives (by its name) whole: what is whole in it goes, with a new
// directory, into a new file, which takes its place in one step once it is on the disk. Nothing
// when it was whole already. Throws Error, and the archive is as it was: for an archive of another
// name, when entries would go of which nobody can tell whether they are whole, when the disk is
// full, and where `pause` ends it.
std::optional<Repair> RepairArchive(FileSystem& files, std::string_view path,
                                    const Pause& pause = {});
// Its work: the entries that are whole, from one file into another that is empty.
void CopyEntries(ArchiveStream& from, std::vector<ScannedEntry> entries,
                 std::unique_ptr<RandomFile> to, const Pause& pause);

}  // namespace quellix
