#include "platform/signature.h"
#include "support/holds.h"

namespace quellix {
namespace {

constexpr const char* kBytes = "what is signed\n";
const std::string kKey =
    "a1521a08117d727566152d399b0cff9962e1a908ef83a7a7b3fe7d4b722133d6"
    "f1927032a83090de8928485a0e5adc840c3cc04083aa4940bfada245db1c3831";
const std::string kOtherKey =
    "eb9df172dfa55270f305a1bf5f198afe9ed46ca040019e365dbdd9cf6a8ae661"
    "0d04cb99108e060e4079ab104911a8a7dff711e618d240aeb2083a1800abe3ef";
const std::string kSignature =
    "46997733df19e4ca6d48fdab93e48df6f7e6efe88265af34a5a1ba837efc0864"
    "c9ae3b7719cc55c8f9cec7ec6826754d2cee503015d3341237495e516691974e";

TEST(SignatureTest, OnlyTheKeysOwnSignatureOfTheseBytesCounts) {
  std::string upper = kSignature;
  for (char& digit : upper) digit = static_cast<char>(std::toupper(digit));
  const std::string zeros(128, '0'), order =
                                         "ffffffff00000000ffffffffffffffff"
                                         "bce6faada7179e84f3b9cac2fc632551";
  const std::tuple<const char*, std::string, std::string, std::string, bool> kRows[] = {
      {"as it was signed", kKey, kBytes, kSignature, true},
      {"upper case", kKey, kBytes, upper, true},
      {"another text", kKey, "what is signed", kSignature, false},
      {"no text", kKey, "", kSignature, false},
      {"another key", kOtherKey, kBytes, kSignature, false},
      {"no key", "", kBytes, kSignature, false},
      {"a key that is no point", std::string(127, '1') + "2", kBytes, kSignature, false},
      {"a key of zeros", zeros, kBytes, kSignature, false},
      {"a key cut off", kKey.substr(0, 126), kBytes, kSignature, false},
      {"no signature", kKey, kBytes, "", false},
      {"zeros", kKey, kBytes, zeros, false},
      {"the order of the curve", kKey, kBytes, order + order, false},
      {"no digits", kKey, kBytes, kSignature.substr(0, 127) + "g", false},
      {"too long", kKey, kBytes, kSignature + "00", false},
      {"one digit else", kKey, kBytes, kSignature.substr(0, 127) + "f", false},
  };
  for (const auto& [name, key, bytes, signature, counts] : kRows)
    EXPECT_EQ(IsSignedBy(key, bytes, signature), counts) << name;
}

}  // namespace
}  // namespace quellix
