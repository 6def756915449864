// Pictures and files of states, as functions of the module. Pixels are handed over without a copy.
#include "program/python/Pictures.h"

#include "program/python/module/Binding.h"

namespace scripting {

namespace {

void DefineAnswers(py::module_& module) {
  py::class_<Picture>(module, "Pixels", py::buffer_protocol(),
                      "A picture in memory: a buffer of height x width x 4 bytes.")
      .def_buffer([](Picture& picture) {
        const auto width = static_cast<py::ssize_t>(picture.width);
        const auto height =
            picture.pixels.empty() ? py::ssize_t{0} : static_cast<py::ssize_t>(picture.height);
        return py::buffer_info(picture.pixels.data(), 1, "B", 3, {height, width, py::ssize_t{4}},
                               {width * 4, py::ssize_t{4}, py::ssize_t{1}});
      })
      .def_readonly("width", &Picture::width)
      .def_readonly("height", &Picture::height)
      .def_readonly("notes", &Picture::notes);
  py::class_<Exported>(module, "Exported", "What an export has written.")
      .def_readonly("scenes", &Exported::scenes)
      .def_readonly("written", &Exported::written)
      .def_readonly("missing", &Exported::missing);
}

void DefineScenes(py::module_& module) {
  const auto document = py::arg("document");
  module.def(
      "export",
      [](DocumentId number, std::string folder, Names states, std::string layout,
         std::optional<std::pair<int, int>> frames, bool isolated, bool allowMissing) {
        return Run([&] {
          return Export(number, {folder, states, layout, frames, isolated, allowMissing});
        });
      },
      document, py::arg("folder"), py::arg("states"), py::arg("layout"), py::arg("frames"),
      py::arg("isolated"), py::arg("allow_missing"));
  module.def(
      "publish",
      [](DocumentId number, std::string folder, Names states, std::string format, bool allInOne,
         bool omitHidden, bool overwrite) {
        return Run([&] {
          return Publish(number, {folder, states, format, allInOne, omitHidden, overwrite});
        });
      },
      document, py::arg("folder"), py::arg("states"), py::arg("format"), py::arg("all_in_one"),
      py::arg("omit_hidden"), py::arg("overwrite"));
}

}  // namespace

void DefinePictures(py::module_& module) {
  DefineAnswers(module);
  DefineScenes(module);
  const auto document = py::arg("document");
  Define(module, "render", &Render, document, py::arg("state"), py::arg("size"), py::arg("path"),
         py::arg("overwrite"), py::arg("threads"));
  module.def(
      "page",
      [](DocumentId number, std::string folder, Names states, std::string title, bool overwrite) {
        return Run([&] { return MakePage(number, {folder, states, title, overwrite}); });
      },
      document, py::arg("folder"), py::arg("states"), py::arg("title"), py::arg("overwrite"));
  module.def(
      "sheet",
      [](DocumentId number, std::string path, Names states,
         std::optional<std::pair<std::uint32_t, std::uint32_t>> size, bool overwrite,
         unsigned threads) {
        return Run([&] { return MakeSheet(number, {path, states, size, overwrite, threads}); });
      },
      document, py::arg("path"), py::arg("states"), py::arg("size"), py::arg("overwrite"),
      py::arg("threads"));
}

}  // namespace scripting
