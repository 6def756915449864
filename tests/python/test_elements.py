"""Elements and their fields."""

import support
import stagemarks
from stagemarks import _fields, elements


class Fields(support.WithScene):
    def test_every_field_of_the_table_has_an_attribute(self):
        named = set()
        for kind in [stagemarks.Document] + [getattr(elements, name) for name in elements.__all__]:
            for one in [one for base in kind.__mro__ for one in vars(base).values()]:
                if isinstance(one, _fields.Attribute):
                    named.update(one._found)
        left = [_fields.ALL[place] for place in set(range(len(_fields.ALL))) - named]
        # Values of effects, and those kept by number alone, are reached by their labels.
        by_label = {"Other Recorded Values", "Global Illumination"}
        self.assertEqual([(of.section, of.label) for of in left if of.section not in by_label], [])

    def test_values_read_as_they_were_set(self):
        camera = next(one for one in self.doc.objects if isinstance(one, stagemarks.Camera))
        settings = self.doc.settings.active
        material = self.doc.materials[0]
        for element, name, value in (
            (camera, "name", "Front"),
            (camera, "render_mode", "off"),
            (camera, "position", (1.5, -2.0, 1e6)),
            (camera, "rotation", (10.0, 20.0, 30.0)),
            (camera, "scale", (1.0, 2.0, 3.0)),
            (camera, "field_of_view", 40.0),
            (camera, "projection", "parallel"),
            (settings, "width", 640),
            (settings, "frame_to", 25),
            (settings, "frames", "all frames"),
            (settings, "save_alpha", True),
            (material, "color", (0.25, 0.5, 0.75)),
            (material, "roughness", 12.5),
            (material, "color_texture", "wood.png"),
            (material, "occlusion_strength", 30.0),
            (material, "normal_strength", 70.0),
            (material, "opacity_mode", "cut out"),
            (self.doc, "camera", camera),
            (self.doc, "camera", None),
            (self.doc, "frame_rate", 25),
        ):
            with self.subTest(name):
                setattr(element, name, value)
                read = getattr(element, name)
                if isinstance(value, (tuple, float)):
                    pairs = zip(read, value) if isinstance(value, tuple) else [(read, value)]
                    for one, other in pairs:
                        self.assertAlmostEqual(one, other, 6)
                else:
                    self.assertEqual(read, value)

    def test_fields_have_labels_units_and_choices(self):
        settings = self.doc.settings.active
        settings["Height"] = 480
        self.assertEqual(settings.height, settings["Output/Height"])
        field = next(one for one in settings.fields if one.label == "Frames")
        self.assertEqual(field.choices, ("from - to", "current frame", "all frames"))
        self.assertIn("Unit: px", stagemarks.RenderSettings.width.__doc__)
        material = self.doc.materials[0]
        material["Luminance/Color"] = (1, 2, 3)
        self.assertEqual(material.luminance, (1, 2, 3))

    def test_values_that_cannot_be_change_nothing(self):
        settings = self.doc.settings.active
        first = self.doc.objects[0]
        before = (settings.width, first.render_mode, first.position, first.name)
        for element, name, value, error in (
            (settings, "width", 0, stagemarks.MisuseError),
            (settings, "width", 10**30, (stagemarks.MisuseError, TypeError)),
            (settings, "width", 1.5, TypeError),
            (settings, "width", "640", TypeError),
            (first, "render_mode", "sometimes", stagemarks.MisuseError),
            (first, "render_mode", True, TypeError),
            (first, "position", (1, 2), stagemarks.MisuseError),
            (first, "position", (1, 2, float("nan")), stagemarks.MisuseError),
            (first, "position", 5, TypeError),
            (first, "name", None, TypeError),
            (first, "layer", self.doc.materials[0], stagemarks.MisuseError),
            (self.doc, "camera", first, stagemarks.MisuseError),
            (self.doc, "render_settings", None, stagemarks.MisuseError),
        ):
            with self.subTest(f"{name} = {value}"), self.assertRaises(error) as raised:
                setattr(element, name, value)
            self.assertGreater(len(str(raised.exception)), 15)
        self.assertEqual(
            (settings.width, first.render_mode, first.position, first.name), before
        )
        with self.assertRaisesRegex(stagemarks.NotFoundError, "There are: Name, "):
            first["Nonsense"] = 1
        self.assertEqual(self.doc.undo_names, [])

    def test_what_a_field_refers_to_has_fields_of_its_own_kind(self):
        """Of each kind the first element that is met is one that a field refers to."""
        camera = next(one for one in self.doc.objects if isinstance(one, stagemarks.Camera))
        camera.layer = self.doc.layers.add("Rigs")
        tag = next(one for one in self.doc.tags if isinstance(one, stagemarks.TextureTag))
        self.doc.camera = camera
        for one, name in (
            (camera.layer, "Rigs"),
            (self.doc.camera, camera["Name"]),
            (tag.material, tag.material["Name"]),
            (self.doc.render_settings, self.doc.render_settings["Name"]),
        ):
            self.assertEqual(one.name, name)
        self.doc.camera.layer = None
        self.assertIsNone(camera.layer)

    def test_what_is_misspelled_is_no_attribute(self):
        state = self.doc.states.record("Day")
        tag = next(one for one in self.doc.tags if isinstance(one, stagemarks.TextureTag))
        of_each = [self.doc.objects[0], tag, tag.material, self.doc.settings.active, self.doc,
                   self.doc.objects, self.doc.settings, self.doc.states, state]
        for one in of_each + [self.doc.layers.add("Rigs"), self.doc.step("Night")]:
            with self.subTest(type(one)), self.assertRaises(AttributeError):
                one.rendermode = "off"

    def test_many_are_set_in_one_step(self):
        objects = list(self.doc.objects)
        self.doc.objects.set(objects, "Render mode", "off")
        self.assertEqual({one.render_mode for one in objects}, {"off"})
        self.doc.undo()
        self.assertEqual({one.render_mode for one in objects}, {"undefined"})

    def test_elements_of_other_documents_are_refused(self):
        with stagemarks.open(self.scene) as other:
            camera = next(one for one in other.objects if isinstance(one, stagemarks.Camera))
            with self.assertRaisesRegex(stagemarks.MisuseError, "same document"):
                self.doc.camera = camera
            first, objects, states = self.doc.objects[0], self.doc.objects, self.doc.states
            states.record("Day")
            done = self.doc.undo_names
            for refused in (
                lambda: objects.set([first, camera], "Render mode", "off"),
                lambda: objects.remove([camera]),
                lambda: setattr(objects, "selected", [camera]),
                lambda: first.set_material(other.materials[0]),
                lambda: objects.add("cube", parent=camera),
                lambda: states.set_objects([camera]),
                lambda: states.set_tags(other.tags),
                lambda: states.set_layers([other.layers.add("Theirs")]),
                lambda: states.set_camera(camera),
            ):
                with self.assertRaisesRegex(stagemarks.MisuseError, "another document"):
                    refused()
            self.assertEqual(self.doc.undo_names, done)
            with self.assertRaises(TypeError):
                objects.remove(["Lamp"])


