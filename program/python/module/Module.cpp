// The compiled part of the Python package: its exceptions, documents and steps, and how a script
// hears of progress. What scripts see is written in Python beside it, on top of these functions.
#include <chrono>

#include "program/python/Documents.h"
#include "program/python/module/Binding.h"

namespace scripting {

namespace {

// The script's callable for progress; null for none.
PyObject* listener = nullptr;
constexpr std::chrono::milliseconds kBetweenLooks{20};

struct ExceptionRow {
  Fault fault;
  const char* name;
  PyObject** also;  // another class that it is caught as
  const char* doc;
};
const ExceptionRow kExceptions[] = {
    {Fault::Failed, "Error", nullptr,
     "Something did not work; the message says what and what to do. The base of all exceptions of "
     "this package."},
    {Fault::NotFound, "NotFoundError", &PyExc_LookupError,
     "There is no such thing, or several have that name."},
    {Fault::Refused, "RefusedError", nullptr,
     "A question came up that no argument answered; the message says which argument answers yes. "
     "Nothing was changed."},
    {Fault::Gone, "ClosedError", nullptr,
     "The document was closed, or the element is not in it anymore."},
    {Fault::Misused, "MisuseError", &PyExc_ValueError, "A value that cannot be."},
    {Fault::Stopped, "StoppedError", nullptr, "A progress callback answered False."},
    {Fault::OtherThread, "ThreadError", &PyExc_RuntimeError,
     "A call from another thread, from a forked process, or within another call."},
};
// Never given back: they live as long as Python.
PyObject* classes[std::size(kExceptions)] = {};

void DefineExceptions(py::module_& module) {
  for (std::size_t i = 0; i < std::size(kExceptions); ++i) {
    const ExceptionRow& row = kExceptions[i];
    py::object base = py::reinterpret_borrow<py::object>(i == 0 ? PyExc_Exception : classes[0]);
    if (row.also) base = py::make_tuple(base, py::handle(*row.also));
    classes[i] = PyErr_NewExceptionWithDoc((std::string("stagemarks.") + row.name).c_str(), row.doc,
                                           base.ptr(), nullptr);
    if (!classes[i]) throw py::error_already_set();
    module.attr(row.name) = py::handle(classes[i]);
  }
  py::register_exception_translator([](std::exception_ptr thrown) {
    try {
      if (thrown) std::rethrow_exception(thrown);
    } catch (const Failure& failure) {
      for (std::size_t i = 0; i < std::size(kExceptions); ++i) {
        if (kExceptions[i].fault == failure.fault)
          PyErr_SetObject(classes[i], py::cast(std::string(failure.what())).ptr());
      }
    }
  });
}

// Called with Python's lock; false stops the work. An exception cannot pass through the engine. It
// is kept, the work is stopped, and the call throws it at its end; the first one counts.
bool Hear(double share, const std::string& what) {
  try {
    if (PyErr_CheckSignals() != 0) throw py::error_already_set();
    if (!listener) return true;
    const py::object answer = py::handle(listener)(share, what);
    return answer.is_none() || py::cast<bool>(answer);
  } catch (...) {
    if (!PendingException()) PendingException() = std::current_exception();
    return false;
  }
}

// Work may tell very often, and on several threads; Python is asked now and then. The first and the
// last look always come through.
bool Listen(double share, const std::string& what) {
  using Clock = std::chrono::steady_clock;
  static std::atomic<Clock::rep> next{0};
  const Clock::rep now = Clock::now().time_since_epoch().count();
  if (share > 0 && share < 1 && now < next) return true;
  next = now + std::chrono::duration_cast<Clock::duration>(kBetweenLooks).count();
  const py::gil_scoped_acquire acquired;
  return Hear(share, what);
}

// The former one is let go last: that may run Python.
void SetListener(const py::object& given) {
  PyObject* const former = listener;
  listener = given.is_none() ? nullptr : given.inc_ref().ptr();
  Py_XDECREF(former);
}

py::object GetListener() {
  return listener ? py::reinterpret_borrow<py::object>(listener) : py::none();
}

void DefineDocumentAnswers(py::module_& module) {
  py::class_<Opened>(module, "Opened", "What came of opening a scene.")
      .def_readonly("document", &Opened::document, "Its number.")
      .def_readonly("notes", &Opened::notes, "What an import lost or mended.")
      .def_readonly("states", &Opened::states, "Stagemarks that came in with the file.");
  py::class_<engine::ChangedElement>(module, "ChangedElement", "An element that an update changed.")
      .def_readonly("path", &engine::ChangedElement::path)
      .def_readonly("what", &engine::ChangedElement::what);
  py::class_<engine::ElementChanges>(module, "ElementChanges",
                                     "What an update found, changed, added and missed.")
      .def_readonly("found", &engine::ElementChanges::found)
      .def_readonly("changed", &engine::ElementChanges::changed)
      .def_readonly("added", &engine::ElementChanges::added)
      .def_readonly("added_count", &engine::ElementChanges::addedCount)
      .def_readonly("gone", &engine::ElementChanges::gone)
      .def_readonly("gone_count", &engine::ElementChanges::goneCount);
  py::class_<engine::SceneUpdate>(module, "SceneUpdate", "What came of an update.")
      .def_readonly("objects", &engine::SceneUpdate::objects)
      .def_readonly("materials", &engine::SceneUpdate::materials)
      .def_readonly("removed", &engine::SceneUpdate::removed)
      .def_readonly("notes", &engine::SceneUpdate::notes);
}

void DefineDocuments(py::module_& module) {
  DefineDocumentAnswers(module);
  Define(module, "open", &Open, py::arg("path"), py::arg("allow_outside"));
  Define(module, "update_from", &UpdateFrom, py::arg("document"), py::arg("path"),
         py::arg("remove_gone"), py::arg("allow_outside"));
  Define(module, "new", &New);
  Define(module, "close", &Close, py::arg("document"), py::arg("discard"));
  Define(module, "documents", &AllDocuments);
  Define(module, "active", &ActiveDocument);
  Define(module, "activate", &Activate, py::arg("document"));
  Define(module, "path_of_document", &PathOfDocument, py::arg("document"));
  Define(module, "name_of_document", &NameOfDocument, py::arg("document"));
  Define(module, "is_changed", &IsChanged, py::arg("document"));
  Define(module, "save", &Save, py::arg("document"), py::arg("path"), py::arg("overwrite"),
         py::arg("seconds"));
  Define(module, "undo", &Undo, py::arg("document"));
  Define(module, "redo", &Redo, py::arg("document"));
  Define(module, "done_steps", &DoneSteps, py::arg("document"));
  Define(module, "undone_steps", &UndoneSteps, py::arg("document"));
  Define(module, "begin_step", &BeginStep, py::arg("document"), py::arg("name"));
  Define(module, "end_step", &EndStep, py::arg("step"), py::arg("keep"));
  Define(module, "importer_path", &ImporterPath);
}

}  // namespace

std::exception_ptr& PendingException() {
  static auto* const pending = new std::exception_ptr;
  return *pending;
}

}  // namespace scripting

PYBIND11_MODULE(_stagemarks, module) {
  using namespace scripting;
  module.doc() = "The compiled part of the package stagemarks; see there.";
  Session::Person().listener = Listen;
  DefineExceptions(module);
  DefineDocuments(module);
  DefineElements(module);
  DefineStates(module);
  DefinePictures(module);
  module.def("set_listener", &SetListener, py::arg("listener"),
             "Has a callable hear of progress (share from 0 to 1, text); False stops the work.");
  module.def("get_listener", &GetListener);
  module.def("end", &Session::End, "Closes everything; nothing works afterwards.");
}
