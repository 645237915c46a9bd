#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quellix {

// Bytes that are no sound hive or log.
struct UnsoundHive {};

// Numbers of up to 4 bytes in the bytes of a hive, lowest byte first. Throw UnsoundHive when they
// would lie behind the end.
uint32_t NumberAt(std::string_view bytes, size_t at, size_t size = 4);
void PutNumber(std::string& bytes, size_t at, uint64_t number, size_t size = 4);

// The file format of hives and of the logs beside them: a header of one page, then bins of pages,
// which hold cells.
namespace hive_format {

constexpr size_t kPage = 0x1000;
constexpr uint32_t kNone = 0xFFFFFFFF;  // no cell

// Places in the header, of which a log has the first sector.
constexpr size_t kFirstSequence = 4, kSecondSequence = 8, kWritten = 12, kMinorVersion = 24,
                 kFileType = 28, kRootKey = 36, kBinsLength = 40, kFlags = 144, kChecksum = 508,
                 kSector = 512;

// Places in a bin.
constexpr size_t kBinPlace = 4, kBinSize = 8, kBinWritten = 20, kBinHeader = 0x20;

// A cell begins with its size, negative while it is in use; cells name each other by their place
// behind the header. Places in a cell, from its size on.
constexpr size_t kCellAlignment = 8, kMark = 4;
constexpr size_t kKeyFlags = 6, kKeyWritten = 8, kKeyParent = 20, kKeySubKeyCount = 24,
                 kKeySubKeys = 32, kKeyVolatileSubKeys = 36, kKeyValueCount = 40, kKeyValues = 44,
                 kKeySecurity = 48, kKeyClass = 52, kKeyLongestSubKey = 56, kKeyLongestValue = 64,
                 kKeyLargestData = 68, kKeyNameLength = 76, kKeyClassLength = 78, kKeyName = 80;
constexpr uint32_t kKeyHasPlainName = 0x20;
constexpr uint32_t kKeyIsPredefined = 0x40;  // leads elsewhere; its count of values is none
constexpr size_t kValueNameLength = 6, kValueDataSize = 8, kValueData = 12, kValueType = 16,
                 kValueFlags = 20, kValueName = 24;
constexpr uint32_t kValueHasPlainName = 1, kDataInline = 0x80000000;
constexpr size_t kListCount = 6, kListEntries = 8;
constexpr size_t kSecurityBefore = 8, kSecurityAfter = 12, kSecurityUsers = 16, kSecuritySize = 20,
                 kSecurityDescriptor = 24;
// Since version 1.4 larger data is in pieces, whose places are in a list.
constexpr size_t kPieceCount = 6, kPieceList = 8, kPiecesLength = 12, kMostInPiece = 16344;
constexpr uint32_t kFirstVersionWithPieces = 4;

// The exclusive or of all numbers before it; 0 and its complement are not used.
uint32_t HeaderChecksum(std::string_view header);
bool HasSoundHeader(std::string_view bytes);

// Of the key whose cell stands at a place in the file.
size_t ValueCountAt(std::string_view bytes, size_t key);

}  // namespace hive_format
}  // namespace quellix
