#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/machine.h"
#include "platform/pause.h"

namespace quellix {

// A task of the task scheduler.
struct ScheduledTask {
  std::vector<std::string> commands;  // one for each program that it starts
  std::vector<std::string> classes;   // "{...}" of the handlers that it calls instead
  std::string author, description;    // "" where they are a number of a resource
  bool starts_by_itself = false;      // at a logon, or when Windows starts
  bool is_on = true;
};

// Reads a task's file. Throws Error for what is none.
ScheduledTask ParseTask(std::string_view bytes);

// Hands out the tasks of a machine's files: `name` begins in the folder of tasks, as the task
// scheduler shows it ("\Vendor\Update"). What cannot be read is handed to `failed` by its path.
// A stop leaves out the rest.
struct TaskSink {
  std::function<void(const std::string& name, const std::string& path, const FileInfo& file,
                     const ScheduledTask& task)>
      task;
  std::function<void(const std::string& path)> failed;
};
void ReadTasks(const Machine& machine, const TaskSink& sink, const Pause& pause);

}  // namespace quellix
