#include "backup/zip_repair.h"

#include <algorithm>
#include <utility>

#include "backup/backup_names.h"
#include "backup/new_file.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/words.h"

namespace quellix {
namespace {

constexpr uint64_t kPiece = 1 << 20;

// Empty and barely begun files are archives that were cut off at once.
bool MayBeArchive(ArchiveStream& stream) {
  const std::string start = stream.ReadText(0, kLocalSignature.size());
  return kLocalSignature.starts_with(start) || kEndSignature.starts_with(start) ||
         start.starts_with("PK\6\6");
}

ZipScan Scan(ArchiveStream& stream, std::string_view name, const Pause& pause) {
  ZipScan scan = ScanArchive(stream, pause);
  if (!scan.entries.empty() || scan.unverified != 0 || MayBeArchive(stream)) return scan;
  throw Error(Error::Kind::kOther, Say("%1 is not a zip archive.", name));
}

Repair ToRepair(const ZipScan& scan) {
  const auto is_encrypted = [](const ScannedEntry& found) {
    return (found.entry.flags & kEncrypted) != 0;
  };
  const auto encrypted = std::ranges::count_if(scan.entries, is_encrypted);
  return {scan.entries.size() - static_cast<uint64_t>(encrypted), scan.damaged, scan.unverified,
          scan.behind};
}

uint64_t EndOf(const std::vector<ScannedEntry>& entries) {
  return entries.empty() ? 0 : entries.back().end;
}

// Reading it is the first half of the work, copying it the second.
Pause Half(const Pause& pause, bool is_second) {
  return [&pause, is_second](const Progress& progress) {
    return pause({progress.done / 2 + (is_second ? progress.total / 2 : 0), progress.total});
  };
}

void Require(const Repair& repair) {
  if (repair.unverified == 0) return;
  throw Error(Error::Kind::kOther,
              Say("Nothing is repaired, as entries would be lost of which nobody can tell whether "
                  "they are whole: %1.",
                  repair.Counts()));
}

}  // namespace

Sentence Repair::Counts() const {
  Sentence counts = SayN("%1 file(s) whole", "%1 file(s) whole", kept, std::to_string(kept));
  // TRANSLATORS: %1 is "3 file(s) whole", or that with more behind it.
  if (damaged != 0) counts = Say("%1, %2 damaged", counts, std::to_string(damaged));
  if (unverified != 0) {
    counts =
        Say("%1, %2 encrypted or packed in an unknown way", counts, std::to_string(unverified));
  }
  if (cut_off != 0) counts = Say("%1, %2 bytes behind them", counts, std::to_string(cut_off));
  return counts;
}

std::unique_ptr<ZipReader> ReadZip(std::unique_ptr<RandomFile> file, std::string_view name,
                                   std::optional<Repair>& found, const Pause& pause) {
  found.reset();
  auto stream = std::make_unique<ArchiveStream>(std::move(file));
  if (auto reader = ZipReader::Open(stream, pause)) return reader;
  const ZipScan scan = Scan(*stream, name, pause);
  found = ToRepair(scan);
  const uint64_t size = stream->Size();
  WriteDirectory(*stream, scan.entries, EndOf(scan.entries));
  auto reader = ZipReader::Open(stream, [&](const Progress&) { return pause({size, size}); });
  if (!reader) throw Error(Error::Kind::kOther, Say("%1 could not be read.", name));
  return reader;
}

std::unique_ptr<ZipReader> OpenZip(FileSystem& files, std::string_view path,
                                   std::optional<Repair>& found, const Pause& pause) {
  return ReadZip(files.Open(path, OpenMode::kRead), NamePart(path), found, pause);
}

void CopyEntries(ArchiveStream& from, std::vector<ScannedEntry> entries,
                 std::unique_ptr<RandomFile> to, const Pause& pause) {
  ArchiveStream out(std::move(to));
  for (ScannedEntry& found : entries) {
    const uint64_t start = out.Size();
    for (uint64_t at = found.entry.offset; at < found.end;) {
      const std::string piece = from.ReadText(at, std::min(kPiece, found.end - at));
      if (piece.empty()) throw Error(Error::Kind::kOther, Say("The archive could not be read."));
      out.Seek(out.Size());
      out.Write(piece);
      at += piece.size();
      if (!pause({std::min(at, from.Size()), from.Size()})) continue;
      throw Error(Error::Kind::kOther, Say("The repair was stopped; the archive is as it was."));
    }
    found.entry.offset = start;
    found.end = out.Size();
  }
  WriteDirectory(out, entries, out.Size());
  out.Flush();
}

std::optional<Repair> RepairArchive(FileSystem& files, std::string_view path, const Pause& pause) {
  const std::string name(NamePart(path));
  const auto folder = OpenFolderOf(files, path);
  if (!folder->Look(name)) throw Error(Error::Kind::kMissing, Say("There is no archive %1.", name));
  if (!IsArchiveName(name)) {
    throw Error(Error::Kind::kDenied,
                Say("%1 is not named as this program names its archives, and others are never "
                    "changed.",
                    name));
  }
  // Who fills it meanwhile is kept away.
  auto stream = std::make_unique<ArchiveStream>(folder->Open(name, OpenMode::kReadAndCreate));
  if (ZipReader::Open(stream, pause)) return std::nullopt;
  const ZipScan scan = Scan(*stream, name, Half(pause, false));
  const Repair repair = ToRepair(scan);
  Require(repair);
  NewFile made(*folder);
  CopyEntries(*stream, scan.entries, made.Take(), Half(pause, true));
  stream.reset();
  made.Place(name, IfThere::kReplace);
  folder->Flush();
  return repair;
}

}  // namespace quellix
