#include "run/keep_list.h"

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"

namespace quellix {
namespace {

// The first of the masks that fits.
std::string_view FirstFit(const std::vector<std::pair<std::string, std::string>>& masks,
                          std::string_view text) {
  for (const auto& [mask, line] : masks) {
    if (MatchesMask(text, mask)) return line;
  }
  return {};
}

template <class Lines, class Name>
std::string_view Find(const Lines& lines, const Name& name) {
  const auto found = lines.find(name);
  return found == lines.end() ? std::string_view() : std::string_view(found->second);
}

// The line of the name or of one that it lies in: what stands left of a separator, again and again.
template <class Lines>
std::string_view FindUpward(const Lines& lines, std::string_view name) {
  for (;;) {
    if (const std::string_view line = Find(lines, name); !line.empty()) return line;
    const size_t end = name.rfind('\\');
    if (end == name.npos) return {};
    name = name.substr(0, end);
  }
}

bool FitsEverything(std::string_view mask) { return mask.find_first_not_of("*?.") == mask.npos; }

std::string ValueName(std::string_view key, std::string_view value) {
  return std::string(key).append("\n").append(UpCase(value));
}

}  // namespace

KeepList::Holder KeepList::Hold(FileSystem& files, std::string_view path) {
  Holder holder{std::string(path)};
  try {
    if (!path.empty()) holder.folder = files.OpenFolder(path);
    // What a share lies in cannot be opened.
    holder.is_missing = !holder.folder && path.substr(1, 1) == ":";
  } catch (const Error& error) {
    holder.problem = Logged(error);
  }
  return holder;
}

KeepList::KeepList(const Machine& machine) {
  Holder holder;
  for (const std::string& line : ReadKeepFile(machine)) Add(machine, line, holder);
}

void KeepList::Add(const Machine& machine, const std::string& text, Holder& holder) {
  const KeepLine line = ParseKeepLine(machine.system, text);
  switch (line.kind) {
    case KeepLine::kRemark:
      return;
    case KeepLine::kFault:
      Remark(Log("The keep list's line \"%1\" keeps nothing: %2", line.text, Log(line.fault)));
      return;
    case KeepLine::kPath:
      AddPath(machine, line.name, line.text, holder);
      break;
    case KeepLine::kNameMask:
    case KeepLine::kPathMask:
      if (FitsEverything(line.name))
        Remark(Log("The keep list's line \"%1\" keeps every file.", line.text));
      (line.kind == KeepLine::kNameMask ? name_masks_ : path_masks_)
          .emplace_back(line.name, line.text);
      break;
    case KeepLine::kKey:
    case KeepLine::kValue:
      AddKey(machine, line);
      break;
    case KeepLine::kSite:
      sites_[line.name] = line.text;
      break;
  }
  ++count_;
}

void KeepList::Remark(const std::string& sentence) { remarks_ += sentence + "\r\n"; }

void KeepList::AddPath(const Machine& machine, const std::string& path, const std::string& text,
                       Holder& holder) {
  const std::string_view plain = WithoutBackslash(path), above = FolderPart(plain);
  paths_[UpCase(plain)] = text;
  if (holder.path != above) holder = Hold(machine.files, above);
  if (holder.is_missing) return;
  try {
    if (const auto folder = machine.files.OpenFolder(path)) {
      if (folder->Id().is_known()) folders_[folder->Id()] = text;
      return;
    }
  } catch (const Error&) {  // no folder, or one that nothing can open either
  }
  std::string problem = holder.problem;
  try {
    const auto id = holder.folder ? holder.folder->IdOf(NamePart(plain)) : std::nullopt;
    if (id) files_[holder.folder->Id()][*id] = text;
  } catch (const Error& error) {
    problem = Logged(error);
  }
  if (problem.empty()) return;
  Remark(
      Log("The keep list's line \"%1\" keeps what is named like that alone, as it cannot be "
          "opened: %2",
          text, problem));
}

void KeepList::AddKey(const Machine& machine, const KeepLine& line) {
  for (const KeyHome& home : KeyHomes(line.root, line.name)) {
    try {
      const auto key = machine.registry.Open(home.root, home.key, RegistryAccess::kRead);
      if (!key) continue;
      const std::string name = UpCase(key->TrueName());
      if (line.kind == KeepLine::kKey) {
        keys_[name] = line.text;
      } else {
        values_[ValueName(name, line.value)] = line.text;
      }
    } catch (const Error&) {  // what cannot be opened is not deleted either
    }
  }
}

std::string_view KeepList::ForFolder(const FileId& id) const { return Find(folders_, id); }

std::string_view KeepList::ForFolder(const FileId& id, const std::vector<FileId>& above) const {
  std::string_view line = ForFolder(id);
  for (size_t i = 0; i < above.size() && line.empty(); ++i) line = ForFolder(above[i]);
  return line;
}

std::string_view KeepList::ForFile(Folder& folder, const FileId& folder_id,
                                   std::string_view path) const {
  if (const auto files = files_.find(folder_id); files != files_.end()) {
    const auto id = folder.IdOf(NamePart(path));
    const std::string_view line = id ? Find(files->second, *id) : std::string_view();
    if (!line.empty()) return line;
  }
  return ForPath(path);
}

std::string_view KeepList::ForPath(std::string_view path) const {
  if (empty()) return {};
  std::string_view line = FirstFit(name_masks_, NamePart(path));
  if (line.empty()) line = FirstFit(path_masks_, path);
  if (line.empty() && !paths_.empty()) line = FindUpward(paths_, UpCase(path));
  return line;
}

std::string_view KeepList::ForKey(std::string_view true_name) const {
  return keys_.empty() ? std::string_view() : FindUpward(keys_, UpCase(true_name));
}

std::string_view KeepList::ForValue(std::string_view true_name, std::string_view value) const {
  const std::string_view line = ForKey(true_name);
  if (!line.empty() || values_.empty()) return line;
  return Find(values_, ValueName(UpCase(true_name), value));
}

std::string_view KeepList::ForTree(std::string_view true_name) const {
  if (const std::string_view line = ForKey(true_name); !line.empty()) return line;
  const std::string name = UpCase(true_name);
  for (const std::string& first : {name + "\n", name + "\\"}) {
    for (const Lines* lines : {&keys_, &values_}) {
      const auto found = lines->lower_bound(first);
      if (found != lines->end() && found->first.starts_with(first)) return found->second;
    }
  }
  return {};
}

std::string_view KeepList::ForSite(std::string_view host) const {
  if (sites_.empty()) return {};
  const std::string upper = UpCase(host);
  for (std::string_view site = upper;; site.remove_prefix(site.find('.') + 1)) {
    if (const std::string_view line = Find(sites_, site); !line.empty()) return line;
    if (site.find('.') == site.npos) return {};
  }
}

}  // namespace quellix
