"""Documents: open, save, close; undo and steps."""

import os

import support
import stagemarks


class Files(support.WithScene):
    def test_a_scene_is_opened_changed_saved_and_opened_again(self):
        self.doc.objects[0].render_mode = "off"
        self.doc.states.record("Night")
        self.assertTrue(self.doc.is_changed)
        self.assertEqual(self.doc.save(), self.scene)
        self.assertFalse(self.doc.is_changed)
        self.doc.close()
        with stagemarks.open(self.scene) as again:
            self.assertEqual(again.objects[0].render_mode, "off")
            self.assertEqual(again.states.names, ["Night"])

    def test_other_files_are_replaced_when_that_is_said(self):
        other = self.at("other.c4d")
        with open(other, "w") as file:
            file.write("mine")
        with self.assertRaisesRegex(stagemarks.RefusedError, "overwrite=True"):
            self.doc.save(other)
        with open(other) as file:
            self.assertEqual(file.read(), "mine")
        self.doc.save(other, overwrite=True)
        self.assertEqual(self.doc.path, other)

    def test_what_cannot_be_a_place_is_refused(self):
        for target, error in (
            (self.at("scene.obj"), stagemarks.MisuseError),
            (self.at("nowhere/scene.c4d"), stagemarks.Error),
            ("", stagemarks.MisuseError),
        ):
            with self.subTest(target), self.assertRaises(error):
                self.doc.save(target)
        self.assertEqual(os.listdir(self.folder), ["spider.c4d"])

    def test_imports_and_new_documents_have_no_file_yet(self):
        for doc in (stagemarks.import_scene(support.SPIDER), stagemarks.new()):
            self.assertIsNone(doc.path)
            with self.assertRaisesRegex(stagemarks.MisuseError, "file name"):
                doc.save()
            self.assertTrue(os.path.exists(doc.save(self.at(f"{len(doc.objects)}.c4d"))))

    def test_what_cannot_be_opened_says_why(self):
        broken = self.at("broken.c4d")
        with open(self.scene, "rb") as file, open(broken, "wb") as half:
            half.write(file.read()[:500])
        for path in (broken, self.at("missing.c4d"), self.folder, self.at("missing.gltf")):
            with self.subTest(path), self.assertRaises(stagemarks.Error) as raised:
                stagemarks.open(path)
            self.assertGreater(len(str(raised.exception)), 20)
        self.assertEqual(stagemarks.documents(), [self.doc])

    def test_unsaved_changes_are_given_up_only_when_that_is_said(self):
        self.doc.objects[0].name = "changed"
        with self.assertRaisesRegex(stagemarks.RefusedError, "discard=True"):
            self.doc.close()
        self.doc.close(discard=True)
        self.assertIsNone(stagemarks.active())
        self.doc.close()

    def test_the_active_document_is_the_one_opened_last_or_activated(self):
        other = stagemarks.new()
        self.assertEqual(stagemarks.active(), other)
        self.doc.activate()
        self.assertEqual(stagemarks.active(), self.doc)
        self.doc.states.record("In the first")
        other.states.record("In the second")
        self.assertEqual(stagemarks.active(), self.doc)
        self.assertEqual(
            (self.doc.states.names, other.states.names), (["In the first"], ["In the second"])
        )

    def test_names_need_not_be_utf8(self):
        odd = self.at("caf\udce9.c4d")
        self.doc.save(odd)
        self.assertTrue(os.path.exists(os.fsencode(odd)))
        self.doc.objects[0].name = "caf\udce9"
        self.assertEqual(self.doc.objects["caf\udce9"].name, "caf\udce9")


class Updates(support.WithScene):
    def write(self, **heights):
        path = self.at("model.obj")
        with open(path, "w") as file:
            for number, (name, height) in enumerate(heights.items()):
                file.write(f"o {name}\nv 0 0 0\nv 1 0 0\nv 0 {height} 0\n")
                file.write("f {} {} {}\n".format(*range(3 * number + 1, 3 * number + 4)))
        return path

    def test_a_newer_file_comes_into_the_scene_and_states_stay(self):
        doc = stagemarks.import_scene(self.write(Table=1, Chair=1, Lamp=1))
        doc.objects["Lamp"].render_mode = "off"
        doc.states.record("Night")
        path = self.write(Table=1, Chair=2, Bed=1)
        update = doc.update_from(path)
        self.assertEqual([(one.path, one.what) for one in update.objects.changed],
                         [("Chair", ["shape"])])
        self.assertEqual((update.objects.added, update.objects.gone), (["Bed"], ["Lamp"]))
        self.assertEqual((update.objects.found, update.removed), (2, 0))
        self.assertEqual(doc.undo_names[-1], "Update from File")
        self.assertEqual((doc.states.names, doc.objects["Lamp"].render_mode), (["Night"], "off"))
        doc.undo()
        self.assertIsNone(doc.objects.get("Bed"))
        self.assertEqual(doc.update_from(path, remove_gone=True).removed, 1)
        self.assertIsNone(doc.objects.get("Lamp"))

    def test_what_cannot_be_read_changes_nothing(self):
        doc = stagemarks.import_scene(self.write(Table=1))
        broken = self.at("broken.gltf")
        with open(broken, "w") as file:
            file.write("{")
        for path, error in (
            (self.scene, stagemarks.MisuseError),
            (broken, stagemarks.Error),
            (self.at("missing.obj"), stagemarks.Error),
        ):
            with self.subTest(path), self.assertRaises(error):
                doc.update_from(path)
        with self.assertRaises(stagemarks.StoppedError):
            doc.update_from(self.write(Table=2), progress=lambda *_: False)
        self.assertEqual((len(doc.objects), doc.undo_names), (1, []))

    def test_pictures_outside_of_the_folder_come_in_when_that_is_said(self):
        os.mkdir(self.at("in"))
        with open(self.at("wood.png"), "wb") as file:
            file.write(b"\x89PNG\r\n\x1a\n")
        for name, text in (
            ("model.obj", "mtllib model.mtl\nusemtl Wood\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"),
            ("model.mtl", "newmtl Wood\nmap_Kd ../wood.png\n"),
        ):
            with open(self.at(os.path.join("in", name)), "w") as file:
                file.write(text)
        taken = []
        for allow_outside in (False, True):
            doc = stagemarks.import_scene(self.at("in/model.obj"), allow_outside=allow_outside)
            taken.append([one.color_texture for one in doc.materials if one.color_texture])
        self.assertEqual([os.path.dirname(one) != "" for (one,) in taken], [False, True])


