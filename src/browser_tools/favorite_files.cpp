#include "browser_tools/favorite_files.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "platform/error.h"
#include "platform/profile_strings.h"
#include "platform/text.h"

namespace quellix {
namespace {

constexpr size_t kDeepest = 64;    // folders in each other
constexpr size_t kLongest = 1000;  // bytes of a name, and about as many of a place
constexpr size_t kMost = 100'000;  // bookmarks

constexpr struct {
  std::string_view name, text;
} kEntities[] = {{"amp", "&"}, {"lt", "<"}, {"gt", ">"}, {"quot", "\""}, {"apos", "'"}};

std::string Utf8Of(uint32_t character) {
  if (character == 0 || character > 0x10FFFF) return "\xEF\xBF\xBD";
  std::u16string text;
  if (character > 0xFFFF) {
    text += static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
    text += static_cast<char16_t>(0xDC00 + (character & 0x3FF));
  } else {
    text += static_cast<char16_t>(character);
  }
  return ToUtf8(text);
}

// What "&name;" stands for; nothing for what stands for itself.
std::optional<std::string> EntityText(std::string_view name) {
  if (!name.starts_with('#')) {
    const auto found = std::ranges::find(kEntities, name, [](const auto& row) { return row.name; });
    return found == std::end(kEntities) ? std::nullopt : std::optional<std::string>(found->text);
  }
  name.remove_prefix(1);
  const bool is_hex = name.starts_with('x') || name.starts_with('X');
  if (is_hex) name.remove_prefix(1);
  uint32_t number = 0;
  const auto [end, error] =
      std::from_chars(name.data(), name.data() + name.size(), number, is_hex ? 16 : 10);
  if (error != std::errc() || end != name.data() + name.size()) return std::nullopt;
  return Utf8Of(number);
}

std::string WithoutEntities(std::string_view text) {
  std::string plain;
  while (!text.empty()) {
    const size_t begin = std::min(text.find('&'), text.size());
    plain += text.substr(0, begin);
    text.remove_prefix(begin);
    const size_t end = text.substr(0, 12).find(';');
    const auto found = end == text.npos ? std::nullopt : EntityText(text.substr(1, end - 1));
    if (found) {
      plain += *found;
      text.remove_prefix(end + 1);
    } else if (!text.empty()) {
      plain += '&';
      text.remove_prefix(1);
    }
  }
  return plain;
}

bool IsBlank(char character) { return static_cast<unsigned char>(character) <= ' '; }

// On one line, without blanks around it and without what a terminal would obey.
std::string OneLine(std::string_view text) {
  std::string line = WithoutEntities(text);
  std::ranges::replace_if(line, IsBlank, ' ');
  return std::string(TrimBlanks(line));
}

struct Tag {
  std::string_view name;  // "A", with "/" where it ends one
  std::string_view rest;  // its attributes
};

// The tag at the beginning of a text, which is taken off it; quoted attributes may hold ">".
Tag TakeTag(std::string_view& text) {
  char quote = 0;
  size_t end = 1;
  for (; end < text.size() && (quote != 0 || text[end] != '>'); ++end) {
    if (quote != 0) {
      quote = text[end] == quote ? '\0' : quote;
    } else if (text[end] == '"' || text[end] == '\'') {
      quote = text[end];
    }
  }
  // A quote that nobody closes ends where the tag seems to.
  if (end == text.size()) end = std::min(text.find('>'), text.size());
  Tag tag{text.substr(1, end - 1), {}};
  text.remove_prefix(std::min(end + 1, text.size()));
  const auto blank = std::ranges::find_if(tag.name, IsBlank);
  const size_t size = static_cast<size_t>(blank - tag.name.begin());
  tag.rest = tag.name.substr(size);
  tag.name = tag.name.substr(0, size);
  return tag;
}

std::string_view TakeWord(std::string_view& text, std::string_view ends) {
  while (!text.empty() && IsBlank(text[0])) text.remove_prefix(1);
  size_t end = 0;
  while (end < text.size() && !IsBlank(text[end]) && ends.find(text[end]) == ends.npos) ++end;
  const std::string_view word = text.substr(0, end);
  text.remove_prefix(end);
  return word;
}

std::string_view TakeValue(std::string_view& text) {
  if (text.empty() || (text[0] != '"' && text[0] != '\'')) return TakeWord(text, "");
  const size_t end = std::min(text.find(text[0], 1), text.size());
  const std::string_view value = text.substr(1, end - 1);
  text.remove_prefix(std::min(end + 1, text.size()));
  return value;
}

std::string Attribute(std::string_view rest, std::string_view wanted) {
  while (!rest.empty()) {
    const size_t before = rest.size();
    const std::string_view name = TakeWord(rest, "=");
    while (!rest.empty() && IsBlank(rest[0])) rest.remove_prefix(1);
    std::string_view value;
    if (rest.starts_with('=')) {
      rest.remove_prefix(1);
      while (!rest.empty() && IsBlank(rest[0])) rest.remove_prefix(1);
      value = TakeValue(rest);
    }
    if (EqualsNoCase(name, wanted)) return OneLine(value);
    if (rest.size() == before) rest.remove_prefix(1);
  }
  return {};
}

class BookmarkReader {
 public:
  std::vector<Bookmark> Read(std::string_view text, const Pause& pause) {
    while (!text.empty() && !pause()) {
      const size_t begin = std::min(text.find('<'), text.size());
      if (title_) title_->append(text.substr(0, begin));
      text.remove_prefix(begin);
      if (text.starts_with("<!--")) {
        text.remove_prefix(std::min(text.find("-->"), text.size()));
      } else if (!text.empty()) {
        Take(TakeTag(text));
      }
    }
    Finish();
    return std::move(all_);
  }