class Trees(support.WithScene):
    def test_objects_are_found_by_name_path_pattern_and_position(self):
        objects = self.doc.objects
        first = objects[0]
        self.assertEqual(objects["#0"], first)
        self.assertEqual(objects[first.path], first)
        self.assertEqual(objects.find("*"), list(objects))
        self.assertEqual(len(objects), len(list(objects)))
        self.assertIn(first, objects)
        for other in (self.doc.materials[0], first.tags[0], "nobody", None, 0):
            self.assertNotIn(other, objects)
        with stagemarks.open(self.scene) as twin:
            self.assertNotIn(twin.objects[0], objects)
        gone = objects.add("cube")
        gone.remove()
        self.assertNotIn(gone, objects)
        self.assertIn(first.path, objects)
        self.assertIsNone(objects.get("nobody"))
        for missing, error in (("nobody", LookupError), (9999, IndexError)):
            with self.assertRaises(error):
                objects[missing]

    def test_names_that_several_have_are_told(self):
        self.doc.objects.set(list(self.doc.objects)[:2], "Name", "Twin")
        with self.assertRaisesRegex(stagemarks.NotFoundError, "Twin"):
            self.doc.objects["Twin"]
        self.assertEqual(len(self.doc.objects.find("Twin*")), 2)

    def test_parents_children_tags_and_owners_belong_together(self):
        seen = []
        pending = self.doc.objects.roots
        while pending:
            one = pending.pop(0)
            seen.append(one)
            for child in one.children:
                self.assertEqual(child.parent, one)
            pending = one.children + pending
        self.assertEqual(seen, list(self.doc.objects))
        tags = [tag for one in self.doc.objects for tag in one.tags]
        self.assertEqual(tags, list(self.doc.tags))
        texture = next(tag for tag in tags if isinstance(tag, stagemarks.TextureTag))
        self.assertIn(texture, texture.object.tags)
        self.assertIn(texture.material, self.doc.materials)
        self.assertEqual(self.doc.materials.find("*"), list(self.doc.materials))
        texture.name = "Wood"
        self.assertEqual(self.doc.tags.find("W*"), [texture])
        self.assertEqual(self.doc.tags["Wood"], texture)
        self.assertEqual(self.doc.tags["#0"], tags[0])
        self.assertEqual(self.doc.settings["#0"], self.doc.settings[0])
        for missing in ("#9999", "#", "#-1", "#99999999999999999999999"):
            with self.assertRaises(stagemarks.NotFoundError):
                self.doc.settings[missing]
        with self.assertRaises(stagemarks.NotFoundError):
            self.doc.settings["Wood"]

    def test_the_selection_is_read_and_set(self):
        objects = list(self.doc.objects)[:2]
        self.doc.objects.selected = objects
        self.assertEqual(self.doc.objects.selected, objects)
        self.doc.objects.selected = []
        self.assertEqual(self.doc.objects.selected, [])
        self.assertEqual(self.doc.undo_names, [])


