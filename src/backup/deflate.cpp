#include "backup/deflate.h"

#include <zlib.h>

#include <algorithm>
#include <deque>
#include <future>
#include <stdexcept>
#include <thread>
#include <vector>

namespace quellix {
namespace {

constexpr int kLevel = 6;
constexpr int kWindowBits = 15;
constexpr int kMemoryLevel = 8;
constexpr size_t kWindow = size_t{1} << kWindowBits;
constexpr size_t kPiece = 512 << 10;

Bytef* AsBytes(const char* text) {
  return const_cast<Bytef*>(reinterpret_cast<const Bytef*>(text));  // zlib's const came later
}

void Start(z_stream& stream) {
  if (deflateInit2(&stream, kLevel, Z_DEFLATED, -kWindowBits, kMemoryLevel, Z_DEFAULT_STRATEGY) !=
      Z_OK) {
    throw std::bad_alloc();
  }
}

// Appends everything compressed; the stream is ended or flushed to a whole byte.
void Run(z_stream& stream, std::span<const char> bytes, int flush, std::string& packed) {
  const size_t before = packed.size();
  packed.resize(before + deflateBound(&stream, static_cast<uLong>(bytes.size())) + 16);
  stream.next_in = AsBytes(bytes.data());
  stream.avail_in = static_cast<uInt>(bytes.size());
  stream.next_out = AsBytes(packed.data() + before);
  stream.avail_out = static_cast<uInt>(packed.size() - before);
  const int result = deflate(&stream, flush);
  if (result != (flush == Z_FINISH ? Z_STREAM_END : Z_OK)) throw std::runtime_error("deflate");
  packed.resize(packed.size() - stream.avail_out);
}

// A piece of a long stream with what stood before it.
struct Piece {
  std::vector<char> bytes;  // the window before the piece, then the piece
  size_t window = 0;
  bool last = false;
};

std::string PackPiece(const Piece& piece) {
  z_stream stream{};
  Start(stream);
  const std::unique_ptr<z_stream, decltype(&deflateEnd)> end(&stream, &deflateEnd);
  const std::span<const char> all(piece.bytes);
  deflateSetDictionary(&stream, AsBytes(all.data()), static_cast<uInt>(piece.window));
  std::string packed;
  Run(stream, all.subspan(piece.window), piece.last ? Z_FINISH : Z_SYNC_FLUSH, packed);
  return packed;
}

Piece NextPiece(const Piece& before, const std::function<size_t(std::span<char>)>& read) {
  Piece piece;
  piece.window = std::min(before.bytes.size(), kWindow);
  piece.bytes.resize(piece.window + kPiece);
  std::copy(before.bytes.end() - static_cast<std::ptrdiff_t>(piece.window), before.bytes.end(),
            piece.bytes.begin());
  const size_t got = read(std::span(piece.bytes).subspan(piece.window));
  piece.bytes.resize(piece.window + got);
  piece.last = got < kPiece;
  return piece;
}

}  // namespace

struct Deflater::Stream {
  z_stream zlib{};
  Stream() { Start(zlib); }
  ~Stream() { deflateEnd(&zlib); }
};

Deflater::Deflater() : stream_(std::make_unique<Stream>()) {}
Deflater::~Deflater() = default;

void Deflater::Pack(std::span<const char> bytes, std::string& packed) {
  deflateReset(&stream_->zlib);
  Run(stream_->zlib, bytes, Z_FINISH, packed);
}

uint32_t Checksum(uint32_t so_far, std::span<const char> bytes) {
  return static_cast<uint32_t>(crc32_z(so_far, AsBytes(bytes.data()), bytes.size()));
}

PackedTotals DeflateStream(const std::function<size_t(std::span<char>)>& read,
                           const std::function<void(std::string_view)>& write) {
  const size_t at_once = std::max(2u, std::thread::hardware_concurrency() + 1);
  std::deque<std::future<std::string>> working;
  PackedTotals totals;
  const auto write_first = [&] {
    const std::string packed = working.front().get();
    working.pop_front();
    write(packed);
    totals.packed += packed.size();
  };
  auto piece = std::make_shared<const Piece>();
  do {
    piece = std::make_shared<const Piece>(NextPiece(*piece, read));
    const auto fresh = std::span(piece->bytes).subspan(piece->window);
    totals.crc = Checksum(totals.crc, fresh);
    totals.size += fresh.size();
    working.push_back(std::async(std::launch::async, [piece] { return PackPiece(*piece); }));
    if (working.size() >= at_once) write_first();
  } while (!piece->last);
  while (!working.empty()) write_first();
  return totals;
}

std::optional<PackedTotals> InflateStream(const std::function<size_t(std::span<char>)>& read,
                                          const std::function<void(std::string_view)>& write) {
  z_stream stream{};
  if (inflateInit2(&stream, -kWindowBits) != Z_OK) throw std::bad_alloc();
  const std::unique_ptr<z_stream, decltype(&inflateEnd)> end(&stream, &inflateEnd);
  std::vector<char> in(64 << 10), out(256 << 10);
  PackedTotals found;
  for (int result = Z_OK; result != Z_STREAM_END;) {
    if (stream.avail_in == 0) {
      stream.avail_in = static_cast<uInt>(read(in));
      stream.next_in = AsBytes(in.data());
      if (stream.avail_in == 0) return std::nullopt;
    }
    const size_t offered = stream.avail_in;
    stream.next_out = AsBytes(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    result = inflate(&stream, Z_NO_FLUSH);
    if (result != Z_OK && result != Z_STREAM_END) return std::nullopt;
    const size_t made = out.size() - stream.avail_out;
    found.packed += offered - stream.avail_in;
    found.size += made;
    found.crc = Checksum(found.crc, std::span(out).first(made));
    write({out.data(), made});
  }
  return found;
}

}  // namespace quellix
