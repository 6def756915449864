// Elements and their fields, as functions of the module.
#include "program/python/Elements.h"

#include "program/python/module/Binding.h"

namespace scripting {

void DefineElements(py::module_& module) {
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
  Define(module, "write", &WriteValue, document, elements, py::arg("field"), py::arg("value"));
}

}  // namespace scripting
