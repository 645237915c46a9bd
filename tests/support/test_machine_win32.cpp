#include <windows.h>
// After windows.h, whose types they use.
#include <aclapi.h>
#include <winioctl.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "platform/win32/win32_error.h"
#include "platform/win32/win32_machine.h"
#include "platform/win32/win32_path.h"
#include "platform/win32/win32_text.h"
#include "support/test_machine.h"
#include "support/unix_tools_win32.h"

namespace quellix {
namespace {

constexpr char kScratchFolder[] = "C:\\QxScratch";
constexpr char kProgramFolder[] = "C:\\QxProgram";

// Why this Windows may not be tested on; null inside the sandbox.
const char* WhyNotHere() {
  const char* sandbox = std::getenv("QUELLIX_SANDBOX");
  if (!sandbox || std::strcmp(sandbox, "1") != 0) return "QUELLIX_SANDBOX=1 is not set";
  if (GetFileAttributesW(L"C:\\quellix-sandbox") == INVALID_FILE_ATTRIBUTES) {
    return "the file C:\\quellix-sandbox is missing";
  }
  if (GetLogicalDrives() >> ('Z' - 'A') & 1) return "there is a drive Z:";
  for (const wchar_t* folder : {L"C:\\QxScratch", L"C:\\QxProgram"}) {
    const DWORD attributes = GetFileAttributesW(folder);
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT)) {
      return "a folder of the tests is a link";
    }
  }
  return nullptr;
}

void StopOutsideTheSandbox() {
  if (const char* reason = WhyNotHere()) {
    std::fprintf(stderr, "These tests remove files and run only in the sandbox: %s.\n", reason);
    std::exit(2);
  }
}

void Require(bool done, std::string_view what, std::string_view object) {
  if (done) return;
  throw std::runtime_error("test machine: cannot " + std::string(what) + " " + std::string(object) +
                           " (error " + std::to_string(GetLastError()) + ")");
}

void RequireStatus(LSTATUS status, std::string_view what, std::string_view object) {
  SetLastError(static_cast<DWORD>(status));
  Require(status == ERROR_SUCCESS, what, object);
}

HKEY Predefined(RegistryRoot root) {
  return root == RegistryRoot::kClassesRoot    ? HKEY_CLASSES_ROOT
         : root == RegistryRoot::kCurrentUser  ? HKEY_CURRENT_USER
         : root == RegistryRoot::kLocalMachine ? HKEY_LOCAL_MACHINE
                                               : HKEY_USERS;
}

void RemoveTree(FileSystem& files, const std::string& folder) {
  std::vector<std::pair<std::string, FileInfo>> entries;
  files.Enumerate(folder, Detail::kKind, [&](const Entry& entry) {
    entries.emplace_back(folder + "\\" + std::string(entry.name), entry.info);
    return true;
  });
  for (const auto& [path, info] : entries) {
    if (!info.is_folder) {
      files.RemoveFile(path);
    } else {
      if (!info.is_link) RemoveTree(files, path);
      files.RemoveFolder(path);
    }
  }
}

// The part of a mount-point reparse buffer before its two names.
struct JunctionHeader {
  DWORD tag;
  WORD data_length, reserved;
  WORD substitute_offset, substitute_length, print_offset, print_length;
};

std::string JunctionData(const std::wstring& target) {
  const std::wstring names = L"\\??\\" + target + L'\0' + target + L'\0';
  const auto print_length = static_cast<WORD>(target.size() * 2);
  const auto substitute_length = static_cast<WORD>(print_length + 8);
  const JunctionHeader header{
      IO_REPARSE_TAG_MOUNT_POINT, static_cast<WORD>(8 + names.size() * 2),  0,           0,
      substitute_length,          static_cast<WORD>(substitute_length + 2), print_length};
  std::string data(reinterpret_cast<const char*>(&header), sizeof header);
  return data.append(reinterpret_cast<const char*>(names.data()), names.size() * 2);
}

void MakeJunction(const std::wstring& link, const std::wstring& target) {
  Require(CreateDirectoryW(link.c_str(), nullptr), "make the link", Narrow(link));
  const UniqueFile folder = OpenItself(link, GENERIC_WRITE, 0);
  std::string data = JunctionData(target);
  DWORD unused = 0;
  Require(DeviceIoControl(folder.Get(), FSCTL_SET_REPARSE_POINT, data.data(),
                          static_cast<DWORD>(data.size()), nullptr, 0, &unused, nullptr),
          "make the link", Narrow(link));
}

