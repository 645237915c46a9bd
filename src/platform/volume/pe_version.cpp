// The version resource of a program file: headers, sections, the tree of resources, and the tree of
// texts that a version is.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/error.h"
#include "platform/file_version.h"
#include "platform/text.h"

namespace quellix {
namespace {

constexpr size_t kLargestVersion = 1 << 16;  // bytes; the lengths in it have 16 bits
constexpr uint32_t kVersionType = 16;        // RT_VERSION
constexpr uint32_t kIsFolder = 0x80000000;
constexpr size_t kEntrySize = 8, kMostEntries = 4096;
constexpr size_t kSectionSize = 40, kMostSections = 96;  // as many as Windows loads
constexpr size_t kResourceFolder = 2;                    // in the optional header's directories

// Bytes that are no program with a version.
struct NoVersion {};

uint32_t NumberIn(std::string_view bytes, size_t at, size_t size) {
  if (at > bytes.size() || bytes.size() - at < size) throw NoVersion();
  uint32_t number = 0;
  for (size_t i = size; i-- > 0;) number = number << 8 | static_cast<unsigned char>(bytes[at + i]);
  return number;
}

// A node of the version: its length, the length of its value, a type, a key, the value, and nodes
// below it; each begins at a multiple of 4.
struct Node {
  std::string key;
  std::string_view value;  // with the nodes below it
  size_t value_size = 0;   // in bytes, but of a text in characters
};

constexpr size_t Aligned(size_t at) { return (at + 3) & ~size_t{3}; }

// Takes the next node off `rest`; false behind the last one.
bool TakeNode(std::string_view& rest, Node& node) {
  if (rest.size() < 6) return false;
  const size_t length = std::min<size_t>(NumberIn(rest, 0, 2), rest.size());
  if (length < 6) return false;
  const std::string_view own = rest.substr(0, length);
  size_t at = 6;
  while (NumberIn(own, at, 2) != 0) at += 2;
  node.key = FromUtf16Bytes(own.substr(6, at - 6));
  at = std::min(Aligned(at + 2), own.size());
  node.value = own.substr(at);
  node.value_size = NumberIn(own, 2, 2);
  rest.remove_prefix(std::min(Aligned(length), rest.size()));
  return true;
}

std::string_view Below(const Node& node) {
  return node.value.substr(std::min(Aligned(node.value_size), node.value.size()));
}

FileVersion ReadTexts(std::string_view table) {
  FileVersion version;
  const std::pair<std::string_view, std::string*> kTexts[] = {
      {"CompanyName", &version.company},
      {"FileDescription", &version.description},
      {"ProductName", &version.product},
      {"FileVersion", &version.version}};
  for (Node text; TakeNode(table, text);) {
    for (const auto& [key, field] : kTexts) {
      if (!EqualsNoCase(key, text.key)) continue;
      const std::string value = FromUtf16Bytes(text.value);
      *field = TrimBlanks(TrimNull(value));
    }
  }
  return version;
}

// Of several languages the first.
FileVersion ReadVersion(std::string_view bytes) {
  Node top, info, table;
  if (!TakeNode(bytes, top) || top.key != "VS_VERSION_INFO") throw NoVersion();
  for (std::string_view below = Below(top); TakeNode(below, info);) {
    if (info.key != "StringFileInfo") continue;
    std::string_view tables = Below(info);
    if (TakeNode(tables, table)) return ReadTexts(Below(table));
  }
  throw NoVersion();
}

class ProgramFile {
 public:
  explicit ProgramFile(RandomFile& file) : file_(file) {}

  FileVersion Read() {
    ReadHeaders();
    const uint32_t type = Entry(0, kVersionType), name = Entry(type, std::nullopt),
                   language = Entry(name, std::nullopt);
    const std::string data = At(resources_ + language, 8);
    return ReadVersion(
        At(NumberIn(data, 0, 4), std::min<size_t>(NumberIn(data, 4, 4), kLargestVersion)));
  }

 private:
  struct Section {
    uint32_t address = 0, size = 0, place = 0;  // in memory, in the file, and where it is there
  };

  std::string Bytes(uint64_t place, size_t size) {
    std::string bytes(size, '\0');
    if (file_.Read(place, bytes) != size) throw NoVersion();
    return bytes;
  }

  void ReadHeaders() {
    const std::string dos = Bytes(0, 64);
    const size_t start = NumberIn(dos, 60, 4);
    const std::string head = Bytes(start, 24);
    if (!dos.starts_with("MZ") || !head.starts_with(std::string_view("PE\0\0", 4)))
      throw NoVersion();
    const size_t optional_size = NumberIn(head, 20, 2);
    const std::string optional = Bytes(start + 24, optional_size);
    const size_t folders = NumberIn(optional, 0, 2) == 0x20B ? 112 : 96;
    if (NumberIn(optional, folders - 4, 4) <= kResourceFolder) throw NoVersion();
    resources_ = NumberIn(optional, folders + kResourceFolder * 8, 4);
    const size_t count = std::min<size_t>(NumberIn(head, 6, 2), kMostSections);
    const std::string table = Bytes(start + 24 + optional_size, count * kSectionSize);
    for (size_t at = 0; at < table.size(); at += kSectionSize) {
      sections_.push_back(
          {NumberIn(table, at + 12, 4), NumberIn(table, at + 16, 4), NumberIn(table, at + 20, 4)});
    }
  }

  // What the loaded program has at an address.
  std::string At(uint64_t address, size_t size) {
    for (const Section& section : sections_) {
      if (address < section.address || address - section.address >= section.size) continue;
      return Bytes(section.place + (address - section.address), size);
    }
    throw NoVersion();
  }

  // Where an entry of a folder of resources leads, from the first one on: that of an identifier, or
  // the first of all.
  uint32_t Entry(uint32_t folder, std::optional<uint32_t> id) {
    folder &= ~kIsFolder;
    const std::string head = At(uint64_t{resources_} + folder, 16);
    const size_t count =
        std::min<size_t>(NumberIn(head, 12, 2) + NumberIn(head, 14, 2), kMostEntries);
    const std::string entries = At(uint64_t{resources_} + folder + 16, count * kEntrySize);
    for (size_t at = 0; at < entries.size(); at += kEntrySize) {
      if (!id || NumberIn(entries, at, 4) == *id) return NumberIn(entries, at + 4, 4);
    }
    throw NoVersion();
  }

  RandomFile& file_;
  uint32_t resources_ = 0;  // their address
  std::vector<Section> sections_;
};

}  // namespace

std::optional<FileVersion> ReadFileVersion(FileSystem& files, std::string_view path) {
  try {
    const auto file = files.Open(path, OpenMode::kRead);
    return ProgramFile(*file).Read();
  } catch (const Error&) {
    return std::nullopt;
  } catch (const NoVersion&) {
    return std::nullopt;
  }
}

}  // namespace quellix
