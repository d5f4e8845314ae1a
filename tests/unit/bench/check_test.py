import collections
import pathlib
import tempfile
import unittest

import check

CALLGRIND = """\
version: 1
creator: callgrind-3.19.0
positions: line
events: Ir
summary: 175

ob=(1) /usr/lib/libone.so
fl=(1) one.c
fn=(1) first
10 5
+2 20
cob=(2) /bin/tyindexer-stages
cfn=(2) main
calls=3 7
* 1000

ob=(2)
fl=(2) main.cpp
fn=(2)
7 100
cfn=(1)
cob=(1)
calls=1 10
-1 4000
* 50

totals: 175
"""


class CallgrindTest(unittest.TestCase):
    def test_each_object_has_its_own_cost_without_that_of_the_calls_it_makes(self):
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder) / "callgrind.out"
            file.write_text(CALLGRIND)
            self.assertEqual(check.instructions_by_object(file),
                             {"/usr/lib/libone.so": 25, "/bin/tyindexer-stages": 150})


class FixedJobTest(unittest.TestCase):
    def test_its_documents_are_the_same_every_time(self):
        with tempfile.TemporaryDirectory() as folder:
            first, second = pathlib.Path(folder) / "first", pathlib.Path(folder) / "second"
            check.write_documents(first)
            check.write_documents(second)
            contents = [[file.read_bytes() for file in sorted(each.iterdir())] for each in (first, second)]
        self.assertEqual(contents[0], contents[1])
        self.assertEqual(len(contents[0]), check.DOCUMENTS)
        self.assertEqual(len(set(contents[0])), check.DOCUMENTS)

    def test_its_documents_have_common_and_rare_words(self):
        with tempfile.TemporaryDirectory() as folder:
            documents = pathlib.Path(folder) / "documents"
            check.write_documents(documents)
            words = [word.strip(".").lower() for file in documents.iterdir() for word in file.read_text().split()]
        counts = collections.Counter(words)
        self.assertGreater(max(counts.values()), len(words) / 100)
        self.assertEqual(min(counts.values()), 1)


if __name__ == "__main__":
    unittest.main()
