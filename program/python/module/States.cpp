// States, as functions of the module.
#include "program/python/States.h"

#include "program/python/module/Binding.h"

namespace scripting {

namespace {

void DefineFacts(py::module_& module) {
  py::class_<StateFacts>(module, "StateFacts", "A Stagemark as the list shows it.")
      .def_readonly("name", &StateFacts::name)
      .def_readonly("date", &StateFacts::date)
      .def_readonly("is_current", &StateFacts::isCurrent)
      .def_readonly("is_recorded", &StateFacts::isRecorded);
  py::class_<Loaded>(module, "Loaded", "What loading a state changed.")
      .def_readonly("objects", &Loaded::objects)
      .def_readonly("tags", &Loaded::tags)
      .def_readonly("layers", &Loaded::layers)
      .def_readonly("others", &Loaded::others)
      .def_readonly("render_settings", &Loaded::renderSettings)
      .def_readonly("camera", &Loaded::camera)
      .def_readonly("parts", &Loaded::parts);
  py::enum_<Bulk>(module, "Bulk", "What is done to several states at once.")
      .value("UPDATE", Bulk::Update)
      .value("OBJECTS", Bulk::Objects)
      .value("TAGS", Bulk::Tags)
      .value("LAYERS", Bulk::Layers)
      .value("CAMERA", Bulk::Camera);
}

}  // namespace

void DefineStates(py::module_& module) {
  DefineFacts(module);
  const auto document = py::arg("document");
  const auto name = py::arg("name");
  const auto typed = py::arg("typed");
  Define(module, "states", &ListStates, document);
  Define(module, "choose_states", &ChooseStates, document, typed);
  Define(module, "record", &Record, document, name, py::arg("overwrite"), py::arg("preview"));
  module.def(
      "load",
      [](DocumentId number, const std::string& state, Names parts, Names without) {
        return Run([&] { return Load(number, state, PartChoice{parts, without}); });
      },
      document, name, py::arg("parts"), py::arg("without"));
  Define(module, "rename", &Rename, document, name, py::arg("to"));
  Define(module, "delete", &Delete, document, typed);
  Define(module, "edit", &Edit, document, py::arg("what"), typed, py::arg("elements"));
  Define(module, "clean_materials", &CleanMaterials, document);
  Define(module, "options", &Options, document);
  Define(module, "set_option", &SetOption, document, py::arg("word"), py::arg("on"));
}

}  // namespace scripting
