// What is listed as installed, and packages that the Windows Installer keeps of nothing.
#include <algorithm>

#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "registry_tools/file_reference.h"
#include "registry_tools/installer_packages.h"
#include "registry_tools/tool_parts.h"
#include "run/known_folders.h"

namespace quellix {
namespace {

using modRegistry::ReadNumber;
using modRegistry::ReadText;
using State = CommandTarget::State;

constexpr const char* kViews[] = {
    "Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall",
    "Software\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall"};
constexpr ScanColumn kColumns[] = {{Mark("Name")},
                                   {Mark("Version")},
                                   {Mark("Publisher")},
                                   {Mark("Installed")},
                                   {Mark("Size in KB"), true},
                                   {Mark("State")},
                                   {Mark("Uninstall command")}};
constexpr ScanAction kActions[] = {ScanAction::kStart};

constexpr const char* kNoUninstaller = Mark("uninstaller missing");
constexpr const char* kNoPackage = Mark("installer package missing");
constexpr const char* kNoFolder = Mark("folder missing");
constexpr const char* kNoProduct = Mark("package of no product");

// "20240131" as "2024-01-31".
std::string DateText(const std::string& text) {
  const bool is_date =
      text.size() == 8 && text.find_first_not_of("0123456789") == std::string::npos;
  return !is_date ? "" : text.substr(0, 4) + "-" + text.substr(4, 2) + "-" + text.substr(6);
}

constexpr size_t kLongestShown = 600;
// An installation may run meanwhile: two seconds, in units of 100 nanoseconds.
constexpr int64_t kPackagesKnownFor = 20'000'000;

std::string OneLine(std::string text) {
  std::ranges::replace_if(
      text, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == '\x7f'; }, ' ');
  if (text.size() <= kLongestShown) return text;
  size_t most = kLongestShown;
  while (most > 0 && (static_cast<unsigned char>(text[most]) & 0xC0) == 0x80) --most;
  return text.substr(0, most) + "...";
}

// The product that a command of the Windows Installer names.
std::string ProductIn(const CommandTarget& target) {
  if (!EqualsNoCase(NamePart(target.program), "msiexec.exe")) return {};
  const size_t start = target.arguments.find('{');
  return start == std::string::npos ? "" : target.arguments.substr(start, 38);
}

std::string AskToDelete(uint64_t count, const std::string& shown) {
  return TrN("Delete %1 uninstall entry?", "Delete %1 uninstall entries?", count, shown);
}

class UninstallEntries : public RegistryScan {
 public:
  UninstallEntries(const Machine& machine, ScanView& view)
      : RegistryScan(machine, view, kUninstallTraits) {}

  bool Offers(ScanAction, size_t index) const override {
    return machine().session.RunsPrograms() && targets_[row(index).entry].state == State::kThere;
  }
  std::string QuestionForAction(ScanAction, size_t index) const override;

 protected:
  void ScanRegistry() override;
  RegistryTarget TargetOf(const ScanRow& row) const override {
    return {RegistryTarget::Kind::kTree, row.root, row.key, ""};
  }
  void Do(ScanAction, ScanRow& row) override {
    const CommandTarget& target = targets_[row.entry];
    if (machine().shell.StartProgram(target.program, target.arguments)) return;
    throw Error(Error::Kind::kKept,
                Say("The uninstaller was not started, because it was refused its rights: %1",
                    target.program));
  }
  void ForgetWhatWasSeen() override { packages_now_.reset(); }
  std::string WhyChanged(const ScanRow& row, const Pause& pause) override;
  std::string Recounted() const override;

 private:
  struct Place {
    RegistryRoot root;
    std::string key;
    CommandOf whose;
  };

  std::vector<Place> Entries();
  void AddEntry(const Place& place);
  std::string WhatIsMissing(RegistryKey& key, const Place& place, const CommandTarget& target);
  void AddPackages();
  void AddPackage(const std::string& path, const FileInfo& file);
  std::string DayText(int64_t time) const;
  std::string SizeText(uint64_t kilobytes) const;

