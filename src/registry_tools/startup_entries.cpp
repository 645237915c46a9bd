#include "registry_tools/startup_entries.h"

#include "platform/damaged.h"
#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "registry_tools/mod_registry.h"
#include "registry_tools/startup_approval.h"
#include "registry_tools/startup_tasks.h"
#include "run/known_folders.h"

namespace quellix {
namespace {

using modRegistry::ReadNumber;
using modRegistry::ReadText;

constexpr RegistryRoot kUser = RegistryRoot::kCurrentUser;
constexpr RegistryRoot kMachine = RegistryRoot::kLocalMachine;
constexpr CommandOf k32Bit = CommandOf::k32BitProgram;

constexpr const char* kViews[] = {"Software\\Microsoft\\Windows\\CurrentVersion\\",
                                  "Software\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\"};
constexpr const char* kShellFolders = "Explorer\\User Shell Folders";
constexpr const char* kServices = "SYSTEM\\CurrentControlSet\\Services";

// Those of the 32-bit view have approvals of their own.
constexpr struct {
  const char* key;
  bool has_approval;
} kRunKeys[] = {{"Run", true}, {"RunOnce", false}, {"Policies\\Explorer\\Run", false}};

constexpr struct {
  RegistryRoot root;
  const char* value;  // of kShellFolders
  const char* usual;
  const char* place;
} kFolders[] = {
    {kUser, "Startup", "%APPDATA%\\Microsoft\\Windows\\Start Menu\\Programs\\Startup",
     Mark("Start-up folder (user)")},
    {kMachine, "Common Startup", "%ProgramData%\\Microsoft\\Windows\\Start Menu\\Programs\\Startup",
     Mark("Start-up folder (all users)")}};

// Of a Run key: whose it is, and whether that of 32-bit programs.
std::string PlaceOf(const char* run, RegistryRoot root, bool is_32_bit) {
  if (root == kUser) return is_32_bit ? Tr("%1, 32 bits (user)", run) : Tr("%1 (user)", run);
  return is_32_bit ? Tr("%1, 32 bits (machine)", run) : Tr("%1 (machine)", run);
}

// What Windows documents of a service's values.
constexpr uint32_t kStartsItself = 2, kOwnProcess = 0x10, kSharedProcess = 0x20;

class Reader {
 public:
  Reader(const Machine& machine, const Pause& pause) : machine_(machine), pause_(pause) {}

  StartupEntries Read() {
    for (const RegistryRoot root : {kUser, kMachine}) {
      for (const char* const view : kViews) ReadRunKeys(root, view);
    }
    for (const auto& folder : kFolders) {
      ReadFolder(folder.root, folder.place, FolderOf(folder.root, folder.value, folder.usual));
    }
    if (!pause_()) ReadTheTasks();
    ReadServices();
    return std::move(read_);
  }

 private:
  // Runs `use` on the opened key. One that is missing has nothing in it.
  template <typename Use>
  void WithKey(RegistryRoot root, const std::string& path, const Use& use) {
    if (pause_()) return;
    try {
      const auto key = machine_.registry.Open(root, path, RegistryAccess::kRead);
      if (key) use(*key);
    } catch (const Damaged& error) {
      if (read_.damage.empty()) read_.damage = Shown(error);
    } catch (const Error&) {
      read_.unread.push_back(std::string(RootName(root)) + "\\" + path);
    }
  }

  void ReadRunKeys(RegistryRoot root, const std::string& view) {
    const bool is_32_bit = view == kViews[1];
    for (const auto& run : kRunKeys) {
      StartupEntry entry{.place = PlaceOf(run.key, root, is_32_bit),
                         .root = root,
                         .key = view + run.key,
                         .whose = is_32_bit ? k32Bit : CommandOf::kAnyProgram};
      if (run.has_approval)
        entry.approval = std::string(kApprovedKey) + (is_32_bit ? "Run32" : "Run");
      WithKey(root, entry.key, [&](RegistryKey& key) { ReadValues(key, entry); });
    }
  }

  void ReadValues(RegistryKey& key, StartupEntry entry) {
    const int64_t since = key.LastWrite();
    RegistryValue value;
    for (uint32_t i = 0; !pause_() && key.ReadValueAt(i, entry.value, value); ++i) {
      if (value.type != kRegSz && value.type != kRegExpandSz) continue;
      entry.name = entry.value.empty() ? Tr("(Default)") : entry.value;
      const std::string text = FromUtf16Bytes(value.bytes);
      entry.command = TrimBlanks(TrimNull(text));
      entry.since = since;
      AddApproved(entry);
    }
  }

  void AddApproved(StartupEntry entry) {
    if (!entry.approval.empty()) {
      WithKey(entry.root, entry.approval, [&](RegistryKey& key) {
        const auto value =
            key.QueryValue(entry.kind == StartupKind::kFile ? entry.name : entry.value);
        const StartupApproval approval = value ? ReadApproval(*value) : StartupApproval();
        entry.is_on = approval.is_on;
        if (approval.since != 0) entry.since = approval.since;
      });
    }
    read_.entries.push_back(std::move(entry));
  }

  std::string FolderOf(RegistryRoot root, const char* value, const char* usual) {
    std::string folder;
    WithKey(root, std::string(kViews[0]) + kShellFolders,
            [&](RegistryKey& key) { folder = ReadFolderValue(machine_, key, value); });
    return folder.empty() ? ExpandEnvironment(machine_.system, usual) : folder;
  }

  void ReadFolder(RegistryRoot root, const char* place, const std::string& folder) {
    if (folder.empty()) return;
    try {
      const auto open = machine_.files.OpenFolder(folder);
      if (!open) return;
      open->Enumerate(Detail::kSize, [&](const Entry& file) {
        const bool is_hidden = EqualsNoCase(file.name, "desktop.ini");
        if (!file.info.is_folder && !is_hidden) {
          AddFile({.kind = StartupKind::kFile,
                   .name = std::string(file.name),
                   .place = Tr(place),
                   .root = root,
                   .file = WithBackslash(folder) + std::string(file.name),
                   .approval = std::string(kApprovedKey) + "StartupFolder",
                   .since = file.info.last_write});
        }
        return !pause_();
      });
    } catch (const Error&) {
      read_.unread.push_back(folder);
    }
  }

  void AddFile(StartupEntry entry) {
    const std::string_view name = entry.name;
    const std::string_view ending = name.substr(std::min(name.rfind('.'), name.size()));
    entry.command = "\"" + entry.file + "\"";
    if (EqualsNoCase(ending, ".lnk")) {
      const auto shortcut = ReadShortcut(entry.file);
      entry.is_known = shortcut && !shortcut->target.empty();
      if (entry.is_known) entry.command = "\"" + shortcut->target + "\"";
    }
    AddApproved(std::move(entry));
  }

  std::optional<Shortcut> ReadShortcut(const std::string& path) {
    try {
      if (!shortcuts_) shortcuts_ = machine_.shell.OpenShortcuts();
      return shortcuts_->Read(path);
    } catch (const Error&) {  // not those of another user
      return std::nullopt;
    }
  }

  void ReadTheTasks() {
    const TaskSink sink{
        .task = [this](const std::string& name, const std::string& path, const FileInfo& file,
                       const ScheduledTask& task) { AddTask(name, path, file, task); },
        .failed = [this](const std::string& path) { read_.unread.push_back(path); }};
    ReadTasks(machine_, sink, pause_);
  }

  void AddTask(const std::string& name, const std::string& path, const FileInfo& file,
               const ScheduledTask& task) {
    constexpr size_t kMostActions = 32;  // as many as Windows takes
    if (!task.starts_by_itself) return;
    if (task.commands.size() + task.classes.size() > kMostActions) {
      read_.unread.push_back(path);
      return;
    }
    StartupEntry entry{.kind = StartupKind::kTask,
                       .name = name,
                       .place = Tr("Task"),
                       .file = path,
                       .is_on = task.is_on,
                       .since = file.last_write,
                       .maker = task.author,
                       .description = task.description};
    for (const std::string& command : task.commands) {
      entry.command = command;
      read_.entries.push_back(entry);
    }
    entry.is_known = false;
    for (const std::string& handler : task.classes) {
      entry.command = handler;
      read_.entries.push_back(entry);
    }
  }

  void ReadServices() {
    std::vector<std::string> names;
    WithKey(kMachine, kServices, [&](RegistryKey& key) { names = SubKeyNames(key, pause_); });
    for (const std::string& name : names) {
      const std::string path = std::string(kServices) + "\\" + name;
      WithKey(kMachine, path, [&](RegistryKey& key) { AddService(key, name, path); });
    }
  }

  void AddService(RegistryKey& key, const std::string& name, const std::string& path) {
    const uint32_t type = ReadNumber(key, "Type").value_or(0);
    if (ReadNumber(key, "Start") != kStartsItself || (type & (kOwnProcess | kSharedProcess)) == 0)
      return;
    const std::string shown = ReadText(key, "DisplayName"), text = ReadText(key, "Description");
    const auto is_plain = [](const std::string& each) { return !each.starts_with('@'); };
    StartupEntry entry{.kind = StartupKind::kService,
                       .name = is_plain(shown) && !shown.empty() ? shown + " (" + name + ")" : name,
                       .command = ReadText(key, "ImagePath"),
                       .place = Tr("Service"),
                       .root = kMachine,
                       .key = path,
                       .since = key.LastWrite(),
                       .description = is_plain(text) ? text : ""};
    if (const std::string library = LibraryOf(key); !library.empty()) entry.command = library;
    read_.entries.push_back(std::move(entry));
  }

  // What a service of svchost consists of; "" for others.
  static std::string LibraryOf(RegistryKey& service) {
    const auto parameters = service.Open("Parameters", RegistryAccess::kRead);
    std::string library = parameters ? ReadText(*parameters, "ServiceDll") : "";
    if (library.empty()) library = ReadText(service, "ServiceDll");
    return library;
  }

  const Machine& machine_;
  const Pause& pause_;
  std::unique_ptr<ShortcutReader> shortcuts_;
  StartupEntries read_;
};

}  // namespace

StartupEntries ReadStartupEntries(const Machine& machine, const Pause& pause) {
  return Reader(machine, pause).Read();
}

}  // namespace quellix
