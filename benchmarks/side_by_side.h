#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace quellix {

// Measures us and the named program in turn on the same data and prints both times and their
// ratio. The best of the rounds counts: it is the one least disturbed by the machine.
class SideBySide {
 public:
  using Step = std::function<void()>;

  SideBySide() {
    std::printf("%-46s %10s %10s %7s %7s\n", "", "Quellix", "other", "ratio", "at most");
  }

  // `prepare` runs unmeasured before each of the two.
  void Compare(const std::string& name, double at_most, int rounds, const Step& prepare,
               const Step& ours, const Step& theirs) {
    double our_best = 1e9, their_best = 1e9;
    for (int round = 0; round < rounds; ++round) {
      prepare();
      our_best = std::min(our_best, Seconds(ours));
      prepare();
      their_best = std::min(their_best, Seconds(theirs));
    }
    Report(name, our_best, their_best, "s", at_most);
  }

  void Report(const std::string& name, double ours, double theirs, const char* unit,
              double at_most) {
    const double ratio = ours / theirs;
    const bool within = ratio <= at_most;
    all_within_ &= within;
    std::printf("%-46s %9.3f%s %9.3f%s %7.2f %7.2f %s\n", name.c_str(), ours, unit, theirs, unit,
                ratio, at_most, within ? "" : "  TOO SLOW");
    std::fflush(stdout);
  }

  static double Seconds(const Step& step) {
    const auto start = std::chrono::steady_clock::now();
    step();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  }

  int ExitCode() const { return all_within_ ? 0 : 1; }

 private:
  bool all_within_ = true;
};

}  // namespace quellix
