#include "platform/win32/win32_folder.h"

#include <algorithm>

#include "platform/path.h"
#include "platform/text.h"
#include "platform/win32/stand_in.h"
#include "platform/win32/win32_error.h"
#include "platform/win32/win32_file_info.h"
#include "platform/win32/win32_path.h"
#include "platform/win32/win32_random_file.h"
#include "platform/win32/win32_text.h"

namespace quellix {
namespace {

constexpr ULONG kDontReparse = 0x1000;  // no link on the way is followed; unknown before Windows 10

bool IsDots(std::wstring_view name) { return name == L"." || name == L".."; }

// Reads from a folder ask for little where little is granted: what is in it may be reached by name
// even where it may not be listed.
constexpr ACCESS_MASK kFolderAccess[] = {FILE_LIST_DIRECTORY | FILE_TRAVERSE | FILE_READ_ATTRIBUTES,
                                         FILE_TRAVERSE | FILE_READ_ATTRIBUTES,
                                         FILE_READ_ATTRIBUTES};

NTSTATUS OpenWithWhatIsGranted(HANDLE above, std::wstring_view name, NtAsk ask,
                               UniqueFile& folder) {
  ask.options |= FILE_DIRECTORY_FILE;
  NTSTATUS status = kAccessDenied;
  for (const ACCESS_MASK access : kFolderAccess) {
    ask.access = access;
    status = NtOpen(above, name, ask, folder);
    if (status != kAccessDenied) break;
  }
  return status;
}

Error IsALink(const char* cannot, std::string_view shown) {
  return Error(Error::Kind::kDenied, Say(cannot, shown, Say("it is a link.")));
}

// The folders above a final path ("\\?\C:\a\b"), nearest first, each without "\" at its end.
std::vector<std::wstring> PathsAbove(std::wstring path) {
  size_t root = std::size(L"\\\\?\\");  // and the first of the name
  for (const std::wstring_view start : {L"\\\\?\\UNC\\", L"\\\\?\\GLOBALROOT\\"}) {
    if (path.starts_with(start)) root = path.find(L'\\', start.size()) + 1;
  }
  std::vector<std::wstring> above;
  while (true) {
    const size_t end = path.rfind(L'\\');
    if (end == std::wstring::npos || end < root) return above;
    path.resize(end);
    above.push_back(path);
  }
}

}  // namespace

UniqueFile OpenFolderIn(const UniqueFile& above, std::wstring_view name, std::string_view shown,
                        const NtAsk& ask) {
  UniqueFile folder;
  const HANDLE root = above ? above.Get() : nullptr;
  const NTSTATUS status = OpenWithWhatIsGranted(root, name, ask, folder);
  if (IsMissing(status)) return {};
  if (status == kNotAFolder) {
    throw Error(Error::Kind::kOther, Say(Cannot::kOpen, shown, Say("it is no folder.")));
  }
  if (status < 0) throw NtError(status, Cannot::kOpen, shown);
  if (IsOpenLink(folder)) throw IsALink(Cannot::kOpen, shown);
  // A server's pipes look like a share; in a folder of a disk nothing else is.
  if (!above && GetFileType(folder.Get()) != FILE_TYPE_DISK) {
    throw WindowsError(ERROR_ACCESS_DENIED, Cannot::kOpen, shown);
  }
  return folder;
}

std::string Win32Folder::At(std::string_view name) const {
  return WithBackslash(shown_) + std::string(name);
}

std::wstring Win32Folder::NameFor(const char* cannot, std::string_view name) const {
  if (IsName(name)) return Wide(name);
  throw Error(Error::Kind::kMissing,
              Say(cannot, At(name), Say("this is not the name of a file or folder.")));
}

UniqueFile Win32Folder::OpenEntry(const char* cannot, std::string_view name,
                                  const NtAsk& ask) const {
  const std::wstring wide = NameFor(cannot, name);
  if (!(ask.options & FILE_NON_DIRECTORY_FILE)) {
    RefuseFollowedLink(folder_, wide, cannot, At(name));
  }
  UniqueFile file;
  const NTSTATUS status = Try(wide, ask, file);
  if (status < 0) throw NtError(status, cannot, At(name));
  return file;
}

UniqueFile Win32Folder::OpenListing(ULONG share) const {
  UniqueFile listing;
  const NTSTATUS status =
      Try(L"", {.access = FILE_LIST_DIRECTORY, .share = share, .options = FILE_DIRECTORY_FILE},
          listing);
  if (status < 0) throw NtError(status, Cannot::kOpen, shown_);
  return listing;
}

const std::wstring& Win32Folder::FinalPathHere() {
  if (final_path_.empty()) final_path_ = FinalPath(folder_);
  return final_path_;
}

FileId Win32Folder::Id() {
  if (!id_.is_known()) id_ = IdOfOpen(folder_, shown_);
  return id_;
}

// Mount points on the way are followed: above the root of a volume mounted in a folder is that
// folder. That nothing was exchanged between the question for the path and the last opening, the
// same answer to a second question shows.
std::vector<FileId> Win32Folder::Above() {
  const std::wstring place = FinalPath(folder_);
  if (place.empty()) ThrowLastError(Cannot::kFindAbove, shown_);
  std::vector<FileId> above;
  for (const std::wstring& path : PathsAbove(place)) {
    UniqueFile folder;
    const NTSTATUS status =
        NtOpen(nullptr, NtPath(path) + L"\\",
               {.access = FILE_READ_ATTRIBUTES, .options = FILE_DIRECTORY_FILE}, folder);
    if (status < 0) throw NtError(status, Cannot::kOpen, Narrow(path));
    if (!SamePath(FinalPath(folder), path))
      throw IsALink(Mark("Cannot trust %1: %2"), Narrow(path));
    above.push_back(IdOfOpen(folder, Narrow(path)));
  }
  if (SamePath(FinalPath(folder_), place)) return above;
  throw Error(Error::Kind::kDenied, Say(Cannot::kFindAbove, shown_, Say("it is moving.")));
}

DiskRoom Win32Folder::Room() {
  IO_STATUS_BLOCK io;
  FILE_FS_FULL_SIZE_INFORMATION room;
  NTSTATUS status = NtQueryVolumeInformationFile(folder_.Get(), &io, &room, sizeof room,
                                                 FileFsFullSizeInformation);
  if (status < 0) throw NtError(status, Mark("Cannot find the free space for %1: %2"), shown_);
  // Behind the fixed part stands the file system's name, of which one letter is declared.
  alignas(FILE_FS_ATTRIBUTE_INFORMATION) char buffer[512];
  status = NtQueryVolumeInformationFile(folder_.Get(), &io, buffer, sizeof buffer,
                                        FileFsAttributeInformation);
  const auto* const kind = reinterpret_cast<FILE_FS_ATTRIBUTE_INFORMATION*>(buffer);
  const uint64_t unit = uint64_t{room.SectorsPerAllocationUnit} * room.BytesPerSector;
  return {status >= 0 && (kind->FileSystemAttributes & FILE_READ_ONLY_VOLUME) != 0,
          static_cast<uint64_t>(room.CallerAvailableAllocationUnits.QuadPart) * unit,
          static_cast<uint64_t>(room.TotalAllocationUnits.QuadPart) * unit};
}

void Win32Folder::Enumerate(Detail, const EntryVisitor& visit) {
  UniqueFile again;
  if (std::exchange(was_listed_, true)) again = OpenListing();
  const NTSTATUS status = NtList(again ? again : folder_, {}, [&](const NtEntry& found) {
    if (IsDots(found.name)) return true;
    const std::string name = Narrow(found.name);
    return visit({name, found.info});
  });
  // An empty drive has no entries at all, not even ".".
  if (status < 0 && status != kNoSuchFile) throw NtError(status, Cannot::kList, shown_);
}

// A listing tells what a link is, and sees files whose holder shares nothing.
std::optional<NtEntry> Win32Folder::Find(std::wstring_view name) const {
  std::optional<NtEntry> entry;
  const NTSTATUS status = NtList(OpenListing(), name, [&](const NtEntry& found) {
    entry = NtEntry{{}, found.info, found.number};
    return false;
  });
  if (status != kNoMoreFiles) return entry;
  // So Wine tells of a link that leads nowhere.
  entry.emplace().info.is_link = true;
  return entry;
}

std::optional<FileInfo> Win32Folder::Look(std::string_view name, Detail) {
  return IsName(name) ? LookAt(Wide(name)) : std::nullopt;
}

std::optional<FileInfo> Win32Folder::LookAt(std::wstring_view wide) {
  NtOverview overview;
  const NTSTATUS status = IsStandIn() ? LookByPath(folder_, FinalPathHere(), wide, overview)
                                      : NtLook(folder_.Get(), wide, overview);
  if (IsMissing(status) && status != kNoSuchFile) return std::nullopt;  // Wine: a link to nowhere
  if (status >= 0 && !(overview.attributes & FILE_ATTRIBUTE_REPARSE_POINT)) {
    return ToFileInfo(overview);
  }
  const std::optional<NtEntry> found = Find(wide);
  return found ? std::optional(found->info) : std::nullopt;
}

std::optional<FileId> Win32Folder::IdOf(std::string_view name) {
  if (!IsName(name)) return std::nullopt;
  const std::wstring wide = Wide(name);
  UniqueFile entry;
  const NTSTATUS status = Try(wide, {.access = FILE_READ_ATTRIBUTES}, entry);
  if (status >= 0) return IdOfOpen(entry, At(name));
  if (IsMissing(status)) return std::nullopt;
  const std::optional<NtEntry> found = Find(wide);
  if (!found) return std::nullopt;
  if (found->number == 0) throw NtError(status, Cannot::kLookAt, At(name));
  return FileId{Id().volume, {found->number, 0}};
}

// In one step where the system promises to follow no link, or shows that it did not.
NTSTATUS Win32Folder::OpenThrough(std::wstring_view names, UniqueFile& folder) {
  const NTSTATUS status = OpenWithWhatIsGranted(
      folder_.Get(), names, {.object = OBJ_CASE_INSENSITIVE | kDontReparse}, folder);
  if (!folder) return status;
  const bool is_elsewhere =
      IsOpenLink(folder) ||
      (IsStandIn() && !SamePath(FinalPath(folder), FinalPathHere() + L"\\" + std::wstring(names)));
  if (is_elsewhere) folder.Reset();
  return status;
}

// One by one where that fails, to tell which of the names is in the way.
std::unique_ptr<Folder> Win32Folder::OpenFolder(std::string_view names, OpenFor) {
  const std::vector<std::string> steps = Split(names, '\\');
  if (!std::all_of(steps.begin(), steps.end(), IsName)) return nullptr;
  UniqueFile reached;
  const NTSTATUS status = OpenThrough(Wide(names), reached);
  if (status == kNameNotFound && steps.size() == 1) return nullptr;
  if (reached) return std::make_unique<Win32Folder>(std::move(reached), At(names), com_);
  std::string shown = shown_;
  for (const std::string& step : steps) {
    const UniqueFile& above = reached ? reached : folder_;
    const std::wstring wide = Wide(step);
    shown = WithBackslash(shown) + step;
    RefuseFollowedLink(above, wide, Cannot::kOpen, shown);
    reached = OpenFolderIn(above, wide, shown);
    if (!reached) return nullptr;
  }
  return std::make_unique<Win32Folder>(std::move(reached), shown, com_);
}

std::unique_ptr<RandomFile> Win32Folder::Open(std::string_view name, OpenMode mode) {
  return OpenRandomFile(folder_, NameFor(Cannot::kOpen, name), At(name), mode);
}

void Win32Folder::CreateFolder(std::string_view name) {
  UniqueFile folder;
  const NTSTATUS status = Try(NameFor(Cannot::kMake, name),
                              {.access = FILE_READ_ATTRIBUTES,
                               .options = FILE_DIRECTORY_FILE | FILE_OPEN_REPARSE_POINT,
                               .disposition = FILE_OPEN_IF},
                              folder);
  if (status == kNotAFolder) throw WindowsError(ERROR_ALREADY_EXISTS, Cannot::kMake, At(name));
  if (status < 0) throw NtError(status, Cannot::kMake, At(name));
  if (IsOpenLink(folder)) throw IsALink(Cannot::kMake, At(name));
  RefuseFollowedLink(folder_, Wide(name), Cannot::kMake, At(name));
}

// Flushing needs the right to write. Where it is not granted, or the file system knows no such
// thing of a folder, the system promises nothing.
void Win32Folder::Flush() {
  UniqueFile writable;
  if (Try(L"", {.access = FILE_ADD_FILE, .options = FILE_DIRECTORY_FILE}, writable) >= 0) {
    FlushFileBuffers(writable.Get());
  }
}

void Win32Folder::SetAttributes(std::string_view name, uint32_t attributes) {
  const UniqueFile file =
      OpenEntry(Cannot::kChange, name, {.access = FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES});
  NtBasic basic;
  NTSTATUS status = NtQuery(file, kBasicInformation, basic);
  if (status >= 0) {
    basic = WithAttributes(basic, attributes);
    status = NtSet(file, kBasicInformation, basic);
  }
  if (status < 0) throw NtError(status, Cannot::kChange, At(name));
}

}  // namespace quellix
