#pragma once

#include <minizip/zip.h>

#include <memory>
#include <vector>

#include "backup/archive_stream.h"
#include "backup/deflater.h"
#include "backup/zip_format.h"
#include "platform/pause.h"

namespace quellix {

// Begins an entry behind the others, whose data come packed. False when that failed.
bool BeginEntry(zipFile zip, const ZipEntry& entry);
// Closes `zip`, whose directory of `count` records stays in the stream's memory. Throws Error.
void FinishZip(zipFile zip, ArchiveStream& stream, uint64_t count);

// Fills one archive through minizip. minizip fills an entry's checksum and sizes into its header as
// soon as they are known, so that each can be found without the directory, which is in memory and
// written once, by Finish.
class ZipWriter {
 public:
  // Adds to a whole archive of `count` entries, whose directory goes from the disk until Finish.
  // Throws Error.
  ZipWriter(std::unique_ptr<RandomFile> file, uint64_t count);
  // Without Finish the archive is left as after a crash.
  ~ZipWriter();
  ZipWriter(const ZipWriter&) = delete;
  ZipWriter& operator=(const ZipWriter&) = delete;

  // Adds a file of which name, times and attributes are given. Throws Error when it cannot be read
  // or the archive not be written, and when `pause` says stop: the archive is then as before.
  void Add(const ZipEntry& entry, RandomFile& source, const Pause& pause);

  // Brings everything added onto the disk. Throws Error when some of it could not be: then all that
  // was added since the last Flush is taken back.
  void Flush();

  // Takes back all that was added since the archive was opened.
  void TakeBack();

  // Writes the directory and brings it onto the disk; nothing may be added afterwards. Throws
  // Error.
  void Finish();

  uint64_t count() const { return now_.count; }

 private:
  // A state the archive can be brought back to.
  struct Mark {
    uint64_t end = 0, count = 0;
  };

  void Open(uint64_t count);
  void Fill(RandomFile& source, size_t got, bool wide, const Pause& pause);
  void ReturnTo(const Mark& mark);
  // Closes the archive as far as memory goes.
  void Drop();
  [[noreturn]] void FailOfStream() const;

  ArchiveStream stream_;
  zipFile zip_ = nullptr;
  Mark now_, durable_, first_;
  Deflater deflater_;
  std::vector<char> buffer_;
};

}  // namespace quellix
