// Native benchmarks: the engine on a volume against the system's own tools.

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string_view>

#include "app/entry_list.h"
#include "app/preview_run.h"
#include "backup_bench.h"
#include "bench_machine.h"
#include "recipes_bench.h"
#include "registry_bench.h"
#include "run/removal.h"
#include "search/search_results.h"
#include "volumes_bench.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;

constexpr int kFolders = 20000;
constexpr int kNtfsFolders = 2000;  // where each call goes through another program
constexpr int kFilesAFolder = 10;

// `folders` folders, ten to a parent, with ten small files each.
void MakeTree(const fs::path& root, int folders) {
  for (int i = 0; i < folders; ++i) {
    const fs::path folder =
        root / ("group " + std::to_string(i / 100)) / ("folder " + std::to_string(i % 100));
    fs::create_directories(folder);
    for (int file = 0; file < kFilesAFolder; ++file) {
      std::ofstream(folder / ("temporary file " + std::to_string(file) + ".tmp")) << "data";
    }
  }
}

constexpr double kNoticed = 0.25;  // seconds

class Bench : BenchMachine {
 public:
  Bench(const fs::path& home, SideBySide& table) : BenchMachine(home, table) {}

  void Trees() {
    MakeTree(Tree(), kFolders);
    Scan("scan 200,000 files / find -type f", kFolders);
    PendingMemory();
    JunkSearches();
    Removal("scan and remove 200,000 files / rm -rf", 1.1, kFolders);
    Growth();
  }

  void Previews() {
    MakeTree(Tree(), kFolders);
    Preview();
  }

  void NtfsTrees() {
    MakeTree(Tree(), kNtfsFolders);
    Scan("scan 20,000 files on ntfs-3g / find -type f", kNtfsFolders);
    Removal("scan, remove 20,000 on ntfs-3g / rm -rf", 1.3, kNtfsFolders);
  }

  void Wipe() {
    const fs::path file = scratch_ / "large.bin";
    state_.RemovalMode = kWipe;
    state_.WipeStep = 65536;
    state_.ExtraSecurity = 1;
    table_.Compare(
        "wipe 256 MiB, random / shred -n 1 -u", 1.0, 3,
        [&file] { RunShell("head -c 268435456 /dev/zero > '" + file.string() + "' && sync"); },
        [this] {
          if (!RemoveFile(context_, machine_->Scratch() + "large.bin", Claim::kItem)) {
            throw std::runtime_error("not wiped");
          }
        },
        [&file] { RunShell("shred -n 1 -u '" + file.string() + "'"); });
  }

  // Rows as a search brings them: 20 to a folder.
  void Results() {
    SearchResults results(context_);
    ResultRow row;
    for (int i = 0; i < kFolders * kFilesAFolder; ++i) {
      if (i % 20 == 0)
        row.path = "C:\\Users\\Someone\\Documents\\Project " + std::to_string(i) + "\\";
      row.name = "report of week " + std::to_string(i * 7919 % 1'000'003) + ".bak";
      row.bytes = static_cast<uint64_t>(i) * 7919 % 100'000;
      row.last_write = int64_t{i} * 7919 % 1'000'003;
      results.Add(row);
    }
    results.EndSearch();
    const auto rows = static_cast<double>(results.RowCount());
    table_.Report("bytes a row of 200,000 results / its limit",
                  static_cast<double>(results.MemoryHeld()) / rows, 400, "B", 1.0);
    Time("sort 200,000 rows by name / a noticed pause", [&] { results.Sort(ResultColumn::kName); });
    Time("sort 200,000 rows by path / a noticed pause", [&] { results.Sort(ResultColumn::kPath); });
    Time("sort 200,000 rows by size / a noticed pause",
         [&] { results.Sort(ResultColumn::kBytes); });
    Time("filter 200,000 rows / a noticed pause", [&] { results.SetFilter("week 9"); });
    Time("draw 50 rows / a noticed pause", [&] {
      for (size_t i = 0; i < 50; ++i) {
        for (size_t column = 0; column < kResultColumns; ++column) {
          results.Text(i, static_cast<ResultColumn>(column));
        }
      }
    });
  }