// Everyone may read the key and change its rights, nobody write it or remove it, until this object
// gives the old rights back.
class WriteDenial {
 public:
  WriteDenial(RegistryRoot root, std::string_view path) {
    RequireStatus(RegOpenKeyExW(Predefined(root), Wide(path).c_str(), 0, READ_CONTROL | WRITE_DAC,
                                key_.Put()),
                  "open", path);
    RequireStatus(GetSecurityInfo(key_.Get(), SE_REGISTRY_KEY, DACL_SECURITY_INFORMATION, nullptr,
                                  nullptr, &old_list_, nullptr, &old_),
                  "read the rights of", path);
    SetList(ReadersOnly(), path);
  }
  ~WriteDenial() {
    SetSecurityInfo(key_.Get(), SE_REGISTRY_KEY, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                    old_list_, nullptr);
    LocalFree(old_);
  }
  WriteDenial(const WriteDenial&) = delete;
  WriteDenial& operator=(const WriteDenial&) = delete;

 private:
  ACL* ReadersOnly() {
    DWORD size = sizeof everyone_;
    CreateWellKnownSid(WinWorldSid, nullptr, everyone_, &size);
    auto* list = reinterpret_cast<ACL*>(list_);
    InitializeAcl(list, sizeof list_, ACL_REVISION);
    AddAccessDeniedAce(list, ACL_REVISION, KEY_SET_VALUE | KEY_CREATE_SUB_KEY | DELETE, everyone_);
    AddAccessAllowedAce(list, ACL_REVISION, KEY_READ | WRITE_DAC, everyone_);
    return list;
  }
  void SetList(ACL* list, std::string_view path) {
    RequireStatus(SetSecurityInfo(key_.Get(), SE_REGISTRY_KEY,
                                  DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION,
                                  nullptr, nullptr, list, nullptr),
                  "deny writes to", path);
  }

  UniqueKey key_;
  void* old_ = nullptr;
  ACL* old_list_ = nullptr;
  alignas(8) BYTE everyone_[SECURITY_MAX_SID_SIZE];
  alignas(8) BYTE list_[256];
};

class Win32TestMachine : public TestMachine {
 public:
  Win32TestMachine() : windows_(kProgramFolder) {
    for (const char* folder : {kScratchFolder, kProgramFolder}) MakeFolder(folder);
    Clear();
    ClearTemp();
  }
  ~Win32TestMachine() override {
    if (made_links_) Clear();
  }

  // Wine removes a Unix symlink's target instead of the link (the program then leaves the link
  // alone), stores no read-only attribute of a folder, takes a new name that differs in case alone
  // for the old one, leaves read-only files in the bin, and removes and renames by the path that a
  // folder had when it was opened.
  bool Can(Ability) override { return !RunsUnderWine(); }
  Machine machine() override { return windows_.machine(); }
  std::string Scratch() override { return WithBackslash(kScratchFolder); }

  void MakeFolder(std::string_view path) override;
  void MakeFile(std::string_view path, std::string_view bytes) override;
  void MakeFolderLink(std::string_view link, std::string_view target) override;
  // Symbolic links need a right that Windows gives to few, and Wine shows none of them as links.
  bool MakeFileLink(std::string_view, std::string_view) override { return false; }
  void MakeHardLink(std::string_view link, std::string_view target) override {
    Require(CreateHardLinkW(WidePath(Cannot::kMake, link).c_str(),
                            WidePath(Cannot::kMake, target).c_str(), nullptr),
            "make the link", link);
  }
  std::string ShortName(std::string_view path) override {
    const std::wstring wide = Wide(path);
    return Narrow(GrowingText(
        [&](wchar_t* text, uint32_t size) { return GetShortPathNameW(wide.c_str(), text, size); }));
  }
  void SetLastWrite(std::string_view path, int64_t filetime) override;
  std::shared_ptr<void> LockFile(std::string_view path) override;
  void SetRegistryValue(RegistryRoot root, std::string_view key, std::string_view name,
                        const RegistryValue& value) override;
  void RemoveRegistryTree(RegistryRoot root, std::string_view key) override;
  std::shared_ptr<void> DenyRegistryWrites(RegistryRoot root, std::string_view key) override {
    return std::make_shared<WriteDenial>(root, WithoutBackslash(key));
  }

