#include <windows.h>
// After windows.h, whose types it uses.
#include <bcrypt.h>

#include "platform/sha256.h"
#include "platform/win32/lazy_library.h"
#include "platform/win32/unique.h"
#include "platform/win32/win32_error.h"

namespace quellix {
namespace {

LazyLibrary bcrypt(L"bcrypt.dll");

using UniqueHash = Unique<NullHandleTraits<BCRYPT_HASH_HANDLE, [](BCRYPT_HASH_HANDLE hash) {
  bcrypt.Find<decltype(&BCryptDestroyHash)>("BCryptDestroyHash")(hash);
}>>;

void Require(NTSTATUS status) {
  if (status < 0) throw NtError(status, Mark("Cannot compute a checksum: %2"), "");
}

// Open as long as the program runs.
BCRYPT_ALG_HANDLE OpenSha256() {
  BCRYPT_ALG_HANDLE algorithm = nullptr;
  const auto open =
      bcrypt.Find<decltype(&BCryptOpenAlgorithmProvider)>("BCryptOpenAlgorithmProvider");
  Require(open(&algorithm, BCRYPT_SHA256_ALGORITHM, nullptr, 0));
  return algorithm;
}

}  // namespace

std::string Sha256(std::string_view bytes) {
  static const BCRYPT_ALG_HANDLE algorithm = OpenSha256();
  static const auto create = bcrypt.Find<decltype(&BCryptCreateHash)>("BCryptCreateHash");
  static const auto add = bcrypt.Find<decltype(&BCryptHashData)>("BCryptHashData");
  static const auto finish = bcrypt.Find<decltype(&BCryptFinishHash)>("BCryptFinishHash");
  UniqueHash hash;
  Require(create(algorithm, hash.Put(), nullptr, 0, nullptr, 0, 0));
  std::string copy(bytes);  // the call's parameter is not const
  Require(
      add(hash.Get(), reinterpret_cast<UCHAR*>(copy.data()), static_cast<ULONG>(copy.size()), 0));
  std::string digest(32, '\0');
  Require(finish(hash.Get(), reinterpret_cast<UCHAR*>(digest.data()),
                 static_cast<ULONG>(digest.size()), 0));
  return HexDigits(digest);
}

}  // namespace quellix
