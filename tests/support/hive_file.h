#pragma once

#include <string>

namespace quellix {

// Hive files made and bent from outside, byte by byte.

// The bytes of a registry hive that holds nothing but its top key.
std::string EmptyHive();

// Makes a hive file look as after a power cut (its two sequence numbers differ), or proper again.
// `file` is a path of this system.
void SetHiveDirty(const std::string& file, bool dirty);

// One entry of a transaction log: what makes a hive `after` out of `before`, both whole files.
std::string HiveLogEntry(unsigned sequence, const std::string& before, const std::string& after);
// Entries with the hashes that belong to their bytes, up to what is none.
std::string WithHashes(std::string entries);
// A log that was begun with the first of such entries and stands beside a hive, whose bytes are
// given; its writing is as many steps behind its end.
std::string HiveLog(const std::string& hive, const std::string& entries, unsigned behind = 0);
// The same as Windows 8 and before wrote it.
std::string HiveVectorLog(const std::string& before, const std::string& after);

// The sequence number a hive file was last stored with.
unsigned HiveSequence(const std::string& file);

// A whole file of this system; both throw when they fail.
std::string ReadNative(const std::string& file);
void WriteNative(const std::string& file, const std::string& bytes);

}  // namespace quellix
