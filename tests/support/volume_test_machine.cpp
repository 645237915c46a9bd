#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>

#include "platform/text.h"
#include "platform/volume/unique_fd.h"
#include "support/volume_seed.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Fail(const std::string& what) { throw std::runtime_error("seeding: " + what); }

// Calls a function when the last owner lets go.
std::shared_ptr<void> AtEnd(std::function<void()> end) {
  return std::shared_ptr<void>(nullptr, [end = std::move(end)](void*) { end(); });
}

bool SetImmutable(const std::string& file, bool immutable) {
  const UniqueFd fd(open(file.c_str(), O_RDONLY | O_CLOEXEC));
  int flags = 0;
  if (!fd || ioctl(fd.get(), FS_IOC_GETFLAGS, &flags) != 0) return false;
  flags = immutable ? flags | FS_IMMUTABLE_FL : flags & ~FS_IMMUTABLE_FL;
  return ioctl(fd.get(), FS_IOC_SETFLAGS, &flags) == 0;
}

class NativeTestMachine : public VolumeTestMachine {
 public:
  NativeTestMachine() {
    fs::create_directories(volume() + "/Scratch");
    SeedWindows(volume());
    machine_.emplace(options());
  }

  Machine machine() override { return machine_->machine(); }
  std::string Scratch() override { return "C:\\Scratch\\"; }
  void CloseHives() override { machine_->registry().CloseHives(); }
  VolumeOptions options() override { return {volume(), {}, "", folder_.path() + "/settings"}; }
  std::string Native(std::string_view path) override;

  void MakeFolder(std::string_view path) override;
  void MakeFile(std::string_view path, std::string_view bytes) override;
  void MakeFolderLink(std::string_view link, std::string_view target) override;
  bool MakeFileLink(std::string_view link, std::string_view target) override;
  void MakeHardLink(std::string_view link, std::string_view target) override {
    fs::create_hard_link(Native(target), Native(link));
  }
  void SetLastWrite(std::string_view path, int64_t filetime) override;
  std::shared_ptr<void> LockFile(std::string_view path) override;

  void SetRegistryValue(RegistryRoot root, std::string_view key, std::string_view name,
                        const RegistryValue& value) override;
  void RemoveRegistryTree(RegistryRoot root, std::string_view key) override;
  std::shared_ptr<void> DenyRegistryWrites(RegistryRoot root, std::string_view key) override;

 private:
  std::string volume() { return folder_.path() + "/c"; }
  std::string HiveOf(RegistryRoot root, std::string_view key);

  TemporaryFolder folder_;
  std::optional<VolumeMachine> machine_;
};

std::string NativeTestMachine::Native(std::string_view path) {
  const std::string base = path[0] == kSettingsDrive ? folder_.path() + "/settings" : volume();
  std::string rest(path.substr(2));
  std::replace(rest.begin(), rest.end(), '\\', '/');
  return base + rest;
}

// Folder by folder through the machine, so that seeded paths may be of any length and are spelled
// as those that are there.
void NativeTestMachine::MakeFolder(std::string_view path) {
  path = WithoutBackslash(path);
  auto& files = static_cast<VolumeFileSystem&>(machine().files);
  if (path.size() <= 2 || files.Look(path)) return;
  MakeFolder(FolderPart(path));
  files.CreateFolder(path);
}

void NativeTestMachine::MakeFile(std::string_view path, std::string_view bytes) {
  MakeFolder(FolderPart(path));
  // Not through the machine where that can be, which waits for the disk at each file.
  const std::string file = Native(path);
  const bool is_spelled_so = access(fs::path(file).parent_path().c_str(), W_OK) == 0;
  if (is_spelled_so && !machine().files.Look(path)) return WriteNative(file, std::string(bytes));
  machine().files.WriteWholeFile(path, bytes);
}

void NativeTestMachine::MakeFolderLink(std::string_view link, std::string_view target) {
  MakeFolder(FolderPart(WithoutBackslash(link)));
  fs::create_directory_symlink(Native(WithoutBackslash(target)), Native(WithoutBackslash(link)));
}

bool NativeTestMachine::MakeFileLink(std::string_view link, std::string_view target) {
  MakeFolder(FolderPart(link));
  fs::create_symlink(Native(target), Native(link));
  return true;
}

void NativeTestMachine::SetLastWrite(std::string_view path, int64_t filetime) {
  constexpr int64_t kSecondsTo1970 = 11644473600;
  timespec times[2];
  times[0] = {0, UTIME_OMIT};
  times[1].tv_sec = filetime / 10'000'000 - kSecondsTo1970;
  times[1].tv_nsec = filetime % 10'000'000 * 100;
  if (utimensat(AT_FDCWD, Native(path).c_str(), times, AT_SYMLINK_NOFOLLOW) != 0) Fail("time");
}

std::shared_ptr<void> NativeTestMachine::LockFile(std::string_view path) {
  const std::string file = Native(path);
  if (SetImmutable(file, true)) return AtEnd([file] { SetImmutable(file, false); });
  if (geteuid() == 0) Fail("locking " + file);
  // Without the right to make files immutable, an unwritable folder holds its files.
  const std::string folder = fs::path(file).parent_path().string();
  if (chmod(folder.c_str(), 0555) != 0 || chmod(file.c_str(), 0444) != 0) Fail("locking " + file);
  return AtEnd([file, folder] {
    chmod(folder.c_str(), 0755);
    chmod(file.c_str(), 0644);
  });
}

void NativeTestMachine::SetRegistryValue(RegistryRoot root, std::string_view key,
                                         std::string_view name, const RegistryValue& value) {
  machine_->registry().CreateKey(root, key);
  const auto open = machine().registry.Open(root, key, RegistryAccess::kWrite);
  if (!open) Fail("registry key " + std::string(key));
  open->SetValue(name, value);
}

void NativeTestMachine::RemoveRegistryTree(RegistryRoot root, std::string_view key) {
  const auto open = machine().registry.Open(root, key, RegistryAccess::kRead);
  if (!open) return;
  Names names;
  for (uint32_t i = 0; const auto name = open->SubKeyAt(i); ++i) names.push_back(*name);
  for (const std::string& name : names) RemoveRegistryTree(root, std::string(key) + "\\" + name);
  const auto parent = machine().registry.Open(root, FolderPart(key), RegistryAccess::kWrite);
  parent->DeleteSubKey(NamePart(key));
}

std::string NativeTestMachine::HiveOf(RegistryRoot root, std::string_view key) {
  const std::string profile = std::string("C:\\Users\\") + kTesterName;
  const std::string config = "C:\\Windows\\System32\\config\\";
  const std::string top = UpCase(key.substr(0, key.find('\\')));
  if (root == RegistryRoot::kLocalMachine) return Native(config + top);
  if (root == RegistryRoot::kClassesRoot) return Native(config + "SOFTWARE");
  return Native(profile + "\\NTUSER.DAT");
}

std::shared_ptr<void> NativeTestMachine::DenyRegistryWrites(RegistryRoot root,
                                                            std::string_view key) {
  const std::string hive = HiveOf(root, key);
  CloseHives();
  SetHiveDirty(hive, true);
  return AtEnd([this, hive] {
    CloseHives();
    SetHiveDirty(hive, false);
  });
}

}  // namespace

std::unique_ptr<VolumeTestMachine> VolumeTestMachine::CreateVolume() {
  return std::make_unique<NativeTestMachine>();
}

std::unique_ptr<TestMachine> TestMachine::Create() { return VolumeTestMachine::CreateVolume(); }

}  // namespace quellix
