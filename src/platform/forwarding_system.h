#pragma once

#include <string>

#include "platform/system.h"

namespace quellix {

// A system as another one is, to be changed in part by those derived from it.
class ForwardingSystem : public System {
 public:
  explicit ForwardingSystem(System& inner) : inner_(inner) {}

  std::string WindowsFolder() override { return inner_.WindowsFolder(); }
  std::string SystemFolder() override { return inner_.SystemFolder(); }
  std::string TempFolder() override { return inner_.TempFolder(); }
  std::optional<std::string> Environment(std::string_view name) override {
    return inner_.Environment(name);
  }
  WindowsVersion Version() override { return inner_.Version(); }
  bool IsServiceRunning(std::string_view name) override { return inner_.IsServiceRunning(name); }
  bool IsProgramRunning(std::string_view name) override { return inner_.IsProgramRunning(name); }
  std::vector<Drive> Drives() override { return inner_.Drives(); }
  LocalTime Now() override { return inner_.Now(); }
  int64_t UtcNow() override { return inner_.UtcNow(); }
  LocalTime ToLocalTime(int64_t filetime) override { return inner_.ToLocalTime(filetime); }
  Locale UserLocale() override { return inner_.UserLocale(); }
  std::string FromAnsi(std::string_view bytes) override { return inner_.FromAnsi(bytes); }

 protected:
  System& inner_;
};

}  // namespace quellix
