#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace quellix {

// The middle one of several measurements: what a disturbed machine adds to some does not count.
inline double Median(std::vector<double> seconds) {
  std::sort(seconds.begin(), seconds.end());
  return seconds[seconds.size() / 2];
}

// Measures us and the named program in turn on the same data and prints both times and their
// ratio.
class SideBySide {
 public:
  using Step = std::function<void()>;

  SideBySide() {
    std::printf("%-46s %10s %10s %7s %7s\n", "", "Quellix", "other", "ratio", "at most");
  }

  // `prepare` runs unmeasured before each of the two.
  void Compare(const std::string& name, double at_most, int rounds, const Step& prepare,
               const Step& ours, const Step& theirs) {
    std::vector<double> our_seconds, their_seconds;
    for (int round = 0; round < rounds; ++round) {
      prepare();
      our_seconds.push_back(Seconds(ours));
      prepare();
      their_seconds.push_back(Seconds(theirs));
    }
    Report(name, Median(our_seconds), Median(their_seconds), "s", at_most);
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
