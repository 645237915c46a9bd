#include "platform/volume/volume_survey.h"

#include <cstdio>
#include <ctime>
#include <optional>
#include <string_view>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/volume/hive_format.h"
#include "platform/volume/hive_state.h"
#include "platform/volume/installed_windows.h"
#include "platform/volume/mounted_disk.h"
#include "platform/volume/volume_claim.h"

namespace quellix {
namespace {

using Survey = SurveyedVolume;

constexpr const char* kCurrentVersion = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
constexpr uint32_t kFirstBuildOf11 = 22000;

// What Windows can be on, and what shows an image.
bool MayHoldWindows(const MountedDisk& disk) {
  return disk.type.starts_with("ntfs") || disk.type.starts_with("fuse") || disk.type == "ufsd" ||
         disk.type == "exfat" || disk.type == "vfat";
}

std::optional<RegistryValue> Query(Registry& registry, const char* key, const char* name) {
  const auto open = registry.Open(RegistryRoot::kLocalMachine, key, RegistryAccess::kRead);
  return open ? open->QueryValue(name) : std::nullopt;
}

std::string TextOf(Registry& registry, const char* name) {
  return ReadText(registry, RegistryRoot::kLocalMachine, kCurrentVersion, name).value_or("");
}

std::optional<uint64_t> NumberOf(Registry& registry, const char* name) {
  const auto value = Query(registry, kCurrentVersion, name);
  if (!value || (value->bytes.size() != 4 && value->bytes.size() != 8)) return std::nullopt;
  const uint64_t high = value->bytes.size() == 8 ? NumberAt(value->bytes, 4) : 0;
  return high << 32 | NumberAt(value->bytes, 0);
}

// Windows 11 goes on calling itself 10 there.
std::string ProductOf(Registry& registry) {
  std::string product = TextOf(registry, "ProductName");
  const std::string build = TextOf(registry, "CurrentBuildNumber");
  const bool is_11 = std::strtoul(build.c_str(), nullptr, 10) >= kFirstBuildOf11;
  if (is_11) product = ReplaceNoCase(product, "Windows 10", "Windows 11");
  const std::string edition = TextOf(registry, "EditionID");
  return edition.empty() ? product : product + " (" + edition + ")";
}

std::string VersionOf(Registry& registry) {
  std::string version;
  const auto major = NumberOf(registry, "CurrentMajorVersionNumber");
  const auto minor = NumberOf(registry, "CurrentMinorVersionNumber");
  version = major && minor ? std::to_string(*major) + "." + std::to_string(*minor)
                           : TextOf(registry, "CurrentVersion");
  if (const std::string build = TextOf(registry, "CurrentBuildNumber"); !build.empty())
    version += "." + build;
  if (const auto revision = NumberOf(registry, "UBR")) version += "." + std::to_string(*revision);
  for (const char* name : {"DisplayVersion", "ReleaseId", "CSDVersion"}) {
    const std::string shown = TextOf(registry, name);
    if (!shown.empty()) return version + " (" + shown + ")";
  }
  return version;
}

// Of Windows 10 and later as a FILETIME, before in seconds.
std::string InstalledAt(Registry& registry) {
  time_t seconds = 0;
  if (const auto date = NumberOf(registry, "InstallDate")) seconds = static_cast<time_t>(*date);
  if (const auto time = NumberOf(registry, "InstallTime"); time && seconds == 0) {
    seconds = static_cast<time_t>(*time / 10'000'000) - 11644473600;
  }
  tm parts;
  char text[32] = "";
  if (seconds > 0 && gmtime_r(&seconds, &parts))
    strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
  return text;
}

std::string Hex(std::string_view bytes) {
  std::string hex;
  char digits[3];
  for (const char byte : bytes) {
    std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned char>(byte));
    hex += digits;
  }
  return hex;
}

// A partition of a disk with a signature and a place on it, one with an identifier, or a name.
std::string DiskOf(const std::string& bytes) {
  constexpr size_t kOnSignedDisk = 12, kIdentified = 24;
  constexpr std::string_view kIdentifier = "DMIO:ID:";
  if (bytes.size() == kOnSignedDisk) {
    const uint64_t place = uint64_t{NumberAt(bytes, 8)} << 32 | NumberAt(bytes, 4);
    char signature[9];
    std::snprintf(signature, sizeof signature, "%08X", NumberAt(bytes, 0));
    return std::string("disk ") + signature + ", byte " + std::to_string(place);
  }
  if (bytes.size() == kIdentified && bytes.starts_with(kIdentifier))
    return "partition " + Hex(std::string_view(bytes).substr(kIdentifier.size()));
  return FromUtf16Bytes(bytes);
}

void AddDrives(Registry& registry, Survey& survey) {
  constexpr std::string_view kDrive = "\\DosDevices\\";
  const auto key =
      registry.Open(RegistryRoot::kLocalMachine, "SYSTEM\\MountedDevices", RegistryAccess::kRead);
  std::string name;
  RegistryValue value;
  for (uint32_t i = 0; key && key->ReadValueAt(i, name, value); ++i) {
    if (!EqualsNoCase(std::string_view(name).substr(0, kDrive.size()), kDrive)) continue;
    survey.Add(Survey::kDrive, name.substr(kDrive.size()), DiskOf(value.bytes));
  }
}

// One that cannot be written says why; the rest of the volume can be cleaned all the same.
void AddHive(VolumeFileSystem& files, const std::string& path, Survey& survey) {
  if (path.empty()) return;
  const HiveState state = OpenHiveState(files, path);
  if (!state.read_only_reason.empty()) survey.Add(Survey::kHindrance, path, state.read_only_reason);
}

void AddWindows(VolumeFileSystem& files, const std::string& folder, Survey& survey) {
  VolumeRegistry registry(files, FindHives(files, folder, {}));
  survey.has_windows = true;
  survey.Add(Survey::kWindows, "", folder);
  survey.Add(Survey::kProduct, "", ProductOf(registry));
  survey.Add(Survey::kVersion, "", VersionOf(registry));
  survey.Add(Survey::kInstalled, "", InstalledAt(registry));
  for (const char* hive : {"SOFTWARE", "SYSTEM"}) AddHive(files, MachineHive(folder, hive), survey);
  for (const VolumeUser& user : FindUsers(files, registry, folder)) {
    survey.Add(Survey::kUser, user.name, user.profile);
    const HivePaths hives = FindHives(files, folder, user);
    for (const std::string& hive : {hives.user, hives.classes}) AddHive(files, hive, survey);
  }
  AddDrives(registry, survey);
}

void SurveyFolder(const std::string& folder, Survey& survey) {
  try {
    const FoundWindows windows = LookForWindows(folder);
    VolumeFileSystem files({{windows.letter, folder}});
    AddWindows(files, std::string(1, windows.letter) + ":\\" + windows.folder_name, survey);
  } catch (const Error& error) {
    survey.Add(Survey::kHindrance, "", error.what());
  }
  if (!survey.has_windows) return;
  for (const std::string& hindrance : HindrancesOf(folder, {}, ""))
    survey.Add(Survey::kHindrance, "", hindrance);
  for (const std::string& unknown : UnknownsOf({folder})) survey.Add(Survey::kUnknown, "", unknown);
}

}  // namespace

SurveyedVolume SurveyVolume(const std::string& place) {
  SurveyedVolume survey;
  survey.place = place;
  const std::string why_none = WhyNoFolder(place);
  why_none.empty() ? SurveyFolder(place, survey) : survey.Add(Survey::kHindrance, "", why_none);
  return survey;
}

std::vector<std::string> MountedPlaces() {
  std::vector<std::string> places;
  for (const MountedDisk& disk : MountedDisks()) {
    if (MayHoldWindows(disk)) places.push_back(disk.folder);
  }
  return places;
}

}  // namespace quellix
