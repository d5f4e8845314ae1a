"""Queue entries that no document stands behind, or a strange one: they do no harm, and all others are indexed."""

import os

import harness
from harness import DATA_TYPES, INDEXER

GOOD = "A lantern hangs over the quay.\n"


class BadInput(harness.ServiceTest):
    def check_good_document(self, path):
        self.assertEqual(self.library.words(self.library.document_id(path)),
                         {"lantern": 1, "hangs": 1, "quay": 1})

    def test_entries_without_a_readable_document_are_named_and_dropped(self):
        library = self.library
        regular = library.write("regular.txt", GOOD)
        folder = library.documents / "folder.txt"
        folder.mkdir()
        bad = {
            str(library.documents / "missing.txt"): "No such file or directory",
            os.path.join(regular, "inside.txt"): "Not a directory",
            str(folder): "folder",
            library.write("binary.txt", b"\x7fELF\x02\x01\x01\0\0\0" + bytes(range(256)) * 20): "binary",
        }
        loop = library.documents / "loop.txt"
        loop.symlink_to(loop)
        bad[str(loop)] = "Too many levels of symbolic links"
        if os.geteuid() != 0:  # permissions do not bind the superuser
            secret = library.write("secret.txt", GOOD)
            os.chmod(secret, 0)
            bad[secret] = "Permission denied"
        last = library.write("last.txt", GOOD)
        library.queue(*bad, regular)
        no_utf8 = os.fsencode(library.write("latin", GOOD)) + b"\xe9.txt"
        library.write_rows("INSERT INTO file_index_queue (doc_path, index_type, data_type, user_id, date_time) "
                           "VALUES (CAST(? AS TEXT), 2, 'txt', 7, '2026-11-16 01:47:03')", (no_utf8,))
        library.queue(last)
        library.run()
        self.assertTrue(library.logged("latin\N{REPLACEMENT CHARACTER}.txt: cannot open"), library.log_tail())
        for path, reason in bad.items():
            with self.subTest(path):
                errors = [line for line in library.log() if line.startswith("Error: ERROR ") and path in line]
                self.assertEqual(len(errors), 2, "the own plug-in and the default one each fail once")
                self.assertIn(reason, errors[0])
                self.assertIsNone(library.document_id(path))
                self.assertFalse(library.logged("Completed: " + path + "\r"))
        self.check_good_document(regular)
        self.check_good_document(last)
        self.assertEqual(library.queued(), [])
        self.assertEqual(library.value("SELECT count(*) FROM document_object"), 2)
        self.assert_sound()

    def test_strange_paths_are_indexed_under_their_own_names(self):
        library = self.library
        names = ["O'Brien's \"notes\".txt", "Gr\u00f6\u00dfe \u6f22\u5b57 \U0001f600.txt", "100% of %s %d.txt",
                 "line\nbreak.txt", "semi;colon -- comment.txt", "?attach=1.txt", "[a-z]*_.txt"]
        paths = [library.write(name, GOOD) for name in names]
        trailing = library.write("trailing.txt", GOOD)
        library.queue(*paths, trailing + " ")
        library.run()
        for path in paths:
            with self.subTest(path):
                self.check_good_document(path)
                self.assertTrue(library.logged("Interest: Indexer::IndexDocument - Completed: " + path))
        # Blanks at the ends are no part of a path. The entry keeps its own spelling, so it is not found again when the
        # document is done, and the next start drops it.
        self.check_good_document(trailing)
        self.assertEqual(library.queued(), [(trailing + " ", 1)])
        library.run()
        self.assertEqual(library.queued(), [])
        self.assert_sound()

    def test_types_without_a_plug_in_of_their_own(self):
        library = self.library
        library.set({(DATA_TYPES + "nul", "IndexPlugin"): "NULL",
                     (DATA_TYPES + "odd", "IndexPlugin"): "Tessaly.NotThere"})
        unknown = library.write("unknown.xyz", GOOD)
        abandoned = library.write("abandoned.nul", GOOD)
        odd = library.write("odd.odd", GOOD)
        last = library.write("last.txt", GOOD)
        library.queue(unknown, data_type="xyz")
        library.queue(abandoned, data_type="nul")
        library.queue(odd, data_type="odd")
        library.queue(last)
        library.run()
        self.check_good_document(unknown)
        self.assertEqual(library.value("SELECT flag_indexing_failed FROM document_object WHERE saved_location = ?",
                                       (unknown,)), 0)
        self.assertIn("Logic: NULL Plugin specified abandoning indexing for this document.", library.log())
        self.assertIsNone(library.document_id(abandoned))
        self.assertTrue(any(line.startswith("Error: ERROR Indexing failed - ") and "Tessaly.NotThere" in line
                            for line in library.log()))
        self.assertIn("Interest: Indexer::IndexDocument - Completed: " + odd, library.log())
        self.assertIsNone(library.document_id(odd))
        self.check_good_document(last)
        self.assertEqual(library.queued(), [])
        self.assert_sound()

    def test_plug_ins_that_die_hang_or_talk_nonsense_do_not_take_the_service_along(self):
        library = self.library
        scripts = {"die": "exit 3", "mid": "read request; exit 0", "say": "echo nonsense; cat > /dev/null",
                   "mum": "cat > /dev/null"}
        for data_type, script in scripts.items():
            library.write_plugin("Test." + data_type, data_type, script)
        library.set({(INDEXER, "PluginTimeoutSeconds"): 1})
        paths = {data_type: library.write("document." + data_type, GOOD) for data_type in scripts}
        for data_type, path in paths.items():
            library.queue(path, data_type=data_type)
        last = library.write("last.txt", GOOD)
        library.queue(last)
        library.run()
        errors = [line for line in library.log() if line.startswith("Error: ")]
        for data_type, path in paths.items():
            with self.subTest(scripts[data_type]):
                self.assertTrue(any("Test." + data_type in line for line in errors), errors)
        self.check_good_document(last)
        self.assertEqual(library.queued(), [])
        self.assert_no_plugin_survives()
        self.assert_sound()

    def test_empty_documents_and_a_very_long_line(self):
        library = self.library
        megabytes = int(os.environ.get("TYINDEXER_TEST_LONG_LINE_MB", "20"))
        empty = library.write("empty.txt", b"")
        blank = library.write("blank.txt", b" \n\t\r\n\n")
        words = [f"plank{number:04}" for number in range(5000)]
        rounds = megabytes * 1000 * 1000 // (len(words) * len("plank0000 "))
        long_line = library.write("line.txt", (" ".join(words) + " ").encode() * rounds)
        often = library.write("often.txt", "lighthouse " * 32770)
        last = library.write("last.txt", GOOD)
        library.queue(empty, blank, long_line, often, last)
        library.run()
        for path in (empty, blank):
            with self.subTest(path):
                id_document = library.document_id(path)
                self.assertEqual(library.words(id_document), {})
                self.assertEqual(library.sentences(id_document), [])
                self.assertIn("documents", library.words(id_document, description="document_path"))
                self.assertEqual(library.rows("SELECT num_sentence, content FROM ascii_sentences "
                                              "WHERE id_document_object = ? ORDER BY 1", (id_document,)),
                                 [(-1, " "), (0, " ")])
        self.assertEqual(library.words(library.document_id(long_line)), dict.fromkeys(words, rounds))
        # Hits are counted in 16 bits; each one beyond is refused with a line in the log.
        self.assertEqual(library.words(library.document_id(often)), {"lighthouse": 32767})
        refused = [line for line in library.log() if line.startswith("Error: Error adding word: lighthouse. ")]
        self.assertEqual(len(refused), 3)
        self.check_good_document(last)
        self.assertEqual(library.queued(), [])
        self.assert_sound()

    def test_entries_without_a_path_stay_claimed_and_are_dropped_at_the_next_start(self):
        library = self.library
        good = library.write("good.txt", GOOD)
        library.queue_entries([("", 2, "txt", 7), (None, 2, "txt", 7)])
        library.queue(good)
        library.run()
        self.assertEqual(library.queued(), [("", 1), (None, 1)])
        self.assertEqual(library.log().count("UI: ERROR while updating database."), 2)
        self.check_good_document(good)
        library.run()
        self.assertEqual(library.queued(), [])
        self.assert_sound()


if __name__ == "__main__":
    harness.main()
