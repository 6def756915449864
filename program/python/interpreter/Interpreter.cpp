// Python is started and called here; what running a script means stands in the package, in
// desktop.py.
#include "program/python/interpreter/Interpreter.h"

#include <dlfcn.h>
#include <pybind11/functional.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <thread>

namespace py = pybind11;

namespace scripting {
namespace {

constexpr std::chrono::milliseconds kBetweenLooks{50};

// From where this library lies, so that an installed program finds its own package, not another.
std::string PackageFolder() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<const void*>(&PackageFolder), &info) == 0) return "";
  std::error_code error;
  const std::filesystem::path here = std::filesystem::path(info.dli_fname).parent_path();
  return std::filesystem::weakly_canonical(here / STAGEMARKS_PYTHON_FROM_LIBRARY, error).string();
}

// Has Python ask now and then, between two of its instructions, whether the script shall go on.
class Watch {
 public:
  explicit Watch(const std::function<bool()>& goesOn)
      : goesOn_(goesOn), thread_([this] { Run(); }) {}
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;
  // NOLINTNEXTLINE(bugprone-exception-escape): a thread that cannot be joined ends the program
  ~Watch() {
    {
      const std::lock_guard<std::mutex> lock(guard_);
      isOver_ = true;
    }
    over_.notify_all();
    // The thread may be waiting for the lock of Python.
    const py::gil_scoped_release released;
    thread_.join();
    current = nullptr;
  }

  bool Ask() { return isAsking_ || AskOnce(); }

 private:
  void Run() {
    std::unique_lock<std::mutex> lock(guard_);
    current = this;
    while (!over_.wait_for(lock, kBetweenLooks, [this] { return isOver_; })) {
      Py_AddPendingCall(&Watch::Look, nullptr);
      // A thread that runs Python looks for such calls when it has had to give up the lock.
      lock.unlock();
      PyGILState_Release(PyGILState_Ensure());
      lock.lock();
    }
  }

  // Handling events may run other Python, which must not come here again.
  bool AskOnce() {
    isAsking_ = true;
    const bool goesOn = goesOn_();
    isAsking_ = false;
    return goesOn;
  }

  // Some call may come when the script is over.
  static int Look(void*) {
    Watch* const watch = current;
    if (watch == nullptr || watch->Ask()) return 0;
    PyErr_SetNone(PyExc_KeyboardInterrupt);
    return -1;
  }

  static inline std::atomic<Watch*> current{nullptr};
  const std::function<bool()>& goesOn_;
  std::mutex guard_;
  std::condition_variable over_;
  bool isOver_ = false;
  bool isAsking_ = false;
  std::thread thread_;  // last: it uses the others
};

class EmbeddedPython : public Interpreter {
 public:
  explicit EmbeddedPython(const ScriptHooks& hooks) : hooks_(hooks) {
    py::module_::import("sys").attr("path").attr("insert")(0, PackageFolder());
    module_ = py::module_::import("stagemarks.desktop");
    module_.attr("begin")(py::cpp_function(hooks_.write), py::cpp_function(hooks_.goesOn));
  }

  ScriptEnd RunFile(const std::string& path, const std::string& step) override {
    return Run("run_file", path, step);
  }
  ScriptEnd RunLines(const std::string& lines, const std::string& step) override {
    return Run("run_lines", lines, step);
  }
  // A line that cannot be completed has no completions; nobody wants a traceback for pressing Tab.
  std::vector<std::string> Complete(const std::string& line) override {
    const py::gil_scoped_acquire acquired;
    try {
      return module_.attr("complete")(line).cast<std::vector<std::string>>();
    } catch (const py::error_already_set&) {
      return {};
    }
  }

 private:
  ScriptEnd Run(const char* how, const std::string& what, const std::string& step) {
    const py::gil_scoped_acquire acquired;
    ScriptEnd end;
    try {
      const Watch watch(hooks_.goesOn);
      const py::tuple told = module_.attr(how)(what, step);
      end.needsMore = told[0].cast<bool>();
      end.succeeded = told[1].cast<bool>();
      end.problem = told[2].cast<std::string>();
    } catch (const py::error_already_set& error) {
      // Stopped between the last line of the script and here.
      end.problem = error.what();
    }
    return end;
  }

  ScriptHooks hooks_;
  py::object module_;
};

// The interpreter that the package was built for; signals stay the program's own.
std::string StartPython() {
  PyConfig config;
  PyConfig_InitPythonConfig(&config);
  config.install_signal_handlers = 0;
  config.write_bytecode = 0;
  PyStatus status = PyConfig_SetBytesString(&config, &config.program_name, STAGEMARKS_PYTHON);
  if (!PyStatus_Exception(status)) status = Py_InitializeFromConfig(&config);
  PyConfig_Clear(&config);
  return PyStatus_Exception(status) ? (status.err_msg ? status.err_msg : "no reason was given")
                                    : "";
}

}  // namespace
}  // namespace scripting

extern "C" __attribute__((visibility("default"))) scripting::Interpreter* StagemarksMakeInterpreter(
    const scripting::ScriptHooks& hooks, std::string* problem) {
  if (Py_IsInitialized() == 0) *problem = scripting::StartPython();
  if (!problem->empty()) return nullptr;
  scripting::Interpreter* made = nullptr;
  try {
    made = new scripting::EmbeddedPython(hooks);
  } catch (const std::exception& error) {
    *problem = error.what();
  }
  // Held while a script runs only: else the threads of a script would never have their turn.
  PyEval_SaveThread();
  return made;
}
