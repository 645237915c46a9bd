// INI files: whatever stands in one, a change leaves every line it does not name as it is, byte for
// byte, and what was written or erased is read so.

#include "fuzz/check.h"
#include "fuzz/volume_file.h"
#include "platform/text.h"

using namespace quellix;

namespace {

// The lines of a file with their ends, behind its byte-order mark.
std::vector<std::string> Lines(std::string_view bytes) {
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  std::vector<std::string> lines = {""};
  for (const char c : bytes) {
    lines.back() += c;
    if (c == '\n') lines.emplace_back();
  }
  if (lines.back().empty()) lines.pop_back();
  return lines;
}

// Whether `some` is `all` without a few lines, in the same order.
bool IsPartOf(const std::vector<std::string>& some, const std::vector<std::string>& all) {
  size_t at = 0;
  for (const std::string& line : all) at += at < some.size() && some[at] == line;
  return at == some.size();
}

// The section and the key that the first two lines name; what follows is the file.
struct Input {
  std::string section, key, bytes;
};

Input Parse(std::string_view data) {
  Input input;
  for (std::string* part : {&input.section, &input.key}) {
    const size_t end = std::min(data.find('\n'), data.size());
    *part = ToUtf8(ToUtf16(data.substr(0, end)));
    data.remove_prefix(std::min(end + 1, data.size()));
  }
  input.bytes = data;
  return input;
}

// Whether a name is written as it is read.
bool IsPlain(const std::string& name) {
  return !name.empty() && name.find_first_of("[]=;\r\n\t \"'") == name.npos &&
         name.find('\0') == name.npos;
}

struct IniFile : VolumeFile {
  IniFile() : VolumeFile("a.ini") {}

  void CheckErasing(const Input& input, bool whole) const {
    // Behind half a character no UTF-16 is read, until an odd line has gone.
    if (input.bytes.starts_with("\xFF\xFE") && input.bytes.size() % 2 != 0) return;
    Write(input.bytes);
    Erase(input, whole);
    const std::string after = Bytes();
    if (!input.bytes.starts_with("\xFF\xFE")) Check(IsPartOf(Lines(after), Lines(input.bytes)));
    if (!input.section.empty() && !input.key.empty()) Check(!Read(input));
    Erase(input, whole);
    Check(Bytes() == after);
  }

  // Of a file in another encoding all lines are written anew.
  void CheckWriting(const Input& input) const {
    if (!IsUtf8(input.bytes) || input.bytes.starts_with("\xEF\xBB\xBF")) return;
    Write(input.bytes);
    machine().profile.Write(path(), {input.section, input.key, "new"});
    Check(Read(input) == "new");
    std::vector<std::string> after = Lines(Bytes()), before = Lines(input.bytes);
    if (!before.empty() && !before.back().ends_with('\n')) before.pop_back();
    const auto changed = std::ranges::mismatch(before, after);
    if (changed.in1 != before.end()) before.erase(changed.in1);
    Check(IsPartOf(before, after));
  }

  std::string Bytes() const { return machine().files.ReadWholeFile(path()).value_or(""); }
  std::optional<std::string> Read(const Input& input) const {
    return machine().profile.Read(path(), input.section, input.key);
  }
  void Erase(const Input& input, bool whole) const {
    if (whole) {
      machine().profile.DeleteSection(path(), input.section);
    } else {
      machine().profile.DeleteKey(path(), input.section, input.key);
    }
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const IniFile file;
  const Input input = Parse(BytesOf(data, size));
  for (const bool whole : {false, true}) file.CheckErasing(input, whole);
  if (IsPlain(input.section) && IsPlain(input.key)) file.CheckWriting(input);
  return 0;
}
