#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include "backup/small_files.h"
#include "backup/zip_format.h"

namespace quellix {

// Fills one archive. Entries are written one behind the other with their sizes known, so that each
// can be found without the directory; the directory is written once, by Finish. That an entry can
// be taken back when it fails is why entries are not written by minizip, which only adds.
class ZipWriter {
 public:
  // What an archive holds already.
  struct Content {
    std::string directory;  // its records
    uint64_t count = 0;
    uint64_t end = 0;  // where the next entry begins
  };
  // True ends the work on the file in hand.
  using Pause = std::function<bool()>;

  // Writes behind the content and cuts off what stood there. Throws Error.
  ZipWriter(std::unique_ptr<RandomFile> file, Content content);

  // Adds a file of which name, times and attributes are given. Throws Error when it cannot be read
  // or the archive not be written, and when `pause` says stop: the archive is then as before, or,
  // when files added earlier have not reached it either, all calls fail until Flush has said so.
  void Add(ZipEntry entry, RandomFile& source, const Pause& pause);

  // Brings everything added onto the disk. Throws Error when some of it could not be: then all that
  // was added since the last Flush is taken back.
  void Flush();

  // Takes back all that was added since the archive was opened.
  void TakeBack();

  // Writes the directory and brings it onto the disk; nothing may be added afterwards. Throws
  // Error.
  void Finish();

  bool empty() const { return now_.count == 0 && collecting_.empty() && packing_.empty(); }

 private:
  // A state the archive can be brought back to.
  struct Mark {
    uint64_t end = 0, count = 0;
    size_t directory = 0;
  };

  void AddLarge(ZipEntry& entry, RandomFile& source, const Pause& pause);
  void Append(const ZipEntry& entry, uint64_t end);
  void StartPacking();
  void TakePacked();
  void FinishPacking();
  void WriteOut();
  template <class Step>
  void OrFail(const Step& step);
  void ReturnTo(const Mark& mark);

  std::unique_ptr<RandomFile> file_;
  std::string directory_;
  std::string waiting_;  // bytes that end at now_.end, not yet written
  Mark now_, durable_, first_;
  bool failed_ = false;  // something added since the last Flush is lost
  std::vector<char> buffer_;
  // Small files are packed by other threads and written in their order.
  SmallFiles collecting_;
  std::deque<std::future<SmallFiles::Packed>> packing_;
};

}  // namespace quellix