 private:
  FileSystem& files() { return machine_.files; }
  void Clear();
  void ClearTemp();

  Win32Machine windows_;
  Machine machine_ = windows_.machine();
  bool made_links_ = true;  // by an earlier test, perhaps
};

void Win32TestMachine::Clear() {
  if (std::exchange(made_links_, false) && RunsUnderWine()) RemoveUnixLinks(Wide(kScratchFolder));
  RemoveTree(files(), kScratchFolder);
  RemoveTree(files(), kProgramFolder);
}

// What an earlier test left; what a program still holds stays.
void Win32TestMachine::ClearTemp() {
  std::error_code ignored;
  const std::filesystem::path temp = Wide(machine_.system.TempFolder());
  for (const auto& entry : std::filesystem::directory_iterator(temp, ignored))
    std::filesystem::remove_all(entry, ignored);
}

void Win32TestMachine::MakeFolder(std::string_view path) {
  const std::wstring wide = WidePath(Cannot::kMake, path);
  if (CreateDirectoryW(wide.c_str(), nullptr) || GetLastError() == ERROR_ALREADY_EXISTS) return;
  Require(GetLastError() == ERROR_PATH_NOT_FOUND, "make", path);
  MakeFolder(WithoutBackslash(FolderPart(WithoutBackslash(path))));
  Require(CreateDirectoryW(wide.c_str(), nullptr), "make", path);
}

void Win32TestMachine::MakeFile(std::string_view path, std::string_view bytes) {
  MakeFolder(WithoutBackslash(FolderPart(path)));
  const UniqueFile file(CreateFileW(WidePath(Cannot::kMake, path).c_str(), GENERIC_WRITE, 0,
                                    nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  Require(bool{file}, "make", path);
  DWORD written = 0;
  Require(WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr),
          "fill", path);
}

void Win32TestMachine::MakeFolderLink(std::string_view link, std::string_view target) {
  made_links_ = true;
  MakeFolder(WithoutBackslash(FolderPart(WithoutBackslash(link))));
  const std::wstring wide_target = Wide(WithoutBackslash(target));
  if (RunsUnderWine()) {
    MakeUnixLink(Wide(WithoutBackslash(link)), wide_target);
  } else {
    MakeJunction(WidePath(Cannot::kMake, link), wide_target);
  }
}

void Win32TestMachine::SetLastWrite(std::string_view path, int64_t filetime) {
  const UniqueFile file = OpenItself(WidePath(Cannot::kChange, path), FILE_WRITE_ATTRIBUTES, 0);
  Require(bool{file}, "change", path);
  const FILETIME time{static_cast<DWORD>(filetime), static_cast<DWORD>(filetime >> 32)};
  Require(SetFileTime(file.Get(), nullptr, nullptr, &time), "change", path);
}

std::shared_ptr<void> Win32TestMachine::LockFile(std::string_view path) {
  auto file = std::make_shared<UniqueFile>(CreateFileW(
      WidePath(Cannot::kOpen, path).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  Require(bool{*file}, "lock", path);
  return file;
}

void Win32TestMachine::SetRegistryValue(RegistryRoot root, std::string_view key,
                                        std::string_view name, const RegistryValue& value) {
  UniqueKey opened;
  RequireStatus(RegCreateKeyExW(Predefined(root), Wide(WithoutBackslash(key)).c_str(), 0, nullptr,
                                0, KEY_WRITE, nullptr, opened.Put(), nullptr),
                "make", key);
  machine_.registry.Open(root, key, RegistryAccess::kWrite)->SetValue(name, value);
}

void Win32TestMachine::RemoveRegistryTree(RegistryRoot root, std::string_view key) {
  const LSTATUS status = RegDeleteTreeW(Predefined(root), Wide(WithoutBackslash(key)).c_str());
  if (status != ERROR_FILE_NOT_FOUND) RequireStatus(status, "remove", key);
}

}  // namespace

std::unique_ptr<TestMachine> TestMachine::Create() {
  StopOutsideTheSandbox();
  return std::make_unique<Win32TestMachine>();
}

}  // namespace quellix
