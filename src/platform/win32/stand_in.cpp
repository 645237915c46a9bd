#include "platform/win32/stand_in.h"

#include "platform/error.h"
#include "platform/win32/win32_path.h"

namespace quellix {
bool IsStandIn() {
  static const bool is =
      GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
  return is;
}

void RefuseFollowedLink(const UniqueFile& folder, std::wstring_view name, const char* cannot,
                        std::string_view shown) {
  if (!IsStandIn()) return;
  bool is_link = false;
  UniqueFile listing;
  NtOpen(folder.Get(), L"", {.access = FILE_LIST_DIRECTORY, .options = FILE_DIRECTORY_FILE},
         listing);
  NtList(listing, name, [&](const NtEntry& entry) {
    is_link = entry.info.is_link;
    return false;
  });
  if (!is_link) return;
  throw Error(Error::Kind::kDenied,
              Say(cannot, shown, Say("it is a link, and this system would follow it.")));
}

// Two folders differ in the times the system keeps by itself.
bool IsWhereItWasOpened(const UniqueFile& folder, std::wstring_view path) {
  NtOverview there;
  NtBasic held;
  return NtLook(nullptr, NtPath(path), there) >= 0 &&
         NtQuery(folder, kBasicInformation, held) >= 0 && there.changed == held.changed &&
         there.last_write == held.last_write && there.created == held.created;
}

void RefuseMovedFolder(const UniqueFile& folder, std::wstring_view path, const char* cannot,
                       std::string_view shown) {
  if (!IsStandIn() || IsWhereItWasOpened(folder, path)) return;
  throw Error(Error::Kind::kDenied,
              Say(cannot, shown, Say("its folder has been moved meanwhile.")));
}

NTSTATUS LookByPath(const UniqueFile& folder, std::wstring_view path, std::wstring_view name,
                    NtOverview& overview) {
  if (!IsWhereItWasOpened(folder, path)) return kAccessDenied;
  return NtLook(nullptr, NtPath(path) + L'\\' + std::wstring(name), overview);
}

}  // namespace quellix
