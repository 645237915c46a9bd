#include "search/junk_search.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"
#include "run/removal.h"
#include "run/run_limits.h"
#include "search/drive_list.h"
#include "search/drive_scan.h"
#include "search/empty_folders.h"
#include "search/search_options.h"
#include "search/wildcard.h"
#include "settings/list_files.h"

namespace quellix {
namespace {

// What the three tests share: filters, and making the row.
class JunkTest : public FileTest {
 public:
  JunkTest(CleaningContext& context, const SearchOptions& options, JunkKind kind, ResultSink& sink)
      : limits_(context), machine_(context.machine), options_(options), kind_(kind), sink_(sink) {
    if (kind == JunkKind::kDeadShortcuts || options.date == 0) return;
    if (!options.first_date || !options.second_date) {
      throw Error(Error::Kind::kOther,
                  Say("The dates of the search options cannot be read, so nothing was searched."));
    }
    first_day_ = DayNumber(*options.first_date);
    second_day_ = DayNumber(*options.second_date);
  }

 protected:
  // The first date's own day is left out, the second's is kept, as users' searches always were.
  bool PassesDate(const FileInfo& info) const {
    if (options_.date == 0) return true;
    const int64_t day = DayNumber(machine_.system.ToLocalTime(info.last_write));
    return day - first_day_ > 0 && day - second_day_ <= 0;
  }

  bool PassesAttributes(uint32_t attributes) const {
    return !(((attributes & kReadOnly) != 0 && options_.read_only != 0) ||
             ((attributes & kHidden) != 0 && options_.hidden != 0) ||
             ((attributes & kSystem) != 0 && options_.system != 0));
  }

  bool Passes(const FileInfo& info) const {
    return PassesDate(info) && PassesAttributes(info.attributes);
  }

  // False for what the user keeps.
  bool AddRow(std::string_view path, const Entry& entry, std::string_view upper_name,
              const FileInfo& info) {
    if (limits_.IsKept(nullptr, std::string(path), entry.name)) return false;
    const size_t dot = upper_name.rfind('.');
    sink_.Add({.name = std::string(entry.name),
               .bytes = info.size,
               .date_time = FormatFileTime(machine_.system, info.last_write),
               .attributes = AttributeLetters(info.attributes),
               .path = std::string(path),
               .file_type = std::string(dot == upper_name.npos ? std::string_view()
                                                               : upper_name.substr(dot + 1)),
               .category = CategoryText(kind_),
               .last_write = info.last_write,
               .attribute_bits = info.attributes,
               .kind = kind_});
    return true;
  }

  const SearchOptions& options() const { return options_; }
  const Machine& machine() const { return machine_; }

 private:
  RunLimits limits_;
  const Machine& machine_;
  const SearchOptions& options_;
  JunkKind kind_;
  ResultSink& sink_;
  int64_t first_day_ = 0, second_day_ = 0;
};

std::vector<Wildcard> LoadPatterns(const Machine& machine) {
  std::vector<Wildcard> patterns;
  for (const std::string& line : ReadListFile(machine, kFileTypesList, kFileTypesDefaults)) {
    const ListRow type = ParseListRow(line);
    if (type.ticked) patterns.emplace_back(UpCase(type.text));
  }
  return patterns;
}

class UnnecessaryFileTest : public JunkTest {
 public:
  UnnecessaryFileTest(CleaningContext& context, const SearchOptions& options, ResultSink& sink)
      : JunkTest(context, options, JunkKind::kUnnecessaryFiles, sink),
        patterns_(LoadPatterns(context.machine)) {}

  Detail Needs() const override { return Detail::kKind; }

  // Names first: most files fail there, and asking for the rest is slow.
  void Test(Folder& folder, std::string_view path, const Entry& entry,
            std::string_view upper_name) override {
    if (!FitsAny(upper_name)) return;
    const std::optional<FileInfo> info = folder.Look(entry.name);
    if (info && Passes(*info)) AddRow(path, entry, upper_name, *info);
  }

 private:
  bool FitsAny(std::string_view upper_name) {
    wide_name_.assign(upper_name.begin(), upper_name.end());
    const bool is_ascii = std::ranges::none_of(upper_name, [](char c) { return (c & 0x80) != 0; });
    if (!is_ascii) wide_name_ = ToUtf16(upper_name);
    return std::ranges::any_of(patterns_,
                               [this](const Wildcard& each) { return each.Matches(wide_name_); });
  }

  std::vector<Wildcard> patterns_;
  std::u16string wide_name_;
};

class EmptyFileTest : public JunkTest {
 public:
  EmptyFileTest(CleaningContext& context, const SearchOptions& options, ResultSink& sink)
      : JunkTest(context, options, JunkKind::kEmptyFiles, sink) {}

  Detail Needs() const override { return Detail::kSize; }

  // Only the low half of the size counts, as ever: a file of exactly 4 GiB is found as well. A
  // link's size says nothing about the file it leads to.
  void Test(Folder& folder, std::string_view path, const Entry& entry,
            std::string_view upper_name) override {
    if (static_cast<uint32_t>(entry.info.size) != 0 || entry.info.is_link) return;
    const std::optional<FileInfo> info = folder.Look(entry.name);
    if (info && Passes(*info)) AddRow(path, entry, upper_name, *info);
  }
};

class DeadShortcutTest : public JunkTest {
 public:
  DeadShortcutTest(CleaningContext& context, const SearchOptions& options, ResultSink& sink)
      : JunkTest(context, options, JunkKind::kDeadShortcuts, sink),
        reader_(context.machine.shell.OpenShortcuts()) {}

  Detail Needs() const override { return Detail::kKind; }

