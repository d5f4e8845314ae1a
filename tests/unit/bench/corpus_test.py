import pathlib
import tempfile
import unittest

import corpus


class SelectionTest(unittest.TestCase):
    def test_english_text_of_a_fit_size_is_taken(self):
        self.assertTrue(corpus.is_english_text(b"A sentence of words. " * 300))
        sentence = "The café is open, said its owner, and so it was when the first guests came down the hill at noon. "
        self.assertTrue(corpus.is_english_text((2 * sentence.replace("é", "e") + sentence).encode() * 100))

    def test_small_and_huge_files_binary_data_and_other_scripts_are_not(self):
        self.assertFalse(corpus.is_english_text(b"A few words."))
        self.assertFalse(corpus.is_english_text(b"a" * (corpus.LARGEST + 1)))
        self.assertFalse(corpus.is_english_text(b"words\0" * 1000))
        self.assertFalse(corpus.is_english_text(b"words\xff " * 1000))
        self.assertFalse(corpus.is_english_text("Это не по-английски. ".encode() * 300))

    def test_some_of_many_files_are_taken_evenly(self):
        self.assertEqual(corpus.every_nth(list(range(10)), 4), [0, 2, 5, 7])
        self.assertEqual(corpus.every_nth([1, 2], 4), [1, 2])
        self.assertEqual(corpus.every_nth([1, 2], None), [1, 2])


class CorpusTest(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.work, self.source = pathlib.Path(temporary.name) / "work", pathlib.Path(temporary.name) / "source"
        (self.source / "below").mkdir(parents=True)
        (self.source / "b.txt").write_text("four")
        (self.source / "below/a.md").write_text("two")
        (self.source / "mail.eml").write_text("no text")

    def test_it_holds_the_files_of_its_types_as_often_as_asked(self):
        made = corpus.Corpus(self.source, corpus.TEXT_TYPES, "text", self.work, copies=2)
        self.assertEqual([str(file.relative_to(made.folder)) for file in made.files],
                         ["copy1/b.txt", "copy1/below/a.md", "copy2/b.txt", "copy2/below/a.md"])
        self.assertEqual(made.bytes, 14)

    def test_moved_it_holds_the_same_under_other_paths_and_leaves_the_source_alone(self):
        made = corpus.Corpus(self.source, corpus.TEXT_TYPES, "text", self.work)
        moved = made.moved("again")
        self.assertEqual([file.read_text() for file in moved.files], ["four", "two"])
        self.assertFalse(set(moved.files) & set(made.files))
        moved.remove()
        self.assertTrue(all(file.exists() for file in made.files))
        self.assertEqual(len(list(self.source.rglob("*.*"))), 3)


if __name__ == "__main__":
    unittest.main()
