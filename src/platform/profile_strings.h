#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/system.h"

namespace quellix {

// The text of a data file: UTF-8, a byte-order mark skipped, or, where it is none, in the ANSI code
// page.
std::string DecodeText(std::string_view bytes, System& system);

// The text of an INI file: as DecodeText says, or, as Windows reads INI files, UTF-16 (low byte
// first) behind its byte-order mark.
std::string DecodeIni(std::string_view bytes, System& system);

// What a line of an INI file is: the head of a section, a key with its value, or neither. Blanks
// around names and values do not count.
struct IniLine {
  enum Kind { kOther, kSection, kKey } kind = kOther;
  std::string_view name;   // of the section or key
  std::string_view value;  // as it stands, with its quotes
};
IniLine ParseIniLine(std::string_view line);
// Takes the first line off a text; with its line break.
std::string_view TakeLine(std::string_view& text);

// A key of an INI file with its value.
struct IniEntry {
  std::string section, key, value;
};

// The text of an INI file, read and changed in place: keys, comments and lines not named stay as
// they are, byte for byte. Sections and keys compare without regard to case; the first match
// counts.
class IniText {
 public:
  explicit IniText(std::string text) : text_(std::move(text)) {}

  // The value without the blanks around it and one pair of quotes around it; nothing when section
  // or key is missing. Valid until the next change.
  std::optional<std::string_view> Find(std::string_view section, std::string_view key) const;
  // Adds section and key when missing; new lines end in CR LF.
  void Set(const IniEntry& entry);
  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

// Empty for a missing file. Throws Error.
IniText ReadIni(FileSystem& files, System& system, std::string_view file);

// INI files, one key at a time. Sections and keys compare without regard to case; the first match
// counts. Keys, comments and lines not named stay as they are, byte for byte.
class ProfileStrings {
 public:
  virtual ~ProfileStrings() = default;

  // Nothing when the file, section or key is missing, or the file cannot be read. Blanks around the
  // value and one pair of quotes around it are stripped, as GetPrivateProfileString does.
  virtual std::optional<std::string> Read(std::string_view file, std::string_view section,
                                          std::string_view key) = 0;

  // Writes all of them in one replacement of the file; creates file and sections when missing.
  // Throws Error; the old file then stays, whole.
  virtual void Write(std::string_view file, std::span<const IniEntry> entries) = 0;
  void Write(std::string_view file, const IniEntry& entry) { Write(file, std::span(&entry, 1)); }

  // Remove every key of that name from every section of that name, or those sections with all their
  // lines, so that nothing of that name is left. All other bytes stay, whatever their encoding. A
  // missing file, section or key and an empty name are no error. False when there was nothing of
  // that name. Throw Error; the old file then stays, whole.
  virtual bool DeleteKey(std::string_view file, std::string_view section, std::string_view key) = 0;
  virtual bool DeleteSection(std::string_view file, std::string_view section) = 0;
};

// Over any file system. Files are read by DecodeIni and written as UTF-8, new lines with CR LF;
// what was UTF-16 and loses lines stays UTF-16. The text is edited in place, so that lines not
// named keep their bytes, and replaced in one step, so that a full disk keeps the old file; the
// system's own profile calls promise neither.
class IniFiles : public ProfileStrings {
 public:
  IniFiles(FileSystem& files, System& system) : files_(files), system_(system) {}

  std::optional<std::string> Read(std::string_view file, std::string_view section,
                                  std::string_view key) override;
  void Write(std::string_view file, std::span<const IniEntry> entries) override;
  bool DeleteKey(std::string_view file, std::string_view section, std::string_view key) override;
  bool DeleteSection(std::string_view file, std::string_view section) override;

 private:
  using LineTest = std::function<bool(const IniLine& line)>;
  // Removes the lines of the sections of that name that `goes` names, the header line among them.
  bool DeleteLines(std::string_view file, std::string_view section, const LineTest& goes);

  FileSystem& files_;
  System& system_;
};

}  // namespace quellix
