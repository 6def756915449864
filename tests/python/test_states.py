"""States: recorded, loaded, changed."""

import datetime
import os

import support
import stagemarks


class States(support.WithScene):
    def setUp(self):
        super().setUp()
        self.first = self.doc.objects[0]
        self.doc.camera = None
        self.doc.states.record("Day")
        self.doc.objects.set(self.doc.objects, "Render mode", "off")
        self.doc.states.record("Night")

    def test_what_is_recorded_is_listed(self):
        states = self.doc.states
        self.assertEqual(states.names, ["Day", "Night"])
        self.assertEqual(states.current, states["Night"])
        self.assertEqual([one.name for one in states.find("N*")], ["Night"])
        age = datetime.datetime.now() - states["Day"].date
        self.assertLess(abs(age), datetime.timedelta(hours=1))
        self.assertIn("Day", states)
        self.assertEqual(states[-1], states["Night"])
        with self.assertRaisesRegex(LookupError, 'Did you mean "Night"'):
            states["Nigth"]

    def test_loading_is_one_step_and_says_what_it_changed(self):
        count = len(self.doc.objects)
        loaded = self.doc.states["Day"].load()
        self.assertEqual((loaded.objects, loaded.camera), (count, False))
        self.assertEqual(self.first.render_mode, "undefined")
        self.assertEqual(self.doc.undo_names[-1], "Load Day")
        self.doc.undo()
        self.assertEqual(self.first.render_mode, "off")

    def test_parts_are_for_one_load_only(self):
        options = self.doc.states.options
        for choice, parts, mode in (
            ({"parts": {"camera", "layers"}}, ["layers", "camera"], "off"),
            ({"parts": "render_settings"}, ["render-settings"], "off"),
            ({"without": ["objects"]}, None, "off"),
            ({"parts": {"objects"}}, ["objects"], "undefined"),
        ):
            with self.subTest(choice):
                loaded = self.doc.states.load("Day", **choice)
                if parts:
                    self.assertEqual(loaded.parts, parts)
                self.assertEqual(self.first.render_mode, mode)
        self.assertEqual(self.doc.states.options, options)
        with self.assertRaisesRegex(ValueError, "render-settings"):
            self.doc.states.load("Day", parts={"everything"})

    def test_names_that_are_taken_need_a_word(self):
        with self.assertRaisesRegex(stagemarks.RefusedError, "overwrite=True"):
            self.doc.states.record("Day")
        self.assertEqual(self.doc.states.load("Day").objects, len(self.doc.objects))
        self.first.render_mode = "on"
        self.doc.states.record("Day", overwrite=True)
        self.doc.states.load("Night")
        self.doc.states.load("Day")
        self.assertEqual(self.first.render_mode, "on")
        with self.assertRaisesRegex(stagemarks.RefusedError, "already"):
            self.doc.states.rename("Day", "Night")
        with self.assertRaises(stagemarks.Error):
            self.doc.states.record("")
        self.assertEqual(self.doc.states.names, ["Day", "Night"])

    def test_states_are_renamed_and_deleted(self):
        day = self.doc.states["Day"]
        day.name = "Morning"
        self.assertEqual(self.doc.states.names, ["Morning", "Night"])
        self.assertEqual(self.doc.states.delete(["M*", self.doc.states["Night"]]),
                         ["Morning", "Night"])
        self.assertEqual(len(self.doc.states), 0)
        for use in (day.load, lambda: day.date, lambda: self.doc.states.delete("Day")):
            with self.assertRaises(stagemarks.NotFoundError):
                use()

    def test_the_trash_gives_back_what_was_deleted(self):
        states = self.doc.states
        for mode in ("on", "off"):
            self.first.render_mode = mode
            states.record("Noon")
            states.delete("Noon")
        states.record("Day", overwrite=True)
        self.doc.save()
        with stagemarks.open(self.scene) as again:
            self.assertEqual([one.name for one in again.states.deleted], ["Day", "Noon", "Noon"])
        day, late, early = states.deleted
        self.assertEqual([day.is_overwritten, late.is_overwritten], [True, False])
        self.assertLess(abs(datetime.datetime.now() - late.deleted), datetime.timedelta(hours=1))
        self.assertLessEqual(early.date, late.deleted)
        self.assertEqual(states.restore("N*"), states["Noon"])
        with self.assertRaisesRegex(stagemarks.RefusedError, "rename="):
            states.restore("Noon")
        self.assertEqual(early.restore(rename="Early").name, "Early")
        for name, mode in (("Early", "on"), ("Noon", "off")):
            states.load(name)
            self.assertEqual(self.first.render_mode, mode)
        self.assertEqual(states.deleted, [day])
        states.delete("Early")
        with stagemarks.new() as other:
            for call, error in (
                (lambda: states.restore("Dya"), 'Did you mean "Day"'),
                (lambda: states.restore("*"), "one Stagemark is needed"),
                (early.restore, "not in the trash"),
                (lambda: other.states.restore(day), "another document"),
            ):
                with self.assertRaisesRegex(stagemarks.Error, error):
                    call()
        self.assertEqual((states.forget_deleted(), states.deleted), (2, []))

    def test_previews_lie_beside_the_scene_and_go_along(self):
        previews = self.at("spider_SM")
        self.doc.states.record("Seen", preview=True)
        self.assertEqual(os.listdir(previews), ["Seen.tif"])
        self.doc.states["Seen"].name = "Looked at"
        self.assertEqual(os.listdir(previews), ["Looked at.tif"])
        self.doc.states.delete("Looked at")
        self.assertEqual(os.listdir(previews), [])
        with self.assertRaisesRegex(ValueError, "slash"):
            self.doc.states.record("a/b", preview=True)

    def test_several_are_edited_at_once(self):
        states = self.doc.states
        self.first.render_mode = "on"
        self.assertTrue(states.set_objects([self.first]))
        self.assertFalse(states.set_objects([self.first], "Day"))
        self.doc.objects.set(self.doc.objects, "Render mode", "off")
        for name in ("Day", "Night"):
            states.load(name)
            self.assertEqual(self.first.render_mode, "on")
        camera = next(one for one in self.doc.objects if isinstance(one, stagemarks.Camera))
        self.doc.objects.selected = [self.first]
        self.assertTrue(states.set_camera(camera, ["Day"]))
        self.assertEqual(self.doc.objects.selected, [self.first])
        states.load("Day")
        self.assertEqual(self.doc.camera, camera)
        for call, error in (
            (lambda: states.set_camera(self.first), ValueError),
            (lambda: states.set_objects([]), ValueError),
            (lambda: states.update("nothing*"), LookupError),
        ):
            with self.assertRaises(error):
                call()

    def test_options_are_switched_by_name(self):
        self.doc.states.set_options(camera=False, render_settings=False)
        self.assertFalse(self.doc.states.options["camera"])
        self.doc.states.set_options(camera=True)
        self.assertTrue(self.doc.states.options["camera"])
        self.assertFalse(self.doc.states.options["render-settings"])


if __name__ == "__main__":
    support.main()
