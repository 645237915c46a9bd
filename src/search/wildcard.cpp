#include "search/wildcard.h"

#include "platform/text.h"

namespace quellix {

Wildcard::Wildcard(std::string_view text) {
  const std::u16string pattern = ToUtf16(text);
  for (size_t at = 0; at < pattern.size() && valid_;) {
    const char16_t c = pattern[at];
    if (c == u'[') {
      at = ParseSet(pattern, at + 1);
      continue;
    }
    ++at;
    if (c == u'*' && !pieces_.empty() && pieces_.back().kind == Piece::kRun) continue;
    pieces_.push_back({c == u'*'   ? Piece::kRun
                       : c == u'?' ? Piece::kAny
                       : c == u'#' ? Piece::kDigit
                                   : Piece::kCharacter,
                       c});
  }
}

// From behind the "[" to behind the "]".
size_t Wildcard::ParseSet(std::u16string_view pattern, size_t at) {
  const size_t end = pattern.find(u']', at);
  if (end == pattern.npos) {
    valid_ = false;
    return at;
  }
  std::u16string_view inside = pattern.substr(at, end - at);
  Piece set{Piece::kSet};
  // "[!]" is the character itself.
  set.negated = inside.size() > 1 && inside.front() == u'!';
  if (set.negated) inside.remove_prefix(1);
  for (size_t i = 0; i < inside.size(); ++i) {
    const bool is_range = i + 2 < inside.size() && inside[i + 1] == u'-';
    const char16_t first = inside[i], last = inside[is_range ? i + 2 : i];
    if (first > last) valid_ = false;
    set.ranges.append({first, last});
    if (is_range) i += 2;
  }
  if (!set.ranges.empty()) pieces_.push_back(std::move(set));
  return end + 1;
}

bool Wildcard::Fits(const Piece& piece, char16_t character) {
  switch (piece.kind) {
    case Piece::kAny:
      return true;
    case Piece::kDigit:
      return character >= u'0' && character <= u'9';
    case Piece::kCharacter:
      return character == piece.character;
    case Piece::kSet:
      for (size_t i = 0; i < piece.ranges.size(); i += 2) {
        if (character >= piece.ranges[i] && character <= piece.ranges[i + 1]) return !piece.negated;
      }
      return piece.negated;
    case Piece::kRun:
      break;
  }
  return false;
}

// On a mismatch only the last run is tried again, one character longer.
bool Wildcard::Matches(std::u16string_view text) const {
  if (!valid_) return false;
  constexpr size_t kNone = static_cast<size_t>(-1);
  size_t t = 0, p = 0, run = kNone, resume = 0;
  while (t < text.size()) {
    if (p < pieces_.size() && pieces_[p].kind == Piece::kRun) {
      run = p++;
      resume = t;
      if (p == pieces_.size()) return true;
    } else if (p < pieces_.size() && Fits(pieces_[p], text[t])) {
      ++p;
      ++t;
    } else if (run != kNone) {
      p = run + 1;
      t = ++resume;
    } else {
      return false;
    }
  }
  return p == pieces_.size() || (p + 1 == pieces_.size() && pieces_[p].kind == Piece::kRun);
}

}  // namespace quellix
