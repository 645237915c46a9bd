#include "platform/volume/volume_system.h"

#include <iconv.h>

#include <cerrno>
#include <charconv>
#include <ctime>
#include <memory>
#include <utility>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"

namespace quellix {
namespace {

constexpr std::string_view kCurrentVersion = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
constexpr std::string_view kCodePages = "SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage";
// As a Windows of 64 bits has them; one of 32 bits lacks the folders, not their names.
constexpr std::pair<std::string_view, const char*> kProgramFolders[] = {
    {"ProgramFiles", "\\Program Files"},
    {"ProgramW6432", "\\Program Files"},
    {"ProgramFiles(x86)", "\\Program Files (x86)"},
    {"CommonProgramFiles", "\\Program Files\\Common Files"},
    {"CommonProgramW6432", "\\Program Files\\Common Files"},
    {"CommonProgramFiles(x86)", "\\Program Files (x86)\\Common Files"}};

struct IconvCloser {
  void operator()(void* handle) const { iconv_close(handle); }
};

std::optional<int> ReadNumber(Registry& registry, std::string_view name) {
  const auto key =
      registry.Open(RegistryRoot::kLocalMachine, kCurrentVersion, RegistryAccess::kRead);
  const auto value = key ? key->QueryValue(name) : std::nullopt;
  if (!value || value->type != kRegDword || value->bytes.empty()) return std::nullopt;
  return static_cast<unsigned char>(value->bytes[0]);
}

WindowsVersion ParseVersion(const std::string& text) {
  WindowsVersion version;
  const char* end = text.data() + text.size();
  const auto major = std::from_chars(text.data(), end, version.major);
  if (major.ptr != end) std::from_chars(major.ptr + 1, end, version.minor);
  return version;
}

// Converts as far as the bytes mean something; each that does not becomes U+FFFD.
std::string Convert(iconv_t converter, std::string_view bytes) {
  std::string result;
  char* from = const_cast<char*>(bytes.data());
  size_t left = bytes.size();
  while (left > 0) {
    char buffer[1024];
    char* to = buffer;
    size_t room = sizeof buffer;
    const size_t code = iconv(converter, &from, &left, &to, &room);
    result.append(buffer, to);
    if (code != static_cast<size_t>(-1) || errno == E2BIG) continue;
    result += "\uFFFD";
    ++from;
    --left;
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
  }
  return result;
}

constexpr int64_t kSecondsTo1970 = 11644473600;  // from 1601

LocalTime ToLocal(std::time_t time) {
  std::tm local = {};
  localtime_r(&time, &local);
  return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
          local.tm_hour,        local.tm_min,     local.tm_sec};
}

}  // namespace

VolumeSystem::VolumeSystem(VolumeFileSystem& files, Registry& registry, std::string windows_folder,
                           const VolumeUser& user)
    : files_(files),
      registry_(registry),
      windows_folder_(std::move(windows_folder)),
      variables_(
          registry, user, [this](std::string_view name) { return OfWindows(name); },
          [this, app_data = user.profile + "\\AppData"] {
            return files_.Look(app_data).has_value() || Version().major >= 6;
          }) {}

std::optional<std::string> VolumeSystem::OfWindows(std::string_view name) {
  const auto is = [name](std::string_view other) { return EqualsNoCase(name, other); };
  const std::string drive = windows_folder_.substr(0, 2);
  if (is("SystemRoot") || is("windir")) return windows_folder_;
  if (is("SystemDrive")) return drive;
  for (const auto& [variable, folder] : kProgramFolders) {
    if (is(variable)) return drive + folder;
  }
  if (is("ProgramData")) return drive + "\\ProgramData";
  if (is("ALLUSERSPROFILE")) {
    return drive + (Version().major >= 6 ? "\\ProgramData" : "\\Documents and Settings\\All Users");
  }
  if (is("PUBLIC")) return drive + "\\Users\\Public";
  return std::nullopt;
}

WindowsVersion VolumeSystem::Version() {
  if (const auto major = ReadNumber(registry_, "CurrentMajorVersionNumber")) {
    return {2, *major, ReadNumber(registry_, "CurrentMinorVersionNumber").value_or(0)};
  }
  const auto text =
      ReadText(registry_, RegistryRoot::kLocalMachine, kCurrentVersion, "CurrentVersion");
  return text ? ParseVersion(*text) : WindowsVersion{};
}

std::vector<Drive> VolumeSystem::Drives() {
  std::vector<Drive> drives;
  for (const char letter : files_.Letters()) drives.push_back({letter, DriveType::kFixed});
  return drives;
}

LocalTime VolumeSystem::Now() { return ToLocal(std::time(nullptr)); }

int64_t VolumeSystem::UtcNow() { return (std::time(nullptr) + kSecondsTo1970) * 10'000'000; }

LocalTime VolumeSystem::ToLocalTime(int64_t filetime) {
  return ToLocal(filetime / 10'000'000 - kSecondsTo1970);
}

Locale VolumeSystem::UserLocale() {
  Locale locale;
  const auto read = [this](std::string_view name) {
    return ReadText(registry_, RegistryRoot::kCurrentUser, "Control Panel\\International", name);
  };
  const auto set = [&read](std::string_view name, std::string& field, bool may_be_empty) {
    if (const auto text = read(name); text && (may_be_empty || !text->empty())) field = *text;
  };
  set("sShortDate", locale.short_date, false);
  set("sTimeFormat", locale.time_format, false);
  set("s1159", locale.am, true);
  set("s2359", locale.pm, true);
  set("sDecimal", locale.decimal, false);
  set("sThousand", locale.thousand, true);
  set("sGrouping", locale.grouping, false);
  locale.leading_zero = read("iLZero") != "0";
  return locale;
}

// Reading the program's own lists must not depend on a sound hive.
const std::string& VolumeSystem::AnsiCodePage() {
  if (!ansi_code_page_.empty()) return ansi_code_page_;
  ansi_code_page_ = "1252";
  try {
    if (const auto page = ReadText(registry_, RegistryRoot::kLocalMachine, kCodePages, "ACP")) {
      ansi_code_page_ = *page;
    }
  } catch (const Error&) {
  }
  return ansi_code_page_;
}

std::string VolumeSystem::FromAnsi(std::string_view bytes) {
  const std::string& page = AnsiCodePage();
  const std::string name = page == "65001" ? "UTF-8" : "CP" + page;
  iconv_t converter = iconv_open("UTF-8", name.c_str());
  if (converter == reinterpret_cast<iconv_t>(-1)) converter = iconv_open("UTF-8", "CP1252");
  if (converter == reinterpret_cast<iconv_t>(-1)) return ToUtf8(ToUtf16(bytes));
  const std::unique_ptr<void, IconvCloser> closer(converter);
  return Convert(converter, bytes);
}

}  // namespace quellix
