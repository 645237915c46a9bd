#pragma once

#include "support/jump_list_bytes.h"

namespace quellix {

// The texts of a program's version, as in a resource: a node with its length, that of its value, a
// type and a key, each part at a multiple of 4.
inline std::string VersionNode(const std::string& key, const std::string& value, size_t length,
                               bool is_text, const std::string& below = "") {
  const auto aligned = [](std::string bytes) {
    bytes.resize((bytes.size() + 3) / 4 * 4);
    return bytes;
  };
  const std::string name = ToUtf16Bytes(key) + std::string(2, '\0');
  std::string node = aligned(std::string(6, '\0') + name) + value;
  if (!below.empty()) node = aligned(node) + below;
  return Little(node.size(), 2) + Little(length, 2) + Little(is_text ? 1 : 0, 2) + node.substr(6) +
         std::string((4 - node.size() % 4) % 4, '\0');
}

inline std::string VersionText(const std::string& key, const std::string& text) {
  return VersionNode(key, ToUtf16Bytes(text) + std::string(2, '\0'), text.size() + 1, true);
}

inline std::string VersionBytes(const std::string& company, const std::string& description) {
  const std::string texts = VersionText("CompanyName", company) +
                            VersionText("FileDescription", description) +
                            VersionText("FileVersion", "1.2") + VersionText("ProductName", "Tests");
  const std::string table = VersionNode("040904b0", "", 0, true, texts);
  const std::string languages =
      VersionNode("Translation", Little(0x409, 2) + Little(1200, 2), 4, false);
  std::string fixed = Little(0xFEEF04BD, 4) + Little(0x10000, 4);
  fixed.resize(52);
  return VersionNode("VS_VERSION_INFO", fixed, fixed.size(), false,
                     VersionNode("StringFileInfo", "", 0, true, table) +
                         VersionNode("VarFileInfo", "", 0, true, languages));
}

// A program of 64 bits whose only section holds this version.
inline std::string ProgramBytes(const std::string& version) {
  constexpr size_t kHead = 0x200, kAddress = 0x1000, kData = 88;
  const auto folder = [](size_t id, size_t next) {
    return std::string(12, '\0') + Little(0, 2) + Little(1, 2) + Little(id, 4) + Little(next, 4);
  };
  std::string section = folder(16, 0x80000000 + 24) + folder(1, 0x80000000 + 48) +
                        folder(0x409, 72) + Little(kAddress + kData, 4) +
                        Little(version.size(), 4) + std::string(8, '\0') + version;
  section.resize((section.size() + 0x1FF) / 0x200 * 0x200);
  std::string head = "MZ";
  head.resize(60);
  head += Little(64, 4) + std::string("PE\0\0", 4) + Little(0x8664, 2) + Little(1, 2) +
          std::string(12, '\0') + Little(240, 2) + Little(0x22, 2);
  std::string optional = Little(0x20B, 2);
  optional.resize(32);
  optional += Little(0x1000, 4) + Little(0x200, 4);
  optional.resize(56);
  optional += Little(0x2000, 4) + Little(kHead, 4);
  optional.resize(108);
  optional +=
      Little(16, 4) + std::string(16, '\0') + Little(kAddress, 4) + Little(section.size(), 4);
  optional.resize(240);
  head += optional + std::string(".rsrc\0\0\0", 8) + Little(section.size(), 4) +
          Little(kAddress, 4) + Little(section.size(), 4) + Little(kHead, 4) +
          std::string(12, '\0') + Little(0x40000040, 4);
  head.resize(kHead);
  return head + section;
}
inline std::string ProgramBytes(const std::string& company, const std::string& description) {
  return ProgramBytes(VersionBytes(company, description));
}

}  // namespace quellix
