// States, as functions of the module.
#include "program/python/States.h"

#include "program/python/module/Binding.h"

namespace scripting {

namespace {

// Plain facts, copied out of the document: they stay as they are when it changes or is closed.
void DefineRecorded(py::module_& module) {
  py::class_<StateFacts>(module, "StateFacts", "A Stagemark as the list shows it.")
      .def_readonly("name", &StateFacts::name)
      .def_readonly("date", &StateFacts::date)
      .def_readonly("is_current", &StateFacts::isCurrent);
  py::class_<DeletedFacts>(module, "DeletedFacts", "A Stagemark in the trash.")
      .def_readonly("number", &DeletedFacts::number)
      .def_readonly("name", &DeletedFacts::name)
      .def_readonly("recorded", &DeletedFacts::recorded)
      .def_readonly("deleted", &DeletedFacts::deleted)
      .def_readonly("is_overwritten", &DeletedFacts::isOverwritten);
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

void DefineTold(py::module_& module) {
  py::class_<FieldDifference>(module, "FieldDifference", "A value that is not the same.")
      .def_readonly("label", &FieldDifference::label)
      .def_readonly("left", &FieldDifference::left)
      .def_readonly("right", &FieldDifference::right);
  py::class_<ElementDifference>(module, "ElementDifference", "An element that is not the same.")
      .def_readonly("part", &ElementDifference::part)
      .def_readonly("kind", &ElementDifference::kind)
      .def_readonly("path", &ElementDifference::path)
      .def_readonly("type", &ElementDifference::type)
      .def_readonly("element", &ElementDifference::element)
      .def_readonly("fields", &ElementDifference::fields);
  py::class_<FindingFacts>(module, "Finding", "Something wrong or odd about the states.")
      .def_readonly("code", &FindingFacts::code)
      .def_readonly("severity", &FindingFacts::severity)
      .def_readonly("state", &FindingFacts::state)
      .def_readonly("place", &FindingFacts::place)
      .def_readonly("text", &FindingFacts::text)
      .def_readonly("remedy", &FindingFacts::remedy)
      .def_readonly("count", &FindingFacts::count);
  py::class_<Taken>(module, "Taken", "What came of taking states in.")
      .def_readonly("states", &Taken::states)
      .def_readonly("missing", &Taken::missing)
      .def_readonly("ambiguous", &Taken::ambiguous);
}

}  // namespace

void DefineStates(py::module_& module) {
  DefineRecorded(module);
  DefineTold(module);
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
  Define(module, "deleted", &ListDeleted, document);
  Define(module, "restore", &Restore, document, typed, py::arg("number"), py::arg("rename"));
  Define(module, "forget_deleted", &ForgetDeleted, document);
  Define(module, "edit", &Edit, document, py::arg("what"), typed, py::arg("elements"));
  Define(module, "clean_materials", &CleanMaterials, document);
  module.def(
      "diff",
      [](DocumentId one, const std::string& left, DocumentId other, const std::string& right,
         Names parts) {
        return Run([&] { return Diff(one, left, other, right, PartChoice{parts, {}}); });
      },
      document, py::arg("left"), py::arg("other"), py::arg("right"), py::arg("parts"));
  Define(module, "check", &CheckStates, document);
  Define(module, "states_as_text", &StatesAsText, document, typed);
  Define(module, "take_states_in", &TakeStatesIn, document, py::arg("text"), py::arg("only"),
         py::arg("renamed"), py::arg("same_name"), py::arg("even_empty"));
  Define(module, "options", &Options, document);
  Define(module, "set_option", &SetOption, document, py::arg("word"), py::arg("on"));
}

}  // namespace scripting
