#include "platform/preview/change_log.h"

namespace quellix {

bool IsRemoval(ChangeKind kind) { return kind < ChangeKind::kWriteFile; }

std::string_view KindText(ChangeKind kind) {
  switch (kind) {
    case ChangeKind::kRemoveFile:
    case ChangeKind::kRecycleFile:
      return "File";
    case ChangeKind::kRemoveFolder:
      return "Folder";
    case ChangeKind::kDeleteValue:
      return "Registry value";
    case ChangeKind::kDeleteKey:
      return "Registry key";
    case ChangeKind::kEraseIniKey:
      return "INI key";
    case ChangeKind::kEraseIniSection:
      return "INI section";
    case ChangeKind::kEmptyRecycleBin:
      return "Recycle bin";
    case ChangeKind::kDeleteCacheEntry:
      return "Cache entry";
    case ChangeKind::kClearAddressHistory:
      return "Address history";
    case ChangeKind::kEmptyClipboard:
      return "Clipboard";
    case ChangeKind::kWriteFile:
      return "File written";
    case ChangeKind::kMakeFolder:
      return "Folder made";
    case ChangeKind::kSetAttributes:
      return "Attributes";
    case ChangeKind::kMakeKey:
      return "Registry key made";
    case ChangeKind::kSetValue:
      return "Registry value set";
    case ChangeKind::kEndSession:
      return "Session ended";
  }
  return {};
}

std::string PlaceText(const Change& change) {
  switch (change.kind) {
    case ChangeKind::kDeleteValue:
    case ChangeKind::kSetValue:
      return change.target + ", " + (change.part.empty() ? "(Default)" : change.part);
    case ChangeKind::kEraseIniKey:
    case ChangeKind::kEraseIniSection:
      return change.target + ", " + change.part;
    case ChangeKind::kEmptyRecycleBin:
      return change.part;
    default:
      return change.target;
  }
}

}  // namespace quellix
