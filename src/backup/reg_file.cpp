#include "backup/reg_file.h"

#include <algorithm>
#include <cstdio>

#include "platform/error.h"
#include "platform/text.h"
#include "platform/words.h"

namespace quellix {
namespace {

constexpr std::string_view kFormatLine = "Windows Registry Editor Version 5.00";
constexpr std::string_view kMark = "\xFF\xFE";
constexpr size_t kBytesALine = 25;

void RequireOneLine(std::string_view name) {
  if (name.find_first_of(std::string_view("\0\r\n", 3)) == name.npos) return;
  throw Error(
      Error::Kind::kOther,
      Say("A .reg file cannot hold the name \"%1\": it has a NUL or a line break in it.", name));
}

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

// A text of one line that ends with its only NUL; others keep their bytes as numbers.
std::optional<std::string> PlainText(const RegistryValue& value) {
  const std::string& bytes = value.bytes;
  if (value.type != kRegSz || bytes.size() < 2 || bytes.size() % 2 != 0) return std::nullopt;
  std::string text = FromUtf16Bytes(bytes);
  const auto is_control = [](char c) { return static_cast<unsigned char>(c) < 0x20; };
  if (text.back() != '\0' || std::count_if(text.begin(), text.end(), is_control) != 1) {
    return std::nullopt;
  }
  text.pop_back();
  return text;
}

std::string DwordText(const std::string& bytes) {
  std::string text = "dword:";
  for (size_t i = 4; i-- > 0;) {
    char digits[4];
    std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(bytes[i]));
    text += digits;
  }
  return text;
}

std::string HexText(const RegistryValue& value) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text = "hex";
  if (value.type != kRegBinary) {
    char type[16];
    std::snprintf(type, sizeof type, "(%x)", value.type);
    text += type;
  }
  text += ':';
  for (size_t i = 0; i < value.bytes.size(); ++i) {
    const auto byte = static_cast<unsigned char>(value.bytes[i]);
    if (i != 0) text += i % kBytesALine == 0 ? ",\\\r\n  " : ",";
    text += {kDigits[byte >> 4], kDigits[byte & 15]};
  }
  return text;
}

