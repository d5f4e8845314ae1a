"""tyctl init, add and queue, on a library of the test's own."""
import json
import os
import pathlib
import unittest

from tyctl_harness import TyctlTest


class InitTest(TyctlTest):
    def test_makes_a_library_and_the_settings_for_it_and_the_plug_ins(self):
        said = self.tyctl("init", self.library).stdout
        self.assertIn(f"Made the library {self.library}", said)
        self.assertIn("tyctl add", said)
        self.assertEqual(self.rows("SELECT COUNT(*) FROM file_index_queue"), [(0,)])
        listed = self.tyctl("settings", "list").stdout
        self.assertIn(f"service\\DataBasePath = {self.library}  (text)", listed)
        self.assertIn("DataTypes\\txt\\IndexPlugin = Tessaly.TextExtractor", listed)
        self.assertIn("DataTypes\\md\\IndexPlugin = Tessaly.TextExtractor", listed)
        self.assertIn("DataTypes\\eml\\IndexPlugin = Tessaly.MailExtractor", listed)
        self.assertIn("DataTypes\\Default\\IndexPlugin = Tessaly.TextExtractor", listed)

    def test_leaves_the_log_off_unless_asked(self):
        self.tyctl("init", self.library)
        self.assertNotIn("Log", self.tyctl("settings", "list").stdout)

    def test_sets_a_log_up_when_asked(self):
        self.tyctl("init", self.library, "--log", self.folder / "service.log")
        self.assertEqual(self.tyctl("settings", "get", "Indexer\\LogFilePath").stdout, f"{self.folder}/service.log\n")
        self.assertEqual(self.tyctl("settings", "get", "Indexer\\LoggingOn").stdout, "1\n")

    def test_never_overwrites_a_library(self):
        self.tyctl("init", self.library)
        self.rows("INSERT INTO word_noise (term) VALUES ('kept')")
        refused = self.tyctl("init", self.library, status=1)
        self.assertIn("library.db exists; give another path, or --keep", refused.stderr)
        self.assertEqual(self.rows("SELECT term FROM word_noise WHERE term = 'kept'"), [("kept",)])

    def test_never_overwrites_another_file(self):
        file = self.write("notes.txt", "mine")
        self.tyctl("init", file, status=1)
        self.assertEqual(pathlib.Path(file).read_text(), "mine")

    def test_writes_only_the_settings_when_asked_to_keep_the_library(self):
        self.tyctl("init", self.library)
        self.environment["TYINDEXER_SETTINGS"] = str(self.folder / "other.db")
        self.assertIn("Kept the library", self.tyctl("init", self.library, "--keep").stdout)
        self.assertEqual(self.tyctl("settings", "get", "DataBasePath").stdout, f"{self.library}\n")

    def test_does_not_keep_what_is_not_there(self):
        self.assertIn("does not exist", self.tyctl("init", self.library, "--keep", status=1).stderr)

    def test_keeps_nothing_that_is_no_library(self):
        file = self.write("notes.txt", "mine")
        self.assertIn("notes.txt", self.tyctl("init", file, "--keep", status=1).stderr)
        self.assertEqual(pathlib.Path(file).read_text(), "mine")
        self.assertFalse((self.folder / "settings.db").exists())

    def test_tells_its_version(self):
        self.assertRegex(self.tyctl("--version").stdout, r"^tyctl \d+\.\d+\.\d+\n$")

    def test_puts_the_library_into_the_users_data_folder_by_default(self):
        self.tyctl("init")
        self.assertTrue((self.folder / "data/tessaly/library.db").is_file())

    def test_works_with_blanks_quotes_and_accents_in_the_path(self):
        library = self.folder / "ein Ordner's" / "bücher.db"
        self.tyctl("init", library)
        self.assertTrue(library.is_file())
        self.tyctl("queue")