class Steps(support.WithScene):
    def shown(self):
        states = self.doc.states
        return states.names, hash(states.to_text()), states.current, states.deleted

    def previews(self):
        folder = self.at("spider_SM")
        found = {}
        for name in os.listdir(folder) if os.path.exists(folder) else ():
            with open(os.path.join(folder, name), "rb") as file:
                found[name] = file.read()
        return found

    def modes(self):
        return [one.render_mode for one in self.doc.objects][:2]

    def test_each_edit_is_a_step(self):
        self.doc.objects[0].render_mode = "off"
        self.doc.objects[1].render_mode = "on"
        self.assertEqual(self.doc.undo_names, ["Render mode", "Render mode"])
        for changed in (["off", "undefined"], ["undefined", "undefined"]):
            self.assertTrue(self.doc.undo())
            self.assertEqual(self.modes(), changed)
        self.assertFalse(self.doc.undo())
        self.assertTrue(self.doc.redo() and self.doc.redo())
        self.assertFalse(self.doc.redo())
        self.assertEqual(self.modes(), ["off", "on"])

    def test_a_with_statement_is_one_step(self):
        with self.doc.step("Night"):
            for one in self.doc.objects:
                one.render_mode = "off"
            with self.doc.step("inside"):
                self.doc.objects[0].name = "Body"
            with self.assertRaisesRegex(stagemarks.MisuseError, "between steps"):
                self.doc.undo()
        self.assertEqual(self.doc.undo_names, ["Night"])
        self.doc.undo()
        self.assertEqual(self.modes(), ["undefined", "undefined"])

    def test_what_is_done_to_states_is_taken_back_and_done_again(self):
        states, first = self.doc.states, self.doc.objects[0]
        camera = next(one for one in self.doc.objects if isinstance(one, stagemarks.Camera))
        self.doc.camera = None
        for name, act in (
            ("Record Day", lambda: states.record("Day", preview=True)),
            ("Record Day", lambda: states.record("Day", overwrite=True, preview=True)),
            ("Record Night", lambda: states.record("Night")),
            ("Load Day", lambda: states.load("Day")),
            ("Rename Day", lambda: states.rename("Day", "Morning")),
            ("Set Selected Objects on Checked Elements", lambda: states.set_objects([first])),
            ("Set Render Camera on Checked Elements", lambda: states.set_camera(camera)),
            ("Import Stagemarks", lambda: states.take_in(other, same_name="replace")),
            ("Delete Night", lambda: states.delete("Night")),
            ("Restore Night", lambda: states.restore("Night")),
            ("Delete Checked Elements", lambda: states.delete("*")),
            ("Empty Trash", states.forget_deleted),
        ):
            with self.subTest(name):
                first.render_mode = "on" if name.startswith("Set") else "off"
                other = states.to_text().replace('"Width": 1280', '"Width": 640')
                before, previews = self.shown(), self.previews()
                act()
                after, previews_after = self.shown(), self.previews()
                self.assertNotEqual(before, after)
                self.assertEqual(self.doc.undo_names[-1], name)
                for _ in range(2):
                    self.doc.undo()
                    self.assertEqual((self.shown(), self.previews()), (before, previews))
                    self.doc.redo()
                    self.assertEqual((self.shown(), self.previews()), (after, previews_after))

    def test_an_exception_takes_all_of_a_step_back(self):
        self.doc.states.record("Day")
        with self.assertRaises(ZeroDivisionError), self.doc.step("broken"):
            self.doc.objects[0].render_mode = "off"
            self.doc.states.record("Night")
            1 / 0
        self.assertEqual(self.modes()[0], "undefined")
        self.assertEqual(self.doc.states.names, ["Day"])
        self.assertEqual(self.doc.undo_names, ["Record Day"])

    def test_an_inner_step_may_fail_alone(self):
        with self.doc.step("outer"):
            self.doc.objects[0].render_mode = "off"
            with self.assertRaises(KeyError), self.doc.step("inner"):
                self.doc.objects[1].render_mode = "off"
                raise KeyError
        self.assertEqual(self.modes(), ["off", "undefined"])
        self.doc.undo()
        self.assertEqual(self.modes(), ["undefined", "undefined"])


if __name__ == "__main__":
    support.main()
