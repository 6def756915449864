"""What scripts do wrong: things that are gone, threads, forks, failing callbacks, interruptions."""

import contextlib
import gc
import io
import os
import signal
import subprocess
import sys
import threading

import support
import stagemarks


class Gone(support.WithScene):
    def test_everything_of_a_closed_document_raises(self):
        first = self.doc.objects[0]
        state = self.doc.states.record("Day")
        step = self.doc.step("open")
        step.__enter__()
        self.doc.close(discard=True)
        step.__exit__(None, None, None)
        for use in (
            lambda: first.name,
            lambda: setattr(first, "name", "new"),
            lambda: first.children,
            lambda: len(self.doc.objects),
            lambda: self.doc.save(),
            lambda: self.doc.undo(),
            lambda: self.doc.step("late").__enter__(),
            lambda: state.load(),
            lambda: state.date,
        ):
            with self.assertRaisesRegex(stagemarks.ClosedError, "closed"):
                use()
        self.assertFalse(first.exists)
        self.assertIn("gone", repr(first))
        self.assertIn("closed", repr(self.doc))

    def test_handles_may_be_dropped_in_any_order(self):
        kept = [self.doc.objects[0], self.doc.states, self.doc.step("never")]
        del self.doc
        gc.collect()
        stagemarks.documents()[0].close(discard=True)
        del kept
        gc.collect()
        self.assertEqual(stagemarks.documents(), [])


class Callbacks(support.WithScene):
    def heard(self, progress):
        return stagemarks.import_scene(support.SPIDER, progress=progress)

    def test_progress_is_heard(self):
        shares = []
        self.heard(lambda share, what: shares.append((share, what)))
        self.assertTrue(shares)
        self.assertTrue(all(0 <= share <= 1 and what for share, what in shares))

    def test_false_and_exceptions_stop_the_work(self):
        def fails(share, what):
            raise KeyError("mine")

        before = stagemarks.documents()
        for progress, error in ((lambda *_: False, stagemarks.StoppedError), (fails, KeyError)):
            with self.assertRaises(error):
                self.heard(progress)
            self.assertEqual(stagemarks.documents(), before)
        self.heard(None)

    def test_stopping_at_any_moment_opens_nothing(self):
        """The last moment is when all is read already."""
        before, active = stagemarks.documents(), stagemarks.active()
        for last in range(1, 1000):
            heard = []

            def stops(*told):
                heard.append(told)
                return len(heard) < last

            try:
                self.heard(stops)
                break
            except stagemarks.StoppedError:
                self.assertEqual(stagemarks.documents(), before, heard[-1])
                self.assertEqual(stagemarks.active(), active)
        self.assertGreater(last, 1)

    def test_a_callback_cannot_call_back(self):
        def calls(share, what):
            self.doc.undo()

        with self.assertRaisesRegex(stagemarks.ThreadError, "not done yet"):
            self.heard(calls)

    def test_interrupting_stops_the_work(self):
        def interrupts(share, what):
            os.kill(os.getpid(), signal.SIGINT)

        with self.assertRaises(KeyboardInterrupt):
            self.heard(interrupts)
            for _ in range(1000):
                self.doc.undo()


class Scripts(support.WithScene):
    """What the desktop runs scripts with."""

    def test_a_script_is_a_program_of_its_own(self):
        from stagemarks import desktop

        path, before = self.at("script.py"), list(sys.path)
        for text, ended in (
            ("class A:\n    x: int\nassert A.__annotations__['x'] is int\n", (True, "")),
            ("import sys\nsys.path.clear()\n", (True, "")),
            ("import sys\nsys.path.clear()\nsys.exit('not today')\n", (False, "not today")),
        ):
            with open(path, "w") as file:
                file.write(text)
            with contextlib.redirect_stderr(io.StringIO()):
                self.assertEqual(desktop.run_file(path, "Script"), (False, *ended))
            sys.path[:] = before


class Processes(support.WithScene):
    def test_other_threads_are_refused(self):
        caught = []

        def work():
            try:
                self.doc.undo()
            except stagemarks.ThreadError as error:
                caught.append(str(error))

        thread = threading.Thread(target=work)
        thread.start()
        thread.join()
        self.assertEqual(len(caught), 1)
        self.assertIn("thread", caught[0])
        self.assertFalse(self.doc.undo())

    def test_a_forked_process_is_refused_and_ends_well(self):
        child = os.fork()
        if child == 0:
            status = 1
            try:
                self.doc.undo()
            except stagemarks.ThreadError:
                status = 7
            os._exit(status)
        self.assertEqual(os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]), 7)
        self.assertFalse(self.doc.undo())

    def run_script(self, script):
        return subprocess.run(
            [sys.executable, "-c", script, self.scene], capture_output=True, text=True, timeout=100
        )

    def test_scripts_may_end_as_they_like(self):
        begin = "import os, sys, stagemarks\ndoc = stagemarks.open(sys.argv[1])\n"
        for end, status in (
            ("", 0),
            ("sys.exit(3)", 3),
            ("raise ValueError('no')", 1),
            ("doc.step('open').__enter__()", 0),
            ("if os.fork() == 0: sys.exit(0)\nos.wait()", 0),
            ("import atexit\natexit.register(doc.close)", 0),
            ("class Late:\n  def __del__(self): doc.close(discard=True)\nlate = Late()", 0),
        ):
            with self.subTest(end):
                ended = self.run_script(begin + end)
                self.assertEqual(ended.returncode, status, ended.stderr)
                self.assertNotIn("terminate", ended.stderr)


if __name__ == "__main__":
    support.main()
