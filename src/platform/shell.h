#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quellix {

struct RecycleBinContent {
  uint64_t items = 0;
  uint64_t bytes = 0;
};

struct Shortcut {
  std::string target, working_folder;  // full paths; "" when the shortcut names none
};

// Reads shortcuts one after another, for one search.
class ShortcutReader {
 public:
  virtual ~ShortcutReader() = default;

  // Both texts are "" for what cannot be opened or is no shortcut. Nothing when only a running
  // Windows could tell where it leads. Never throws Error.
  virtual std::optional<Shortcut> Read(std::string_view path) = 0;
};

enum class ShellFeature { kRecycleBin, kAddressHistory, kClipboard };

// What the Windows shell does for one user.
class Shell {
 public:
  virtual ~Shell() = default;

  // Items and bytes in the user's recycle bins of all drives. Throws Error.
  virtual RecycleBinContent QueryRecycleBin() = 0;

  // Empties them without asking. An empty bin is no error. Throws Error when something is left.
  virtual void EmptyRecycleBin() = 0;

  // The folders of this user's bins, "X:\$Recycle.Bin\<SID>" as Windows Vista and later name them,
  // of each fixed drive, also where there is none yet. Empty when it is not known who the user is.
  virtual std::vector<std::string> RecycleBins() = 0;

  // Forgets the addresses visited with Internet Explorer. Throws Error (NotAvailable for a volume).
  virtual void ClearAddressHistory() = 0;

  // Empties the clipboard and, where it can be, its history. Throws Error (NotAvailable: a volume).
  virtual void EmptyClipboard() = 0;

  // Throws NotAvailable, as Folder::Recycle, ClearAddressHistory and EmptyClipboard would, when
  // this machine never can do it. Changes nothing.
  virtual void Require(ShellFeature feature) = 0;

  // Opens the shell's own window of a file's properties, or the file's folder with the file
  // selected. Throw Error (NotAvailable for a volume).
  virtual void ShowProperties(std::string_view path) = 0;
  virtual void OpenFolderOf(std::string_view path) = 0;

  // Starts a program as its user would, who may be asked for rights first. Returns when it has
  // started; false when the user has refused those rights. Throws Error (NotAvailable for a volume
  // and in a preview).
  virtual bool StartProgram(std::string_view path, std::string_view arguments) = 0;

  // Must not outlive the shell. Throws Error when shortcuts cannot be read here.
  virtual std::unique_ptr<ShortcutReader> OpenShortcuts() = 0;
};

}  // namespace quellix
