// Elements and their fields, as functions of the module.
#include "program/python/Additions.h"

#include "program/python/module/Binding.h"

namespace scripting {

namespace {

using Numbers = std::vector<double>;

// Optional vectors come as lists, empty for none, so that one type fits all calls.
void DefineAdditions(py::module_& module) {
  const auto document = py::arg("document");
  const auto name = py::arg("name");
  module.def(
      "add_object",
      [](DocumentId number, const std::string& type, const std::string& called, ElementId parent,
         Numbers at, Numbers lookAt, Numbers rotation, Numbers scale) {
        return Run([&] {
          return AddObjectOf(number, type, called, parent, {at, lookAt, rotation, scale});
        });
      },
      document, py::arg("type"), name, py::arg("parent"), py::arg("at"), py::arg("look_at"),
      py::arg("rotation"), py::arg("scale"));
  module.def(
      "place",
      [](DocumentId number, const std::vector<ElementId>& objects, Numbers at, Numbers lookAt,
         Numbers rotation, Numbers scale) {
        return Run([&] { return Place(number, objects, {at, lookAt, rotation, scale}); });
      },
      document, py::arg("objects"), py::arg("at"), py::arg("look_at"), py::arg("rotation"),
      py::arg("scale"));
  Define(module, "add_material", &AddMaterialOf, document, name, py::arg("color"));
  Define(module, "add_layer", &AddLayerOf, document, name);
  Define(module, "add_settings", &AddSettingsOf, document, name);
  Define(module, "remove", &Remove, document, py::arg("elements"));
  Define(module, "give_material", &GiveMaterialTo, document, py::arg("objects"),
         py::arg("material"));
}

void DefineKinds(py::module_& module) {
  py::enum_<Kind>(module, "Kind", "What a list of a document holds.")
      .value("OBJECTS", Kind::Objects)
      .value("MATERIALS", Kind::Materials)
      .value("LAYERS", Kind::Layers)
      .value("SETTINGS", Kind::Settings)
      .value("TAGS", Kind::Tags);
  py::class_<FieldFacts>(module, "FieldFacts", "What is known of a field before it is read.")
      .def_readonly("type", &FieldFacts::type)
      .def_readonly("section", &FieldFacts::section)
      .def_readonly("label", &FieldFacts::label)
      .def_readonly("kind", &FieldFacts::kind)
      .def_readonly("min", &FieldFacts::min)
      .def_readonly("max", &FieldFacts::max)
      .def_readonly("unit", &FieldFacts::unit)
      .def_readonly("tip", &FieldFacts::tip)
      .def_readonly("choices", &FieldFacts::choices);
  module.def("all_fields", [] { return AllFields(); });
}

}  // namespace

void DefineElements(py::module_& module) {
  DefineKinds(module);
  const auto document = py::arg("document");
  const auto element = py::arg("element");
  const auto elements = py::arg("elements");
  const auto kind = py::arg("kind");
  Define(module, "elements", &List, document, kind);
  Define(module, "find", &FindIn, document, kind, py::arg("typed"));
  Define(module, "is_there", &IsThere, document, element);
  Define(module, "path_of", &PathOfElement, document, element);
  Define(module, "type_name_of", &TypeNameOf, document, element);
  Define(module, "children", &Children, document, element);
  Define(module, "parts", &Parts, document, element);
  Define(module, "above", &Above, document, element);
  Define(module, "selected", &Selected, document, kind);
  Define(module, "select", &Select, document, kind, elements);
  Define(module, "fields_of", &FieldsOfType, document, element);
  Define(module, "read", &ReadValue, document, element, py::arg("field"));
  DefineAdditions(module);
  Define(module, "write", &WriteValue, document, elements, py::arg("field"), py::arg("value"));
}

}  // namespace scripting
