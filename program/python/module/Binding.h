// Binding: how functions of the folder above become functions of Python: texts keep bytes that are
// no UTF-8, each call is one Call, Python's lock is released while it works, and a failure becomes
// an exception. One translation unit at a time includes it; the interpreter's thread.
#pragma once

#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <exception>
#include <type_traits>
#include <utility>

#include "program/python/Session.h"

namespace pybind11::detail {

// Names in scenes and of files are bytes, mostly UTF-8: Python's own way to keep the others.
template <>
class type_caster<std::string> {
 public:
  PYBIND11_TYPE_CASTER(std::string, const_name("str"));

  // NOLINTNEXTLINE(readability-identifier-naming): the library's name
  bool load(handle source, bool) {
    if (!PyUnicode_Check(source.ptr())) return false;
    const auto bytes = reinterpret_steal<object>(
        PyUnicode_AsEncodedString(source.ptr(), "utf-8", "surrogateescape"));
    if (!bytes) {
      PyErr_Clear();
      return false;
    }
    value.assign(PyBytes_AS_STRING(bytes.ptr()),
                 static_cast<std::size_t>(PyBytes_GET_SIZE(bytes.ptr())));
    return true;
  }
  // NOLINTNEXTLINE(readability-identifier-naming): the library's name
  static handle cast(const std::string& text, return_value_policy, handle) {
    return PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()),
                                "surrogateescape");
  }
};

}  // namespace pybind11::detail

namespace scripting {

namespace py = pybind11;

// An exception of a callback or of Ctrl-C, kept until the call that it came up in is over.
std::exception_ptr& PendingException();

// One call from Python.
template <class Work>
auto Run(const Work& work) {
  using Answer = std::invoke_result_t<Work>;
  PendingException() = nullptr;
  const auto whole = [&work]() -> Answer {
    const py::gil_scoped_release released;
    Call call;
    if constexpr (std::is_void_v<Answer>) {
      work();
      call.Finish();
    } else {
      Answer answer = work();
      call.Finish();
      return answer;
    }
  };
  const auto throwPending = [] {
    if (PendingException()) std::rethrow_exception(std::exchange(PendingException(), nullptr));
  };
  try {
    if constexpr (std::is_void_v<Answer>) {
      whole();
      throwPending();
    } else {
      Answer answer = whole();
      throwPending();
      return answer;
    }
  } catch (const Failure&) {
    throwPending();
    throw;
  }
}

// A function of this folder as one of the module; `extra`: py::arg and so on.
template <class Answer, class... Given, class... Extra>
void Define(py::module_& module, const char* name, Answer (*function)(Given...),
            const Extra&... extra) {
  module.def(
      name,
      [function](std::decay_t<Given>... given) {
        return Run([&] { return function(std::move(given)...); });
      },
      extra...);
}

void DefineElements(py::module_& module);
void DefineStates(py::module_& module);
void DefinePictures(py::module_& module);

}  // namespace scripting
