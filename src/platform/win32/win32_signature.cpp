#include <windows.h>
// After windows.h, whose types it uses.
#include <bcrypt.h>

#include "platform/sha256.h"
#include "platform/signature.h"
#include "platform/win32/lazy_library.h"
#include "platform/win32/unique.h"
#include "platform/win32/win32_error.h"

namespace quellix {
namespace {

LazyLibrary bcrypt(L"bcrypt.dll");

constexpr ULONG kNumber = 32;  // bytes

using UniqueAlgorithm = Unique<NullHandleTraits<BCRYPT_ALG_HANDLE, [](BCRYPT_ALG_HANDLE handle) {
  bcrypt.Find<decltype(&BCryptCloseAlgorithmProvider)>("BCryptCloseAlgorithmProvider")(handle, 0);
}>>;
using UniquePublicKey = Unique<NullHandleTraits<BCRYPT_KEY_HANDLE, [](BCRYPT_KEY_HANDLE key) {
  bcrypt.Find<decltype(&BCryptDestroyKey)>("BCryptDestroyKey")(key);
}>>;

UniqueAlgorithm OpenEcdsa() {
  UniqueAlgorithm algorithm;
  const auto open =
      bcrypt.Find<decltype(&BCryptOpenAlgorithmProvider)>("BCryptOpenAlgorithmProvider");
  const NTSTATUS status = open(algorithm.Put(), BCRYPT_ECDSA_P256_ALGORITHM, nullptr, 0);
  if (status < 0) throw NtError(status, Mark("Cannot verify a signature: %2"), "");
  return algorithm;
}

// As the system takes keys: a head, X and Y. Null where they are not on the curve.
UniquePublicKey KeyOf(const UniqueAlgorithm& algorithm, const std::string& point) {
  const BCRYPT_ECCKEY_BLOB head{BCRYPT_ECDSA_PUBLIC_P256_MAGIC, kNumber};
  std::string blob(reinterpret_cast<const char*>(&head), sizeof head);
  blob += point;
  UniquePublicKey key;
  const auto import = bcrypt.Find<decltype(&BCryptImportKeyPair)>("BCryptImportKeyPair");
  const NTSTATUS status =
      import(algorithm.Get(), nullptr, BCRYPT_ECCPUBLIC_BLOB, key.Put(),
             reinterpret_cast<UCHAR*>(blob.data()), static_cast<ULONG>(blob.size()), 0);
  if (status < 0) key.Release();
  return key;
}

}  // namespace

bool IsSignedBy(std::string_view key, std::string_view bytes, std::string_view signature) {
  const std::string point = FromHexDigits(key);
  std::string numbers = FromHexDigits(signature), digest = FromHexDigits(Sha256(bytes));
  if (point.size() != 2 * kNumber || numbers.size() != 2 * kNumber) return false;
  const UniqueAlgorithm algorithm = OpenEcdsa();
  const UniquePublicKey imported = KeyOf(algorithm, point);
  if (!imported) return false;
  const auto verify = bcrypt.Find<decltype(&BCryptVerifySignature)>("BCryptVerifySignature");
  const auto bytes_of = [](std::string& text) { return reinterpret_cast<UCHAR*>(text.data()); };
  return verify(imported.Get(), nullptr, bytes_of(digest), static_cast<ULONG>(digest.size()),
                bytes_of(numbers), static_cast<ULONG>(numbers.size()), 0) >= 0;
}

}  // namespace quellix
