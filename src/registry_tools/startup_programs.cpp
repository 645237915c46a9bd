// What starts with Windows or when its user logs on.
#include <algorithm>
#include <map>

#include "platform/file_version.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "registry_tools/startup_approval.h"
#include "registry_tools/startup_entries.h"
#include "registry_tools/tool_parts.h"

namespace quellix {
namespace {

constexpr ScanColumn kColumns[] = {{Mark("Name")},        {Mark("Command")}, {Mark("Publisher")},
                                   {Mark("Description")}, {Mark("State")},   {Mark("Place")},
                                   {Mark("Since")}};
constexpr size_t kState = 4, kSince = 6;
constexpr ScanAction kActions[] = {ScanAction::kEnable, ScanAction::kDisable};

constexpr const char* kOfTask =
    Mark("Tasks are only read here: Windows' task scheduler changes them.");
constexpr const char* kOfService =
    Mark("Services are only read here: Windows' own list changes them.");

std::string AskToDelete(uint64_t count, const std::string& shown) {
  return TrN("Delete %1 start-up entry?", "Delete %1 start-up entries?", count, shown);
}

class StartupPrograms : public RegistryScan {
 public:
  StartupPrograms(const Machine& machine, ScanView& view)
      : RegistryScan(machine, view, kStartupTraits) {}

  bool Offers(ScanAction action, size_t index) const override {
    const StartupEntry& entry = entries_[row(index).entry];
    return !entry.approval.empty() && entry.is_on == (action == ScanAction::kDisable);
  }

 protected:
  void ScanRegistry() override;
  RegistryTarget TargetOf(const ScanRow& row) const override {
    return {RegistryTarget::Kind::kValue, row.root, row.key, row.name};
  }
  void Do(ScanAction action, ScanRow& row) override;
  std::string Recounted() const override;

 private:
  void AddEntry(size_t number);
  CommandTarget TargetOfEntry(const StartupEntry& entry);
  bool IsOfWindows(const StartupEntry& entry, const CommandTarget& target);
  const FileVersion& VersionOf(const std::string& file);
  std::string TimeText(int64_t time) const;
  static std::string StateText(const StartupEntry& entry, RowMark mark);

