#include "run/precious_names.h"

#include <algorithm>
#include <array>
#include <span>

#include "platform/error.h"
#include "platform/text.h"

namespace quellix {
namespace {

constexpr std::string_view kHarmless[] = {"log", "dmp", "mdmp", "hdmp", "tmp", "temp", "bak",
                                          "old", "etl", "chk",  "gid",  "wer", "trace"};
constexpr std::string_view kPrograms[] = {"exe", "dll", "sys", "drv", "cat", "mui"};
constexpr std::string_view kOfWindows[] = {
    "exe", "dll", "sys", "drv",  "ocx",  "cpl", "mui", "com", "bin", "efi", "dat",    "ini",
    "inf", "pnf", "cat", "nls",  "msc",  "scr", "sdb", "mof", "ttf", "ttc", "fon",    "tlb",
    "cmd", "bat", "ps1", "vbs",  "msi",  "msp", "mum", "pol", "reg", "xml", "config", "manifest",
    "lnk", "blf", "url", "log1", "log2", "bcd", "p7b", "pfx", "key", "db",  "sqlite"};

// The hives that Windows keeps, and those of the boot loader.
constexpr std::string_view kHives[] = {"sam",         "security", "software", "system",
                                       "default",     "bcd",      "drivers",  "components",
                                       "amcache.hve", "bbi",      "elam",     "schema.dat"};
// A user's: also "NTUSER.DAT.LOG1" and "UsrClass.dat{…}.TM.blf".
constexpr std::string_view kUserHives[] = {"ntuser.dat", "ntuser.man", "usrclass.dat"};

std::string_view ExtensionOf(std::string_view name) {
  const size_t dot = name.rfind('.');
  return dot == name.npos ? std::string_view() : name.substr(dot + 1);
}

bool Contains(std::span<const std::string_view> texts, std::string_view text) {
  return std::ranges::any_of(texts,
                             [text](std::string_view each) { return EqualsNoCase(each, text); });
}

bool StartsWithNoCase(std::string_view text, std::string_view start) {
  return text.size() >= start.size() && EqualsNoCase(text.substr(0, start.size()), start);
}

// Few names begin so; the others are told apart at once.
bool MayBeginAHive(std::string_view name) {
  constexpr std::string_view kInitials = "sdbcaeunSDBCAEUN";
  return !name.empty() && kInitials.find(name[0]) != kInitials.npos;
}

// "SYSTEM" and, as their logs are named, "SYSTEM.LOG1" and "SYSTEM{…}.TM.blf".
bool IsNamedLikeAHive(std::string_view name) {
  return std::ranges::any_of(kHives, [name](std::string_view hive) {
    if (!StartsWithNoCase(name, hive)) return false;
    const std::string_view rest = name.substr(hive.size());
    return rest.empty() || rest.starts_with('{') || StartsWithNoCase(rest, ".log");
  });
}

// A hive and its logs begin with "regf"; newer logs, behind that, with "HvLE".
bool BeginsLikeAHive(Folder& folder, std::string_view name) {
  try {
    std::array<char, 4> start{};
    const size_t got = folder.Open(name, OpenMode::kRead)->Read(0, start);
    return std::string_view(start.data(), got) == "regf";
  } catch (const Error& error) {
    return error.kind() != Error::Kind::kMissing;
  }
}

}  // namespace

bool IsPreviousWindows(std::string_view name) {
  constexpr std::string_view kOld = "Windows.old", kOfUpgrades[] = {"$Windows.~BT", "$Windows.~WS"};
  if (Contains(kOfUpgrades, name)) return true;
  if (!StartsWithNoCase(name, kOld)) return false;
  const std::string_view rest = name.substr(kOld.size());
  return rest.empty() || (rest.size() == 4 && rest[0] == '.' &&
                          rest.find_first_not_of("0123456789", 1) == rest.npos);
}

bool HasHarmlessExtension(std::string_view name_or_mask) {
  return Contains(kHarmless, ExtensionOf(name_or_mask));
}

bool IsText(std::string_view name_or_mask) {
  return EqualsNoCase(ExtensionOf(name_or_mask), "txt");
}

bool IsProgram(std::string_view name) { return Contains(kPrograms, ExtensionOf(name)); }

bool MayBelongToWindows(std::string_view name) {
  const std::string_view extension = ExtensionOf(name);
  return extension.empty() || Contains(kOfWindows, extension);
}

bool HasWildcards(std::string_view mask) {
  return mask.find_first_of("*?#[") != std::string_view::npos;
}

bool IsHiveOrItsLog(Folder& folder, std::string_view name) {
  if (!MayBeginAHive(name)) return false;
  if (std::ranges::any_of(kUserHives,
                          [name](std::string_view hive) { return StartsWithNoCase(name, hive); })) {
    return true;
  }
  return IsNamedLikeAHive(name) && BeginsLikeAHive(folder, name);
}

}  // namespace quellix
