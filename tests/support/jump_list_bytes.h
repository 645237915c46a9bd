#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "platform/text.h"

namespace quellix {

// Jump lists as Windows writes them.

inline std::string Little(uint64_t number, size_t size) {
  std::string bytes;
  for (size_t i = 0; i < size; ++i) bytes += static_cast<char>(number >> (8 * i) & 0xFF);
  return bytes;
}

// A compound file of version 3 with one stream, in short pieces while it is shorter than 4096
// bytes. Sectors: the table, the directory, the table of short pieces, the data.
inline std::string CompoundBytes(const std::string& name, const std::string& stream) {
  constexpr uint64_t kTable = 0xFFFFFFFD, kEnd = 0xFFFFFFFE, kFree = 0xFFFFFFFF;
  const auto filled = [](std::string bytes, size_t step, char with) {
    bytes.resize((bytes.size() + step - 1) / step * step, with);
    return bytes;
  };
  const auto chain = [](std::string table, size_t first, size_t count) {
    for (size_t i = 1; i <= count; ++i) table += Little(i == count ? kEnd : first + i, 4);
    return table;
  };
  const auto entry = [&](const std::string& of, char type, uint64_t first, uint64_t size) {
    const std::string text = ToUtf16Bytes(of + '\0');
    std::string bytes = filled(text, 64, '\0') + Little(text.size(), 2) + type + '\1';
    for (int i = 0; i < 3; ++i) bytes += Little(type == 5 && i == 2 ? 1 : kFree, 4);
    return bytes + std::string(36, '\0') + Little(first, 4) + Little(size, 8);
  };
  const bool is_short = stream.size() < 4096;
  const std::string data = filled(stream, 512, '\0');
  const size_t sectors = data.size() / 512, pieces = is_short ? (stream.size() + 63) / 64 : 0;
  std::string header("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8);
  header += std::string(16, '\0') + Little(0x3E, 2) + Little(3, 2) + Little(0xFFFE, 2) +
            Little(9, 2) + Little(6, 2) + std::string(10, '\0') + Little(1, 4) + Little(1, 4) +
            Little(0, 4) + Little(4096, 4) + Little(2, 4) + Little(1, 4) + Little(kEnd, 4) +
            Little(0, 4) + Little(0, 4);
  const std::string table =
      chain(Little(kTable, 4) + Little(kEnd, 4) + Little(kEnd, 4), 3, sectors);
  const uint64_t first = sectors == 0 ? kEnd : 3;
  return filled(header, 512, '\xFF') + filled(table, 512, '\xFF') +
         filled(entry("Root Entry", 5, is_short ? first : kEnd, is_short ? data.size() : 0) +
                    entry(name, 2, is_short ? 0 : first, stream.size()),
                512, '\0') +
         filled(chain("", 0, pieces) + Little(kFree, 4), 512, '\xFF') + data;
}

// Entries with their pins, 0xFFFFFFFF for none; version 1 is that of Windows 7, 4 that of today.
inline std::string DestinationList(uint32_t version, std::span<const uint32_t> pins,
                                   uint32_t pinned) {
  std::string list = Little(version, 4) + Little(pins.size(), 4) + Little(pinned, 4);
  list += std::string(20, '\0');
  for (const uint32_t pin : pins) {
    const std::string path = ToUtf16Bytes("C:\\Work\\letter.txt");
    list += std::string(108, 'h') + Little(pin, 4) + std::string(version == 1 ? 0 : 16, '\0') +
            Little(path.size() / 2, 2) + path;
    if (version != 1) list += Little(3, 4) + "sps";
  }
  return list;
}

}  // namespace quellix