  std::vector<StartupEntry> entries_;
  size_t unread_ = 0;
  std::string first_unread_;
  std::optional<ReferenceJudge> judge_;
  std::map<std::string, FileVersion> versions_;
};

void StartupPrograms::ScanRegistry() {
  SetStatus(Tr("Looking for what starts with Windows..."));
  judge_.emplace(machine());
  versions_.clear();
  StartupEntries read = ReadStartupEntries(machine(), [this](const Progress&) { return Stops(); });
  if (!read.damage.empty()) TellDamage(read.damage);
  unread_ = read.unread.size();
  first_unread_ = unread_ == 0 ? "" : read.unread[0];
  entries_ = std::move(read.entries);
  BeginEntries(entries_.size());
  for (size_t i = 0; i < entries_.size(); ++i) {
    if (!NextEntry()) return;
    AddEntry(i);
  }
  SetStatus(is_stopped() ? "" : Recounted());
}

// A shortcut, and whatever else lies in a start-up folder, is what Windows opens.
CommandTarget StartupPrograms::TargetOfEntry(const StartupEntry& entry) {
  if (!entry.is_known) return {};
  return judge_->Judge(entry.command, entry.whose);
}

// Of services and tasks there are hundreds.
bool StartupPrograms::IsOfWindows(const StartupEntry& entry, const CommandTarget& target) {
  if (entry.kind == StartupKind::kTask && !entry.is_known)
    return EqualsNoCase(entry.name.substr(0, 11), "\\Microsoft\\");
  if (entry.kind != StartupKind::kTask && entry.kind != StartupKind::kService) return false;
  const std::string windows = WithBackslash(machine().system.WindowsFolder());
  return target.state == CommandTarget::State::kThere &&
         EqualsNoCase(target.file.substr(0, windows.size()), windows) &&
         ContainsNoCase(VersionOf(target.file).company, "Microsoft");
}

const FileVersion& StartupPrograms::VersionOf(const std::string& file) {
  const auto [known, is_new] = versions_.try_emplace(UpCase(std::string_view(file)));
  if (is_new && !file.empty())
    known->second = ReadFileVersion(machine().files, file).value_or(FileVersion());
  return known->second;
}

std::string StartupPrograms::TimeText(int64_t time) const {
  // A form that sorts as it reads.
  static const Locale kSorting{.short_date = "yyyy-MM-dd", .time_format = "HH:mm"};
  return time == 0 ? "" : FormatDateTime(machine().system.ToLocalTime(time), kSorting);
}

std::string StartupPrograms::StateText(const StartupEntry& entry, RowMark mark) {
  if (mark == RowMark::kOrphaned) return entry.is_on ? Tr("On, missing") : Tr("Off, missing");
  return entry.is_on ? Tr("On") : Tr("Off");
}

void StartupPrograms::AddEntry(size_t number) {
  const StartupEntry& entry = entries_[number];
  const CommandTarget target = TargetOfEntry(entry);
  if (IsOfWindows(entry, target)) return;
  const RowMark mark = target.state == CommandTarget::State::kThere  ? RowMark::kValid
                       : target.state == CommandTarget::State::kGone ? RowMark::kOrphaned
                                                                     : RowMark::kNotJudged;
  const bool is_there = mark == RowMark::kValid;
  const FileVersion version = is_there ? VersionOf(target.file) : FileVersion();
  ScanRow row;
  row.texts = {entry.name,
               entry.command,
               version.company.empty() ? entry.maker : version.company,
               version.description.empty() ? entry.description : version.description,
               StateText(entry, mark),
               entry.place,
               TimeText(entry.since)};
  row.root = entry.root;
  row.key = entry.key;
  row.name = entry.value;
  row.file = !target.file.empty() ? target.file : entry.file;
  row.entry = number;
  if (entry.kind == StartupKind::kFile) row.own_file = entry.file;
  if (entry.kind == StartupKind::kTask) row.why_stays = Tr(kOfTask);
  if (entry.kind == StartupKind::kService) row.why_stays = Tr(kOfService);
  AddJudged(std::move(row), mark);
}

// As the task manager does it. What is said to be switched was read back.
void StartupPrograms::Do(ScanAction action, ScanRow& row) {
  StartupEntry& entry = entries_[row.entry];
  const WindowsVersion version = machine().system.Version();
  if (version.major < 6 || (version.major == 6 && version.minor < 2))
    throw NotAvailable(
        Say("This Windows cannot switch start-up programs off: that came with Windows 8."));
  const bool is_on = action == ScanAction::kEnable;
  const std::string name = entry.kind == StartupKind::kFile ? entry.name : entry.value;
  KeepValue(entry.root, entry.approval, name);
  const int64_t now = machine().system.UtcNow();
  const RegistryValue approval = ApprovalOf(is_on, now);
  const auto key = machine().registry.Create(entry.root, entry.approval);
  key->SetValue(name, approval);
  key->Flush();
  const auto stored = key->QueryValue(name);
  if (!stored || stored->bytes != approval.bytes)
    throw Error(Error::Kind::kOther, Say("It was switched and is as it was: %1", entry.name));
  entry.is_on = is_on;
  if (!is_on) entry.since = now;
  row.texts[kState] = StateText(entry, row.mark);
  row.texts[kSince] = TimeText(entry.since);
}

std::string StartupPrograms::Recounted() const {
  const auto count = [this](const auto& is) {
    return static_cast<size_t>(std::ranges::count_if(rows(), is));
  };
  const size_t off = count([this](const ScanRow& row) { return !entries_[row.entry].is_on; });
  const size_t gone = count([](const ScanRow& row) { return row.mark == RowMark::kOrphaned; });
  const size_t all = rows().size();
  const std::string gone_text = std::to_string(gone), off_text = std::to_string(off);
  return JoinParts(
      {TrN("%1 start-up entries", "%1 start-up entries", all, std::to_string(all)),
       PartOf(gone, TrN("%1 without their program", "%1 without their program", gone, gone_text)),
       PartOf(off, TrN("%1 switched off", "%1 switched off", off, off_text)), NotJudged(),
       PartOf(unread_, TrN("%1 could not be read: %2", "%1 could not be read, the first: %2",
                           unread_, std::to_string(unread_), first_unread_))});
}

}  // namespace

const ScanTraits kStartupTraits = {.name = "startup",
                                   .title = Mark("Start-up programs"),
                                   .columns = kColumns,
                                   .ticks = false,
                                   .keeps_stayed = true,
                                   .looks_again = true,
                                   .actions = kActions,
                                   .question = AskToDelete};

std::unique_ptr<RegistryScan> MakeStartupPrograms(const Machine& machine, ScanView& view) {
  return std::make_unique<StartupPrograms>(machine, view);
}

}  // namespace quellix
