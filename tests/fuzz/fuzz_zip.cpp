// Archives, whole and broken: what is read leads nowhere, what is repaired is whole, and what is
// whole can be added to.
#include <algorithm>
#include <memory>

#include "backup/entry_path.h"
#include "backup/restore.h"
#include "backup/zip_repair.h"
#include "backup/zip_writer.h"
#include "fuzz/check.h"
#include "platform/error.h"

using namespace quellix;

namespace {

// An archive in memory, shared by those who open it one after the other.
struct Bytes : RandomFile {
  explicit Bytes(std::shared_ptr<std::string> bytes) : bytes_(std::move(bytes)) {}
  uint64_t Size() const override { return bytes_->size(); }
  size_t Read(uint64_t offset, std::span<char> buffer) override {
    return offset < bytes_->size() ? bytes_->copy(buffer.data(), buffer.size(), offset) : 0;
  }
  void Write(uint64_t offset, std::string_view bytes) override {
    bytes_->resize(std::max<size_t>(bytes_->size(), offset + bytes.size()));
    bytes_->replace(offset, bytes.size(), bytes);
  }
  void Resize(uint64_t size) override { bytes_->resize(size); }
  void Flush() override {}
  FileTimes Times() override { return {}; }
  uint32_t Attributes() override { return 0; }
  void SetTimes(const FileTimes&) override {}

  std::shared_ptr<std::string> bytes_;
};

std::unique_ptr<ArchiveStream> Stream(const std::shared_ptr<std::string>& bytes) {
  return std::make_unique<ArchiveStream>(std::make_unique<Bytes>(bytes));
}

std::unique_ptr<ZipReader> Open(const std::shared_ptr<std::string>& bytes) {
  auto stream = Stream(bytes);
  return ZipReader::Open(stream);
}

// The whole entries of an archive in another one; their number.
uint64_t RepairInto(const std::shared_ptr<std::string>& bytes,
                    const std::shared_ptr<std::string>& repaired) {
  const auto stream = Stream(bytes);
  const ZipScan scan = ScanArchive(*stream, {});
  CopyEntries(*stream, scan.entries, std::make_unique<Bytes>(repaired), {});
  return scan.entries.size();
}

// Unpacks some of an entry; a bomb is left behind.
void Unpack(ZipReader& reader, const ZipEntry& entry) {
  uint64_t size = 0;
  try {
    reader.Extract(entry, [&](std::string_view part) {
      size += part.size();
      if (size > 1 << 20) throw Error(Error::Kind::kFull, "enough");
    });
    Check(size == entry.size);
  } catch (const Error&) {
    return;
  }
}

void ReadAll(ZipReader& reader) {
  reader.Visit([&](const ZipEntry& entry) {
    if (!RefusalOf(entry.name, entry.own)) {
      const std::string path = "\\" + EntryPath(entry.name) + "\\";
      Check(path.find("\\..\\") == path.npos && path.find(':') == path.npos);
    }
    FromDosTime(entry.dos_time);
    ZipEntry header = entry;
    reader.ReadHeader(header);
    Unpack(reader, entry);
    return true;
  });
}

void Add(const std::shared_ptr<std::string>& bytes, uint64_t count) {
  Bytes source(std::make_shared<std::string>("added"));
  ZipWriter writer(std::make_unique<Bytes>(bytes), count);
  writer.Add({.name = "added"}, source, {});
  writer.Finish();
  const auto reader = Open(bytes);
  Check(reader && reader->count() == count + 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto bytes = std::make_shared<std::string>(reinterpret_cast<const char*>(data), size);
  try {
    const std::string before = *bytes;
    std::optional<quellix::Repair> found;
    auto reader = ReadZip(std::make_unique<Bytes>(bytes), "input", found, {});
    ReadAll(*reader);
    Check(*bytes == before);
    if (!found) return 0;
    const auto repaired = std::make_shared<std::string>();
    const uint64_t count = RepairInto(bytes, repaired);
    Check(reader->count() == count && *bytes == before);
    reader = Open(repaired);
    Check(reader && reader->count() == count);
    Add(repaired, count);
    reader = Open(repaired);
    ReadAll(*reader);
  } catch (const Error&) {
    return 0;
  }
  return 0;
}
