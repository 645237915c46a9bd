#include <windows.h>

// After windows.h, which it needs.
#include <shellapi.h>

#include <algorithm>
#include <iostream>
#include <sstream>

#include "cli/console.h"
#include "cli/console_view.h"
#include "platform/error.h"
#include "platform/text.h"
#include "platform/win32/lazy_library.h"
#include "platform/win32/other_user.h"
#include "platform/win32/win32_machine.h"
#include "settings/settings.h"

namespace {

std::vector<std::string> Arguments() {
  std::vector<std::string> arguments;
  int count = 0;
  const std::unique_ptr<wchar_t*, decltype(&LocalFree)> words(
      CommandLineToArgvW(GetCommandLineW(), &count), &LocalFree);
  for (int i = 1; i < count; ++i) {
    arguments.push_back(quellix::ToUtf8(reinterpret_cast<const char16_t*>(words.get()[i])));
  }
  return arguments;
}

// A device that is no console, such as NUL, answers nobody.
bool IsTerminal(DWORD handle) {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(handle), &mode) != FALSE;
}

class LiveMachine : public quellix::OpenMachine {
 public:
  explicit LiveMachine(const std::string& settings) : live_(settings) {}
  quellix::Machine machine() override { return live_.machine(); }

 private:
  quellix::Win32Machine live_;
};

class OtherMachine : public quellix::OpenMachine {
 public:
  OtherMachine(const quellix::MachineOptions& options, const quellix::UserProfile& user,
               const std::string& backup_folder)
      : name_(user.name), other_(options.settings, user, backup_folder) {}
  ~OtherMachine() override { Store(); }
  quellix::Machine machine() override { return other_.machine(); }
  bool IsForAnother() override { return true; }
  bool Store() override {
    if (other_.Unload()) return true;
    if (!was_told_)
      std::cerr << "quellixctl: the registry of " << name_ << kStaysLoaded << std::endl;
    was_told_ = true;
    return false;
  }

 private:
  static constexpr const char* kStaysLoaded =
      " stays loaded, as another program uses it. Until it is unloaded, at the next start of"
      " Windows at the latest, this user cannot log on with his own profile.";

  std::string name_;
  bool was_told_ = false;
  quellix::OtherUserMachine other_;
};

// By name or security identifier.
quellix::UserProfile FindUser(const quellix::Machine& machine, const std::string& name) {
  std::string names, folders;
  std::vector<quellix::UserProfile> fitting;
  for (const quellix::UserProfile& user : UsersHere(machine)) {
    if (quellix::EqualsNoCase(user.sid, name)) return user;
    names += (names.empty() ? "" : ", ") + user.name;
    if (!quellix::EqualsNoCase(user.name, name)) continue;
    fitting.push_back(user);
    folders += (folders.empty() ? "" : ", ") + user.profile + " (" + user.sid + ")";
  }
  if (fitting.size() == 1) return fitting[0];
  throw quellix::Error(
      quellix::Error::Kind::kMissing,
      fitting.empty() ? "There is no user \"" + name + "\" on this Windows. Its users are: " + names
                      : "More than one user is called \"" + name +
                            "\"; name the identifier of one: " + folders);
}

// Of another user only an administrator may.
std::unique_ptr<quellix::OpenMachine> Open(const quellix::MachineOptions& options) {
  auto live = std::make_unique<LiveMachine>(options.settings);
  if (options.user.empty()) return live;
  const quellix::Machine machine = live->machine();
  const quellix::UserProfile user = FindUser(machine, options.user);
  if (user.sid == machine.session.UserId()) return live;
  if (!machine.session.HasAdministratorRights()) {
    throw quellix::Error(quellix::Error::Kind::kDenied,
                         "Only an administrator may work on what is another user's.");
  }
  return std::make_unique<OtherMachine>(options, user,
                                        quellix::Settings(machine).Load().BackupFolder);
}

// By their identifiers where a name would not tell one from another.
std::vector<std::string> UserNames(const quellix::MachineOptions&) {
  quellix::Win32Machine live;
  const std::vector<quellix::UserProfile> users = UsersHere(live.machine());
  std::vector<std::string> names;
  for (const quellix::UserProfile& user : users) {
    const auto has_its_name = [&user](const auto& each) {
      return quellix::EqualsNoCase(each.name, user.name);
    };
    names.push_back(std::ranges::count_if(users, has_its_name) == 1 ? user.name : user.sid);
  }
  return names;
}

// What a stream is given while this lives.
class Captured {
 public:
  explicit Captured(std::ostream& stream) : stream_(stream), before_(stream.rdbuf(text.rdbuf())) {}
  ~Captured() { stream_.rdbuf(before_); }
  Captured(const Captured&) = delete;
  Captured& operator=(const Captured&) = delete;
  std::ostringstream text;

 private:
  std::ostream& stream_;
  std::streambuf* before_;
};

// In this process: of a user's registry, loaded once, there is one at a time.
void RunInTurn(const std::vector<quellix::ProcessJob>& jobs, size_t,
               const std::function<void(size_t, const quellix::ProcessResult&)>& ended) {
  for (size_t i = 0; i < jobs.size(); ++i) {
    quellix::ProcessResult result;
    if (!quellix::ConsoleView::WasInterrupted()) {
      Captured output(std::cout), errors(std::cerr);
      result.code = jobs[i].run();
      result.output = output.text.str();
      result.errors = errors.text.str();
    }
    ended(i, result);
  }
}

}  // namespace

int main() {
  quellix::SearchSystemFolderOnly();
  SetConsoleOutputCP(CP_UTF8);
  return quellix::RunConsole(
      Arguments(), {.works_on_volumes = false,
                    .shows_progress = GetFileType(GetStdHandle(STD_ERROR_HANDLE)) == FILE_TYPE_CHAR,
                    .can_ask = IsTerminal(STD_INPUT_HANDLE) && IsTerminal(STD_ERROR_HANDLE),
                    .settings_folder = [] { return quellix::FindProgramFolders().own; },
                    .open = Open,
                    .users = UserNames,
                    .run_processes = RunInTurn});
}
