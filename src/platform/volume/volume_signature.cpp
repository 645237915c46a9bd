#include <nettle/ecc-curve.h>
#include <nettle/ecdsa.h>
#include <nettle/sha2.h>

#include "platform/signature.h"

namespace quellix {
namespace {

constexpr size_t kNumber = 32;  // bytes

// One of the library's large numbers.
class Number {
 public:
  explicit Number(std::string_view bytes) {
    mpz_init(value_);
    mpz_import(value_, bytes.size(), 1, 1, 1, 0, bytes.data());
  }
  ~Number() { mpz_clear(value_); }
  Number(const Number&) = delete;
  Number& operator=(const Number&) = delete;
  mpz_srcptr Get() const { return value_; }

 private:
  mpz_t value_;
};

class Point {
 public:
  Point() { ecc_point_init(&point_, nettle_get_secp_256r1()); }
  ~Point() { ecc_point_clear(&point_); }
  Point(const Point&) = delete;
  Point& operator=(const Point&) = delete;
  // False where it is not on the curve.
  bool Set(const Number& x, const Number& y) { return ecc_point_set(&point_, x.Get(), y.Get()); }
  const ecc_point* Get() const { return &point_; }

 private:
  ecc_point point_;
};

class Signature {
 public:
  Signature(const Number& r, const Number& s) {
    dsa_signature_init(&signature_);
    mpz_set(signature_.r, r.Get());
    mpz_set(signature_.s, s.Get());
  }
  ~Signature() { dsa_signature_clear(&signature_); }
  Signature(const Signature&) = delete;
  Signature& operator=(const Signature&) = delete;
  const dsa_signature* Get() const { return &signature_; }

 private:
  dsa_signature signature_;
};

}  // namespace

bool IsSignedBy(std::string_view key, std::string_view bytes, std::string_view signature) {
  const std::string point = FromHexDigits(key), numbers = FromHexDigits(signature);
  if (point.size() != 2 * kNumber || numbers.size() != 2 * kNumber) return false;
  Point wanted;
  if (!wanted.Set(Number(point.substr(0, kNumber)), Number(point.substr(kNumber)))) return false;
  sha256_ctx hash;
  sha256_init(&hash);
  sha256_update(&hash, bytes.size(), reinterpret_cast<const uint8_t*>(bytes.data()));
  uint8_t digest[SHA256_DIGEST_SIZE];
  sha256_digest(&hash, sizeof digest, digest);
  const Signature given(Number(numbers.substr(0, kNumber)), Number(numbers.substr(kNumber)));
  return ecdsa_verify(wanted.Get(), sizeof digest, digest, given.Get()) == 1;
}

}  // namespace quellix
