#include "backup/can_run.h"

#include <algorithm>
#include <string>

#include "platform/error.h"
#include "platform/path.h"
#include "platform/text.h"

namespace quellix {
namespace {

constexpr std::string_view kProgramTypes[] = {"ACM",
                                              "ADE",
                                              "ADP",
                                              "APP",
                                              "APPINSTALLER",
                                              "APPLICATION",
                                              "APPREF-MS",
                                              "APPX",
                                              "ASP",
                                              "ASPX",
                                              "AX",
                                              "BAS",
                                              "BAT",
                                              "CHM",
                                              "CMD",
                                              "COM",
                                              "CPL",
                                              "CRT",
                                              "CSH",
                                              "DESKTHEMEPACKFILE",
                                              "DESKTOP",
                                              "DIAGCAB",
                                              "DIAGCFG",
                                              "DIAGPKG",
                                              "DLL",
                                              "DOCM",
                                              "DOTM",
                                              "DRV",
                                              "EXE",
                                              "FXP",
                                              "GADGET",
                                              "GRP",
                                              "HLP",
                                              "HTA",
                                              "HTC",
                                              "IMG",
                                              "INF",
                                              "INS",
                                              "ISO",
                                              "ISP",
                                              "ITS",
                                              "JAR",
                                              "JNLP",
                                              "JOB",
                                              "JS",
                                              "JSE",
                                              "KSH",
                                              "LIBRARY-MS",
                                              "LNK",
                                              "MAD",
                                              "MAF",
                                              "MAM",
                                              "MAR",
                                              "MDA",
                                              "MDB",
                                              "MDE",
                                              "MSC",
                                              "MSH",
                                              "MSI",
                                              "MSIX",
                                              "MSP",
                                              "MST",
                                              "OCX",
                                              "OPS",
                                              "PCD",
                                              "PIF",
                                              "PL",
                                              "PPAM",
                                              "PPSM",
                                              "PPTM",
                                              "PRF",
                                              "PRG",
                                              "PS1",
                                              "PS1XML",
                                              "PS2",
                                              "PSC1",
                                              "PSC2",
                                              "PSD1",
                                              "PSM1",
                                              "PST",
                                              "PY",
                                              "PYC",
                                              "PYW",
                                              "PYZ",
                                              "RB",
                                              "REG",
                                              "RGS",
                                              "SCF",
                                              "SCR",
                                              "SCT",
                                              "SEARCH-MS",
                                              "SEARCHCONNECTOR-MS",
                                              "SETTINGCONTENT-MS",
                                              "SHB",
                                              "SHS",
                                              "SYS",
                                              "THEME",
                                              "THEMEPACK",
                                              "URL",
                                              "VB",
                                              "VBE",
                                              "VBP",
                                              "VBS",
                                              "VHD",
                                              "VHDX",
                                              "VSMACROS",
                                              "VXD",
                                              "WEBSITE",
                                              "WS",
                                              "WSC",
                                              "WSF",
                                              "WSH",
                                              "XBAP",
                                              "XLAM",
                                              "XLL",
                                              "XLSB",
                                              "XLSM",
                                              "XLTM",
                                              "XNK"};

// Without the dot, in upper case; dots and blanks at the end of a name mean nothing to Windows.
std::string TypeOf(std::string_view path) {
  std::string_view name = NamePart(path);
  name = name.substr(0, name.find_last_not_of(". ") + 1);
  const size_t dot = name.rfind('.');
  return dot == name.npos ? "" : UpCase(name.substr(dot + 1));
}

bool IsInPathExt(System& system, const std::string& type) {
  const std::vector<std::string> types = Split(system.Environment("PATHEXT").value_or(""), ';');
  return std::ranges::any_of(
      types, [&](const std::string& other) { return EqualsNoCase(other, "." + type); });
}

bool IsKnown(Registry& registry, const std::string& type) try {
  return registry.Open(RegistryRoot::kClassesRoot, "." + type, RegistryAccess::kRead) != nullptr;
} catch (const Error&) {
  return false;
}

}  // namespace

bool CanRun(const Machine& machine, std::string_view path) {
  const std::string type = TypeOf(path);
  return type.empty() || std::ranges::find(kProgramTypes, type) != std::end(kProgramTypes) ||
         IsInPathExt(machine.system, type) || !IsKnown(machine.registry, type);
}

}  // namespace quellix
