#include "platform/words.h"

#include <atomic>
#include <cstring>
#include <utility>

#include "platform/error.h"

namespace quellix {
namespace {

constexpr uint32_t kMagic = 0x950412de;
constexpr size_t kLongestRule = 400;  // it is read by recursion
constexpr size_t kHead = 20;          // magic, revision, how many, where the two tables begin

// An expression of C over the number n, as the head of a catalogue has one: what it lacks of C are
// assignments, bits and calls.
class PluralExpression {
 public:
  PluralExpression(std::string_view text, uint64_t n) : text_(text), n_(n) {}

  uint64_t Value() {
    const uint64_t condition = Binary(0);
    if (!Take("?")) return condition;
    const uint64_t then = Value();
    if (!Take(":")) Fail();
    const uint64_t otherwise = Value();
    return condition != 0 ? then : otherwise;
  }
  bool is_read() {
    SkipBlanks();
    return text_.empty();
  }

 private:
  static constexpr std::string_view kOperators[][4] = {
      {"||"}, {"&&"}, {"==", "!="}, {"<=", ">=", "<", ">"}, {"+", "-"}, {"*", "/", "%"}};

  [[noreturn]] static void Fail() {
    throw Error(Error::Kind::kOther, "The catalogue's rule for plurals is not understood.");
  }

  uint64_t Binary(size_t level) {
    if (level == std::size(kOperators)) return Unary();
    uint64_t left = Binary(level + 1);
    for (std::string_view sign; !(sign = TakeOne(level)).empty();) {
      left = Calculate(left, sign, Binary(level + 1));
    }
    return left;
  }
  uint64_t Unary() {
    if (Take("!")) return Unary() == 0;
    if (Take("n")) return n_;
    if (Take("(")) {
      const uint64_t value = Value();
      if (!Take(")")) Fail();
      return value;
    }
    return Number();
  }
  uint64_t Number() {
    SkipBlanks();
    if (text_.empty() || text_[0] < '0' || text_[0] > '9') Fail();
    uint64_t value = 0;
    for (; !text_.empty() && text_[0] >= '0' && text_[0] <= '9'; text_.remove_prefix(1)) {
      value = value * 10 + static_cast<uint64_t>(text_[0] - '0');
    }
    return value;
  }
  static uint64_t Calculate(uint64_t a, std::string_view sign, uint64_t b) {
    if ((sign == "/" || sign == "%") && b == 0) return 0;  // for whichever number it comes to that
    if (sign == "||") return a != 0 || b != 0;
    if (sign == "&&") return a != 0 && b != 0;
    if (sign == "==") return a == b;
    if (sign == "!=") return a != b;
    if (sign == "<=") return a <= b;
    if (sign == ">=") return a >= b;
    if (sign == "<") return a < b;
    if (sign == ">") return a > b;
    if (sign == "+") return a + b;
    if (sign == "-") return a - b;
    if (sign == "*") return a * b;
    return sign == "/" ? a / b : a % b;
  }
  std::string_view TakeOne(size_t level) {
    for (const std::string_view sign : kOperators[level]) {
      if (!sign.empty() && Take(sign)) return sign;
    }
    return {};
  }
  bool Take(std::string_view sign) {
    SkipBlanks();
    if (!text_.starts_with(sign)) return false;
    text_.remove_prefix(sign.size());
    return true;
  }
  void SkipBlanks() {
    while (!text_.empty() && (text_[0] == ' ' || text_[0] == '\t')) text_.remove_prefix(1);
  }

