#include "platform/volume/processes.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <iostream>
#include <map>

#include "platform/volume/unique_fd.h"
#include "platform/volume/volume_error.h"
#include "platform/volume/volume_random_file.h"

namespace quellix {
namespace {

constexpr const char* kWhat = "a process for a run";

// Ctrl-C and the end of a process as what is asked for, while this lives: nothing comes between a
// look and the wait.
class AwaitedSignals {
 public:
  AwaitedSignals() {
    sigemptyset(&awaited_);
    for (const int signal : {SIGINT, SIGCHLD}) sigaddset(&awaited_, signal);
    std::signal(SIGCHLD, SIG_DFL);
    sigprocmask(SIG_BLOCK, &awaited_, &before_);
  }
  // What was sent twice does not end this process now.
  ~AwaitedSignals() {
    while (TakeInterrupt()) {
    }
    sigprocmask(SIG_SETMASK, &before_, nullptr);
  }
  AwaitedSignals(const AwaitedSignals&) = delete;
  AwaitedSignals& operator=(const AwaitedSignals&) = delete;

  int Await() const { return sigwaitinfo(&awaited_, nullptr); }
  // Whether SIGINT waits to be taken, which it then is.
  static bool TakeInterrupt() {
    sigset_t one;
    sigemptyset(&one);
    sigaddset(&one, SIGINT);
    const timespec now = {};
    return sigtimedwait(&one, nullptr, &now) == SIGINT;
  }
  // As they were, for a process that was begun meanwhile.
  void Restore() const { sigprocmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t awaited_, before_;
};

struct Running {
  size_t job;
  UniqueFd output, errors;
};

UniqueFd Memory(const char* name) {
  UniqueFd fd(memfd_create(name, MFD_CLOEXEC));
  if (!fd) ThrowErrno(errno, kWhat);
  return fd;
}

[[noreturn]] void BecomeJob(const ProcessJob& job, const Running& running, pid_t parent,
                            const AwaitedSignals& signals) {
  // What is sent to this process is passed on: by the terminal too it would come twice, and the
  // second one ends a run at once.
  setpgid(0, 0);
  prctl(PR_SET_PDEATHSIG, SIGINT);
  std::signal(SIGINT, SIG_DFL);
  signals.Restore();
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

  // The first one that may run beside those that do. False when there is none; throws Error when it
  // cannot be begun, and takes it for one that waits no more.
  bool StartNext(size_t at_once, size_t& job) {
    const auto next = std::ranges::find_if(waiting_, [this](size_t one) { return MayRun(one); });
    if (running_.size() >= at_once || next == waiting_.end()) return false;
    job = *next;
    waiting_.erase(next);
    Running running{job, Memory("output"), Memory("errors")};
    std::cout << std::flush;
    const pid_t parent = getpid(), pid = fork();
    if (pid < 0) ThrowErrno(errno, kWhat);
    if (pid == 0) BecomeJob(jobs_[job], running, parent, signals_);
    running_.emplace(pid, std::move(running));
    return true;
  }

  std::pair<size_t, ProcessResult> AwaitOne() {
    int status = 0;
    pid_t pid = 0;
    while ((pid = Ended(status)) == 0) {
      if (signals_.Await() == SIGINT) PassOnInterrupt();
    }
    const Running running = std::move(running_.at(pid));
    running_.erase(pid);
    return {running.job, ResultOf(running, status)};
  }

  // None begins any more.
  bool is_interrupted() {
    if (AwaitedSignals::TakeInterrupt()) PassOnInterrupt();
    return is_interrupted_;
  }

 private:
  bool MayRun(size_t job) const {
    return std::ranges::none_of(running_, [&](const auto& other) {
      return jobs_[other.second.job].alone == jobs_[job].alone;
    });
  }

  // 0 when none has.
  pid_t Ended(int& status) const {
    for (const auto& [pid, running] : running_) {
      if (waitpid(pid, &status, WNOHANG) == pid) return pid;
    }
    return 0;
  }

  // What cannot be read fails that job alone.
  static ProcessResult ResultOf(const Running& running, int status) {
    try {
      return {WIFEXITED(status) ? WEXITSTATUS(status) : -1,
              ReadAll(running.output.get(), UINT32_MAX, kWhat),
              ReadAll(running.errors.get(), UINT32_MAX, kWhat)};
    } catch (const std::exception& error) {
      return {-1, "", std::string(error.what()) + "\n"};
    }
  }

  // Who stops a program may send the same to it and to its group.
  void PassOnInterrupt() {
    constexpr std::chrono::seconds kAtOnce(1);
    const auto now = std::chrono::steady_clock::now();
    if (is_interrupted_ && now - interrupted_at_ < kAtOnce) return;
    is_interrupted_ = true;
    interrupted_at_ = now;
    for (const auto& [pid, running] : running_) kill(pid, SIGINT);
  }

  const std::vector<ProcessJob>& jobs_;
  const AwaitedSignals signals_;
  bool is_interrupted_ = false;
  std::chrono::steady_clock::time_point interrupted_at_;
  std::vector<size_t> waiting_;
  std::map<pid_t, Running> running_;
};

}  // namespace

void RunProcesses(const std::vector<ProcessJob>& jobs, size_t at_once,
                  const std::function<void(size_t, const ProcessResult&)>& ended) {
  Processes processes(jobs);
  const auto start = [&] {
    size_t job = 0;
    try {
      return processes.StartNext(at_once, job);
    } catch (const std::exception& error) {
      ended(job, {-1, "", std::string(error.what()) + "\n"});
      return true;
    }
  };
  do {
    while (!processes.is_interrupted() && start()) {
    }
    if (!processes.has_any()) break;
    const auto [job, result] = processes.AwaitOne();
    ended(job, result);
  } while (true);
  for (const size_t job : processes.waiting()) ended(job, {});
}

}  // namespace quellix
