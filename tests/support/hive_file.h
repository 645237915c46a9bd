#pragma once

#include <string>

namespace quellix {

// Hive files made and bent from outside, byte by byte.

// The bytes of a registry hive that holds nothing but its top key.
std::string EmptyHive();

// Makes a hive file look as after a power cut (its two sequence numbers differ), or proper again.
// `file` is a path of this system.
void SetHiveDirty(const std::string& file, bool dirty);

// The bytes of a transaction log with one entry of a sequence number.
std::string HiveLog(unsigned sequence);

// The sequence number a hive file was last stored with.
unsigned HiveSequence(const std::string& file);

// A whole file of this system; both throw when they fail.
std::string ReadNative(const std::string& file);
void WriteNative(const std::string& file, const std::string& bytes);

}  // namespace quellix
