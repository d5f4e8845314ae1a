"""The upgrade of a library's tables, given to the sqlite3 shell as an operator gives it."""
import pathlib
import subprocess
import unittest

from tyctl_harness import TyctlTest

UPGRADE = pathlib.Path(__file__).parents[3] / "schema/upgrade-1-to-2.sql"
# What version 1 did not have.
LATER = """
DROP TRIGGER word_index_deleted; DROP TRIGGER word_index_updated;
DROP TRIGGER root_word_added; DROP TRIGGER root_word_renumbered;
DROP TABLE word_release; DROP TABLE word_purge;
DROP INDEX word_index_id_root_word; CREATE INDEX word_index_id_root_word ON word_index (id_root_word);
DROP INDEX root_word_word; CREATE INDEX root_word_word ON root_word (word);
PRAGMA user_version = 1;
INSERT INTO root_word (word) VALUES ('river'), ('boat');
INSERT INTO word_index (id_document_object, hit_count, comp_type, type, id_root_word, first_matching_sentence)
  VALUES (1, 2, 2, 0, 1, 1), (1, 1, 2, 0, 2, 1);
"""


class UpgradeTest(TyctlTest):
    def shell(self, script):
        done = subprocess.run(["sqlite3", self.library], input=script, capture_output=True, text=True, check=False)
        return done.returncode

    def tables(self):
        return self.rows("SELECT type, name, sql FROM sqlite_schema WHERE name NOT LIKE 'sqlite_%' ORDER BY type, name")

    def setUp(self):
        super().setUp()
        self.tyctl("init", self.library)
        self.newest = self.tables()

    def test_a_library_of_version_1_gets_the_tables_of_a_new_one_and_keeps_its_rows(self):
        self.assertEqual(self.shell(LATER), 0)
        self.assertNotEqual(self.tables(), self.newest)
        self.assertEqual(self.shell(UPGRADE.read_text()), 0)
        self.assertEqual(self.tables(), self.newest)
        self.assertEqual(self.rows("PRAGMA user_version"), [(2,)])
        self.assertEqual(self.rows("PRAGMA integrity_check"), [("ok",)])
        self.assertEqual(self.rows("SELECT word FROM root_word ORDER BY id"), [("river",), ("boat",)])
        self.assertEqual(self.rows("SELECT hit_count FROM word_index WHERE id_root_word = 1"), [(2,)])
        self.assertEqual(self.rows("SELECT count(*) FROM sqlite_stat1 WHERE tbl IN ('root_word', 'word_index')"), [(3,)])

    def test_a_library_of_another_version_stays_as_it_is(self):
        self.assertNotEqual(self.shell(UPGRADE.read_text()), 0)
        self.assertEqual(self.tables(), self.newest)
        self.assertEqual(self.rows("PRAGMA user_version"), [(2,)])


if __name__ == "__main__":
    unittest.main()