std::string ValueText(const RegistryValue& value) {
  if (const auto plain = PlainText(value)) return Quoted(*plain);
  if (value.type == kRegDword && value.bytes.size() == 4) return DwordText(value.bytes);
  return HexText(value);
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// Reads one file from its first character to its last.
class Parser {
 public:
  Parser(std::string text, const Pause& pause) : text_(std::move(text)), pause_(pause) {}

  RegFile Parse() {
    if (kFormatLine.starts_with(text_)) return {{}, !text_.empty()};
    if (Line() != kFormatLine) Fail(Mark("it is no file of the registry editor's version 5"));
    while (SkipEmpty(), at_ < text_.size()) {
      if (pause_({at_, text_.size()})) {
        throw Error(Error::Kind::kOther, Say("Reading it was stopped; the file is as it was."));
      }
      start_ = at_;
      try {
        text_[at_] == '[' ? ParseKey() : ParseValue();
      } catch (const Error&) {
        if (!IsCutOff()) throw;
        return {std::move(keys_), true};
      }
    }
    return {std::move(keys_), false};
  }

 private:
  [[noreturn]] void Fail(const char* why) const {
    const auto line = std::count(text_.begin(), text_.begin() + static_cast<long>(at_), '\n') + 1;
    throw Error(
        Error::Kind::kOther,
        // TRANSLATORS: %2 begins with a small letter: "a quote is missing".
        Say("The .reg file cannot be read: in line %1, %2.", std::to_string(line), Say(why)));
  }

  // Whether the text ends within the entry in hand: no line of it ends but those that go on.
  bool IsCutOff() const {
    for (size_t end = start_; (end = text_.find('\n', end)) != text_.npos; ++end) {
      const size_t last = text_.find_last_not_of("\r\n", end);
      if (last == text_.npos || text_[last] != '\\') return false;
    }
    return true;
  }

  char Peek() const { return at_ < text_.size() ? text_[at_] : '\0'; }
  bool Take(std::string_view text) {
    if (std::string_view(text_).substr(at_, text.size()) != text) return false;
    at_ += text.size();
    return true;
  }
  void SkipBlanks() {
    while (Peek() == ' ' || Peek() == '\t') ++at_;
  }
  // The rest of the line, without blanks at its end.
  std::string Line() {
    const size_t end = std::min(text_.find('\n', at_), text_.size());
    std::string line = text_.substr(at_, end - at_);
    at_ = std::min(end + 1, text_.size());
    line.erase(line.find_last_not_of(" \t\r") + 1);
    return line;
  }
  // Blanks, line ends and remarks.
  void SkipEmpty() {
    while (at_ < text_.size()) {
      if (std::string_view(" \t\r\n").find(text_[at_]) != std::string_view::npos) {
        ++at_;
      } else if (text_[at_] == ';') {
        Line();
      } else {
        return;
      }
    }
  }
  void RequireLineEnd() {
    SkipBlanks();
    if (Peek() == ';' || std::string_view(text_).substr(at_) == "\r") {
      Line();
    } else if (at_ < text_.size() && !Take("\r\n") && !Take("\n")) {
      Fail(Mark("something follows the value"));
    }
  }

  void ParseKey() {
    const size_t start = at_;
    const std::string line = Line();
    const std::string name = line.substr(1, line.rfind(']') - 1);
    const size_t end = std::min(name.find('\\'), name.size());
    for (const RegistryRoot root : kRegistryRoots) {
      if (!EqualsNoCase(name.substr(0, end), RootName(root)) || line.rfind(']') == line.npos)
        continue;
      if (IsCutOff()) break;
      keys_.push_back({root, name.substr(std::min(end + 1, name.size())), {}});
      return;
    }
    at_ = start;
    Fail(name.starts_with('-') ? Mark("a key is to be deleted") : Mark("no registry key is named"));
  }

  std::string ParseQuoted() {
    std::string text;
    if (!Take("\"")) Fail(Mark("a quote is missing"));
    while (!Take("\"")) {
      Take("\\");
      if (at_ >= text_.size()) Fail(Mark("a text has no end"));
      text += text_[at_++];
    }
    return text;
  }

  void ParseValue() {
    if (keys_.empty()) Fail(Mark("a value stands before the first key"));
    std::string name;
    if (!Take("@")) name = ParseQuoted();
    SkipBlanks();
    if (!Take("=")) Fail(Mark("\"=\" is missing"));
    SkipBlanks();
    const bool is_quoted = Peek() == '"';
    std::optional<RegistryValue> value;
    if (!Take("-")) value = ParseData();
    if (!is_quoted && IsCutOff()) Fail(Mark("the data of a value have no end"));
    RequireLineEnd();
    keys_.back().values.emplace_back(std::move(name), std::move(value));
  }

  RegistryValue ParseData() {
    if (Peek() == '"') return {kRegSz, ToUtf16Bytes(ParseQuoted()) + std::string(2, '\0')};
    if (Take("dword:")) return ParseDword();
    if (Take("hex:")) return {kRegBinary, ParseBytes()};
    if (Take("hex(")) {
      const uint32_t type = ParseNumber();
      if (!Take("):")) Fail(Mark("the type of a value cannot be read"));
      return {type, ParseBytes()};
    }
    Fail(Mark("the data of a value cannot be read"));
  }

  uint32_t ParseNumber() {
    uint32_t number = 0;
    int digits = 0;
    for (; HexDigit(Peek()) >= 0; ++at_, ++digits) {
      number = number << 4 | static_cast<uint32_t>(HexDigit(Peek()));
    }
    if (digits == 0 || digits > 8) Fail(Mark("a number cannot be read"));
    return number;
  }

  RegistryValue ParseDword() {
    const uint32_t number = ParseNumber();
    RegistryValue value{kRegDword, {}};
    for (int shift = 0; shift < 32; shift += 8) {
      value.bytes += static_cast<char>(number >> shift & 0xFF);
    }
    return value;
  }

  void SkipLineBreak() {
    SkipBlanks();
    if (!Take("\\")) return;
    SkipBlanks();
    if (!Take("\r\n") && !Take("\n")) Fail(Mark("a line is to go on and does not"));
    SkipBlanks();
  }

  std::string ParseBytes() {
    std::string bytes;
    SkipLineBreak();
    while (HexDigit(Peek()) >= 0) {
      const uint32_t byte = ParseNumber();
      if (byte > 0xFF) Fail(Mark("a byte cannot be read"));
      bytes += static_cast<char>(byte);
      SkipLineBreak();
      if (!Take(",")) break;
      SkipLineBreak();
    }
    return bytes;
  }

  std::string text_;
  const Pause& pause_;
  size_t at_ = 0, start_ = 0;  // of reading, and of the entry in hand
  std::vector<RegFileKey> keys_;
};

}  // namespace

void RegFileText::AddKey(RegistryRoot root, std::string_view path) {
  RequireOneLine(path);
  std::string key(RootName(root));
  if (!path.empty()) key.append("\\").append(path);
  if (key == key_) return;
  text_.append("\r\n[").append(key).append("]\r\n");
  key_ = std::move(key);
}

void RegFileText::AddValue(std::string_view name, const std::optional<RegistryValue>& value) {
  RequireOneLine(name);
  text_ += name.empty() ? "@" : Quoted(name);
  text_.append("=").append(value ? ValueText(*value) : "-").append("\r\n");
}

std::string RegFileText::Bytes() const { return ToUtf16Bytes(text_); }

std::string RegFileHeader() {
  return std::string(kMark) + ToUtf16Bytes(std::string(kFormatLine) + "\r\n");
}

RegFile ParseRegFile(std::string_view bytes, const Pause& pause) {
  if (kMark.starts_with(bytes)) return {{}, !bytes.empty()};
  if (!bytes.starts_with(kMark)) {
    throw Error(Error::Kind::kOther, Say("The .reg file cannot be read: it is not UTF-16 text."));
  }
  return Parser(FromUtf16Bytes(bytes.substr(kMark.size())), pause).Parse();
}

}  // namespace quellix
