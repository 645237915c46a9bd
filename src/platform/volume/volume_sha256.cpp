#include <nettle/sha2.h>

#include "platform/sha256.h"

namespace quellix {

std::string Sha256(std::string_view bytes) {
  sha256_ctx hash;
  sha256_init(&hash);
  sha256_update(&hash, bytes.size(), reinterpret_cast<const uint8_t*>(bytes.data()));
  uint8_t digest[SHA256_DIGEST_SIZE];
  sha256_digest(&hash, sizeof digest, digest);
  return HexDigits({reinterpret_cast<const char*>(digest), sizeof digest});
}

}  // namespace quellix
