// The part of the machine that must be quick.
#include "platform/volume/volume_enumeration.h"

#include <fcntl.h>

#include <cerrno>

#include "platform/volume/entry_info.h"
#include "platform/volume/folder_reader.h"

namespace quellix {
namespace {

class Enumeration {
 public:
  Enumeration(int held, Detail detail, AttributeSupport& support, const EntryVisitor& visit)
      : detail_(detail), support_(support), visit_(visit) {
    located_.folder = held;
  }

  int Run(int readable) {
    while (reader_.Fill(readable)) {
      if (!VisitPiece()) return 0;
    }
    return reader_.error();
  }

 private:
  bool VisitPiece() {
    return reader_.VisitPiece([this](const char* text, unsigned char type) {
      Entry entry{text, {}};
      if (!IsUsableName(entry.name)) return true;
      entry.info.is_folder = type == DT_DIR;
      if (detail_ == Detail::kKind && type != DT_LNK && type != DT_UNKNOWN) return visit_(entry);
      return !Ask(entry) || visit_(entry);
    });
  }

  // False when the entry is gone. One that cannot be looked at is told by its kind alone.
  bool Ask(Entry& entry) {
    located_.name = entry.name;
    if (fstatat(located_.folder, located_.name.c_str(), &located_.status,
                AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) != 0) {
      return errno != ENOENT;
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

int EnumerateFolder(int held, int readable, Detail detail, AttributeSupport& support,
                    const EntryVisitor& visit) {
  return Enumeration(held, detail, support, visit).Run(readable);
}

}  // namespace quellix
