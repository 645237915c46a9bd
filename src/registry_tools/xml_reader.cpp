#include "registry_tools/xml_reader.h"

#include <algorithm>
#include <charconv>
#include <vector>

#include "platform/error.h"
#include "platform/text.h"

namespace quellix {
namespace {

constexpr size_t kMostLevels = 64;
constexpr std::string_view kSpaces = " \t\r\n";

[[noreturn]] void Refuse(const Sentence& why) {
  throw Error(Error::Kind::kOther, Say("The file is no XML document: %1", why));
}

std::string Decoded(std::string_view bytes) {
  constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF", kUtf16Mark = "\xFF\xFE";
  if (bytes.starts_with(kUtf16Mark)) return FromUtf16Bytes(bytes.substr(kUtf16Mark.size()));
  if (bytes.size() > 1 && bytes[1] == '\0') return FromUtf16Bytes(bytes);
  if (bytes.starts_with(kUtf8Mark)) bytes.remove_prefix(kUtf8Mark.size());
  return std::string(bytes);
}

std::string_view Trimmed(std::string_view text) {
  const size_t start = text.find_first_not_of(kSpaces);
  if (start == text.npos) return {};
  return text.substr(start, text.find_last_not_of(kSpaces) + 1 - start);
}

// The character of "#65" or "#x41".
std::string CharacterOf(std::string_view number) {
  const bool is_hex = number.starts_with("#x");
  number.remove_prefix(is_hex ? 2 : 1);
  uint32_t code = 0;
  const char* const end = number.data() + number.size();
  const auto read = std::from_chars(number.data(), end, code, is_hex ? 16 : 10);
  if (read.ec != std::errc() || read.ptr != end || code == 0 || code > 0x10FFFF)
    Refuse(Say("a character in it has no such number."));
  std::u16string text;
  if (code > 0xFFFF) text += static_cast<char16_t>(0xD7C0 + (code >> 10));
  text += static_cast<char16_t>(code > 0xFFFF ? 0xDC00 + (code & 0x3FF) : code);
  return ToUtf8(text);
}

std::string EntityOf(std::string_view name) {
  constexpr std::pair<std::string_view, const char*> kEntities[] = {
      {"lt", "<"}, {"gt", ">"}, {"amp", "&"}, {"quot", "\""}, {"apos", "'"}};
  if (name.starts_with('#')) return CharacterOf(name);
  const auto* const known =
      std::ranges::find(kEntities, name, &std::pair<std::string_view, const char*>::first);
  if (known == std::end(kEntities)) Refuse(Say("it uses a name that XML does not know."));
  return known->second;
}

class Reader {
 public:
  Reader(std::string_view text, const XmlElementEnd& ended) : rest_(text), ended_(ended) {}

  void Read() {
    while (!rest_.empty()) {
      const size_t markup = std::min(rest_.find('<'), rest_.size());
      AddText(rest_.substr(0, markup));
      rest_.remove_prefix(markup);
      if (!rest_.empty()) ReadMarkup();
    }
    if (!open_.empty()) Refuse(Say("it ends too early."));
  }

 private:
  struct Element {
    size_t path_length;  // of those above it
    std::string name, text;
  };

  void AddText(std::string_view text) {
    if (open_.empty()) return;
    std::string& all = open_.back().text;
    while (true) {
      const size_t start = text.find('&');
      all += text.substr(0, start);
      if (start == text.npos) return;
      const size_t end = text.find(';', start);
      if (end == text.npos) Refuse(Say("an & has no end."));
      all += EntityOf(text.substr(start + 1, end - start - 1));
      text.remove_prefix(end + 1);
    }
  }

  void ReadMarkup() {
    constexpr std::string_view kData = "<![CDATA[";
    if (rest_.starts_with(kData)) {
      const std::string_view data = Take(kData.size(), "]]>");
      if (!open_.empty()) open_.back().text += data;
    } else if (rest_.starts_with("<!--")) {
      Take(4, "-->");
    } else if (rest_.starts_with("<?")) {
      Take(2, "?>");
    } else if (rest_.starts_with("<!")) {
      Refuse(Say("it defines its own entities."));
    } else {
      ReadTag();
    }
  }

  // Behind a beginning up to an end, which is taken as well.
  std::string_view Take(size_t begins, std::string_view ends) {
    const size_t end = rest_.find(ends, begins);
    if (end == rest_.npos) Refuse(Say("it ends too early."));
    const std::string_view taken = rest_.substr(begins, end - begins);
    rest_.remove_prefix(end + ends.size());
    return taken;
  }

  // A ">" may stand in an attribute.
  size_t EndOfTag() const {
    char quote = 0;
    for (size_t at = 1; at < rest_.size(); ++at) {
      const char c = rest_[at];
      if (quote == 0 && c == '>') return at;
      if (quote == 0 && (c == '"' || c == '\'')) {
        quote = c;
      } else if (c == quote) {
        quote = 0;
      }
    }
    Refuse(Say("it ends too early."));
  }

  void ReadTag() {
    const size_t end = EndOfTag();
    std::string_view tag = rest_.substr(1, end - 1);
    rest_.remove_prefix(end + 1);
    const bool closes = tag.starts_with('/');
    const bool is_empty = !closes && tag.ends_with('/');
    if (closes) tag.remove_prefix(1);
    if (is_empty) tag.remove_suffix(1);
    std::string_view name = tag.substr(0, tag.find_first_of(kSpaces));
    if (const size_t prefix = name.find(':'); prefix != name.npos) name.remove_prefix(prefix + 1);
    if (name.empty()) Refuse(Say("an element has no name."));
    if (!closes) Begin(name);
    if (closes || is_empty) End(name);
  }

  void Begin(std::string_view name) {
    if (open_.size() == kMostLevels) Refuse(Say("it is nested too deep."));
    open_.push_back({path_.size(), std::string(name), ""});
    path_.append(path_.empty() ? "" : "/").append(name);
  }

  void End(std::string_view name) {
    if (open_.empty() || open_.back().name != name)
      Refuse(Say("an element ends that did not begin."));
    ended_(path_, std::string(Trimmed(open_.back().text)));
    path_.resize(open_.back().path_length);
    open_.pop_back();
  }

  std::string_view rest_;
  const XmlElementEnd& ended_;
  std::vector<Element> open_;
  std::string path_;
};

}  // namespace

void ReadXml(std::string_view bytes, const XmlElementEnd& ended) {
  const std::string text = Decoded(bytes);
  Reader(text, ended).Read();
}

}  // namespace quellix
