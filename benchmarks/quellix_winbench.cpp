// Benchmarks on the real Windows calls, against the system's own command and an empty program.

#include <windows.h>

#include <stdexcept>

#include "detection_bench.h"
#include "engine.h"
#include "platform/win32/win32_machine.h"
#include "preview_winbench.h"
#include "registry_data.h"
#include "results_winbench.h"
#include "run/removal.h"
#include "search/drive_scan.h"
#include "side_by_side.h"
#include "support/branch_registry.h"
#include "support/scripted_view.h"
#include "support/test_machine.h"

namespace quellix {
namespace {

constexpr int kFolders = 200;
constexpr int kFilesAFolder = 100;

// As the window does: handles waiting messages now and then, paints nothing that nobody sees.
class PumpingView : public ScriptedView {
 public:
  bool Breathe() override {
    const ULONGLONG now = GetTickCount64();
    if (now - last_ < kMillisecondsPerLook) return false;
    last_ = now;
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
    return false;
  }
  void SetStatus(std::string_view text) override { status_ = text; }
  void SetProgress(const ProgressBar&) override {}

 private:
  static constexpr ULONGLONG kMillisecondsPerLook = 20;

  ULONGLONG last_ = 0;
  std::string status_;
};

PROCESS_INFORMATION Start(std::wstring command) {
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                      &startup, &process)) {
    throw std::runtime_error("a program could not be started");
  }
  CloseHandle(process.hThread);
  return process;
}

void RunToEnd(const std::wstring& command) {
  const PROCESS_INFORMATION process = Start(command);
  WaitForSingleObject(process.hProcess, INFINITE);
  CloseHandle(process.hProcess);
}

// Whether a process shows a dialog. Asked for by class, so that the question costs the measured
// program little.
bool ShowsDialog(DWORD process) {
  HWND window = nullptr;
  while ((window = FindWindowExW(nullptr, window, L"#32770", nullptr)) != nullptr) {
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    if (owner == process) return IsWindowVisible(window) != 0;
  }
  return false;
}

// Starts a program and returns when its window is visible; then ends it.
double SecondsToWindow(const std::wstring& program) {
  PROCESS_INFORMATION process{};
  const double seconds = SideBySide::Seconds([&] {
    process = Start(L"\"" + program + L"\"");
    while (!ShowsDialog(process.dwProcessId)) Sleep(1);
  });
  TerminateProcess(process.hProcess, 0);
  WaitForSingleObject(process.hProcess, INFINITE);
  CloseHandle(process.hProcess);
  return seconds;
}

void MeasureRemoval(SideBySide& table, TestMachine& machine) {
  const Machine ports = machine.machine();
  const std::string folder = machine.Scratch() + "tree\\";
  PumpingView view;
  Settings settings(ports);
  RunState state;
  ModZip backup(ports, state);
  CleaningContext context{ports, settings, state, view, backup};
  table.Compare(
      "remove 20,000 files / cmd /c del /s /q", 1.0, 5,
      [&] {
        for (int i = 0; i < kFolders * kFilesAFolder; ++i) {
          machine.MakeFile(folder + std::to_string(i / kFilesAFolder) + "\\" + std::to_string(i),
                           "x");
        }
      },
      [&] {
        RemovePendingFiles(context,
                           CollectFiles(context, ports.files.OpenFolder(folder), folder, "*.*"));
        if (state.FilesDeleted % (kFolders * kFilesAFolder) != 0) {
          throw std::runtime_error("files stayed");
        }
      },
      [&] { RunToEnd(L"cmd.exe /c del /s /q C:\\QxScratch\\tree > nul"); });
}

void MeasureReferences(SideBySide& table, TestMachine& machine) {
  constexpr int kKeys = 5000;
  const std::string branch = "Software\\Quellix Bench";
  machine.RemoveRegistryTree(RegistryRoot::kCurrentUser, branch);
  MakeRegistry(machine, RegistryRoot::kCurrentUser, branch, kKeys);
  const Machine ports = machine.machine();
  BranchRegistry registry(ports.registry, branch);
  const Machine only = registry.On(ports);
  table.Compare(
      "references in 50,000 values / reg export", 1.0, 5, [] {},
      [&] { WalkThoroughly(only, kKeys / 2); },
      [] {
        RunToEnd(L"reg.exe export \"HKCU\\Software\\Quellix Bench\" C:\\QxScratch\\b.reg /y");
      });
  machine.RemoveRegistryTree(RegistryRoot::kCurrentUser, branch);
}

void MeasureStartUp(SideBySide& table) {
  std::vector<double> ours, theirs, bare;
  for (int round = 0; round < 25; ++round) {
    ours.push_back(SecondsToWindow(L"C:\\Program Files\\Quellix\\quellix.exe"));
    theirs.push_back(SecondsToWindow(L"C:\\Program Files\\Quellix\\empty_dialog.exe"));
    bare.push_back(SecondsToWindow(L"C:\\Program Files\\Quellix\\bare_dialog.exe"));
  }
  table.Report("start to visible window / empty dialog", Median(ours), Median(theirs), "s", 1.5);
  std::printf("  a dialog without the common controls takes %.3fs: ratio %.2f\n", Median(bare),
              Median(ours) / Median(bare));
}

}  // namespace
}  // namespace quellix

// With ONE of "removal", "registry", "results", "preview" and "start" that part alone is measured.
int main(int argc, char** argv) {
  try {
    const std::unique_ptr<quellix::TestMachine> machine = quellix::TestMachine::Create();
    quellix::SideBySide table;
    const std::string_view only = argc > 1 ? argv[1] : "";
    const auto asked = [only](std::string_view part) { return only.empty() || only == part; };
    if (asked("removal")) quellix::MeasureRemoval(table, *machine);
    if (asked("registry")) quellix::MeasureReferences(table, *machine);
    if (asked("recipes")) quellix::MeasureDetection(*machine, 1.5, table);
    if (asked("results")) quellix::MeasureResultsWindow(table);
    if (asked("preview")) quellix::MeasurePreviewWindow(table);
    if (asked("start")) quellix::MeasureStartUp(table);
    return table.ExitCode();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "quellix_winbench: %s\n", error.what());
    return 1;
  }
}
