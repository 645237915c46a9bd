#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quellix {

// A pattern of the unnecessary file types: "*" any run, "?" one character, "#" one digit, "[abc]"
// one of them, "[a-z]" a range, "[!a-z]" none of them; "[]" is nothing at all. A "-" at either end
// of the brackets is itself. Upper case is the caller's: give it UpCase'd text.
class Wildcard {
 public:
  explicit Wildcard(std::string_view pattern);

  // False for a pattern whose bracket is not closed or whose range runs backward; it matches
  // nothing.
  bool valid() const { return valid_; }
  // The whole text. The empty pattern matches the empty text only. Takes at most time proportional
  // to text times pattern.
  bool Matches(std::u16string_view text) const;

 private:
  struct Piece {
    enum Kind { kRun, kAny, kDigit, kCharacter, kSet } kind;
    char16_t character = 0;
    bool negated = false;
    std::u16string ranges = {};  // pairs: first, last
  };

  static bool Fits(const Piece& piece, char16_t character);
  size_t ParseSet(std::u16string_view pattern, size_t at);

  std::vector<Piece> pieces_;
  bool valid_ = true;
};

}  // namespace quellix
