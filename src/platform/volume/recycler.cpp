#include "platform/volume/recycler.h"

#include <fcntl.h>

#include <cerrno>
#include <chrono>
#include <random>

#include "platform/path.h"
#include "platform/recycle_index.h"
#include "platform/volume/volume_error.h"

namespace quellix {
namespace {

constexpr const char* kDesktopIni = "desktop.ini";
constexpr std::string_view kDesktopIniText =
    "[.ShellClassInfo]\r\nCLSID={645FF040-5081-101B-9F08-00AA002F954E}\r\n"
    "LocalizedResourceName=@%SystemRoot%\\system32\\shell32.dll,-8964\r\n";

int64_t FileTimeNow() {
  constexpr int64_t kSecondsTo1970 = 11644473600;
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const auto steps = std::chrono::duration_cast<std::chrono::microseconds>(now).count() * 10;
  return steps + kSecondsTo1970 * 10'000'000;
}

std::string Extension(std::string_view path) {
  const std::string_view name = NamePart(path);
  const size_t dot = name.rfind('.');
  return dot == std::string_view::npos ? std::string() : std::string(name.substr(dot));
}

// Six random characters and the extension.
std::string RandomName(std::string_view extension) {
  static constexpr std::string_view kCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
  std::random_device random;
  std::string name;
  for (int i = 0; i < 6; ++i) name += kCharacters[random() % kCharacters.size()];
  return name.append(extension);
}

// Makes the index of a file: the two names are told apart by their second character. Returns what
// follows it.
std::string MakeIndex(Folder& bin, std::string_view extension, std::string_view bytes) {
  for (;;) {
    std::string name = RandomName(extension);
    if (bin.Look("$R" + name, Detail::kKind)) continue;
    try {
      const auto file = bin.Open("$I" + name, OpenMode::kCreateNew);
      try {
        file->Write(0, bytes);
        file->Flush();
      } catch (const Error&) {
        bin.RemoveFile("$I" + name);
        throw;
      }
      return name;
    } catch (const Error& error) {
      if (error.kind() != Error::Kind::kExists) throw;
    }
  }
}

// Never over what is there; where the driver knows no such renaming, the look before must do.
void Move(const Located& file, int bin, const std::string& name, const std::string& path) {
  const auto rename = [&](unsigned flags) {
    return renameat2(file.folder, file.name.c_str(), bin, name.c_str(), flags) == 0;
  };
  if (rename(RENAME_NOREPLACE)) return;
  if (errno != EINVAL || !rename(0)) ThrowErrno(errno, path);
}

}  // namespace

void Recycler::Require() {
  if (user_.sid.empty()) {
    throw NotAvailable("The user's identity is not known, so there is no recycle bin to use.");
  }
  if (system_.Version().major < 6) {
    throw NotAvailable("The recycle bin of this Windows cannot be filled from outside.");
  }
}

std::unique_ptr<Folder> Recycler::OpenBin(char drive) {
  const auto root = files_.OpenFolder(drive + std::string(":\\"));
  if (auto bin = root->OpenFolder(std::string(kBinFolder) + "\\" + user_.sid)) return bin;
  root->CreateFolder(kBinFolder);
  root->SetAttributes(kBinFolder, kHidden | kSystem);
  const auto bins = root->OpenFolder(kBinFolder);
  bins->CreateFolder(user_.sid);
  bins->SetAttributes(user_.sid, kHidden | kSystem);
  auto bin = bins->OpenFolder(user_.sid);
  static_cast<VolumeFolder&>(*bin).Replace(kDesktopIni, kDesktopIniText);
  bin->SetAttributes(kDesktopIni, kHidden | kSystem);
  return bin;
}

void Recycler::Recycle(const Located& file, const std::string& path) {
  Require();
  if (!S_ISREG(file.status.st_mode))
    ThrowErrno(S_ISDIR(file.status.st_mode) ? EISDIR : EACCES, path);
  const auto bin = OpenBin(path[0]);
  const int version = system_.Version().major >= 10 ? 2 : 1;
  const auto size = static_cast<uint64_t>(file.status.st_size);
  const std::string name =
      MakeIndex(*bin, Extension(path), WriteRecycleIndex(version, {size, FileTimeNow(), path}));
  try {
    Move(file, static_cast<VolumeFolder&>(*bin).fd(), "$R" + name, path);
  } catch (const Error&) {
    bin->RemoveFile("$I" + name);
    throw;
  }
}

}  // namespace quellix
