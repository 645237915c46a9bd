// Replays a corpus through one fuzz target and then mutates it.
//
//   fuzz_NAME CORPUS [--seconds N] [--seed N] [--crashes FOLDER]
//
// CORPUS is a folder of inputs or one input. Without --seconds it is only replayed. The input that
// ends the program, or takes longer than a minute, is left in a file of FOLDER (the current one
// without it) and named; given as CORPUS, it fails again.
#include <sanitizer/common_interface_defs.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

// Its runtime has no callback of its own to ask for.
extern "C" const char* __ubsan_default_options() { return "abort_on_error=1:print_stacktrace=1"; }

namespace {

namespace fs = std::filesystem;
using Input = std::vector<uint8_t>;

constexpr size_t kLargestInput = 64 << 10;
constexpr unsigned kLongestSeconds = 60;

// What the signal handlers need; nothing may be allocated there.
Input current;
char crash_file[4096];

void SaveInput() {
  std::FILE* const file = std::fopen(crash_file, "wb");
  const bool is_saved =
      file != nullptr && std::fwrite(current.data(), 1, current.size(), file) == current.size();
  if (file != nullptr) std::fclose(file);
  std::fprintf(stderr, is_saved ? "fuzz: the input is in %s\n" : "fuzz: %s cannot be written\n",
               crash_file);
}

void OnSignal(int signal) {
  if (signal == SIGALRM) std::fprintf(stderr, "fuzz: one input took too long\n");
  SaveInput();
  _exit(1);
}

void CatchCrashes(const std::string& folder) {
  fs::create_directories(folder);
  std::snprintf(crash_file, sizeof crash_file, "%s/%s-%ld.crash", folder.c_str(),
                program_invocation_short_name, static_cast<long>(getpid()));
  __sanitizer_set_death_callback(SaveInput);
  std::signal(SIGABRT, OnSignal);
  std::signal(SIGALRM, OnSignal);
}

void Run(Input input) {
  current = std::move(input);
  alarm(kLongestSeconds);
  // An input of its exact size, so that reading behind its end is seen.
  const Input exact(current);
  LLVMFuzzerTestOneInput(exact.data(), exact.size());
  alarm(0);
}

Input ReadInput(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return Input(std::istreambuf_iterator<char>(file), {});
}

std::vector<Input> ReadCorpus(const fs::path& path) {
  if (!fs::is_directory(path)) return {ReadInput(path)};
  std::vector<fs::path> names;
  for (const auto& entry : fs::directory_iterator(path)) names.push_back(entry.path());
  std::sort(names.begin(), names.end());
  std::vector<Input> corpus;
  for (const fs::path& name : names) corpus.push_back(ReadInput(name));
  return corpus;
}

class Mutator {
 public:
  Mutator(const std::vector<Input>& corpus, uint64_t seed) : corpus_(corpus), random_(seed) {}

  // One of the corpus after a few changes.
  Input Next() {
    Input input = Any();
    for (size_t changes = 1 + Below(6); changes > 0; --changes) Change(input);
    if (input.size() > kLargestInput) input.resize(kLargestInput);
    return input;
  }

 private:
  size_t Below(size_t limit) {
    return limit == 0 ? 0 : std::uniform_int_distribution<size_t>(0, limit - 1)(random_);
  }
  const Input& Any() { return corpus_[Below(corpus_.size())]; }

  // A few bytes mostly, seldom many.
  size_t Length(size_t limit) { return Below(1 + Below(Below(4) == 0 ? limit : 16)) % (limit + 1); }

  // Part of one of the corpus or of the input itself, or one byte many times.
  Input Piece(const Input& input) {
    if (Below(3) == 0) return Input(1 + Length(256), static_cast<uint8_t>(Below(256)));
    const Input& from = Below(2) == 0 ? Any() : input;
    const size_t start = Below(from.size()), count = Length(from.size() - start);
    return Input(from.begin() + start, from.begin() + start + count);
  }

  void Change(Input& input) {
    const Input piece = Piece(input);
    const size_t at = Below(input.size() + 1), count = Length(input.size() - at);
    const auto place = input.begin() + at;
    const size_t kind = Below(input.empty() ? 2 : 8);
    if (kind < 2) {
      input.insert(place, piece.begin(), piece.end());
    } else if (kind == 2) {
      input.resize(std::max(input.size(), at + piece.size()));
      std::ranges::copy(piece, input.begin() + at);
    } else if (kind == 3) {
      input.erase(place, place + count);
    } else if (kind == 4) {
      WriteNumber(input);
    } else if (kind == 5) {
      input.resize(at);
    } else {
      input[Below(input.size())] ^= static_cast<uint8_t>(kind == 6 ? Below(256) : 1u << Below(8));
    }
  }

  // Sizes and offsets at their limits, little-endian; or one that is there, a little changed.
  void WriteNumber(Input& input) {
    constexpr uint64_t kNumbers[] = {
        0,        1,          2,          7,          8,          0x10,
        0x20,     0x40,       0x7F,       0x80,       0xFF,       0x100,
        0x1000,   0x7FFF,     0x8000,     0xFFFE,     0xFFFF,     0x10000,
        0x100000, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFE, 0xFFFFFFFF, 0x7FFFFFFFFFFFFFFF};
    const size_t width = std::min<size_t>(size_t{1} << Below(4), input.size());
    const size_t at = Below(input.size() - width + 1);
    uint64_t number = kNumbers[Below(std::size(kNumbers))];
    if (Below(2) == 0) {
      std::memcpy(&number, &input[at], width);
      number += Below(33) - 16;
    }
    std::memcpy(&input[at], &number, width);
  }

  const std::vector<Input>& corpus_;
  std::mt19937_64 random_;
};

struct Arguments {
  std::string corpus, crashes = ".";
  long seconds = 0;
  uint64_t seed = std::random_device()();
};

Arguments Parse(int count, char** texts) {
  Arguments arguments;
  for (int i = 1; i < count; ++i) {
    const std::string_view text = texts[i];
    const char* const next = i + 1 < count ? texts[i + 1] : "";
    if (text == "--seconds") {
      arguments.seconds = std::atol(next);
    } else if (text == "--seed") {
      arguments.seed = std::strtoull(next, nullptr, 10);
    } else if (text == "--crashes") {
      arguments.crashes = next;
    } else {
      arguments.corpus = text;
      continue;
    }
    ++i;
  }
  return arguments;
}

}  // namespace

int main(int count, char** texts) {
  const Arguments arguments = Parse(count, texts);
  if (!fs::exists(arguments.corpus)) {
    std::fprintf(stderr, "fuzz: there is no corpus '%s'\n", arguments.corpus.c_str());
    return 2;
  }
  CatchCrashes(arguments.crashes);
  std::vector<Input> corpus = ReadCorpus(arguments.corpus);
  std::printf("%s: %zu inputs", program_invocation_short_name, corpus.size());
  std::fflush(stdout);
  for (const Input& input : corpus) Run(input);
  if (corpus.empty()) corpus.emplace_back();

  const auto now = [] { return std::chrono::steady_clock::now(); };
  const auto end = now() + std::chrono::seconds(arguments.seconds);
  std::printf(", %ld seconds from seed %llu", arguments.seconds,
              static_cast<unsigned long long>(arguments.seed));
  std::fflush(stdout);
  Mutator mutator(corpus, arguments.seed);
  size_t runs = 0;
  for (; now() < end; ++runs) Run(mutator.Next());
  std::printf(": %zu more\n", runs);
  return 0;
}
