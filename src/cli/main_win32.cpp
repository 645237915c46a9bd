#include <windows.h>

// After windows.h, which it needs.
#include <shellapi.h>

#include <iostream>
#include <sstream>

#include "cli/console.h"
#include "cli/console_view.h"
#include "platform/error.h"
#include "platform/text.h"
#include "platform/win32/lazy_library.h"
#include "platform/win32/other_user.h"
#include "platform/win32/win32_machine.h"

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
  OtherMachine(const std::string& settings, const quellix::UserProfile& user)
      : other_(settings, user) {}
  quellix::Machine machine() override { return other_.machine(); }

 private:
  quellix::OtherUserMachine other_;
};

quellix::UserProfile FindUser(const quellix::Machine& machine, const std::string& name) {
  std::string names;
  for (const quellix::UserProfile& user : UsersHere(machine)) {
    if (quellix::EqualsNoCase(user.name, name)) return user;
    names += (names.empty() ? "" : ", ") + user.name;
  }
  throw quellix::Error(
      quellix::Error::Kind::kMissing,
      "There is no user \"" + name + "\" on this Windows. Its users are: " + names);
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
  return std::make_unique<OtherMachine>(options.settings, user);
}

std::vector<std::string> UserNames(const quellix::MachineOptions&) {
  quellix::Win32Machine live;
  std::vector<std::string> names;
  for (const quellix::UserProfile& user : UsersHere(live.machine())) names.push_back(user.name);
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
                    .open = Open,
                    .users = UserNames,
                    .run_processes = RunInTurn});
}
