#pragma once

#include <minizip/ioapi.h>

#include <cstdint>
#include <memory>
#include <string>

#include "platform/file_system.h"
#include "platform/words.h"

namespace quellix {

// An archive's file as minizip sees it: a place in it that moves on, with the last bytes held in
// memory until there are enough of them to be written at once. minizip's calls fail where the file
// does; Problem tells why then. The other functions throw Error.
class ArchiveStream {
 public:
  explicit ArchiveStream(std::unique_ptr<RandomFile> file);
  ArchiveStream(const ArchiveStream&) = delete;
  ArchiveStream& operator=(const ArchiveStream&) = delete;

  // For minizip; the stream must outlive what it opens.
  zlib_filefunc64_def Functions();

  uint64_t Size() const { return on_disk_ + tail_.size(); }
  uint64_t place() const { return place_; }
  void Seek(uint64_t place) { place_ = place; }
  size_t Read(uint64_t offset, std::span<char> buffer);
  std::string ReadText(uint64_t offset, uint64_t size);
  void Write(std::string_view bytes);
  // Forgets what lies behind `end`, and goes there. On the disk it is cut off now or by Flush, or
  // else by a repair.
  void Cut(uint64_t end);
  // Hands the bytes in memory over to the system.
  void WriteOut();
  // Brings all of it onto the disk, and nothing behind it.
  void Flush();

  enum class Writes { kDone, kHeld, kDropped };  // kHeld: whatever they take, they stay in memory
  void Set(Writes writes) { writes_ = writes; }

  const Sentence& Problem() const { return problem_; }

 private:
  size_t ReadCached(uint64_t offset, std::span<char> buffer);
  template <class Step>
  bool Try(const Step& step);

  static voidpf OnOpen(voidpf self, const void* name, int mode);
  static uLong OnRead(voidpf self, voidpf stream, void* buffer, uLong size);
  static uLong OnWrite(voidpf self, voidpf stream, const void* buffer, uLong size);
  static ZPOS64_T OnTell(voidpf self, voidpf stream);
  static long OnSeek(voidpf self, voidpf stream, ZPOS64_T offset, int origin);
  static int OnClose(voidpf self, voidpf stream);
  static int OnError(voidpf self, voidpf stream);

  std::unique_ptr<RandomFile> file_;
  uint64_t on_disk_;          // bytes of the archive that are in the file
  std::string tail_;          // those behind them
  bool more_behind_ = false;  // what a failed write or an end that was cut off may have left
  uint64_t place_ = 0;
  Writes writes_ = Writes::kDone;
  bool read_short_ = false;
  std::string cache_;
  uint64_t cached_ = 0;  // where the cache begins
  Sentence problem_;
};

}  // namespace quellix
