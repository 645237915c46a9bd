#include "platform/volume/processes.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <iostream>
#include <map>

#include "platform/volume/unique_fd.h"
#include "platform/volume/volume_error.h"
#include "platform/volume/volume_random_file.h"

namespace quellix {
namespace {

constexpr const char* kWhat = "a process for a run";

volatile std::sig_atomic_t interrupted = 0;

void OnInterrupt(int) { interrupted = 1; }

struct Running {
  size_t job;
  UniqueFd output, errors;
};

UniqueFd Memory(const char* name) {
  UniqueFd fd(memfd_create(name, MFD_CLOEXEC));
  if (!fd) ThrowErrno(errno, kWhat);
  return fd;
}

[[noreturn]] void BecomeJob(const ProcessJob& job, const Running& running, pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGINT);
  std::signal(SIGINT, SIG_DFL);
  if (getppid() != parent) _exit(1);
  const UniqueFd nothing(open("/dev/null", O_RDONLY | O_CLOEXEC));
  dup2(nothing.get(), STDIN_FILENO);
  dup2(running.output.get(), STDOUT_FILENO);
  dup2(running.errors.get(), STDERR_FILENO);
  const int code = job.run();
  std::cout << std::flush;
  std::cerr << std::flush;
  _exit(code);
}

class Processes {
 public:
  explicit Processes(const std::vector<ProcessJob>& jobs) : jobs_(jobs) {
    for (size_t i = 0; i < jobs.size(); ++i) waiting_.push_back(i);
  }

  bool has_any() const { return !running_.empty(); }
  const std::vector<size_t>& waiting() const { return waiting_; }

  // The first one that may run beside those that do.
  bool StartNext(size_t at_once) {
    const auto next = std::ranges::find_if(waiting_, [this](size_t job) { return MayRun(job); });
    if (running_.size() >= at_once || next == waiting_.end()) return false;
    Running running{*next, Memory("output"), Memory("errors")};
    waiting_.erase(next);
    std::cout << std::flush;
    const pid_t parent = getpid(), pid = fork();
    if (pid < 0) ThrowErrno(errno, kWhat);
    if (pid == 0) BecomeJob(jobs_[running.job], running, parent);
    running_.emplace(pid, std::move(running));
    return true;
  }

  std::pair<size_t, ProcessResult> AwaitOne() {
    int status = 0;
    pid_t pid = -1;
    do {
      pid = waitpid(-1, &status, 0);
    } while (pid < 0 ? errno == EINTR : !running_.contains(pid));
    if (pid < 0) ThrowErrno(errno, kWhat);
    const Running& running = running_.at(pid);
    std::pair<size_t, ProcessResult> ended = {running.job,
                                              {WIFEXITED(status) ? WEXITSTATUS(status) : -1,
                                               ReadAll(running.output.get(), UINT32_MAX, kWhat),
                                               ReadAll(running.errors.get(), UINT32_MAX, kWhat)}};
    running_.erase(pid);
    return ended;
  }

 private:
  bool MayRun(size_t job) const {
    return std::ranges::none_of(running_, [&](const auto& other) {
      return jobs_[other.second.job].alone == jobs_[job].alone;
    });
  }

  const std::vector<ProcessJob>& jobs_;
  std::vector<size_t> waiting_;
  std::map<pid_t, Running> running_;
};

}  // namespace

void RunProcesses(const std::vector<ProcessJob>& jobs, size_t at_once,
                  const std::function<void(size_t, const ProcessResult&)>& ended) {
  interrupted = 0;
  const auto before = std::signal(SIGINT, OnInterrupt);
  Processes processes(jobs);
  do {
    while (interrupted == 0 && processes.StartNext(at_once)) {
    }
    if (!processes.has_any()) break;
    const auto [job, result] = processes.AwaitOne();
    ended(job, result);
  } while (true);
  for (const size_t job : processes.waiting()) ended(job, {});
  std::signal(SIGINT, before);
}

}  // namespace quellix
