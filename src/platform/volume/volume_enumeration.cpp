// Enumerating folders, the part of the machine that must be quick.
#include <fcntl.h>

#include "platform/volume/entry_info.h"
#include "platform/volume/folder_reader.h"
#include "platform/volume/volume_file_system.h"

namespace quellix {
namespace {

class Enumeration {
 public:
  Enumeration(UniqueFd folder, Detail detail, AttributeSupport& support, const EntryVisitor& visit)
      : detail_(detail), support_(support), visit_(visit) {
    located_.folder = std::move(folder);
  }

  // A folder that fits into one piece and needs no look at its entries is closed before it is
  // visited, so that deep recursions hold few descriptors.
  void Run() {
    while (reader_.Fill(located_.folder.get())) {
      if (reader_.at_end() && !NeedsFolder()) located_.folder = UniqueFd();
      if (!VisitPiece()) return;
    }
  }

 private:
  bool NeedsFolder() const {
    const auto is_plain = [](const char*, unsigned char type) {
      return type != DT_LNK && type != DT_UNKNOWN;
    };
    return detail_ != Detail::kKind || !reader_.VisitPiece(is_plain);
  }

  bool VisitPiece() {
    return reader_.VisitPiece([this](const char* text, unsigned char type) {
      Entry entry{text, {}};
      if (!IsWindowsName(entry.name)) return true;
      if (detail_ == Detail::kKind && type != DT_LNK && type != DT_UNKNOWN) {
        entry.info.is_folder = type == DT_DIR;
        return visit_(entry);
      }
      return !Ask(entry) || visit_(entry);
    });
  }

  // False when the entry is gone.
  bool Ask(Entry& entry) {
    located_.name = entry.name;
    if (fstatat(located_.folder.get(), located_.name.c_str(), &located_.status,
                AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) != 0) {
      return false;
    }
    entry.info = MakeInfo(located_, support_, detail_);
    return true;
  }

  Located located_;
  FolderReader reader_;
  Detail detail_;
  AttributeSupport& support_;
  const EntryVisitor& visit_;
};

}  // namespace

bool VolumeFileSystem::Enumerate(std::string_view folder, Detail detail,
                                 const EntryVisitor& visit) {
  const auto parts = Parse(folder);
  if (!parts) return false;
  const size_t from = static_cast<size_t>(parts->folder.data() - folder.data());
  const std::string_view whole = folder.substr(from, parts->folder.size() + parts->name.size());
  UniqueFd open_folder = parts->drive->OpenFolder(whole, O_RDONLY);
  if (!open_folder) return false;
  Enumeration(std::move(open_folder), detail, parts->drive->attribute_support(), visit).Run();
  return true;
}

}  // namespace quellix
