#pragma once

#include <string>
#include <vector>

namespace quellix {

// What became of a program that was watched.
struct TracedRun {
  size_t changes = 0;  // system calls that change names or bytes, begun until its end
  bool killed = false;
  int exit_code = -1;
};

// Runs a program without its output; kills it when it begins its call number `kill_at` (0-based) of
// those that create, write, rename, flush or remove.
TracedRun RunTraced(const std::vector<std::string>& arguments, size_t kill_at);

// How often an attack is tried: QUELLIX_ROUNDS, or `few`.
size_t Rounds(size_t few);

}  // namespace quellix
