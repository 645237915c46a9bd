#pragma once

#include <filesystem>
#include <ostream>
#include <string>

#include "app/report_table.h"

namespace quellix {

// In which form a command tells what it found or did.
struct ReportOptions {
  bool json = false, csv = false;  // on standard output, instead of text
  std::string file;                // as well: a path of the console's own, "" for none
  std::string volume, user;        // whose report it is, where there are several
  bool IsOfSeveral() const { return !volume.empty() || !user.empty(); }
};

// The output of one command.
class Report {
 public:
  // Throws Error when the file cannot be written, before anything was done; what is in one that is
  // there stays until Finish. The options must outlive it.
  explicit Report(const ReportOptions& options);
  // Without Finish nothing is left behind.
  ~Report();
  Report(const Report&) = delete;
  Report& operator=(const Report&) = delete;

  // Standard output for what a person reads; takes everything and shows nothing where a program
  // reads it.
  std::ostream& text();
  // Prints and writes the table; the exit code of the command, which may now be kFailed.
  int Finish(const ReportTable& table, int exit_code);

 private:
  bool is_for_programs() const { return options_.json || options_.csv; }
  int WriteFile(const ReportTable& table, int exit_code);
  void WriteJson(std::ostream& out, const ReportTable& table, int exit_code) const;
  void WriteCsv(std::ostream& out, const ReportTable& table) const;

  const ReportOptions& options_;
  std::filesystem::path path_;
  bool is_new_ = false;  // the file was made here and is still empty
};

}  // namespace quellix
