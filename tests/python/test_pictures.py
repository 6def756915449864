"""Pictures and files of states: rendered, exported, published."""

import json
import os
import unittest

import support
import stagemarks

# The viewer of web pages, as the build beside the package has it.
VIEWER = os.path.join(
    os.path.dirname(stagemarks.__file__), "../../../../share/stagemarks/page/page.html"
)

try:
    import numpy
except ImportError:
    numpy = None


class Pictures(support.WithScene):
    def setUp(self):
        super().setUp()
        self.doc.states.record("Day")
        self.doc.objects.set(self.doc.objects, "Render mode", "off")
        self.doc.states.record("Night")
        self.doc.states.load("Day")
        self.doc.save()

    def test_a_picture_is_a_buffer(self):
        picture = self.doc.render(width=40, height=30)
        view = memoryview(picture)
        self.assertEqual((view.shape, view.format), ((30, 40, 4), "B"))
        self.assertEqual(set(view.tobytes()[3::4]), {255})
        if numpy:
            pixels = numpy.asarray(picture)
            self.assertEqual((pixels.shape, pixels.dtype), ((30, 40, 4), numpy.uint8))
        del picture
        self.assertEqual(len(view.tobytes()), 4800)

    def test_states_look_as_if_they_were_loaded_and_the_scene_stays(self):
        steps = self.doc.undo_names
        day = memoryview(self.doc.states.render("Day", width=40)).tobytes()
        night = memoryview(self.doc.states.render("Night", width=40)).tobytes()
        self.assertNotEqual(day, night)
        self.assertEqual(day, memoryview(self.doc.render(width=40)).tobytes())
        self.assertEqual(self.doc.objects[0].render_mode, "undefined")
        self.assertEqual(self.doc.states.current, self.doc.states["Day"])
        self.assertEqual((self.doc.is_changed, self.doc.undo_names), (False, steps))

    def test_pictures_are_written_and_others_are_left_alone(self):
        for ending in ("png", "tif", "exr"):
            self.doc.states.render("Day", self.at(f"day.{ending}"), width=16)
            self.assertGreater(os.path.getsize(self.at(f"day.{ending}")), 100)
        self.doc.states.render("Day", self.at("day.png"), width=16)
        with open(self.at("mine.png"), "w") as file:
            file.write("mine")
        for path, error in (
            (self.at("mine.png"), stagemarks.RefusedError),
            (self.at("day.jpg"), stagemarks.MisuseError),
            (self.at("nowhere/day.png"), stagemarks.Error),
        ):
            with self.subTest(path), self.assertRaises(error):
                self.doc.states.render("Day", path, width=16)
        self.doc.render(self.at("mine.png"), width=16, overwrite=True)
        for size in ({"width": -1}, {"width": 100000}, {"width": 16384, "height": 16384}):
            with self.subTest(size), self.assertRaises((stagemarks.Error, ValueError)):
                self.doc.render(**size)

    def test_rendering_can_be_stopped(self):
        with self.assertRaises(stagemarks.StoppedError):
            self.doc.states.render("Night", width=200, progress=lambda *_: False)
        self.assertEqual(self.doc.objects[0].render_mode, "undefined")

    def test_states_are_exported(self):
        exported = self.doc.states.export(self.at("out"), layout="file", allow_missing=True)
        self.assertEqual(
            sorted(os.path.basename(one) for one in exported.scenes),
            ["spider Day.c4d", "spider Night.c4d"],
        )
        with stagemarks.open(exported.scenes[1]) as night:
            self.assertEqual(night.objects[0].render_mode, "off")
        self.assertEqual(self.doc.objects[0].render_mode, "undefined")
        for choice, error in (
            ({"layout": "pile"}, ValueError),
            ({"names": "Evening"}, LookupError),
        ):
            with self.assertRaises(error):
                self.doc.states.export(self.at("out"), **choice)

    def test_states_are_published(self):
        paths = self.doc.states.publish(self.at("web"), format="gltf")
        names = [os.path.basename(one) for one in paths]
        self.assertEqual(names, ["spider Day.gltf", "spider Night.gltf"])
        meshes = []
        for path in paths:
            with open(path) as file:
                meshes.append(len(json.load(file).get("meshes", [])))
        self.assertGreater(meshes[0], meshes[1])
        self.assertEqual(len(self.doc.states.publish(self.at("one"), all_in_one=True)), 1)
        self.doc.states.publish(self.at("web"), format="gltf")
        with self.assertRaisesRegex(ValueError, "glb"):
            self.doc.states.publish(self.at("web"), format="fbx")


    def picture(self, path):
        """Width and height of a PNG file."""
        with open(path, "rb") as file:
            head = file.read(24)
        return tuple(int.from_bytes(head[at : at + 4], "big") for at in (16, 20))

    def test_states_are_shown_together_on_a_sheet(self):
        path = self.doc.sheet(self.at("sheet.png"), size=(40, 30))
        self.assertEqual(path, self.at("sheet.png"))
        both = self.picture(path)
        self.doc.sheet(path, "Day", size=(40, 30))
        self.assertLess(self.picture(path)[0], both[0])
        self.assertEqual((self.doc.is_changed, self.doc.objects[0].render_mode),
                         (False, "undefined"))
        with open(self.at("mine.png"), "w") as file:
            file.write("mine")
        for path, options, error in (
            (self.at("mine.png"), {}, stagemarks.RefusedError),
            (self.at("sheet.exr"), {}, stagemarks.MisuseError),
            (self.at("sheet.png"), {"size": (0, 30)}, stagemarks.MisuseError),
            (self.at("sheet.png"), {"size": (10**6, 30)}, stagemarks.MisuseError),
            (self.at("sheet.png"), {"states": "Noon"}, stagemarks.NotFoundError),
            (self.at("sheet.png"), {"progress": lambda *_: False}, stagemarks.StoppedError),
        ):
            with self.subTest(options), self.assertRaises(error):
                self.doc.sheet(path, **options)
        self.doc.sheet(self.at("mine.png"), size=(40, 30), overwrite=True)
        with stagemarks.new() as empty:
            self.assertTrue(os.path.exists(empty.sheet(self.at("empty.tif"), size=(40, 30))))

    @unittest.skipUnless(
        os.path.exists(VIEWER) or os.environ.get("CI") == "true",
        "built without the viewer: node and npm are missing, or the network is",
    )
    def test_states_are_shown_on_a_web_page(self):
        path = self.doc.page(self.at("web"), "N*", title="A <b> & c")
        self.assertEqual(path, self.at("web/index.html"))
        with open(path, encoding="utf-8") as file:
            text = file.read()
        begin = text.index('id="contents">') + len('id="contents">')
        contents = json.loads(text[begin : text.index("</script>", begin)])
        self.assertEqual(contents["title"], "A <b> & c")
        self.assertEqual([one["name"] for one in contents["states"]], ["Night"])
        self.doc.page(self.at("web"))
        self.assertEqual((self.doc.is_changed, self.doc.states.current.name), (False, "Day"))
        with open(path, "w") as file:
            file.write("mine")
        with self.assertRaisesRegex(stagemarks.RefusedError, "overwrite=True"):
            self.doc.page(self.at("web"))
        with self.assertRaises(stagemarks.StoppedError):
            self.doc.page(self.at("other"), progress=lambda *_: False)
        self.assertEqual(os.listdir(self.at("other")), [])