 private:
  void RemoveTree() {
    ScanTree();
    RemovePendingFiles(context_, list_);
    RemovePendingFolders(context_, list_);
    if (state_.SomeFilesLocked) throw std::runtime_error("files stayed");
  }

  void Scan(const char* name, size_t folders) {
    table_.Compare(
        name, 1.0, 7, [] {}, [this] { ScanTree(); },
        [this] { RunShell("find '" + Tree().string() + "' -type f > /dev/null"); });
    if (list_.PendingFiles.size() != folders * kFilesAFolder) throw std::runtime_error("count");
  }

  void Preview() {
    ports_.files.WriteWholeFile(ports_.program_folder + "\\UDFO.txt", folder_);
    std::shared_ptr<const RunEntries> found, shown;
    table_.Compare(
        "preview of 200,000 files / find -printf", 1.1, 5,
        [&] {  // letting go of the list of the round before is no part of the next one
          if (found) shown = std::move(found);
        },
        [&] {
          PreviewRun preview(ports_, view_);
          preview.RunOneItem(*FindItem("CleanUserFolders"));
          found = preview.entries();
        },
        [this] { RunShell("find '" + Tree().string() + "' -printf '%s %T@ %p\\n' > /dev/null"); });
    if (shown->all.size() != size_t{kFolders} * kFilesAFolder) throw std::runtime_error("count");
    double bytes = static_cast<double>(shown->all.size() * sizeof(RunEntry));
    for (const RunEntry& entry : shown->all) {
      for (const std::string* text : {&entry.place, &entry.part, &entry.note}) {
        if (text->capacity() > std::string().capacity())
          bytes += static_cast<double>(text->capacity());
      }
      bytes -= static_cast<double>(entry.place.size());
    }
    table_.Report("bytes an entry beyond its path / its limit",
                  bytes / static_cast<double>(shown->all.size()), 200, "B", 1.0);
    EntryList list(ports_.system, shown, true);
    Time("sort 200,000 entries by path / a noticed pause", [&] { list.Sort(RunColumn::kPlace); });
    Time("sort 200,000 entries by note / a noticed pause", [&] { list.Sort(RunColumn::kNote); });
    Time("filter 200,000 entries / a noticed pause", [&] { list.SetFilter("file 9"); });
  }

  // The processor's time: nothing here waits for anything else.
  void Time(const char* name, const SideBySide::Step& step) {
    const std::clock_t start = std::clock();
    step();
    const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    table_.Report(name, seconds, kNoticed, "s", 1.0);
  }

  void PendingMemory() {
    double characters = 0;
    const auto files = static_cast<double>(list_.PendingFiles.size());
    for (size_t i = 0; i < list_.PendingFiles.size(); ++i) {
      characters += static_cast<double>(list_.PendingFiles[i].size());
    }
    table_.Report("bytes a pending file / its limit",
                  static_cast<double>(list_.PendingFiles.MemoryHeld()) / files,
                  1.5 * characters / files + 64, "B", 1.0);
  }

  // The whole drive is searched, as find searches all of it.
  void JunkSearches() {
    std::string list, terms;
    for (int i = 0; i < 40; ++i) {
      const std::string pattern = "*.junk" + std::to_string(i);
      list += "1\x01" + pattern + "\x01\r\n";
      terms += (i == 0 ? "-iname '" : " -o -iname '") + pattern + "'";
    }
    ports_.files.WriteWholeFile(ports_.program_folder + "\\UNFI.txt", list);
    const std::string find = "find '" + scratch_.parent_path().string() + "' -type f ";
    Search("empty files among 200,000 / find -empty", JunkKind::kEmptyFiles, find + "-empty");
    Search("40 patterns on 200,000 files / find -iname", JunkKind::kUnnecessaryFiles,
           find + "\\( " + terms + " \\)");
  }

