#include "registry_tools/file_reference.h"

#include <algorithm>
#include <vector>

#include "platform/path.h"
#include "platform/text.h"

namespace quellix {
namespace {

constexpr size_t kShortest = 4;  // "C:\x"
constexpr size_t kMostKnown = 1 << 20;
constexpr size_t kDriveSize = 2;        // "C:"
constexpr size_t kLongestKnown = 1024;  // of folders, to bound the depth

constexpr size_t kLongest = 32767;
constexpr size_t kMostTries = 100;  // ends of a path that are tried

// In a file's name Windows allows none of them.
constexpr std::string_view kNoName = "<>|*?\"";
constexpr std::string_view kPathEnds = " ,;\"";
constexpr std::string_view kArguments = "\"%:";

char Upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 0x20) : c; }

std::string_view WithoutPrefix(std::string_view text) {
  for (const std::string_view prefix : {"\\\\?\\", "\\??\\"}) {
    if (text.starts_with(prefix)) return text.substr(prefix.size());
  }
  return text;
}

// Most values are no paths, which their first characters tell.
bool MayBePath(std::string_view utf16) {
  if (utf16.size() < 2 * kShortest) return false;
  const auto is = [utf16](size_t at, char c) {
    return utf16[2 * at] == c && utf16[2 * at + 1] == 0;
  };
  return is(1, ':') || is(0, '"') || is(0, ' ') || is(0, '\\') || is(0, '%');
}

bool HasUnnameable(std::string_view path) {
  return std::ranges::any_of(path, [](char c) {
    return static_cast<unsigned char>(c) < 0x20 || kNoName.find(c) != kNoName.npos;
  });
}

}  // namespace

// A drive without its disk says nothing about its files.
ReferenceJudge::ReferenceJudge(const Machine& machine) : machine_(machine) {
  for (const Drive& drive : machine.system.Drives()) {
    if (machine.files.Look(std::string(1, drive.letter) + ":\\", Detail::kKind)) {
      drives_ += drive.letter;
    }
  }
  const std::string windows = machine.system.WindowsFolder();
  seen_by_32_bit_ = {{machine.system.SystemFolder() + "\\", windows + "\\SysWOW64\\"},
                     {windows + "\\Sysnative\\", machine.system.SystemFolder() + "\\"}};
  const auto programs = machine.system.Environment("ProgramW6432"),
             programs_32 = machine.system.Environment("ProgramFiles(x86)");
  if (programs && programs_32) seen_by_32_bit_.emplace_back(*programs + "\\", *programs_32 + "\\");
}

std::optional<std::string> ReferenceJudge::FindGone(const RegistryValue& value) {
  const bool is_list = value.type == kRegMultiSz;
  if (!is_list && value.type != kRegSz && value.type != kRegExpandSz) return std::nullopt;
  if (!is_list && !MayBePath(value.bytes)) return std::nullopt;
  const std::string all = FromUtf16Bytes(value.bytes);
  if (!is_list) {
    const std::string_view text = TrimNull(all);
    if (value.type == kRegExpandSz && text.find('%') != text.npos) {
      if (!IsGoneText(Expand(text))) return std::nullopt;
    } else if (!IsGoneText(text)) {
      return std::nullopt;
    }
    return std::string(text);
  }
  for (const std::string& text : Split(all, '\0')) {
    if (text.empty()) break;  // the list ends there
    if (IsGoneText(text)) return text;
  }
  return std::nullopt;
}

// A variable that is not known stays, as "%1" does; what it stands in is then no path.
std::string ReferenceJudge::Expand(std::string_view text) {
  std::string expanded;
  while (true) {
    const size_t start = text.find('%');
    expanded += text.substr(0, start);
    if (start == text.npos) return expanded;
    text.remove_prefix(start + 1);
    const size_t end = text.find('%');
    if (end == text.npos) {
      expanded.append("%").append(text);
      return expanded;
    }
    const auto variable = machine_.system.Environment(text.substr(0, end));
    if (variable) {
      expanded += *variable;
      text.remove_prefix(end + 1);
    } else {
      expanded += '%';
    }
  }
}

// The path at the start of a text, with "\" for "/"; nothing when it names none on a drive here.
std::optional<std::string> ReferenceJudge::PathOf(std::string_view text) {
  if (text.size() < 3 || text[1] != ':' || (text[2] != '\\' && text[2] != '/')) return std::nullopt;
  if (drives_.find(Upper(text[0])) == drives_.npos) return std::nullopt;
  std::string path(text);
  std::ranges::replace(path, '/', '\\');
  return path;
}

bool ReferenceJudge::IsGoneText(std::string_view text) {
  text = TrimBlanks(text);
  if (text.starts_with('"')) {
    text.remove_prefix(1);
    const auto path = PathOf(WithoutPrefix(text.substr(0, text.find('"'))));
    return path && path->size() >= kShortest && !HasUnnameable(*path) && IsGone(*path) &&
           IsGone(*path + ".exe");
  }
  text = WithoutPrefix(text);
  if (text.size() < kShortest || text.size() > kLongest || !PathOf(text.substr(0, 3))) return false;
  return IsGoneCommand(text);
}

// A path, perhaps with arguments behind it: as Windows starts commands, each blank may end the
// path, and so may a comma (of an icon's number) and a semicolon (of a list).
bool ReferenceJudge::IsGoneCommand(std::string_view text) {
  bool judged = false, has_ending = false;
  size_t end = kShortest - 1;
  for (size_t tries = 0; tries < kMostTries && end != text.npos; ++tries) {
    end = text.find_first_of(kPathEnds, end + 1);
    const std::string path = *PathOf(TrimBlanks(text.substr(0, end)));
    // From there on it is no path any more, but arguments may look so; a variable that nobody
    // knows may stand in a path as well.
    if (const size_t at = path.find_first_of(kArguments, 2); at != path.npos)
      return judged && (has_ending || path[at] != '%');
    if (HasUnnameable(path)) return false;
    const bool may_go_on = end != text.npos && text[end] == ' ';
    if (IsThere(path, may_go_on)) return false;
    judged = true;
    has_ending = has_ending || NamePart(path).find('.') != path.npos;
  }
  return judged && end == text.npos;
}

// The number of a type library stands behind the file that holds it: C:\a.dll\2.
bool ReferenceJudge::IsNumberInFile(std::string_view path) {
  const std::string_view number = NamePart(path);
  if (number.empty() || number.find_first_not_of("0123456789") != number.npos) return false;
  const auto file = machine_.files.Look(WithoutBackslash(FolderPart(path)), Detail::kKind);
  return file && !file->is_folder;
}

// A folder in front of a blank is but the beginning of a longer name.
bool ReferenceJudge::IsThere(const std::string& path, bool may_go_on) {
  if (IsGone(path)) return !IsGone(path + ".exe") || IsNumberInFile(path);
  if (!may_go_on) return true;
  const auto info = machine_.files.Look(path, Detail::kKind);
  return info && !info->is_folder;
}

// Of what is in a folder that is gone nothing more is asked.
bool ReferenceJudge::IsGone(std::string_view path) {
  path = WithoutBackslash(path);
  std::string key = UpCase(path);
  if (const auto known = known_.find(key); known != known_.end()) return known->second;
  if (known_.size() >= kMostKnown) known_.clear();
  const std::string_view folder = WithoutBackslash(FolderPart(path));
  const bool in_folder = folder.size() > kDriveSize && folder.size() < kLongestKnown;
  const bool gone = (in_folder && IsGone(folder)) || machine_.files.IsGone(path);
  known_.emplace(std::move(key), gone);
  return gone;
}

}  // namespace quellix