class AddTest(TyctlTest):
    def setUp(self):
        super().setUp()
        self.tyctl("init", self.library)
        self.documents = self.folder / "documents"

    def queued(self):
        return self.rows("SELECT doc_path, data_type FROM file_index_queue ORDER BY id")

    def test_queues_a_folder_with_everything_below_it(self):
        first = self.write("documents/a.TXT")
        second = self.write("documents/deep/er/b.eml")
        self.assertEqual(self.tyctl("add", self.documents).stdout, "Queued 2 documents\n")
        self.assertEqual(self.queued(), [(first, "txt"), (second, "eml")])

    def test_fills_every_column_that_the_service_reads(self):
        self.write("documents/a.txt")
        self.tyctl("add", "--user", "7", self.documents)
        self.assertEqual(self.rows("SELECT index_type, user_id, flag_dirty, date_time IS NOT NULL FROM file_index_queue"),
                         [(2, 7, 0, 1)])

    def test_can_ask_for_new_records(self):
        self.write("documents/a.txt")
        self.tyctl("add", "--new", self.documents)
        self.assertEqual(self.rows("SELECT index_type FROM file_index_queue"), [(1,)])

    def test_takes_relative_paths_as_absolute_ones(self):
        file = self.write("documents/a.txt")
        self.tyctl("add", "deep/../a.txt", cwd=self.documents)
        self.assertEqual(self.queued(), [(file, "txt")])

    def test_a_file_without_an_extension_has_no_data_type(self):
        file = self.write("documents/README")
        self.tyctl("add", file)
        self.assertEqual(self.queued(), [(file, "")])

    def test_a_dry_run_only_tells(self):
        file = self.write("documents/a.txt")
        said = self.tyctl("add", "--dry-run", self.documents).stdout
        self.assertEqual(said, f"{file}  (txt)\nWould queue 1 document\n")
        self.assertEqual(self.queued(), [])

    def test_leaves_out_what_waits_already(self):
        self.write("documents/a.txt")
        self.tyctl("add", self.documents)
        self.write("documents/b.txt")
        self.assertEqual(self.tyctl("add", self.documents).stdout,
                         "Queued 1 document; 1 document was waiting already\n")
        self.assertEqual(len(self.queued()), 2)

    def test_queues_again_what_is_claimed_only(self):
        self.write("documents/a.txt")
        self.tyctl("add", self.documents)
        self.rows("UPDATE file_index_queue SET flag_dirty = 1")
        self.assertEqual(self.tyctl("add", self.documents).stdout, "Queued 1 document\n")

    def test_takes_a_path_that_is_named_twice_once(self):
        file = self.write("documents/a.txt")
        self.assertEqual(self.tyctl("add", file, self.documents).stdout, "Queued 1 document\n")

    def test_hidden_files_need_to_be_asked_for(self):
        self.write("documents/.hidden.txt")
        self.assertIn("nothing to queue was found", self.tyctl("add", self.documents).stderr)
        self.assertEqual(self.tyctl("add", "--all", self.documents).stdout, "Queued 1 document\n")

    def test_an_empty_path_is_told_and_the_rest_goes_on(self):
        self.write("documents/a.txt")
        failed = self.tyctl("add", "", self.documents, status=1)
        self.assertEqual(failed.stderr, "tyctl: an empty path names no file or folder; left out\n")
        self.assertEqual(failed.stdout, "Queued 1 document\n")

    def test_a_missing_path_is_told_and_the_rest_goes_on(self):
        file = self.write("documents/a.txt")
        failed = self.tyctl("add", self.folder / "missing", self.documents, status=1)
        self.assertIn("missing: there is no such file or folder", failed.stderr)
        self.assertEqual(self.queued(), [(file, "txt")])

    @unittest.skipIf(os.geteuid() == 0, "root reads every folder")
    def test_a_folder_that_cannot_be_read_is_told_and_the_rest_goes_on(self):
        file = self.write("documents/a.txt")
        self.write("documents/closed/b.txt")
        (self.documents / "closed").chmod(0)
        self.addCleanup((self.documents / "closed").chmod, 0o755)
        failed = self.tyctl("add", self.documents, status=1)
        self.assertIn("closed: cannot be read", failed.stderr)
        self.assertEqual(self.queued(), [(file, "txt")])

    def test_quotes_blanks_and_accents_in_a_path_arrive_unchanged(self):
        file = self.write("documents/O'Brien's \"größe\" 16 Nov 2026.txt")
        self.tyctl("add", self.documents)
        self.assertEqual(self.queued(), [(file, "txt")])

    def test_a_path_with_a_line_break_is_queued_and_printed_on_one_line(self):
        file = self.write("documents/a\nb.txt")
        self.tyctl("add", self.documents)
        self.assertEqual(self.queued(), [(file, "txt")])
        self.assertIn("documents/a\\nb.txt\n", self.tyctl("queue").stdout)

    def test_a_path_that_ends_in_a_blank_is_refused(self):
        self.write("documents/a.txt ")
        self.assertIn("the path ends in a blank", self.tyctl("add", self.documents, status=1).stderr)
        self.assertEqual(self.queued(), [])

    def test_paths_that_differ_in_letter_case_alone_are_refused(self):
        first = self.write("documents/A.txt")
        self.write("documents/a.txt")
        self.assertIn("the library cannot tell it from", self.tyctl("add", self.documents, status=1).stderr)
        self.assertEqual(self.queued(), [(first, "txt")])

    def test_a_path_that_is_not_utf8_is_queued_with_a_word_about_it(self):
        self.documents.mkdir()
        pathlib.Path(os.fsdecode(os.fsencode(self.documents) + b"/\xe4.txt")).touch()
        self.assertIn("not valid UTF-8", self.tyctl("add", self.documents).stderr)
        self.assertEqual(self.rows("SELECT CAST(doc_path AS BLOB) FROM file_index_queue"),
                         [(os.fsencode(self.documents) + b"/\xe4.txt",)])

    def test_many_documents_need_more_than_one_batch(self):
        for number in range(1203):
            self.write(f"documents/{number:04}.txt")
        self.assertEqual(self.tyctl("add", self.documents).stdout, "Queued 1203 documents\n")
        self.assertEqual(len(self.queued()), 1203)

    def test_without_a_library_it_says_what_to_do(self):
        self.environment["TYINDEXER_SETTINGS"] = str(self.folder / "none.db")
        for command in (["add", "."], ["queue"], ["status"], ["search", "word"]):
            self.assertIn("no library is set up", self.tyctl(*command, status=1).stderr)

    def test_a_library_that_is_gone_is_named(self):
        self.library.unlink()
        failed = self.tyctl("queue", status=1)
        self.assertIn(f"cannot open the library {self.library}", failed.stderr)
        self.assertFalse(self.library.exists())


