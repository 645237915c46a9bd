#include "platform/volume/hive_store.h"

#include <unistd.h>

#include <cerrno>

#include "platform/path.h"
#include "platform/volume/hive_check.h"
#include "platform/volume/hive_format.h"
#include "platform/volume/hive_state.h"
#include "platform/volume/volume_error.h"
#include "platform/volume/volume_random_file.h"

namespace quellix {
namespace {

using namespace hive_format;  // NOLINT(google-build-using-namespace): the places of one format

constexpr uint32_t kOfEntryLog = 6;

void CopyTo(RandomFile& file, int fd, std::string_view path) {
  std::string piece(1 << 20, '\0');
  for (uint64_t at = 0; const size_t got = file.Read(at, piece); at += got) {
    const int code = WriteAll(fd, std::string_view(piece).substr(0, got), static_cast<off_t>(at));
    if (code != 0) ThrowErrno(code, path);
  }
}

// A file with further names loses only this one; so does the live one, whatever its driver says of
// its names.
void WipeOriginal(VolumeFolder& folder, const std::string& live) {
  const std::string name = OriginalName(live);
  if (!folder.Look(name, Detail::kKind)) return;
  if (folder.IdOf(name) != folder.IdOf(live)) {
    const auto file = folder.Open(name, OpenMode::kReadAndCreate);
    if (file->LinkCount() == 1) Overwrite(*file);
  }
  folder.RemoveFile(name);
}

// As a second name of it, or as a copy where the disk knows no such names.
void KeepOriginal(VolumeFolder& folder, const std::string& name) {
  const std::string original = OriginalName(name);
  WipeOriginal(folder, name);
  if (folder.Link(name, original)) return;
  const auto file = folder.Open(name, OpenMode::kRead);
  folder.Replace(original, [&](int fd) { CopyTo(*file, fd, original); });
  folder.Flush();
}

// All that a log of a hive that was closed holds, from what its first sector was.
std::string CleanHeader(const std::string& hive_header, const std::string& log) {
  if (log.size() < kSector) return std::string(log.size(), '\0');
  std::string clean = hive_header;
  PutNumber(clean, kFileType, HasSoundHeader(log) ? NumberAt(log, kFileType) : kOfEntryLog);
  PutNumber(clean, kChecksum, HeaderChecksum(clean));
  return clean;
}

void CleanLogBeside(VolumeFolder& folder, const std::string& hive_header, const std::string& name,
                    bool kept) {
  if (!kept) WipeOriginal(folder, name);  // of an earlier run
  if (!folder.Look(name, Detail::kKind)) return;
  const auto file = folder.Open(name, OpenMode::kReadAndCreate);
  std::string header(kSector, '\0');
  header.resize(file->Read(0, header));
  if (header.empty()) return;
  if (kept) folder.Replace(OriginalName(name), [&](int fd) { CopyTo(*file, fd, name); });
  const std::string clean = CleanHeader(hive_header, header);
  if (file->LinkCount() > 1) {
    const auto size = static_cast<off_t>(file->Size());
    return folder.Replace(name, [&](int fd) {
      const int code = WriteAll(fd, clean, 0);
      if (code != 0 || ftruncate(fd, size) != 0) ThrowErrno(code != 0 ? code : errno, name);
    });
  }
  Overwrite(*file);
  file->Write(0, clean);
  file->Flush();
}

}  // namespace

std::string OriginalName(std::string_view path) { return std::string(path) + ".quellix-old"; }

std::unique_ptr<RandomFile> StoreHive(VolumeFileSystem& files, const std::string& path,
                                      bool& original_is_due,
                                      const std::function<void(int fd)>& fill,
                                      const std::function<void()>& check) {
  const std::string name(NamePart(path));
  const auto folder = files.OpenFolderOf(path);
  auto old = folder->Open(name, original_is_due ? OpenMode::kRead : OpenMode::kReadAndCreate);
  const FileTimes times = old->Times();
  const bool is_alone = old->LinkCount() == 1;
  if (original_is_due || !is_alone) old.reset();
  folder->Replace(name, fill, [&] {
    check();
    if (original_is_due) KeepOriginal(*folder, name);
    original_is_due = false;
  });
  try {
    folder->Open(name, OpenMode::kRead)->SetTimes(times);
  } catch (const Error&) {  // some mounts let nobody set them; the hive is in its place
  }
  return old;
}

void FinishHive(VolumeFileSystem& files, const std::string& path, bool kept) {
  const std::string name(NamePart(path));
  const auto folder = files.OpenFolderOf(path);
  std::string header(kSector, '\0');
  folder->Open(name, OpenMode::kRead)->Read(0, header);
  for (const char* extension : {".LOG1", ".LOG2", ".LOG"}) {
    CleanLogBeside(*folder, header, name + extension, kept);
  }
  if (!kept) WipeOriginal(*folder, name);
  folder->Flush();
}

// Logs that the hive still needs stay, and with a hive that is not sound the original does.
bool ClearOriginal(VolumeFileSystem& files, const std::string& path) {
  if (!files.Look(OriginalName(path), Detail::kKind)) return false;
  try {
    const HiveState state = OpenHiveState(files, path);
    if (!state.fd || !state.read_only_reason.empty()) return true;
    if (!IsSoundHive(ReadAll(state.fd.get(), kLargestHive, path))) return true;
    if (state.is_replayed) {
      WipeOriginal(*files.OpenFolderOf(path), std::string(NamePart(path)));
    } else {
      FinishHive(files, path, false);
    }
  } catch (const Error& error) {
    if (error.kind() != Error::Kind::kDenied) throw;
  }
  return true;
}

}  // namespace quellix
