#pragma once

#include <zlib.h>

#include <functional>
#include <string_view>
#include <vector>

namespace quellix {

// Packs one entry's data after the other. Its memory is kept from one to the next: for small files
// fetching it would cost as much as the packing itself.
class Deflater {
 public:
  Deflater();
  ~Deflater();
  Deflater(const Deflater&) = delete;
  Deflater& operator=(const Deflater&) = delete;

  // Begins an entry, whatever became of the one before.
  void Begin();
  // Hands what `bytes` are packed to on to `write`, by and by; `last` ends the entry.
  using Write = std::function<void(std::string_view packed)>;
  void Pack(std::string_view bytes, bool last, const Write& write);

 private:
  z_stream stream_{};
  std::vector<char> out_;
};

}  // namespace quellix
