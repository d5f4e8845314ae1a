"""tyctl settings, on a settings file of the test's own."""
import unittest

from tyctl_harness import TyctlTest


class SettingsTest(TyctlTest):
    def set(self, *arguments):
        self.tyctl("settings", "set", *arguments)

    def get(self, name):
        return self.tyctl("settings", "get", name).stdout.rstrip("\n")

    def test_a_known_number_is_stored_as_a_number(self):
        self.set("Indexer/PollInterval", "5")
        self.assertEqual(self.get("Indexer\\PollInterval"), "5")
        self.assertIn("service\\Indexer\\PollInterval = 5  (number)", self.tyctl("settings", "list").stdout)

    def test_a_text_that_looks_like_a_number_stays_a_text(self):
        self.set("Indexer\\LogFilePath", "5")
        self.assertIn("LogFilePath = 5  (text)", self.tyctl("settings", "list", "Indexer").stdout)

    def test_a_known_number_refuses_a_text(self):
        failed = self.tyctl("settings", "set", "Indexer\\PollInterval", "often", status=2)
        self.assertIn('"service\\Indexer\\PollInterval" takes a whole number of 32 bits, not "often"', failed.stderr)

    def test_a_number_out_of_range_is_refused(self):
        self.tyctl("settings", "set", "--number", "Indexer\\PollInterval", "4294967296", status=2)

    def test_a_number_too_large_for_any_number_is_refused_as_one_that_does_not_fit(self):
        failed = self.tyctl("settings", "set", "Indexer/MaxDocsBeforeRestart", "1e400", status=2)
        self.assertIn("takes a whole number of 32 bits", failed.stderr)

    def test_a_poll_interval_that_the_service_would_replace_is_refused(self):
        for accepted in ("0", "65"):
            self.set("Indexer/PollInterval", accepted)
        for refused in ("-1", "66"):
            failed = self.tyctl("settings", "set", "--number", "--", "indexer/pollinterval", refused, status=2)
            self.assertIn(f'"service\\indexer\\pollinterval" takes a whole number from 0 to 65, not {refused}',
                          failed.stderr)
        self.assertEqual(self.get("Indexer/PollInterval"), "65")

    def test_a_value_that_the_service_has_no_meaning_for_is_refused_and_changes_nothing(self):
        self.set("Indexer/Priority", "High")
        for name, value, takes in (("LoggingOn", "7", "a whole number from 0 to 2, not 7"),
                                   ("Priority", "bogus", "low, normal or high, not \"bogus\""),
                                   ("PluginTimeoutSeconds", "0", "a whole number from 1 to 3600, not 0"),
                                   ("PluginTimeoutSeconds", "100000", "a whole number from 1 to 3600, not 100000")):
            failed = self.tyctl("settings", "set", "Indexer/" + name, value, status=2)
            self.assertEqual(failed.stderr, f'tyctl: "service\\Indexer\\{name}" takes {takes}\n')
        failed = self.tyctl("settings", "set", "--text", "Indexer/PollInterval", "5", status=2)
        self.assertIn("takes a number, not a text", failed.stderr)
        self.assertEqual(self.tyctl("settings", "list").stdout, "service\\Indexer\\Priority = High  (text)\n")

    def test_an_import_takes_values_as_they_are(self):
        self.tyctl("settings", "import", "-", input="Windows Registry Editor Version 5.00\n\n"
                   "[HKEY_CURRENT_USER\\software\\orlent corporation\\tessaly\\service\\Indexer]\n"
                   "\"LoggingOn\"=dword:00000007\n")
        self.assertEqual(self.get("Indexer/LoggingOn"), "7")

    def test_an_empty_name_names_no_setting(self):
        for command in (("set", "", "x"), ("set", "/", "x"), ("set", "HKEY_CURRENT_USER\\x", "y"), ("get", ""),
                        ("delete", "")):
            failed = self.tyctl("settings", *command, status=2)
            self.assertEqual(failed.stderr, f'tyctl: "{command[1]}" names no setting; name it key\\value, such as '
                                            "Indexer\\PollInterval\n")
        self.assertEqual(self.tyctl("settings", "list").stdout, "")

    def test_a_wrong_argument_is_told_with_its_command_and_what_it_takes(self):
        numbers = "is no whole number from 0 to 2147483647; see tyctl"
        for command, complaint in (
                (("queue", "--limit", "-1"), f'queue: --limit: "-1" {numbers} queue --help'),
                (("queue", "--limit", "x"), f'queue: --limit: "x" {numbers} queue --help'),
                (("queue", "--limit", "9" * 20), f'queue: --limit: "{"9" * 20}" {numbers} queue --help'),
                (("search", "--limit", "-1", "word"), f'search: --limit: "-1" {numbers} search --help'),
                (("add", "--user", "me", "."),
                 'add: --user: "me" is no whole number from -2147483648 to 2147483647; see tyctl add --help'),
                (("queue", "--limit"), "queue: --limit needs a value; see tyctl queue --help"),
                (("queue", "more"), 'queue: no further argument "more"; see tyctl queue --help'),
                (("add",), "add: PATH is required; see tyctl add --help"),
                (("init", ""), "init: LIBRARY: must not be empty; see tyctl init --help"),
                (("init", "--log", ""), "init: --log: must not be empty; see tyctl init --help"),
                (("settings", "import", ""), "settings import: FILE: must not be empty; see tyctl settings import --help"),
                (("settings", "export", "-o", ""),
                 "settings export: --output: must not be empty; see tyctl settings export --help"),
                (("supervise", "--", ""), "supervise: COMMAND: must not be empty; see tyctl supervise --help")):
            self.assertEqual(self.tyctl(*command, status=2).stderr, f"tyctl {complaint}\n")

    def test_a_word_that_is_no_command_is_named(self):
        self.assertEqual(self.tyctl("frobnicate", status=2).stderr,
                         'tyctl: no command "frobnicate"; see tyctl --help\n')
        self.assertEqual(self.tyctl("settings", "frobnicate", status=2).stderr,
                         'tyctl settings: no command "frobnicate"; see tyctl settings --help\n')
        self.assertEqual(self.tyctl("--frob", status=2).stderr, 'tyctl: no option "--frob"; see tyctl --help\n')
        self.assertIn("subcommand", self.tyctl(status=2).stderr)

    def test_the_kind_can_be_said(self):
        self.set("--expand", "DataTypes/txt/Folder", "%TEMP%")
        self.set("--number", "DataTypes/txt/Count", "3")
        listed = self.tyctl("settings", "list", "DataTypes").stdout
        self.assertIn("DataTypes\\txt\\Folder = %TEMP%  (expand)", listed)
        self.assertIn("DataTypes\\txt\\Count = 3  (number)", listed)

    def test_an_unknown_setting_keeps_the_kind_that_it_has(self):
        self.set("--number", "DataTypes/txt/Count", "3")
        self.set("DataTypes/txt/Count", "4")
        self.assertIn("Count = 4  (number)", self.tyctl("settings", "list").stdout)

    def test_full_paths_and_short_ones_name_the_same_setting(self):
        self.set("Software\\Orlent Corporation\\Tessaly\\Service\\DataBasePath", "/x/library.db")
        self.assertEqual(self.get("service\\databasepath"), "/x/library.db")
        self.assertEqual(self.get("DataBasePath"), "/x/library.db")

    def test_a_deleted_setting_is_gone(self):
        self.set("Indexer\\Priority", "low")
        self.tyctl("settings", "delete", "Indexer\\Priority")
        failed = self.tyctl("settings", "get", "Indexer\\Priority", status=1)
        self.assertIn('there is no setting "service\\Indexer\\Priority"', failed.stderr)
        self.tyctl("settings", "delete", "Indexer\\Priority", status=1)

    def test_listing_an_unknown_key_says_so(self):
        self.assertIn('there is no key "Nothing"', self.tyctl("settings", "list", "Nothing", status=1).stderr)

    def test_listing_no_settings_at_all_prints_nothing(self):
        self.assertEqual(self.tyctl("settings", "list").stdout, "")

    def test_what_was_exported_can_be_imported_elsewhere(self):
        self.set("Indexer\\PollInterval", "5")
        self.set("Indexer\\LogFilePath", "C:\\logs\\a \"b\".log")
        file = self.folder / "settings.reg"
        self.tyctl("settings", "export", "-o", file)
        before = self.tyctl("settings", "list").stdout
        self.environment["TYINDEXER_SETTINGS"] = str(self.folder / "other.db")
        self.assertEqual(self.tyctl("settings", "list").stdout, "")
        self.tyctl("settings", "import", file)
        self.assertEqual(self.tyctl("settings", "list").stdout, before)

    def test_an_import_from_standard_input(self):
        self.tyctl("settings", "import", "-", input="Windows Registry Editor Version 5.00\n\n"
                   "[HKEY_CURRENT_USER\\software\\orlent corporation\\tessaly\\service\\Indexer]\n"
                   "\"PollInterval\"=dword:0000000a\n")
        self.assertEqual(self.get("Indexer\\PollInterval"), "10")

    def test_an_import_that_cannot_be_understood_changes_nothing(self):
        self.set("Indexer\\PollInterval", "5")
        failed = self.tyctl("settings", "import", "-", status=1, input="Windows Registry Editor Version 5.00\n\n"
                            "[HKEY_CURRENT_USER\\software\\orlent corporation\\tessaly\\service\\Indexer]\n"
                            "\"PollInterval\"=dword:0000000a\nnonsense\n")
        self.assertIn("line 5", failed.stderr)
        self.assertEqual(self.get("Indexer\\PollInterval"), "5")

    def test_a_damaged_settings_file_is_named(self):
        self.write("settings.db", "this is no settings file, however long one looks at it " * 40)
        failed = self.tyctl("settings", "get", "Indexer\\PollInterval", status=1)
        self.assertIn("settings.db: the file is damaged", failed.stderr)


if __name__ == "__main__":
    unittest.main()