  std::string_view text_;
  uint64_t n_;
};

// The value of a field of a catalogue's head; empty when it has none.
std::string_view FieldOf(std::string_view head, std::string_view name) {
  const size_t at = head.find(name);
  if (at == std::string_view::npos) return {};
  const std::string_view rest = head.substr(at + name.size());
  return rest.substr(0, rest.find_first_of(";\n"));
}

Catalogue& Now() {
  static Catalogue words;
  return words;
}

std::atomic<bool> speaks_in_logs = false;

}  // namespace

Catalogue::Catalogue(std::string mo) : mo_(std::move(mo)) {
  if (mo_.size() < kHead || NumberAt(0) != kMagic) {
    throw Error(Error::Kind::kOther, "This is no catalogue of texts.");
  }
  count_ = NumberAt(8);
  names_ = NumberAt(12);
  texts_ = NumberAt(16);
  // Each text is looked at once, so that none needs to be when it is asked for.
  for (size_t i = 0; i < count_; ++i) TextAt(names_, i), TextAt(texts_, i);
  plural_ = FieldOf(Find(""), "plural=");
  if (plural_.empty()) plural_ = "n != 1";
  if (plural_.size() > kLongestRule) {
    throw Error(Error::Kind::kOther, "The catalogue's rule for plurals is too long.");
  }
  PluralExpression rule(plural_, 1);
  rule.Value();
  if (!rule.is_read()) throw Error(Error::Kind::kOther, "The rule for plurals goes on: " + plural_);
}

uint32_t Catalogue::NumberAt(size_t at) const {
  if (at > mo_.size() || mo_.size() - at < 4) {
    throw Error(Error::Kind::kOther, "The catalogue of texts is cut off.");
  }
  uint32_t number = 0;
  for (size_t i = 4; i-- > 0;) number = number << 8 | static_cast<unsigned char>(mo_[at + i]);
  return number;
}

std::string_view Catalogue::TextAt(size_t table, size_t index) const {
  const size_t length = NumberAt(table + 8 * index), at = NumberAt(table + 8 * index + 4);
  if (at > mo_.size() || mo_.size() - at < length) {
    throw Error(Error::Kind::kOther, "The catalogue of texts is cut off.");
  }
  return std::string_view(mo_).substr(at, length);
}

// Names are sorted by their bytes; that of a text with plurals is its first form, behind which the
// second stands after a NUL.
std::string_view Catalogue::Find(std::string_view name) const {
  size_t first = 0, last = count_;
  while (first < last) {
    const size_t middle = first + (last - first) / 2;
    const std::string_view found = TextAt(names_, middle);
    const std::string_view one = found.substr(0, found.find('\0'));
    if (one == name) return TextAt(texts_, middle);
    (one < name ? first : last) = one < name ? middle + 1 : middle;
  }
  return {};
}

std::string_view Catalogue::Field(std::string_view name) const {
  return FieldOf(Find(""), std::string(name) + ": ");
}

std::string_view Catalogue::Of(std::string_view english) const {
  if (english.empty()) return english;  // names the catalogue's head
  const std::string_view forms = Find(english), text = forms.substr(0, forms.find('\0'));
  return text.empty() ? english : text;
}

std::string_view Catalogue::Of(std::string_view one, std::string_view many, uint64_t count) const {
  std::string_view forms = Find(one);
  if (forms.empty()) return count == 1 ? one : many;
  for (uint64_t form = PluralExpression(plural_, count).Value(); form > 0; --form) {
    const size_t end = forms.find('\0');
    if (end == std::string_view::npos) break;
    forms.remove_prefix(end + 1);
  }
  const std::string_view form = forms.substr(0, forms.find('\0'));
  return !form.empty() ? form : count == 1 ? one : many;
}

void Speak(Catalogue words) { Now() = std::move(words); }

const Catalogue& Spoken() { return Now(); }

void FillInto(std::string& text, std::string_view pattern,
              std::initializer_list<std::string_view> values) {
  text.clear();
  size_t from = 0;
  for (size_t at = 0; (at = pattern.find('%', at)) != pattern.npos && at + 1 < pattern.size();) {
    const auto place = static_cast<size_t>(pattern[at + 1] - '1');
    if (place >= values.size()) {
      ++at;
      continue;
    }
    text.append(pattern, from, at - from).append(values.begin()[place]);
    from = at += 2;
  }
  text.append(pattern.substr(from));
}

std::string Fill(std::string_view pattern, std::initializer_list<std::string_view> values) {
  std::string text;
  FillInto(text, pattern, values);
  return text;
}

std::string Shown(const std::exception& error) {
  const auto* const ours = dynamic_cast<const Error*>(&error);
  return ours ? ours->shown() : error.what();
}

Sentence SentenceOf(const std::exception& error) { return {error.what(), Shown(error)}; }

void SpeakInLogs(bool does) { speaks_in_logs = does; }

const Catalogue& SpokenInLogs() {
  static const Catalogue english;
  return speaks_in_logs ? Now() : english;
}

const std::string& Logged(const Sentence& sentence) {
  return speaks_in_logs ? sentence.shown : sentence.english;
}

std::string Logged(const std::exception& error) { return Logged(SentenceOf(error)); }

}  // namespace quellix
