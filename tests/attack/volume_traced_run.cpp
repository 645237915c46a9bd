#include "attack/volume_traced_run.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

namespace quellix {
namespace {

constexpr uint64_t kNames[] = {SYS_rename, SYS_renameat, SYS_renameat2, SYS_unlink, SYS_unlinkat,
                               SYS_rmdir,  SYS_link,     SYS_linkat,    SYS_mkdir,  SYS_mkdirat};
constexpr uint64_t kBytes[] = {SYS_write, SYS_pwrite64,  SYS_writev,   SYS_pwritev,
                               SYS_fsync, SYS_fdatasync, SYS_ftruncate};

[[noreturn]] void BecomeProgram(const std::vector<std::string>& arguments) {
  std::vector<char*> raw;
  for (const std::string& argument : arguments) raw.push_back(const_cast<char*>(argument.c_str()));
  raw.push_back(nullptr);
  const int nothing = open("/dev/null", O_WRONLY);
  dup2(nothing, 1);
  dup2(nothing, 2);
  // The search for leaks traces as well, and fails in a process that is traced already.
  setenv("ASAN_OPTIONS", "detect_leaks=0", 1);
  ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
  execv(raw[0], raw.data());
  _exit(127);
}

// Whether a process that stopped at a system call begins one that changes the disk.
bool BeginsChange(pid_t pid) {
  __ptrace_syscall_info info = {};
  if (ptrace(PTRACE_GET_SYSCALL_INFO, pid, sizeof info, &info) <= 0) return false;
  if (info.op != PTRACE_SYSCALL_INFO_ENTRY) return false;
  const uint64_t number = info.entry.nr;
  if (number == SYS_openat) return (info.entry.args[2] & O_CREAT) != 0;
  if (std::ranges::find(kBytes, number) != std::end(kBytes)) return info.entry.args[0] > 2;
  return std::ranges::find(kNames, number) != std::end(kNames);
}

}  // namespace

TracedRun RunTraced(const std::vector<std::string>& arguments, size_t kill_at) {
  const pid_t pid = fork();
  if (pid < 0) throw std::runtime_error("fork failed");
  if (pid == 0) BecomeProgram(arguments);
  TracedRun run;
  int status = 0;
  waitpid(pid, &status, 0);  // at its start
  ptrace(PTRACE_SETOPTIONS, pid, 0, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
  while (WIFSTOPPED(status)) {
    const bool at_call = WSTOPSIG(status) == (SIGTRAP | 0x80);
    if (at_call && BeginsChange(pid) && run.changes++ == kill_at) {
      kill(pid, SIGKILL);
      run.killed = true;
    }
    const int signal = at_call || WSTOPSIG(status) == SIGTRAP ? 0 : WSTOPSIG(status);
    ptrace(PTRACE_SYSCALL, pid, nullptr, signal);
    if (waitpid(pid, &status, 0) != pid) break;
  }
  if (WIFEXITED(status)) run.exit_code = WEXITSTATUS(status);
  return run;
}

size_t Rounds(size_t few) {
  const char* const asked = std::getenv("QUELLIX_ROUNDS");
  return asked == nullptr ? few : static_cast<size_t>(std::strtoul(asked, nullptr, 10));
}

}  // namespace quellix