class QueueTest(TyctlTest):
    def setUp(self):
        super().setUp()
        self.tyctl("init", self.library)

    def insert(self, path, kind=2, claimed=0):
        self.rows("INSERT INTO file_index_queue (doc_path, index_type, data_type, user_id, flag_dirty)"
                  " VALUES (?, ?, 'txt', 1, ?)", path, kind, claimed)

    def test_an_empty_queue_says_so(self):
        self.assertEqual(self.tyctl("queue").stdout, "The queue is empty.\n")

    def test_tells_waiting_entries_from_claimed_ones(self):
        self.insert("/x/a.txt", claimed=1)
        self.insert("/x/b.txt", kind=3)
        lines = self.tyctl("queue").stdout.splitlines()
        self.assertRegex(lines[0], r"^1  claimed  index  .*/x/a\.txt$")
        self.assertRegex(lines[1], r"^2  waiting  moved  .*/x/b\.txt$")

    def test_shows_the_first_entries_and_how_many_follow(self):
        for number in range(5):
            self.insert(f"/x/{number}.txt")
        self.assertIn("... and 3 more", self.tyctl("queue", "--limit", "2").stdout)
        self.assertEqual(len(self.tyctl("queue", "--limit", "0").stdout.splitlines()), 5)

    def test_speaks_json(self):
        self.insert("/x/a.txt")
        entries = json.loads(self.tyctl("queue", "--json").stdout)
        self.assertEqual([(e["id"], e["doc_path"], e["claimed"]) for e in entries], [(1, "/x/a.txt", False)])

    def test_entries_with_empty_columns_can_be_shown(self):
        self.rows("INSERT INTO file_index_queue (doc_path) VALUES (NULL)")
        self.assertEqual(len(self.tyctl("queue").stdout.splitlines()), 1)


if __name__ == "__main__":
    unittest.main()
