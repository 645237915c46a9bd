#pragma once

#include <set>
#include <string>

#include "platform/system.h"

namespace quellix {

// A real system on which the programs run that a test names.
struct ProgramSystem : System {
  explicit ProgramSystem(System& inner) : inner_(inner) {}

  std::set<std::string, std::less<>> running;  // names of their files

  bool IsProgramRunning(std::string_view name) override { return running.contains(name); }

  std::string WindowsFolder() override { return inner_.WindowsFolder(); }
  std::string SystemFolder() override { return inner_.SystemFolder(); }
  std::string TempFolder() override { return inner_.TempFolder(); }
  std::optional<std::string> Environment(std::string_view name) override {
    return inner_.Environment(name);
  }
  WindowsVersion Version() override { return inner_.Version(); }
  bool IsServiceRunning(std::string_view name) override { return inner_.IsServiceRunning(name); }
  std::vector<Drive> Drives() override { return inner_.Drives(); }
  LocalTime Now() override { return inner_.Now(); }
  int64_t UtcNow() override { return inner_.UtcNow(); }
  LocalTime ToLocalTime(int64_t filetime) override { return inner_.ToLocalTime(filetime); }
  Locale UserLocale() override { return inner_.UserLocale(); }
  std::string FromAnsi(std::string_view bytes) override { return inner_.FromAnsi(bytes); }

 private:
  System& inner_;
};

}  // namespace quellix
