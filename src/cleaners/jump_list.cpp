#include "cleaners/jump_list.h"

#include <cstdint>
#include <optional>
#include <string>

#include "cleaners/compound_file.h"
#include "platform/error.h"
#include "platform/text.h"

namespace quellix {
namespace {

constexpr const char* kAutomatic = "*.automaticDestinations-ms";
constexpr const char* kCustom = "*.customDestinations-ms";
constexpr uint32_t kNotPinned = 0xFFFFFFFF;

// Takes numbers of a list, one behind the other, low byte first.
class Reader {
 public:
  explicit Reader(std::string_view bytes) : rest_(bytes) {}

  // 0 behind the end, which then is passed.
  uint32_t Number(size_t size) {
    uint32_t number = 0;
    for (size_t i = 0; i < size && i < rest_.size(); ++i) {
      number |= static_cast<uint32_t>(static_cast<uint8_t>(rest_[i])) << (8 * i);
    }
    Skip(size);
    return number;
  }
  void Skip(size_t size) {
    is_whole_ = is_whole_ && size <= rest_.size();
    rest_.remove_prefix(is_whole_ ? size : rest_.size());
  }
  bool is_whole() const { return is_whole_; }  // nothing was taken behind the end
  bool at_end() const { return is_whole_ && rest_.empty(); }

 private:
  std::string_view rest_;
  bool is_whole_ = true;
};

// The list of entries: a header with their number and that of the pinned ones, then each entry,
// which tells whether it is pinned. Both must agree.
Pins PinsOfList(std::string_view list) {
  if (list.empty()) return Pins::kNone;
  Reader reader(list);
  const uint32_t version = reader.Number(4), count = reader.Number(4), pinned = reader.Number(4);
  reader.Skip(20);
  bool has_pin = pinned != 0;
  for (uint32_t i = 0; i < count && reader.is_whole(); ++i) {
    reader.Skip(108);
    has_pin = reader.Number(4) != kNotPinned || has_pin;
    reader.Skip(version == 1 ? 0 : 16);
    reader.Skip(size_t{reader.Number(2)} * 2);        // its path
    if (version != 1) reader.Skip(reader.Number(4));  // its properties
  }
  if (!reader.at_end() || version == 0) return Pins::kUnknown;
  return has_pin ? Pins::kSome : Pins::kNone;
}

// Categories one behind the other, up to the first one with entries.
Pins PinsOfCategories(std::string_view file) {
  constexpr uint32_t kVersion = 2, kOwnName = 0, kOfWindows = 1, kTasks = 2, kEnd = 0xBABFFBAB;
  Reader reader(file);
  if (reader.Number(4) != kVersion) return Pins::kUnknown;
  const uint32_t count = reader.Number(4);
  reader.Skip(4);
  for (uint32_t i = 0; i < count && reader.is_whole(); ++i) {
    const uint32_t type = reader.Number(4);
    if (type > kTasks) return Pins::kUnknown;
    if (type == kOwnName) reader.Skip(size_t{reader.Number(2)} * 2);
    const uint32_t number = reader.Number(4);  // of entries, or what Windows shows
    if ((type != kOfWindows && number != 0) || reader.Number(4) != kEnd) return Pins::kUnknown;
  }
  return reader.at_end() ? Pins::kNone : Pins::kUnknown;
}

}  // namespace

bool IsJumpList(std::string_view name) {
  return MatchesMask(name, kAutomatic) || MatchesMask(name, kCustom);
}

Pins PinsOf(std::string_view name, std::string_view file) {
  if (file.empty()) return Pins::kNone;
  if (!MatchesMask(name, kAutomatic)) return PinsOfCategories(file);
  try {
    const std::optional<std::string> list = ReadStream(file, "DestList");
    return list ? PinsOfList(*list) : Pins::kUnknown;
  } catch (const Error&) {
    return Pins::kUnknown;
  }
}

}  // namespace quellix