class Additions(support.WithScene):
    def test_what_is_added_stands_where_it_shall(self):
        group = self.doc.objects.add("null", "Rig", at=(100, 0, 0), scale=(2, 2, 2))
        camera = self.doc.objects.add("Camera", "Front", parent=group, at=(0, 50, -900),
                                      look_at=(0, 50, 0))
        self.assertIsInstance(camera, stagemarks.Camera)
        self.assertEqual((camera.parent, camera.path), (group, "/Rig/Front"))
        for one, other in zip(camera.position, (-50, 25, -450)):
            self.assertAlmostEqual(one, other, 6)
        camera.place(rotation=(0, 90, 0))
        self.assertAlmostEqual(camera.rotation[1], 90, 6)
        sizes = [len(self.doc.materials), len(self.doc.layers), len(self.doc.settings)]
        red = self.doc.materials.add("Red", (1, 0, 0))
        camera.set_material(red)
        camera.layer = self.doc.layers.add("Rigs")
        self.doc.settings.active = self.doc.settings.add("Large")
        self.assertEqual(red.color, (1, 0, 0))
        self.assertNotEqual(camera.layer.color, self.doc.layers.add("Props").color)
        self.assertEqual([tag.material for tag in camera.tags], [red])
        while self.doc.undo():
            pass
        self.assertFalse(camera.exists or group.exists)
        self.assertEqual(
            [len(self.doc.materials), len(self.doc.layers), len(self.doc.settings)], sizes
        )

    def test_what_is_removed_comes_back_by_undo(self):
        first, second = list(self.doc.objects)[:2]
        material = self.doc.materials[0]
        count = len(self.doc.objects)
        for remove, gone in (
            (first.remove, [first]),
            (lambda: self.doc.objects.remove([first, second]), [first, second]),
            (material.remove, [material]),
            (self.doc.tags[0].remove, [self.doc.tags[0]]),
        ):
            remove()
            self.assertEqual([one for one in gone if one.exists], [])
            with self.assertRaisesRegex(stagemarks.ClosedError, "not in the document"):
                gone[0].path
            self.assertTrue(self.doc.undo())
            self.assertEqual([one for one in gone if not one.exists], [])
        self.assertEqual(len(self.doc.objects), count)
        self.doc.settings.active.remove()
        self.assertEqual(len(self.doc.settings), 1)

    def test_what_cannot_be_added_or_placed_changes_nothing(self):
        first = self.doc.objects[0]
        for call, error in (
            (lambda: self.doc.objects.add("teapot"), "null, camera, .*cube"),
            (lambda: self.doc.objects.add("cube", at=(1, 2)), "Three numbers"),
            (lambda: first.place(at=(1, 2, float("inf"))), "Three numbers"),
            (lambda: self.doc.materials.add("Red", (255, 0, 0)), "from 0 to 1"),
            (lambda: self.doc.materials.add("Red", (1, 0)), "from 0 to 1"),
            (lambda: self.doc.materials.add("Red", (1, 0, float("nan"))), "from 0 to 1"),
            (lambda: self.doc.objects.remove([first, self.doc.settings.active]), "one kind"),
        ):
            with self.assertRaisesRegex(ValueError, error):
                call()
        self.assertEqual(self.doc.undo_names, [])


if __name__ == "__main__":
    support.main()