class Texts(support.WithScene):
    def setUp(self):
        super().setUp()
        self.first = self.doc.objects[0]
        self.doc.states.record("Day")
        self.first.render_mode = "off"
        self.doc.states.record("Night")

    def test_differences_name_elements_and_values(self):
        (change,) = self.doc.states.diff("Day", "Night")
        self.assertEqual((change.part, change.kind), ("objects", "changed"))
        self.assertEqual("/" + change.path, self.first.path)
        (field,) = change.fields
        values = (field.label, field.left, field.right)
        self.assertEqual(values, ("Render mode", "Undefined", "Off"))
        self.assertEqual(self.doc.states["Night"].diff(), [])
        self.assertEqual(len(self.doc.states["Day"].diff()), 1)
        self.assertEqual(self.doc.states["Day"].diff(parts=["camera"]), [])
        self.doc.save()
        with stagemarks.open(self.scene) as other:
            self.assertEqual(self.doc.states["Day"].diff(other.states["Day"]), [])
            self.assertEqual(len(self.doc.states["Day"].diff(other.states["Night"])), 1)

    def test_one_state_is_meant_where_one_is_needed(self):
        for use in (
            lambda: self.doc.states.diff("*"),
            lambda: self.doc.states.diff("Day", "*"),
            lambda: self.doc.states.render("*"),
            lambda: self.doc.states.load("*"),
            lambda: self.doc.states.rename("*", "Noon"),
        ):
            with self.assertRaisesRegex(stagemarks.NotFoundError, '"Day" and "Night", and here one'):
                use()

    def test_findings_say_what_to_do(self):
        self.assertEqual([one for one in self.doc.states.check() if one.severity == "error"], [])
        self.doc.states.rename("Day", "a/b")
        codes = {one.code for one in self.doc.states.check() if one.remedy and one.text}
        self.assertTrue(codes)

    def test_states_go_to_other_scenes_as_text(self):
        text = self.doc.states.to_text("Night")
        with stagemarks.import_scene(support.SPIDER) as other:
            taken = other.states.take_in(text, rename={"Night": "Dark"})
            self.assertEqual(taken.states, [("Dark", "added")])
            other.states.load("Dark")
            self.assertEqual(other.objects[0].render_mode, "off")
        for options, error in (
            ({}, "same_name"),
            ({"same_name": "guess"}, "refuse"),
        ):
            with self.assertRaisesRegex(stagemarks.Error, error):
                self.doc.states.take_in(text, **options)
        self.assertEqual(
            self.doc.states.take_in(text, same_name="keep").states, [("Night", "kept")]
        )
        for broken in ("", text[: len(text) // 2], "[]", text.replace("1", "99", 1)):
            with self.subTest(broken[:20]), self.assertRaises(stagemarks.Error):
                self.doc.states.take_in(broken, same_name="replace")
        self.assertEqual(self.doc.states.names, ["Day", "Night"])


if __name__ == "__main__":
    support.main()
