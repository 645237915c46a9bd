// Whether Windows closed a hive properly, and what its logs make of one that it did not.
#include "platform/volume/hive_state.h"

#include <sys/mman.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/volume/hive_format.h"
#include "platform/volume/hive_log.h"
#include "platform/volume/volume_error.h"
#include "platform/volume/volume_random_file.h"

namespace quellix {
namespace {

constexpr uint64_t kLargestLog = 1u << 30;

std::string ReadSector(int fd, uint64_t at = 0) {
  std::string sector(hive_format::kSector, '\0');
  const ssize_t got = pread(fd, sector.data(), sector.size(), static_cast<off_t>(at));
  sector.resize(got < 0 ? 0 : static_cast<size_t>(got));
  return sector;
}

// Those that may have something for the hive: the first of two logs, and the only one of older
// systems, which is empty on newer ones.
std::vector<std::string> ReadLogs(VolumeFileSystem& files, const std::string& path,
                                  std::string_view header) {
  std::vector<std::string> logs;
  for (const char* extension : {".LOG1", ".LOG2", ".LOG"}) {
    const UniqueFd log = files.OpenForRead(path + extension);
    const auto read = [&log](uint64_t at) { return ReadSector(log.get(), at); };
    if (log && MayConcern(header, read))
      logs.push_back(ReadAll(log.get(), kLargestLog, path + extension));
  }
  return logs;
}

}  // namespace

HiveStamps StampsOf(VolumeFileSystem& files, const std::string& path) {
  HiveStamps stamps;
  for (const char* extension : {"", ".LOG1", ".LOG2", ".LOG"}) {
    const UniqueFd fd = files.OpenForRead(path + extension);
    struct stat status;
    std::optional<FileStamp>& stamp = stamps.emplace_back();
    if (!fd || fstat(fd.get(), &status) != 0) continue;
    stamp = {IdFrom(status), static_cast<uint64_t>(status.st_size),
             status.st_mtim.tv_sec * INT64_C(1'000'000'000) + status.st_mtim.tv_nsec};
  }
  return stamps;
}

HiveState OpenHiveState(VolumeFileSystem& files, const std::string& path) {
  HiveState state;
  state.stamps = StampsOf(files, path);
  state.fd = files.OpenForRead(path);
  if (!state.fd) return state;
  const std::string header = ReadSector(state.fd.get());
  const std::vector<std::string> logs = ReadLogs(files, path, header);
  if (IsClosedHive(header) && logs.empty()) return state;
  std::string bytes = ReadAll(state.fd.get(), kLargestHive, path);
  const HiveLogs fate = ReplayLogs(bytes, logs);
  if (fate == HiveLogs::kReplayed) {
    state.fd = MemoryFile(bytes, path);
    state.is_replayed = true;
  } else if (fate == HiveLogs::kUnfit) {
    state.read_only_reason = "Windows was not shut down cleanly: the registry hive " + path +
                             " has changes that are not stored yet and that its logs do not give "
                             "back, so it is only read. Start Windows once and shut it down.";
  }
  return state;
}

UniqueFd MemoryFile(std::string_view bytes, std::string_view path) {
  UniqueFd fd(memfd_create("quellix-hive", MFD_CLOEXEC));
  const int code = fd ? WriteAll(fd.get(), bytes, 0) : errno;
  if (code != 0) ThrowErrno(code, path);
  return fd;
}

}  // namespace quellix
