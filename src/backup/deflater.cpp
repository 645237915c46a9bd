#include "backup/deflater.h"

#include <new>

namespace quellix {
namespace {

constexpr size_t kOut = 256 << 10;

}  // namespace

Deflater::Deflater() : out_(kOut) {
  if (deflateInit2(&stream_, Z_DEFAULT_COMPRESSION, Z_DEFLATED, -MAX_WBITS, MAX_MEM_LEVEL,
                   Z_DEFAULT_STRATEGY) != Z_OK) {
    throw std::bad_alloc();
  }
}

Deflater::~Deflater() { deflateEnd(&stream_); }

void Deflater::Begin() { deflateReset(&stream_); }

void Deflater::Pack(std::string_view bytes, bool last, const Write& write) {
  stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream_.avail_in = static_cast<uInt>(bytes.size());
  do {
    stream_.next_out = reinterpret_cast<Bytef*>(out_.data());
    stream_.avail_out = static_cast<uInt>(out_.size());
    deflate(&stream_, last ? Z_FINISH : Z_NO_FLUSH);
    write({out_.data(), out_.size() - stream_.avail_out});
  } while (stream_.avail_out == 0);
}

}  // namespace quellix
