"""A corpus of documents that nobody here wrote, indexed by the service and counted a second time by other means."""

import collections
import os
import pathlib
import re
import unittest

import harness
from harness import INDEX

CORPUS = pathlib.Path(os.environ.get("TYINDEXER_TEST_CORPUS", ""))
SAMPLE = 60


def count_words(text, noise):
    """Words of two and more characters with their number: lower case, "'s" dropped, cut at all that is no letter, digit
    or blank. The character that is dropped at a sentence's end is always a word of one character, which does not count.
    """
    text = re.sub("[A-Z]", lambda letter: letter.group().lower(), text).replace("'s", "")
    words = re.split("[^a-z0-9]+", text)
    return {word: hits for word, hits in collections.Counter(words).items() if len(word) > 1 and word not in noise}


@unittest.skipUnless(CORPUS.parts and (CORPUS / "text").is_dir(), f"there is no corpus at '{CORPUS}'")
class Corpus(harness.ServiceTest):
    def test_every_document_is_indexed_as_an_independent_count_says(self):
        texts = sorted((CORPUS / "text").rglob("*.txt"))
        mails = sorted((CORPUS / "eml").rglob("*.eml"))
        if harness.SANITIZED:
            texts = texts[::max(1, len(texts) // SAMPLE)][:SAMPLE]
            mails = mails[::max(1, len(mails) // SAMPLE)][:SAMPLE // 6]
        self.library.queue(*texts, index_type=INDEX)
        self.library.queue(*mails, index_type=INDEX, data_type="eml")
        self.library.run()
        self.assertEqual(self.library.queued(), [])
        # Attachments may be of kinds that no plug-in reads.
        self.assertEqual([line for line in self.library.log()
                          if line.startswith("Error: ") and str(self.library.temporary) not in line], [])
        self.assertEqual(self.library.value("SELECT count(*) FROM document_object WHERE id_parent = -1"),
                         len(texts) + len(mails))
        for mail in mails:
            self.assertIsNotNone(self.library.document_id(mail), mail)
        noise = {row[0] for row in self.library.rows("SELECT term FROM word_noise")}
        for path in texts:
            self.check_text(path, noise)
        self.assert_sound()

    def check_text(self, path, noise):
        text = path.read_bytes().decode("utf-8-sig")
        id_document = self.library.document_id(path)
        expected = count_words(text, noise)
        words = self.library.words(id_document)
        difference = {word: (words.get(word), expected.get(word)) for word in words.keys() | expected.keys()
                      if words.get(word) != expected.get(word)}
        self.assertEqual(difference, {}, f"{path}: words as (indexed, counted)")
        self.assertEqual(self.library.value(
            "SELECT count(*) FROM word_index WHERE id_document_object = ? AND comp_type = 2 AND type = "
            "(SELECT type FROM search_weight WHERE description = 'normal' AND comp_type = 2)", (id_document,)),
            len(expected), path)
        folded = " ".join(text.split())
        for number, content in self.library.sentences(id_document):
            self.assertIn(content, folded, f"{path}: sentence {number}")


if __name__ == "__main__":
    harness.main()
