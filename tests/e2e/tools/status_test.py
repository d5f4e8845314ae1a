"""tyctl status, on a library of the test's own."""
import json
import unittest

from tyctl_harness import TyctlTest


class StatusTest(TyctlTest):
    def setUp(self):
        super().setUp()
        self.tyctl("init", self.library)

    def status(self):
        return json.loads(self.tyctl("status", "--json").stdout)

    def document(self, location, data_type="txt", invalid=0, failed=0):
        self.rows("INSERT INTO document_object (saved_location, source_url, data_type, location_invalid,"
                  " flag_indexing_failed) VALUES (?, ?, ?, ?, ?)", location, location, data_type, invalid, failed)

    def test_an_empty_library_has_nothing_in_work(self):
        said = self.tyctl("status").stdout
        self.assertIn("In work:     nothing yet\n", said)
        self.assertIn("Queue:       0 waiting, 0 claimed\n", said)
        self.assertIn("Documents:   0\n", said)

    def test_counts_live_documents_by_type(self):
        self.document("/x/a.txt")
        self.document("/x/a.txt", invalid=1)
        self.document("/x/b.eml", "eml", failed=1)
        self.assertIn("Documents:   2 (eml: 1, txt: 1)\n", self.tyctl("status").stdout)
        status = self.status()
        self.assertEqual((status["documents"], status["documents_by_type"], status["indexing_failed"]),
                         (2, {"eml": 1, "txt": 1}, 1))

    def test_counts_words_and_the_documents_own_sentences(self):
        self.rows("INSERT INTO root_word (word) VALUES ('river'), ('lake')")
        self.rows("INSERT INTO ascii_sentences (id_document_object, sentence_length, content, num_sentence)"
                  " VALUES (1, 1, ' ', -1), (1, 1, ' ', 0), (1, 9, 'A river.', 1)")
        status = self.status()
        self.assertEqual((status["words"], status["sentences"]), (2, 1))

    def test_names_the_document_in_work_and_since_when(self):
        self.rows("INSERT INTO file_index_queue (doc_path, flag_dirty) VALUES ('/x/a.txt', 1), ('/x/b.txt', 0)")
        self.tyctl("settings", "set", "Indexer\\IndexingQueueNumber", "1")
        self.tyctl("settings", "set", "Indexer\\LastTouch", "16 Nov 2026 01:47:03")
        self.assertIn("In work:     /x/a.txt (queue entry 1), since 16 Nov 2026 01:47:03",
                      self.tyctl("status").stdout)
        status = self.status()
        self.assertEqual(status["in_work"]["doc_path"], "/x/a.txt")
        self.assertEqual(status["queue"], {"waiting": 1, "claimed": 1})

    def test_says_when_the_job_in_work_is_overdue(self):
        self.tyctl("settings", "set", "Indexer\\IndexingQueueNumber", "9")
        self.tyctl("settings", "set", "Indexer\\IndexingKey", "port v2.txt")
        self.tyctl("settings", "set", "Indexer\\LastTouch", "16 Nov 1999 01:47:03")
        said = self.tyctl("status").stdout
        self.assertIn("...port v2.txt (queue entry 9)", said)
        self.assertIn("it is overdue", said)

    def test_tells_whether_there_is_a_supervisor(self):
        self.assertIn("Supervisor:  none\n", self.tyctl("status").stdout)
        self.tyctl("settings", "set", "Master\\", "somebody")
        self.assertIn("Supervisor:  somebody\n", self.tyctl("status").stdout)


if __name__ == "__main__":
    unittest.main()
