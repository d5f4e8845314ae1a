"""A library or settings that are locked, missing, damaged or taken away: the service waits, or says so and ends."""

import os
import signal

import harness
from harness import INDEXER, SERVICE

GOOD = "A lantern hangs over the quay.\n"
WORDS = {"lantern": 1, "hangs": 1, "quay": 1}


def cannot_connect(path):
    return f"Unable to connect to database: \r\n{path}\r\n\r\nPlease contact your Tessaly system administrator."


class Faults(harness.ServiceTest):
    def assert_refused(self, process, path, *further):
        self.library.finish(process, expect=1)
        self.assertEqual(normal_lines(self.library.errors()), "\n".join([normal_lines(cannot_connect(path)), *further]))

    def files(self):
        """The files in the library's folder but those of log and settings."""
        return sorted(name for name in os.listdir(self.library.folder)
                      if not name.startswith(("service.log", "errors.txt", "settings.db")))

    def queued_document(self):
        path = self.library.write("quay.txt", GOOD)
        self.library.queue(path)
        return path

    def test_a_locked_library_is_waited_for(self):
        library = self.library
        path = self.queued_document()
        holder = library.connect()
        self.addCleanup(holder.close)
        holder.execute("BEGIN EXCLUSIVE")
        process = self.started(until_idle=True)
        library.wait_for_log("Indexer started.", process)
        # The first tick comes a second after the start and meets the lock; the lock is held well beyond that.
        self.assertTrue(harness.stays_false(lambda: library.logged("Queue entry found"), polls=1500))
        self.assertIsNone(process.poll())
        holder.execute("ROLLBACK")
        library.finish(process)
        self.assertEqual(library.words(library.document_id(path)), WORDS)
        self.assertEqual(library.queued(), [])
        self.assert_sound()

    def test_a_lock_in_the_middle_of_a_document_is_waited_for(self):
        library = self.library
        path, words = library.write_long_document("long.txt")
        library.queue(path)
        process = self.started(until_idle=True)
        library.wait_for_log("Logic: Start Normal", process)
        holder = library.connect()
        self.addCleanup(holder.close)
        holder.execute("BEGIN EXCLUSIVE")
        self.assertTrue(harness.stays_false(lambda: library.logged("Logic: End Commit Words"), polls=500))
        self.assertIsNone(process.poll())
        holder.execute("ROLLBACK")
        library.finish(process)
        self.assertEqual(library.words(library.document_id(path)), words)
        self.assertEqual([line for line in library.log() if line.startswith("Error: ")], [])
        self.assert_sound()

    def test_a_library_that_is_missing_empty_or_no_library_is_left_alone(self):
        library = self.library
        for name, content in {"missing": None, "empty": b"", "text": b"This is no library.\n" * 400,
                              "short text": b"x"}.items():
            with self.subTest(name):
                path = library.folder / (name + ".db")
                if content is not None:
                    path.write_bytes(content)
                library.set({(SERVICE, "DataBasePath"): str(path)})
                library.errors_path.unlink(missing_ok=True)
                library.forget_log()
                before = self.files()
                self.assert_refused(library.start(until_idle=True), path)
                self.assertEqual(self.files(), before)
                self.assertEqual(path.read_bytes() if path.exists() else None, content)
                self.assertTrue(any(line.startswith("Error: db:init: ") and line.endswith(f"-{path}--" + "-")
                                    for line in library.log()), library.log_tail())
                self.assertNotIn("UI: Connected.", library.log())

    def take_away(self, replacement):
        """Takes the library away under the running service, which looks at its queue a thousand times a second."""
        library = self.library
        process = self.started()
        library.wait_for_log("Main.Timer Action Complete", process)
        if replacement is None:
            library.path.unlink()
        else:
            new = library.folder / "new"
            new.write_bytes(replacement)
            os.replace(new, library.path)
        for file in library.folder.glob("library.db-*"):
            file.unlink()
        return process

    def test_a_library_that_is_deleted_while_the_service_runs_ends_it(self):
        self.assert_refused(self.take_away(None), self.library.path)
        self.assertEqual(list(self.library.folder.glob("library.db*")), [])

    def test_a_library_that_is_replaced_while_the_service_runs_ends_it(self):
        text = b"This is no library.\n" * 400
        self.assert_refused(self.take_away(text), self.library.path)
        self.assertEqual(self.library.path.read_bytes(), text)
        self.assertEqual(list(self.library.folder.glob("library.db-*")), [])

    def test_a_log_that_cannot_be_written_is_done_without(self):
        library = self.library
        path = self.queued_document()
        library.set({(INDEXER, "LogFilePath"): path + "/service.log"})
        library.run()
        self.assertEqual(library.words(library.document_id(path)), WORDS)
        self.assertEqual(library.errors(), "")
        self.assert_sound()

    def test_settings_that_are_missing_out_of_reach_or_damaged_give_defaults_and_are_named_at_the_end(self):
        library = self.library
        settings = library.settings
        regular = library.folder / "regular"
        regular.write_text("A regular file.\n")
        damaged = library.folder / "damaged.db"
        damaged.write_bytes(b"These are no settings.\n" * 300)
        folder = library.folder / "folder.db"
        folder.mkdir()
        missing = "name no library: set DataBasePath, or make a library with tyctl init"
        for path, trouble in (
                (library.folder / "missing.db", missing), (regular / "settings.db", missing),
                (library.folder / "odd\n\x1bname.db", missing),
                (folder, "cannot be used: the settings file cannot be read or written here"),
                (damaged, "cannot be used: the settings file is damaged or is no settings file; put a backup in its "
                          "place or delete it")):
            with self.subTest(path.name):
                library.settings = path
                library.errors_path.unlink(missing_ok=True)
                printed = str(path).replace("\n\x1b", "  ")
                self.assert_refused(library.start(until_idle=True), "", f"tyindexerd: The settings in {printed} {trouble}")
                self.assertEqual(library.log_text(), "")
        library.settings = settings
        self.assertEqual(regular.read_text(), "A regular file.\n")

    def test_settings_that_are_damaged_while_the_service_runs_do_not_end_it(self):
        library = self.library
        process = self.started()
        library.wait_for_log("Main.Timer Action Complete", process)
        for file in library.folder.glob("settings.db-*"):
            file.unlink()
        library.settings.write_bytes(b"These are no settings.\n" * 300)
        ticks = library.log().count("Crash Detect: Main.Timer Fire")
        harness.wait_until(lambda: process.poll() is not None
                           or library.log().count("Crash Detect: Main.Timer Fire") >= ticks + 20,
                           "the service has gone on polling")
        self.assertIsNone(process.poll())
        process.send_signal(signal.SIGTERM)
        library.finish(process)


def normal_lines(text):
    return text.replace("\r\n", "\n").rstrip("\n")


if __name__ == "__main__":
    harness.main()
