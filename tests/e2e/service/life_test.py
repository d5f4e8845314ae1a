"""Ends, restarts and second times: signals, the restart after so many documents, duplicates, changes and moves."""

import signal

import harness
from harness import INDEX, INDEX_NEW, INDEXER, MOVED, USER

FIRST = "The ferry waits for the tide.\n"
SECOND = "The ferry left with the tide yesterday.\n"


class Life(harness.ServiceTest):
    def test_a_stop_in_the_middle_of_a_document_lets_it_finish(self):
        library = self.library
        long, words = library.write_long_document("long.txt")
        second = library.write("second.txt", FIRST)
        library.queue(long, second)
        process = self.started()
        library.wait_for_log("Logic: Start Normal", process)
        process.send_signal(signal.SIGTERM)
        library.finish(process)
        id_document = library.document_id(long)
        self.assertEqual(len(library.sentences(id_document)), harness.LONG_DOCUMENT)
        self.assertEqual(library.words(id_document), words)
        self.assertEqual(library.log()[-1], "Crash Detect: Main.Timer Action Complete")
        self.assertEqual(library.queued(), [(second, 0)])
        self.assertEqual(library.errors(), "")
        self.assert_no_plugin_survives()
        self.assert_sound()

    def test_an_interrupt_between_documents_ends_the_service(self):
        process = self.started()
        self.library.wait_for_log("Main.Timer Action Complete", process)
        process.send_signal(signal.SIGINT)
        self.library.finish(process)
        self.assertEqual(self.library.errors(), "")

    def test_the_restart_comes_after_one_document_more_than_the_limit(self):
        library = self.library
        library.set({(INDEXER, "MaxDocsBeforeRestart"): 1})
        paths = [library.write(f"{number}.txt", FIRST) for number in range(3)]
        library.queue(*paths)
        library.finish(self.started())
        self.assertEqual([path for path, _ in library.queued()], [paths[2]])
        self.assertEqual(library.log()[-1], "Interest: Main.Timer - Restarting to synchronise Caches")
        self.assert_no_plugin_survives()
        library.run()
        self.assertEqual(library.queued(), [])
        self.assertEqual(library.value("SELECT count(*) FROM document_object"), 3)
        self.assert_sound()

    def test_the_attachment_of_a_killed_run_is_deleted_at_the_next_start(self):
        library = self.library
        text, _ = library.write_long_document("long.txt")
        attachment = "--part\nContent-Type: text/plain\nContent-Disposition: attachment; filename=\"long.txt\"\n\n"
        mail = library.write("mail.eml", "From: ada@example.org\nSubject: Buoys\nMIME-Version: 1.0\n"
                             "Content-Type: multipart/mixed; boundary=\"part\"\n\n" + attachment
                             + open(text, encoding="utf-8").read().replace(". ", ".\n") + "\n--part--\n")
        library.queue(mail, data_type="eml")
        process = self.started()
        library.wait_for_log("Sub Doc: ", process)
        harness.wait_until(lambda: library.log()[-1] == "Logic: Start Normal"
                           or library.log()[-1].startswith("Logic: Normal sentences"), "the attachment is in work")
        process.kill()
        process.wait()
        self.assert_no_plugin_survives()
        library.forget_log()
        library.run()
        deleted = [line for line in library.log() if line.startswith("Interest: Main.ClearOldTempFiles - Deleting: ")]
        self.assertEqual(len(deleted), 1, library.log_tail())
        self.assertIn(str(library.temporary), deleted[0])
        self.assertEqual(list(library.temporary.iterdir()), [])
        self.assertEqual(library.queued(), [])
        library.forget_log()
        library.run()
        self.assertFalse(library.logged("Main.ClearOldTempFiles"))

    def test_entries_of_one_document_are_worked_off_together(self):
        library = self.library
        path = library.write("ferry.txt", FIRST)
        other = library.write("other.txt", FIRST)
        library.queue(path, path, other, path)
        library.run()
        self.assertEqual(library.log().count("Logic: Do index complete"), 2)
        self.assertEqual(library.queued(), [])
        self.assertEqual(library.value("SELECT count(*) FROM document_object"), 2)
        self.assert_sound()

    def test_a_document_is_indexed_again_renewed_and_moved(self):
        library = self.library
        path = library.write("ferry.txt", FIRST)
        library.queue(path)
        library.run()
        id_document = library.document_id(path)
        self.assertEqual(library.words(id_document), {"ferry": 1, "waits": 1, "tide": 1})
        self.add_user_rows(id_document)
        library.write_rows("UPDATE document_object SET title = 'My ferry', flag_user_set_title = 1")

        with self.subTest("indexed again"):
            library.write("ferry.txt", SECOND)
            library.queue(path, index_type=INDEX)
            library.run()
            self.assertEqual(library.document_id(path), id_document)
            self.assertEqual(library.words(id_document), {"ferry": 1, "left": 1, "tide": 1, "yesterday": 1})
            self.assertEqual([content for _, content in library.sentences(id_document)], [SECOND.strip()])
            self.assertEqual(library.rows("SELECT title, data_size FROM document_object"),
                             [("My ferry", len(SECOND))])
            self.assertEqual(library.words(id_document, description="title"), {"my": 1, "ferry": 1}
                             if not library.value("SELECT 1 FROM word_noise WHERE term = 'my'") else {"ferry": 1})
            self.check_user_rows(id_document)
            self.assert_sound()

        with self.subTest("moved"):
            words = library.words(id_document)
            library.forget_log()
            library.queue(path, index_type=MOVED)
            library.run()
            self.assertFalse(library.logged("Indexer::IndexDocument - Starting"))
            self.assertEqual(library.words(id_document), words)
            self.assertEqual(library.words(id_document, description="document_path").get("ferry"), 1)
            self.check_user_rows(id_document)
            self.assertEqual(library.queued(), [])
            self.assert_sound()

        with self.subTest("moved to a place that is not known"):
            elsewhere = library.write("elsewhere.txt", FIRST)
            library.queue(elsewhere, index_type=MOVED)
            library.run()
            self.assertTrue(library.logged("Error: Update index for Move: "))
            self.assertEqual(library.words(library.document_id(elsewhere)), {"ferry": 1, "waits": 1, "tide": 1})

        with self.subTest("indexed as new"):
            library.queue(path, index_type=INDEX_NEW)
            library.run()
            renewed = library.document_id(path)
            self.assertNotEqual(renewed, id_document)
            self.assertEqual(library.rows("SELECT location_invalid FROM document_object WHERE id = ?",
                                          (id_document,)), [(1,)])
            self.assertRegex(library.value("SELECT location_invalid_date FROM document_object WHERE id = ?",
                                           (id_document,)), r"^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d$")
            self.assertEqual(library.words(renewed), {"ferry": 1, "left": 1, "tide": 1, "yesterday": 1})
            self.assert_sound()

    def add_user_rows(self, id_document):
        """What a user's tag looks like: a tag with its words, and a word of its own kind in the index."""
        connection = self.library.connect()
        connection.execute("INSERT INTO root_word (word) VALUES ('favourite')")
        word = connection.execute("SELECT last_insert_rowid()").fetchone()[0]
        kind = connection.execute("SELECT type FROM search_weight WHERE description = 'user'").fetchone()[0]
        share = connection.execute("SELECT id FROM document_share WHERE id_document = ? AND id_user = ?",
                                   (id_document, USER)).fetchone()[0]
        connection.execute("INSERT INTO word_index VALUES (?, 1, 4, ?, ?, -1)", (id_document, kind, word))
        connection.execute("INSERT INTO meta_tags (id_document_share, type) VALUES (?, ?)", (share, kind))
        connection.execute("INSERT INTO metatag_entry VALUES (last_insert_rowid(), ?, 1)", (word,))
        connection.close()

    def check_user_rows(self, id_document):
        library = self.library
        self.assertEqual(library.words(id_document, 4, "user"), {"favourite": 1})
        self.assertEqual(library.rows("SELECT word FROM meta_tags JOIN metatag_entry ON id_meta_tags = meta_tags.id "
                                      "JOIN root_word ON root_word.id = id_root_word"), [("favourite",)])


if __name__ == "__main__":
    harness.main()