  void Test(Folder& folder, std::string_view path, const Entry& entry,
            std::string_view upper_name) override {
    if (!IsDead(std::string(path) + std::string(entry.name))) return;
    if (const auto info = folder.Look(entry.name)) AddRow(path, entry, upper_name, *info);
  }

 private:
  bool IsDead(const std::string& path) {
    const std::optional<Shortcut> shortcut = reader_->Read(path);
    if (!shortcut) return false;
    const auto& [target, working_folder] = *shortcut;
    if (options().path_reference == 1 && working_folder.empty()) return false;
    if (options().file_reference == 1 && target.empty()) return false;
    if (target != working_folder &&
        (EqualsNoCase(target, "A:\\") || EqualsNoCase(target, "B:\\"))) {
      return false;
    }
    return machine().files.IsGone(target);
  }

  std::unique_ptr<ShortcutReader> reader_;
};

// Folders by the same dates and attributes.
class EmptyFolderTest : public JunkTest {
 public:
  EmptyFolderTest(CleaningContext& context, const SearchOptions& options, ResultSink& sink)
      : JunkTest(context, options, JunkKind::kEmptyFolders, sink), guard_(context) {}

  Detail Needs() const override { return Detail::kKind; }
  void Test(Folder&, std::string_view, const Entry&, std::string_view) override {}

  // Searches below a root.
  void Search(CleaningContext& context, std::string_view root, const IgnoreLists& ignore) {
    SearchEmptyFolders(context, root, ignore,
                       {.enters = [this](const std::string& path) { return guard_.Enters(path); },
                        .take = [this](const std::string& path) { return Take(path); }});
  }

 private:
  bool Take(const std::string& path) {
    const std::string plain(WithoutBackslash(path));
    const std::string_view name = NamePart(plain);
    try {
      const auto info = machine().files.Look(plain);
      return info && info->is_folder && !info->is_link && Passes(*info) &&
             guard_.WhyNot(plain).empty() &&
             AddRow(FolderPart(plain), {name, *info}, UpCase(name), *info);
    } catch (const Error&) {  // it stays
      return false;
    }
  }

  EmptyFolderGuard guard_;
};

std::unique_ptr<FileTest> MakeTest(CleaningContext& context, const SearchOptions& options,
                                   JunkKind kind, ResultSink& sink) {
  switch (kind) {
    case JunkKind::kUnnecessaryFiles:
      return std::make_unique<UnnecessaryFileTest>(context, options, sink);
    case JunkKind::kEmptyFiles:
      return std::make_unique<EmptyFileTest>(context, options, sink);
    case JunkKind::kDeadShortcuts:
    case JunkKind::kEmptyFolders:  // searched for by itself
      break;
  }
  return std::make_unique<DeadShortcutTest>(context, options, sink);
}

std::vector<std::string> RootsToSearch(System& system, const SearchOptions& options) {
  if (!options.drives) return {WindowsDriveRoot(system)};
  return ParseDriveLine(*options.drives);
}

}  // namespace

std::string_view CategoryText(JunkKind kind) {
  switch (kind) {
    case JunkKind::kUnnecessaryFiles:
      return Mark("Unnecessary Files");
    case JunkKind::kEmptyFiles:
      return Mark("Empty Files");
    case JunkKind::kDeadShortcuts:
      return Mark("Dead Shortcuts");
    case JunkKind::kEmptyFolders:
      break;
  }
  return Mark("Empty Folders");
}

void RequireTypes(const Machine& machine, JunkKind kind) {
  if (kind != JunkKind::kUnnecessaryFiles || !LoadPatterns(machine).empty()) return;
  throw NotAvailable(
      Say("Not searched: no type of unnecessary files is ticked in the Options, or UNFI.txt is "
          "empty."));
}

void SearchJunk(CleaningContext& context, JunkKind kind, ResultSink& sink) {
  RequireTypes(context.machine, kind);
  const SearchOptions options = LoadSearchOptions(context.machine);
  const IgnoreLists ignore = LoadIgnoreLists(context.machine);
  std::function<void(const std::string& root)> search;
  if (kind == JunkKind::kEmptyFolders) {
    search = [&, test = std::make_shared<EmptyFolderTest>(context, options, sink)](
                 const std::string& root) { test->Search(context, root, ignore); };
  } else {
    const char* const mask = kind == JunkKind::kDeadShortcuts ? "*.lnk" : "*.*";
    search = [&, mask, test = std::shared_ptr(MakeTest(context, options, kind, sink))](
                 const std::string& root) { SearchFolder(context, root, mask, ignore, *test); };
  }
  for (const std::string& root : RootsToSearch(context.machine.system, options)) {
    if (StopsRun(context)) break;
    search(root);
  }
  if (context.state.AbortRequested) context.view.SetStatus(Tr("Aborted by user"));
}

Removal RemoveFind(CleaningContext& context, const std::string& path, JunkKind kind) {
  Removal removal{Removal::kStays};
  context.state.Entries->BeginRule(CategoryText(kind));
  if (kind == JunkKind::kEmptyFolders) return RemoveEmptyFolder(context, path);
  const std::optional<FileInfo> info = context.machine.files.Look(path, Detail::kSize);
  if (!info) return {Removal::kVanished};
  removal.bytes = info->size;
  if (kind == JunkKind::kEmptyFiles && static_cast<uint32_t>(info->size) != 0) {
    removal.reason = Say("It is no longer empty.");
  } else if (RemoveFile(context, path, Claim::kItem, &removal.reason)) {
    removal.outcome = Removal::kRemoved;
  }
  return removal;
}

std::string AttributeLetters(uint32_t attributes) {
  std::string letters;
  if (attributes & kReadOnly) letters += 'R';
  if (attributes & kArchive) letters += 'A';
  if (attributes & kSystem) letters += 'S';
  if (attributes & kHidden) letters += 'H';
  return letters;
}

}  // namespace quellix
