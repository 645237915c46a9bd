#include "registry_tools/startup_tasks.h"

#include "platform/path.h"
#include "platform/text.h"
#include "platform/words.h"
#include "registry_tools/xml_reader.h"
#include "search/folder_walk.h"

namespace quellix {
namespace {

constexpr uint64_t kLargestTask = 1 << 20;  // bytes

// "$(@%SystemRoot%\a.dll,-12)" is a number in a resource.
std::string PlainText(const std::string& text) { return text.starts_with("$(@") ? "" : text; }

class TaskReader {
 public:
  ScheduledTask Read(std::string_view bytes) {
    bool is_task = false;
    ReadXml(bytes, [&](const std::string& path, const std::string& text) {
      is_task = is_task || path == "Task";
      constexpr std::string_view kTriggers = "Task/Triggers/";
      if (path.starts_with(kTriggers)) return Trigger(path.substr(kTriggers.size()), text);
      if (path == "Task/Settings/Enabled") task_.is_on = text != "false";
      if (path == "Task/RegistrationInfo/Author") task_.author = PlainText(text);
      if (path == "Task/RegistrationInfo/Description") task_.description = PlainText(text);
      Action(path, text);
    });
    if (!is_task) throw Error(Error::Kind::kOther, Say("The file holds no task."));
    return std::move(task_);
  }

 private:
  void Trigger(const std::string& part, const std::string& text) {
    const bool is_start = part == "LogonTrigger" || part == "BootTrigger";
    if (part.ends_with("/Enabled")) is_trigger_on_ = text != "false";
    if (is_start && is_trigger_on_) task_.starts_by_itself = true;
    if (part.find('/') == part.npos) is_trigger_on_ = true;
  }

  void Action(const std::string& path, const std::string& text) {
    if (path == "Task/Actions/ComHandler/ClassId") task_.classes.push_back(text);
    if (path == "Task/Actions/Exec/Command") command_ = text;
    if (path == "Task/Actions/Exec/Arguments") arguments_ = text;
    if (path != "Task/Actions/Exec") return;
    // With arguments of its own the command is the program alone, blanks and all.
    const bool is_bare = command_.find(' ') != command_.npos && !command_.starts_with('"');
    std::string command = is_bare ? "\"" + command_ + "\"" : command_;
    if (!arguments_.empty()) command.append(" ").append(arguments_);
    task_.commands.push_back(std::move(command));
    command_.clear();
    arguments_.clear();
  }

  ScheduledTask task_;
  bool is_trigger_on_ = true;
  std::string command_, arguments_;
};

class TaskVisitor : public FolderVisitor {
 public:
  TaskVisitor(const TaskSink& sink, size_t start) : sink_(sink), start_(start) {}

  Detail Needs() const override { return Detail::kSize; }
  void File(Folder& folder, const std::string& path, const Entry& entry) override {
    const std::string file = path + std::string(entry.name);
    if (entry.info.is_link) return;
    try {
      const auto open = folder.Open(entry.name, OpenMode::kRead);
      if (open->Size() > kLargestTask) return sink_.failed(file);
      std::string bytes(open->Size(), '\0');
      bytes.resize(open->Read(0, bytes));
      sink_.task(file.substr(start_), file, entry.info, ParseTask(bytes));
    } catch (const Error&) {
      sink_.failed(file);
    }
  }
  bool Wants(const std::string&) override { return true; }
  void Failed(const std::string& path, const Error& error) override {
    if (error.kind() != Error::Kind::kMissing) sink_.failed(path);
  }

 private:
  const TaskSink& sink_;
  size_t start_;  // of a task's name in its path
};

}  // namespace

ScheduledTask ParseTask(std::string_view bytes) { return TaskReader().Read(bytes); }

void ReadTasks(const Machine& machine, const TaskSink& sink, const Pause& pause) {
  const std::string path = machine.system.SystemFolder() + "\\Tasks";
  try {
    const auto folder = machine.files.OpenFolder(path);
    if (!folder) return;
    TaskVisitor visitor(sink, path.size());
    WalkFolder(*folder, path, WalkOrder::kFilesFirst, nullptr, visitor, pause);
  } catch (const Error&) {
    sink.failed(path);
  }
}

}  // namespace quellix
