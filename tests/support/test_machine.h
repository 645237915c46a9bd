#pragma once

#include "platform/error.h"
#include "platform/machine.h"
#include "platform/path.h"
#include "support/holds.h"

namespace quellix {

// What every Windows and every volume does, but a system that stands in for Windows may not.
enum class Ability {
  kRemoveLinks,
  kKeepReadOnlyFolders,
  kRenameCaseAlone,
  kEmptyReadOnlyFiles,
  kDenyNewSubKeys,
  kManyRounds,         // thousands of files written and read again in seconds
  kChangeMovedFolders  // remove and rename in a folder that was moved while it was held
};

// A real machine to test on, fresh for each test: natively a temporary volume with hives of its
// own, under Wine the sandbox's Windows with a cleared scratch folder. Nothing here pretends. The
// seeding functions fail the running test (throw) when they cannot do their part.
class TestMachine {
 public:
  // Under Wine ends the process when it does not run inside the sandbox.
  static std::unique_ptr<TestMachine> Create();
  virtual ~TestMachine() = default;

  // What a test may ask of this machine; false only for what the system below it cannot do.
  virtual bool Can(Ability) { return true; }

  // The same ports for the whole life of the object. The program folder exists and is empty.
  virtual Machine machine() = 0;
  // An empty folder of the test's own on the drive of Windows, ending in "\".
  virtual std::string Scratch() = 0;

  virtual void MakeFolder(std::string_view path) = 0;  // with its parents; may exist
  virtual void MakeFile(std::string_view path, std::string_view bytes) = 0;  // with its folders
  // A junction on Windows, a symlink on a volume; the target need not exist.
  virtual void MakeFolderLink(std::string_view link, std::string_view target) = 0;
  // A symbolic link to a file; false where the machine cannot make one.
  virtual bool MakeFileLink(std::string_view link, std::string_view target) = 0;
  // One more name for a file.
  virtual void MakeHardLink(std::string_view link, std::string_view target) = 0;
  // A path with its short (8.3) names, where this machine gives such; else the path itself.
  virtual std::string ShortName(std::string_view path) { return std::string(path); }
  virtual void SetLastWrite(std::string_view path, int64_t filetime) = 0;
  // While the result lives, the file can be seen but neither removed, renamed nor written.
  virtual std::shared_ptr<void> LockFile(std::string_view path) = 0;

  // Creates keys on the way.
  virtual void SetRegistryValue(RegistryRoot root, std::string_view key, std::string_view name,
                                const RegistryValue& value) = 0;
  virtual void RemoveRegistryTree(RegistryRoot root, std::string_view key) = 0;
  // While the result lives, the key (and on a volume its whole hive) can be read but not written.
  virtual std::shared_ptr<void> DenyRegistryWrites(RegistryRoot root, std::string_view key) = 0;

  void SetText(RegistryRoot root, std::string_view key, std::string_view name,
               std::string_view text);
  bool Exists(std::string_view path) { return machine().files.Look(path).has_value(); }
  // Everything below a folder, links not followed, as sorted relative paths; folders end in "\".
  Names Tree(std::string_view folder);
  // Sorted value names of a key; empty when the key is missing.
  Names ValueNames(RegistryRoot root, std::string_view key);
  bool KeyExists(RegistryRoot root, std::string_view key);
};

}  // namespace quellix