  std::vector<CommandTarget> targets_;
  InstallerPackages packages_;                     // as they were listed
  std::optional<InstallerPackages> packages_now_;  // of the deletion in work
  int64_t packages_read_ = 0;                      // as UtcNow
  std::optional<ReferenceJudge> judge_;
  size_t unread_ = 0;
};

void UninstallEntries::ScanRegistry() {
  SetStatus(Tr("Scanning registry..."));
  judge_.emplace(machine());
  targets_.clear();
  unread_ = 0;
  packages_ = ReadInstallerPackages(machine(), [this](const Progress&) { return Stops(); });
  const std::vector<Place> places = Entries();
  BeginEntries(places.size());
  for (const Place& place : places) {
    if (!NextEntry()) return;
    try {
      AddEntry(place);
    } catch (const Error&) {
      ++unread_;
    }
  }
  AddPackages();
  SetStatus(is_stopped() ? "" : Recounted());
}

std::vector<UninstallEntries::Place> UninstallEntries::Entries() {
  std::vector<Place> places;
  for (const RegistryRoot root : {RegistryRoot::kCurrentUser, RegistryRoot::kLocalMachine}) {
    for (const char* const view : kViews) {
      TellDamage(root, view);
      const CommandOf whose = view == kViews[0] ? CommandOf::kAnyProgram : CommandOf::k32BitProgram;
      for (const std::string& name : modRegistry::ListSubKeys(access(), root, view, PauseForList()))
        places.push_back({root, std::string(view) + "\\" + name, whose});
    }
  }
  return places;
}

// Those without a name, and parts of Windows, are in no list of Windows' either.
void UninstallEntries::AddEntry(const Place& place) {
  const auto key = machine().registry.Open(place.root, place.key, RegistryAccess::kRead);
  if (!key) return;
  const auto text = [&key](const char* name) { return ReadText(*key, name); };
  const std::string shown = text("DisplayName"), command = text("UninstallString");
  if (shown.empty() || ReadNumber(*key, "SystemComponent") == 1) return;
  CommandTarget target = judge_->Judge(command, place.whose);
  const std::string missing = WhatIsMissing(*key, place, target);
  const std::string date = DateText(text("InstallDate"));
  ScanRow row;
  row.texts = {shown,
               text("DisplayVersion"),
               text("Publisher"),
               date.empty() ? DayText(key->LastWrite()) : date,
               SizeText(ReadNumber(*key, "EstimatedSize").value_or(0)),
               missing,
               command};
  row.root = place.root;
  row.key = place.key;
  row.file = target.file;
  row.entry = targets_.size();
  const RowMark mark = !missing.empty()                ? RowMark::kOrphaned
                       : target.state == State::kThere ? RowMark::kValid
                                                       : RowMark::kNotJudged;
  targets_.push_back(std::move(target));
  AddJudged(std::move(row), mark);
}

std::string UninstallEntries::WhatIsMissing(RegistryKey& key, const Place& place,
                                            const CommandTarget& target) {
  if (target.state == State::kGone) return Tr(kNoUninstaller);
  std::string code = ProductIn(target);
  if (code.empty() && ReadNumber(key, "WindowsInstaller") == 1) code = NamePart(place.key);
  const std::string packed = PackedCode(code);
  if (!packed.empty() && packages_.is_whole && !HasPackage(machine(), packages_, packed))
    return Tr(kNoPackage);
  std::string folder = ReadFolderValue(machine(), key, "InstallLocation");
  std::erase(folder, '"');
  const CommandTarget there = judge_->JudgePath(WithoutBackslash(folder), place.whose);
  return there.state == State::kGone ? Tr(kNoFolder) : "";
}

void UninstallEntries::AddPackages() {
  if (!packages_.is_whole || is_stopped()) return;
  const std::string folder = machine().system.WindowsFolder() + "\\Installer\\";
  machine().files.Enumerate(folder, Detail::kSize, [&](const Entry& file) {
    const bool is_package = MatchesMask(file.name, "*.msi") || MatchesMask(file.name, "*.msp");
    if (is_package && !file.info.is_folder && !file.info.is_link)
      AddPackage(folder + std::string(file.name), file.info);
    return !Stops();
  });
}

void UninstallEntries::AddPackage(const std::string& path, const FileInfo& file) {
  if (!WhyNeeded(machine(), packages_, path).empty()) return;
  ScanRow row;
  row.texts = {std::string(NamePart(path)),
               "",
               "",
               DayText(file.last_write),
               SizeText((file.size + 1023) / 1024),
               Tr(kNoProduct),
               ""};
  row.root = RegistryRoot::kLocalMachine;
  row.file = row.own_file = path;
  row.own_claim = Claim::kPackage;
  row.entry = targets_.size();
  targets_.emplace_back();
  AddJudged(std::move(row), RowMark::kOrphaned);
}

// A product may have come since it was listed.
std::string UninstallEntries::WhyChanged(const ScanRow& row, const Pause& pause) {
  std::string why = RegistryScan::WhyChanged(row, pause);
  if (!why.empty() || row.own_file.empty()) return why;
  if (!packages_now_ || machine().system.UtcNow() - packages_read_ > kPackagesKnownFor) {
    packages_now_ = ReadInstallerPackages(machine(), pause);
    packages_read_ = machine().system.UtcNow();
  }
  if (!packages_now_->is_whole) return Tr("What the Windows Installer knows could not be read.");
  return WhyNeeded(machine(), *packages_now_, row.own_file);
}

// Whoever wrote the entry chose its texts: each is one line of no great length here.
std::string UninstallEntries::QuestionForAction(ScanAction, size_t index) const {
  const CommandTarget& target = targets_[row(index).entry];
  const std::string rights =
      machine().session.HasAdministratorRights()
          ? Tr("It runs with administrator rights, as this program does now.")
          : Tr("It runs with your rights; Windows asks you where it wants more.");
  const std::string name = OneLine(row(index).texts[0]), program = OneLine(target.program);
  const std::string line = "\"" + program + "\" " + OneLine(target.arguments);
  std::string question = Tr("Start the uninstaller of %1?", name) + "\n\n" +
                         Tr("Program: %1", program) + "\n" + Tr("Command line: %1", line) + "\n";
  if (!EqualsNoCase(target.program, target.file))
    question += Tr("Carries out: %1", OneLine(target.file)) + "\n";
  return question + "\n" + rights;
}

std::string UninstallEntries::DayText(int64_t time) const {
  if (time == 0) return {};
  const LocalTime day = machine().system.ToLocalTime(time);
  static const Locale kSorting{.short_date = "yyyy-MM-dd"};
  return FormatDateTime({.year = day.year, .month = day.month, .day = day.day}, kSorting);
}

std::string UninstallEntries::SizeText(uint64_t kilobytes) const {
  return kilobytes == 0 ? "" : FormatCount(kilobytes, machine().system.UserLocale());
}

std::string UninstallEntries::Recounted() const {
  const auto count = [this](const auto& is) {
    return static_cast<size_t>(std::ranges::count_if(rows(), is));
  };
  const size_t packages = count([](const ScanRow& row) { return !row.own_file.empty(); });
  const size_t dead = count([](const ScanRow& row) { return row.mark == RowMark::kOrphaned; });
  const size_t programs = rows().size() - packages, stuck = dead - packages;
  return JoinParts(
      {TrN("%1 programs", "%1 programs", programs, std::to_string(programs)),
       PartOf(stuck, TrN("%1 that cannot be removed any more", "%1 that cannot be removed any more",
                         stuck, std::to_string(stuck))),
       PartOf(packages, TrN("%1 packages of no product", "%1 packages of no product", packages,
                            std::to_string(packages))),
       NotJudged(), PartOf(unread_, Unread(unread_))});
}

}  // namespace

const ScanTraits kUninstallTraits = {.name = "uninstall",
                                     .title = Mark("Installed programs"),
                                     .columns = kColumns,
                                     .ticks = false,
                                     .keeps_stayed = true,
                                     .looks_again = true,
                                     .actions = kActions,
                                     .question = AskToDelete};

std::unique_ptr<RegistryScan> MakeUninstallEntries(const Machine& machine, ScanView& view) {
  return std::make_unique<UninstallEntries>(machine, view);
}

}  // namespace quellix
