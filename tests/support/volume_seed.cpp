#include "support/volume_seed.h"

#include <sys/stat.h>

#include <fstream>
#include <stdexcept>

#include "platform/text.h"

namespace quellix {
namespace {

constexpr const char* kWindows = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
constexpr const char* kLocalWindows = "/AppData/Local/Microsoft/Windows";

RegistryValue Text(std::string_view text, uint32_t type = kRegSz) {
  return {type, ToUtf16Bytes(text) + std::string(2, '\0')};
}
RegistryValue Number(char value) {
  return {kRegDword, std::string(1, value) + std::string(3, '\0')};
}

void Set(VolumeRegistry& registry, RegistryRoot root, const std::string& key, std::string_view name,
         const RegistryValue& value) {
  registry.CreateKey(root, key);
  registry.Open(root, key, RegistryAccess::kWrite)->SetValue(name, value);
}

void MakeHive(const std::string& file) {
  std::filesystem::create_directories(std::filesystem::path(file).parent_path());
  WriteNative(file, EmptyHive());
}

HivePaths MachineHives() {
  HivePaths paths;
  paths.software = MachineHive("C:\\Windows", "SOFTWARE");
  paths.system = MachineHive("C:\\Windows", "SYSTEM");
  return paths;
}

void SeedMachine(VolumeRegistry& registry) {
  const auto set = [&registry](const std::string& key, std::string_view name,
                               const RegistryValue& value) {
    Set(registry, RegistryRoot::kLocalMachine, key, name, value);
  };
  set(kWindows, "SystemRoot", Text("C:\\Windows"));
  set(kWindows, "CurrentVersion", Text("6.3"));
  set(kWindows, "CurrentMajorVersionNumber", Number(10));
  set(kWindows, "CurrentMinorVersionNumber", Number(0));
  set("SOFTWARE\\Classes\\.txt", "", Text("txtfile"));
  set("SYSTEM\\Select", "Current", Number(1));
  const std::string control = "SYSTEM\\ControlSet001\\Control\\";
  set(control + "Nls\\CodePage", "ACP", Text("1252"));
  set(control + "Session Manager\\Environment", "OS", Text("Windows_NT"));
  set(control + "Session Manager\\Environment", "TEMP", Text("%SystemRoot%\\TEMP", kRegExpandSz));
}

void SeedUserHive(VolumeFileSystem& files, const std::string& profile) {
  HivePaths paths;
  paths.user = profile + "\\NTUSER.DAT";
  VolumeRegistry registry(files, paths);
  for (const char* name : {"TEMP", "TMP"}) {
    Set(registry, RegistryRoot::kCurrentUser, "Environment", name,
        Text("%USERPROFILE%\\AppData\\Local\\Temp", kRegExpandSz));
  }
  registry.CreateKey(RegistryRoot::kCurrentUser, "Software\\Microsoft\\Windows");
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
  path_ = (std::filesystem::temp_directory_path() / "quellix-test-XXXXXX").string();
  if (!mkdtemp(path_.data())) throw std::runtime_error("cannot make " + path_);
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void SeedWindows(const std::string& volume) {
  const std::string config = volume + "/Windows/System32/config/";
  for (const char* name : {"SOFTWARE", "SYSTEM"}) MakeHive(config + name);
  std::filesystem::create_directories(volume + "/Windows/Temp");
  VolumeFileSystem files({{'C', volume}});
  VolumeRegistry registry(files, MachineHives());
  SeedMachine(registry);
  registry.CloseHives();
  SeedUser(volume, kTesterName, kTesterSid);
}

std::map<std::string, std::string> PictureOf(const std::string& volume) {
  std::map<std::string, std::string> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(volume)) {
    std::string bytes;
    if (entry.is_regular_file()) {
      std::ifstream file(entry.path(), std::ios::binary);
      bytes.assign(std::istreambuf_iterator<char>(file), {});
    }
    struct stat status {};
    lstat(entry.path().c_str(), &status);
    files[entry.path()] = std::to_string(status.st_mtim.tv_sec) + "." +
                          std::to_string(status.st_mtim.tv_nsec) + " " + bytes;
  }
  return files;
}

void SeedUser(const std::string& volume, const std::string& name, const std::string& sid) {
  const std::string profile = volume + "/Users/" + name;
  MakeHive(profile + "/NTUSER.DAT");
  MakeHive(profile + kLocalWindows + "/UsrClass.dat");
  std::filesystem::create_directories(profile + "/AppData/Local/Temp");
  VolumeFileSystem files({{'C', volume}});
  SeedUserHive(files, "C:\\Users\\" + name);
  VolumeRegistry registry(files, MachineHives());
  Set(registry, RegistryRoot::kLocalMachine, std::string(kWindows) + "\\ProfileList\\" + sid,
      "ProfileImagePath", Text("%SystemDrive%\\Users\\" + name, kRegExpandSz));
  registry.CloseHives();
}

}  // namespace quellix