  void Search(const char* name, JunkKind kind, const std::string& theirs) {
    class Ignore : public ResultSink {
     public:
      void Add(ResultRow) override {}
    } sink;
    table_.Compare(
        name, 1.0, 7, [] {}, [this, kind, &sink] { SearchJunk(context_, kind, sink); },
        [&theirs] { RunShell(theirs + " > /dev/null"); });
  }

  void Removal(const char* name, double at_most, int folders) {
    table_.Compare(
        name, at_most, 5,
        [this, folders] {
          fs::remove_all(Tree());
          MakeTree(Tree(), folders);
        },
        [this] { RemoveTree(); }, [this] { RunShell("rm -rf '" + Tree().string() + "'"); });
  }

  double SecondsAFile(int folders) {
    fs::remove_all(Tree());
    MakeTree(Tree(), folders);
    return SideBySide::Seconds([this] { RemoveTree(); }) / folders / kFilesAFolder * 1e6;
  }

  void Growth() {
    const double small = std::min(SecondsAFile(kFolders / 10), SecondsAFile(kFolders / 10));
    const double large = std::min(SecondsAFile(kFolders), SecondsAFile(kFolders));
    table_.Report("us a file of 200,000 / of 20,000 (linear: 1)", large, small, "u", 1.5);
  }
};

}  // namespace

// Runs with a test machine in an empty folder, which is removed afterwards.
void InFolder(const char* name, const std::function<void(const std::filesystem::path&)>& run) {
  const fs::path home = fs::absolute(name);
  fs::remove_all(home);
  fs::create_directories(home);
  setenv("TMPDIR", home.c_str(), 1);
  run(home);
  fs::remove_all(home);
}

}  // namespace quellix

// Both folders are the benchmark's own and are emptied: one for trees of many files, best in
// memory, where the programs are measured rather than the disk; one on a disk, for what is written
// to it. NTFS is a folder on a volume that ntfs-3g mounted, or "" where there is none. With ONE of
// "trees", "previews", "ntfs", "results", "wipe", "backups", "restores", "registry", "volumes" and
// "recipes" that part alone is measured.
int main(int argc, char** argv) {
  if (argc != 4 && argc != 5) {
    std::fprintf(stderr, "usage: quellix_bench TREES DISK NTFS [ONE]\n");
    return 2;
  }
  try {
    quellix::SideBySide table;
    const std::string_view only = argc == 5 ? argv[4] : "";
    const auto run = [&](std::string_view part, const char* folder, const auto& measure) {
      if (only.empty() || only == part) quellix::InFolder(folder, measure);
    };
    run("trees", argv[1], [&](const auto& home) { quellix::Bench(home, table).Trees(); });
    run("previews", argv[1], [&](const auto& home) { quellix::Bench(home, table).Previews(); });
    if (*argv[3] != '\0') {
      run("ntfs", argv[3], [&](const auto& home) { quellix::Bench(home, table).NtfsTrees(); });
    }
    run("results", argv[1], [&](const auto& home) { quellix::Bench(home, table).Results(); });
    run("wipe", argv[2], [&](const auto& home) { quellix::Bench(home, table).Wipe(); });
    run("backups", argv[2], [&](const auto& home) { quellix::MeasureBackups(home, table); });
    run("restores", argv[1], [&](const auto& home) { quellix::MeasureRestores(home, table); });
    run("registry", argv[1], [&](const auto& home) { quellix::MeasureRegistry(home, table); });
    run("volumes", argv[1], [&](const auto& home) { quellix::MeasureVolumes(home, table); });
    run("recipes", argv[1], [&](const auto& home) { quellix::MeasureRecipes(home, table); });
    return table.ExitCode();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "quellix_bench: %s\n", error.what());
    return 1;
  }
}