 private:
  void Take(const Tag& tag) {
    if (EqualsNoCase(tag.name, "A")) {
      Bookmark bookmark;
      bookmark.address = Attribute(tag.rest, "HREF");
      Begin(std::move(bookmark));
      MarkFilled();
    } else if (EqualsNoCase(tag.name, "H3")) {
      Bookmark folder;
      folder.is_folder = folder.is_empty = true;
      Begin(std::move(folder));
    } else if (EqualsNoCase(tag.name, "DL")) {
      Finish();
      Enter();
    } else if (EqualsNoCase(tag.name, "/DL")) {
      Finish();
      Leave();
    } else if (EqualsNoCase(tag.name, "/A") || EqualsNoCase(tag.name, "/H3") ||
               EqualsNoCase(tag.name, "DT")) {
      Finish();
    }
  }

  void Begin(Bookmark bookmark) {
    Finish();
    if (all_.size() >= kMost)
      throw Error(Error::Kind::kOther, Say("The file holds more bookmarks than can be listed."));
    bookmark.place = Place();
    all_.push_back(std::move(bookmark));
    title_.emplace();
  }
  void Finish() {
    if (!title_) return;
    all_.back().name = OneLine(std::string_view(*title_).substr(0, kLongest));
    last_folder_ = all_.back().is_folder ? all_.size() - 1 : kNone;
    title_.reset();
  }
  // The list belongs to the heading right before it.
  void Enter() {
    if (open_.size() < kDeepest) {
      open_.push_back(last_folder_);
    } else {
      ++too_deep_;
    }
    last_folder_ = kNone;
  }
  void Leave() {
    if (too_deep_ > 0) {
      --too_deep_;
    } else if (!open_.empty()) {
      open_.pop_back();
    }
  }
  void MarkFilled() {
    for (const size_t folder : open_) {
      if (folder != kNone) all_[folder].is_empty = false;
    }
  }
  std::string Place() const {
    std::string place;
    for (const size_t folder : open_) {
      if (folder == kNone || place.size() > kLongest) continue;
      place += (place.empty() ? "" : "\\") + all_[folder].name;
    }
    return place;
  }

  static constexpr size_t kNone = static_cast<size_t>(-1);
  std::vector<Bookmark> all_;
  std::vector<size_t> open_;  // indexes of folders
  size_t too_deep_ = 0;       // lists that are open below the deepest of those
  size_t last_folder_ = kNone;
  std::optional<std::string> title_;  // of the last one, while it is read
};

}  // namespace

std::string ReadUrlFile(std::string_view bytes, System& system) {
  const IniText text(DecodeIni(bytes, system));
  const auto address = text.Find("InternetShortcut", "URL");
  return std::string(TrimBlanks(TrimNull(address.value_or(""))));
}

std::vector<Bookmark> ReadBookmarks(std::string_view bytes, System& system, const Pause& pause) {
  const std::string text = DecodeText(bytes, system);
  if (!ContainsNoCase(std::string_view(text).substr(0, 4096), "NETSCAPE-Bookmark-file")) return {};
  return BookmarkReader().Read(text, pause);
}

}  // namespace quellix
