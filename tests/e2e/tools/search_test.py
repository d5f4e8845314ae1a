"""tyctl search, on a library whose rows the test writes as the service does."""
import datetime
import json
import unittest

from tyctl_harness import TyctlTest


class SearchTest(TyctlTest):
    def setUp(self):
        super().setUp()
        self.tyctl("init", self.library)

    def document(self, title, location=None, invalid=0, parent=-1, relevance=None, days=0):
        location = location or f"/x/{title}.txt"
        self.rows("INSERT INTO document_object (title, saved_location, source_url, data_type, location_invalid, id_parent)"
                  " VALUES (?, ?, ?, 'txt', ?, ?)", title, location, location, invalid, parent)
        number = self.rows("SELECT MAX(id) FROM document_object")[0][0]
        if relevance is not None:
            moment = datetime.datetime.now() - datetime.timedelta(days=days)
            self.rows("INSERT INTO prv (last_prv, last_modified) VALUES (?, ?)", relevance,
                      moment.strftime("%Y-%m-%d %H:%M:%S"))
            self.rows("INSERT INTO document_share (id_document, id_user, id_prv, id_annotation)"
                      " VALUES (?, 1, (SELECT MAX(id) FROM prv), -1)", number)
        return number

    def word(self, document, word, hits=1, sentence=0):
        if not self.rows("SELECT id FROM root_word WHERE word = ?", word):
            self.rows("INSERT INTO root_word (word) VALUES (?)", word)
        self.rows("INSERT INTO word_index (id_document_object, hit_count, comp_type, type, id_root_word,"
                  " first_matching_sentence) VALUES (?, ?, 2, 1, (SELECT id FROM root_word WHERE word = ?), ?)",
                  document, hits, word, sentence)

    def sentence(self, document, number, content):
        self.rows("INSERT INTO ascii_sentences (id_document_object, sentence_length, content, num_sentence)"
                  " VALUES (?, ?, ?, ?)", document, len(content), content, number)

    def search(self, *arguments):
        return json.loads(self.tyctl("search", "--json", *arguments).stdout)

    def titles(self, *arguments):
        return [document["title"] for document in self.search(*arguments)["documents"]]

    def test_prints_title_path_and_the_sentence_of_the_first_match(self):
        document = self.document("On rivers")
        self.word(document, "river", hits=3, sentence=4)
        self.sentence(document, 4, "It's a long river.")
        said = self.tyctl("search", "river").stdout
        self.assertEqual(said, "On rivers  [3 hits, relevance 0.0]\n    /x/On rivers.txt\n"
                               "    It's a long river.\n1 document\n")

    def test_ranks_by_hits(self):
        for title, hits in (("few", 1), ("many", 9), ("some", 4)):
            self.word(self.document(title), "river", hits)
        self.assertEqual(self.titles("river"), ["many", "some", "few"])

    def test_ranks_documents_with_as_many_hits_by_their_present_relevance(self):
        half_life = self.rows("SELECT decay_halflife FROM prv_rules WHERE data_type = 'zzzzDef'")[0][0]
        for title, relevance, days in (("faded", 100, 20 * half_life), ("fresh", 50, 0), ("none", None, 0)):
            self.word(self.document(title, relevance=relevance, days=days), "river")
        found = self.search("river")["documents"]
        self.assertEqual([document["title"] for document in found], ["fresh", "faded", "none"])
        self.assertEqual(found[0]["relevance"], 50)
        self.assertLess(found[1]["relevance"], 1)

    def test_the_limit_cuts_only_after_ranking(self):
        for number in range(6):
            self.word(self.document(f"d{number}", relevance=number), "river")
        self.assertEqual(self.titles("--limit", "2", "river"), ["d5", "d4"])
        self.assertIn("2 of 6 documents", self.tyctl("search", "--limit", "2", "river").stdout)
        self.assertEqual(len(self.titles("--limit", "0", "river")), 6)

    def test_all_words_must_be_held(self):
        both = self.document("both")
        self.word(both, "river", 1)
        self.word(both, "lake", 2)
        self.word(self.document("one"), "river", 50)
        found = self.search("river", "lake")["documents"]
        self.assertEqual([(d["title"], d["hits"]) for d in found], [("both", 3)])

    def test_hits_of_all_components_add_up_and_the_earliest_sentence_is_shown(self):
        document = self.document("On rivers")
        self.word(document, "river", 2, sentence=7)
        self.word(document, "river", 1, sentence=3)
        self.word(document, "river", 1, sentence=0)
        self.sentence(document, 3, "The river.")
        self.sentence(document, 7, "A river.")
        found = self.search("river")["documents"][0]
        self.assertEqual((found["hits"], found["sentence"]), (4, "The river."))

    def test_a_word_of_the_title_alone_has_no_sentence(self):
        document = self.document("On rivers")
        self.word(document, "rivers", sentence=0)
        self.sentence(document, 0, " ")
        self.assertEqual(self.tyctl("search", "rivers").stdout,
                         "On rivers  [1 hit, relevance 0.0]\n    /x/On rivers.txt\n1 document\n")

    def test_a_document_without_a_title_is_shown_by_its_file_name(self):
        self.word(self.document("", "/x/notes.txt"), "river")
        self.assertTrue(self.tyctl("search", "river").stdout.startswith("notes.txt  [1 hit, "))

    def test_words_are_read_as_the_index_reads_them(self):
        self.word(self.document("mail"), "mail")
        self.word(self.document("john"), "john")
        self.assertEqual(self.titles("E-Mail"), ["mail"])
        self.assertEqual(self.titles("JOHN's"), ["john"])

    def test_superseded_documents_are_not_found(self):
        self.word(self.document("old", invalid=1), "river")
        self.word(self.document("new"), "river")
        self.assertEqual(self.titles("river"), ["new"])

    def test_noise_words_are_left_out_with_a_note(self):
        self.rows("INSERT INTO word_noise (term) SELECT 'whereas' WHERE NOT EXISTS"
                  " (SELECT 1 FROM word_noise WHERE term = 'whereas')")
        self.word(self.document("On rivers"), "river")
        done = self.tyctl("search", "whereas", "river")
        self.assertIn("the library does not index them: whereas", done.stderr)
        self.assertIn("On rivers", done.stdout)
        self.tyctl("search", "whereas", status=1)

    def test_says_which_words_no_document_holds(self):
        self.word(self.document("On rivers"), "river")
        self.assertEqual(self.tyctl("search", "river", "glacier").stdout, "No document holds all of glacier.\n")

    def test_refuses_words_that_cannot_be_indexed(self):
        self.assertIn("nothing to search for", self.tyctl("search", "x", "-", "ü", status=1).stderr)

    def test_an_attachment_shows_the_file_that_it_came_with(self):
        mail = self.document("Letter", "/x/letter.eml")
        inner = self.document("Inner", "/x/letter.eml?attach=2", parent=mail)
        text = self.document("Text", "/tmp/20261116014703inner.eml?attach=1", parent=inner)
        self.word(inner, "river", 2)
        self.word(text, "river", 1)
        found = self.search("river")["documents"]
        self.assertEqual([(d["path"], d["attachment"]) for d in found],
                         [("/x/letter.eml", "2"), ("/x/letter.eml", "2.1")])
        self.assertIn("/x/letter.eml, attachment 2.1\n", self.tyctl("search", "river").stdout)

    def test_a_long_sentence_is_cut_around_the_match(self):
        document = self.document("On rivers")
        self.word(document, "river", sentence=1)
        self.sentence(document, 1, "before " * 100 + "the river " + "after " * 100)
        line = self.tyctl("search", "river").stdout.splitlines()[2]
        self.assertIn("before the river after", line)
        self.assertTrue(line.strip().startswith("...") and line.endswith("..."))
        self.assertLess(len(line), 260)

    def test_a_search_word_with_a_quote_is_harmless(self):
        self.assertIn("No document holds", self.tyctl("search", "x'; DELETE").stdout)


if __name__ == "__main__":
    unittest.main()
