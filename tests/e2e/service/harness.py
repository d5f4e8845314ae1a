"""What the tests of the running service share: a library of a test's own, the programs, and ways to look at what they
left.

The programs and plug-ins come from the environment, which ctest sets: TYINDEXER_TEST_BIN and TYINDEXER_TEST_PLUGINS.
"""

import os
import pathlib
import re
import shutil
import sqlite3
import subprocess
import tempfile
import time
import unittest

BIN = pathlib.Path(os.environ["TYINDEXER_TEST_BIN"])
PLUGINS = pathlib.Path(os.environ["TYINDEXER_TEST_PLUGINS"])
SANITIZED = bool(os.environ.get("TYINDEXER_TEST_SANITIZED"))

SERVICE = r"software\orlent corporation\tessaly\service"
INDEXER = SERVICE + r"\Indexer"
MASTER = SERVICE + r"\Master"
DATA_TYPES = "software\\orlent corporation\\tessaly\\DataTypes\\"

TEXT_PLUGIN = "Tessaly.TextExtractor"
MAIL_PLUGIN = "Tessaly.MailExtractor"

# Nothing here waits for a fixed time. This is when a test gives a condition up for lost, on the slowest machine.
DEADLINE = 240

INDEX_NEW = 1
INDEX = 2
MOVED = 3

USER = 7

LONG_DOCUMENT = 4000  # sentences

DATE = re.compile(r"\d\d [A-Z][a-z]{2} \d{4} \d\d:\d\d:\d\d")
LOG_LINE = re.compile(r"(?:\A|(?<=\n))\d\d [A-Z][a-z]{2} \d{4} \d\d:\d\d:\d\d: ")

LEVELS = ("CrashDetection", "LogicPath", "ErrorReport", "Interest", "UIOutput")


def wait_until(condition, what, deadline=DEADLINE, pause=0.002):
    """Polls until the condition is true and gives what it gave."""
    end = time.monotonic() + deadline
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > end:
            raise AssertionError(f"waited in vain until {what}")
        time.sleep(pause)


def stays_false(condition, polls, pause=0.002):
    """True when the condition was false at so many polls in a row; it is not waited for any longer than it stays so."""
    for _ in range(polls):
        if condition():
            return False
        time.sleep(pause)
    return True


def quoted(text):
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'


def settings_file_text(values):
    """The .reg text of {(key, name): text or number}; the empty name is a key's unnamed value."""
    lines = ["Windows Registry Editor Version 5.00"]
    for (key, name), value in values.items():
        data = quoted(value) if isinstance(value, str) else f"dword:{value & 0xFFFFFFFF:08x}"
        lines += ["", f"[HKEY_CURRENT_USER\\{key}]", f"{quoted(name) if name else '@'}={data}"]
    return "\r\n".join(lines) + "\r\n"


def run_tool(*arguments, settings, check=True):
    environment = dict(os.environ, TYINDEXER_SETTINGS=str(settings), TYINDEXER_PLUGINS=str(PLUGINS))
    done = subprocess.run([BIN / "tyctl", *map(str, arguments)], env=environment, stdin=subprocess.DEVNULL,
                          capture_output=True, text=True, timeout=DEADLINE)
    if check and done.returncode != 0:
        raise AssertionError(f"tyctl {arguments} gave {done.returncode}: {done.stdout}{done.stderr}")
    return done


class Library:
    """A library, its settings, its log and the documents of a test, all in one folder."""

    def __init__(self, folder, settings=None):
        self.folder = pathlib.Path(folder)
        self.documents = self.folder / "documents"
        self.documents.mkdir(parents=True, exist_ok=True)
        self.path = self.folder / "library.db"
        self.settings = self.folder / "settings.db"
        self.log_path = self.folder / "service.log"
        self.trace_path = self.folder / "statements.sql"
        self.errors_path = self.folder / "errors.txt"
        self.own_plugins = self.folder / "plugins"
        self.own_plugins.mkdir(exist_ok=True)
        self.temporary = self.folder / "temporary"
        self.temporary.mkdir(exist_ok=True)
        run_tool("init", self.path, settings=self.settings)
        self.set(self.usual_settings() | (settings or {}))

    def usual_settings(self):
        values = {
            (SERVICE, "DataBasePath"): str(self.path),
            (INDEXER, "LogFilePath"): str(self.log_path),
            (INDEXER, "LoggingOn"): 1,
            (INDEXER, "MaxDocsBeforeRestart"): 0,
            (INDEXER, "Priority"): "normal",
            (DATA_TYPES + "txt", "IndexPlugin"): TEXT_PLUGIN,
            (DATA_TYPES + "md", "IndexPlugin"): TEXT_PLUGIN,
            (DATA_TYPES + "eml", "IndexPlugin"): MAIL_PLUGIN,
            (DATA_TYPES + "Default", "IndexPlugin"): TEXT_PLUGIN,
        }
        return values | {(INDEXER, "LogLevel" + level): 1 for level in LEVELS}

    def set(self, values):
        file = self.folder / "settings.reg"
        file.write_text(settings_file_text(values), encoding="utf-8", newline="")
        run_tool("settings", "import", file, settings=self.settings)

    def get(self, key, name):
        return run_tool("settings", "get", key + "\\" + name, settings=self.settings).stdout.rstrip("\n")

    # Documents and queue

    def write(self, name, content):
        path = self.documents / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content if isinstance(content, bytes) else content.encode("utf-8"))
        return str(path)

    def write_long_document(self, name):
        """A document that keeps the service at work for a while; gives its path and its words."""
        numbers = range(LONG_DOCUMENT)
        path = self.write(name, "".join(f"Buoy b{number} swings at mile m{number}. " for number in numbers))
        words = {"buoy": LONG_DOCUMENT, "swings": LONG_DOCUMENT, "mile": LONG_DOCUMENT}
        for number in numbers:
            words |= {f"b{number}": 1, f"m{number}": 1}
        return path, words

    def write_plugin(self, prog_id, data_type, script):
        """A plug-in that is a shell script, for a data type of its own."""
        path = self.own_plugins / prog_id
        path.write_text("#!/bin/sh\n" + script + "\n")
        path.chmod(0o755)
        self.set({(DATA_TYPES + data_type, "IndexPlugin"): prog_id})

    def connect(self):
        connection = sqlite3.connect(self.path, timeout=DEADLINE, isolation_level=None)
        connection.execute("PRAGMA busy_timeout = 60000")
        return connection

    def queue(self, *paths, index_type=INDEX, data_type="txt", user=USER):
        self.queue_entries([(str(path), index_type, data_type, user) for path in paths])

    def queue_entries(self, entries):
        connection = self.connect()
        with connection:
            connection.execute("BEGIN IMMEDIATE")
            connection.executemany(
                "INSERT INTO file_index_queue (doc_path, index_type, data_type, user_id, date_time, flag_dirty) "
                "VALUES (?, ?, ?, ?, '2026-11-16 01:47:03', 0)", entries)
            connection.execute("COMMIT")
        connection.close()

    def rows(self, sql, parameters=()):
        connection = self.connect()
        try:
            return connection.execute(sql, parameters).fetchall()
        finally:
            connection.close()

    def value(self, sql, parameters=()):
        rows = self.rows(sql, parameters)
        return rows[0][0] if rows else None

    def write_rows(self, sql, parameters=()):
        connection = self.connect()
        connection.execute(sql, parameters)
        connection.close()

    def queued(self):
        return self.rows("SELECT doc_path, flag_dirty FROM file_index_queue ORDER BY id")

    def document_id(self, location):
        return self.value("SELECT id FROM document_object WHERE saved_location = ? COLLATE BINARY "
                          "AND location_invalid = 0", (str(location),))

    def words(self, id_document, comp_type=2, description="normal"):
        """Word to hits of one kind of text of a document."""
        return dict(self.rows(
            "SELECT word, sum(hit_count) FROM word_index JOIN root_word ON root_word.id = id_root_word "
            "WHERE id_document_object = ? AND word_index.comp_type = ? AND type = "
            "(SELECT type FROM search_weight WHERE description = ? AND comp_type = ?) GROUP BY word",
            (id_document, comp_type, description, comp_type)))

    def sentences(self, id_document):
        """(number, content) of the stored sentences, without the two blank ones."""
        return self.rows("SELECT num_sentence, content FROM ascii_sentences WHERE id_document_object = ? "
                         "AND num_sentence > 0 ORDER BY num_sentence", (id_document,))

    # The service

    def environment(self):
        return dict(os.environ, TYINDEXER_SETTINGS=str(self.settings),
                    TYINDEXER_PLUGINS=f"{PLUGINS}:{self.own_plugins}", TMPDIR=str(self.temporary))

    def start(self, *arguments, until_idle=False, trace=False, poll="0.001"):
        command = [BIN / "tyindexerd", "--poll-interval", poll, *arguments]
        if until_idle:
            command.append("--until-idle")
        if trace:
            command += ["--trace-sql", self.trace_path]
        with open(self.errors_path, "ab") as errors:
            return subprocess.Popen(list(map(str, command)), env=self.environment(), cwd=self.folder,
                                    stdin=subprocess.DEVNULL, stdout=errors, stderr=errors)

    def run(self, *arguments, trace=False, expect=0):
        """Runs the service until its queue is worked off."""
        return self.finish(self.start(*arguments, until_idle=True, trace=trace), expect)

    def finish(self, process, expect=0):
        try:
            status = process.wait(DEADLINE)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()
            raise AssertionError("the service did not end:\n" + self.log_tail()) from None
        if expect is not None and status != expect:
            raise AssertionError(f"the service ended with {status}, not {expect}: {self.errors()}\n{self.log_tail()}")
        return status

    def errors(self):
        return self.errors_path.read_text(errors="replace") if self.errors_path.exists() else ""

    def log_text(self):
        if not self.log_path.exists():
            return ""
        return self.log_path.read_bytes().decode("utf-8", "replace")

    def log(self):
        """The messages of the log with their levels, without their dates; a message may hold line breaks."""
        messages = LOG_LINE.split(self.log_text())[1:]
        return [message.rstrip("\r\n") for message in messages]

    def log_tail(self, count=40):
        return "\n".join(self.log()[-count:])

    def logged(self, text):
        return any(text in message for message in self.log())

    def forget_log(self):
        self.log_path.unlink(missing_ok=True)

    def wait_for_log(self, text, process):
        def found():
            if process.poll() is not None:
                raise AssertionError(f"the service ended with {process.returncode} before '{text}' was logged: "
                                     f"{self.errors()}\n{self.log_tail()}")
            return self.logged(text)
        wait_until(found, f"the log holds '{text}'")

    def trace(self):
        return self.trace_path.read_text(encoding="utf-8")

    def plugin_processes(self):
        """Ids of the processes that this library's service has started and that still live."""
        found = []
        wanted = f"TYINDEXER_SETTINGS={self.settings}".encode()
        for entry in os.scandir("/proc"):
            if not entry.name.isdigit():
                continue
            try:
                environment = pathlib.Path(entry.path, "environ").read_bytes().split(b"\0")
                state = pathlib.Path(entry.path, "stat").read_text().rpartition(")")[2].split()[0]
                program = os.path.basename(os.readlink(entry.path + "/exe"))
            except OSError:
                continue
            if wanted in environment and state != "Z" and program not in ("tyindexerd", "tyindexer", "tyctl"):
                found.append(int(entry.name))
        return found

    # What a library must look like whenever nobody works on it

    def faults(self, path=None):
        """What is wrong with the library: an empty list for a sound one."""
        connection = sqlite3.connect(path or self.path, timeout=DEADLINE, isolation_level=None)
        try:
            found = [f"integrity_check: {row[0]}" for row in connection.execute("PRAGMA integrity_check")
                     if row[0] != "ok"]
            for what, sql in SOUND.items():
                found += [f"{what}: {row}" for row in connection.execute(sql).fetchmany(3)]
            return found
        finally:
            connection.close()


# Each query finds what must not be there.
SOUND = {
    "word without a root word or document":
        "SELECT * FROM word_index WHERE id_root_word NOT IN (SELECT id FROM root_word) "
        "OR id_document_object NOT IN (SELECT id FROM document_object)",
    "word without hits": "SELECT * FROM word_index WHERE hit_count < 1 OR hit_count > 32767",
    "word of a kind that is not known":
        "SELECT * FROM word_index WHERE NOT EXISTS (SELECT 1 FROM search_weight "
        "WHERE search_weight.type = word_index.type AND search_weight.comp_type = word_index.comp_type)",
    "sentence without a document":
        "SELECT * FROM ascii_sentences WHERE id_document_object NOT IN (SELECT id FROM document_object)",
    "sentence number given twice":
        "SELECT id_document_object, num_sentence FROM ascii_sentences WHERE num_sentence > 0 "
        "GROUP BY 1, 2 HAVING count(*) > 1",
    "sentence of a wrong length":
        "SELECT * FROM ascii_sentences WHERE sentence_length <> "
        "length(content) + length(content) - length(replace(content, '''', ''))",
    "document without a share":
        "SELECT id FROM document_object WHERE id NOT IN (SELECT id_document FROM document_share)",
    "share without a document":
        "SELECT id FROM document_share WHERE id_document NOT IN (SELECT id FROM document_object)",
    "share without a relevance value": "SELECT id FROM document_share WHERE id_prv NOT IN (SELECT id FROM prv)",
    "relevance value without a share": "SELECT id FROM prv WHERE id NOT IN (SELECT id_prv FROM document_share)",
    "relevance value without its history":
        "SELECT id FROM prv WHERE (SELECT count(*) FROM prv_history WHERE id_prv = prv.id "
        "AND action_description = 'Document Created' AND prv_value = last_prv) <> 1",
    "location with two live documents":
        "SELECT saved_location FROM document_object WHERE location_invalid = 0 GROUP BY 1 HAVING count(*) > 1",
    "root word given twice": "SELECT word FROM root_word GROUP BY word HAVING count(*) > 1",
    "important text without a document":
        "SELECT * FROM important_text WHERE id_document NOT IN (SELECT id FROM document_object)",
    "meta tag without a share":
        "SELECT * FROM meta_tags WHERE id_document_share NOT IN (SELECT id FROM document_share)",
    # Rows of a document whose place another one has taken stay as they were, in pieces perhaps.
    "word that points at no sentence":
        "SELECT * FROM word_index WHERE id_document_object NOT IN (SELECT id FROM document_object "
        "WHERE location_invalid <> 0) AND NOT EXISTS (SELECT 1 FROM ascii_sentences "
        "WHERE ascii_sentences.id_document_object = word_index.id_document_object "
        "AND num_sentence = first_matching_sentence)",
}

# Between the commit of a document's words and that of its sentences, words point at sentences that are still to come.
SOUND_AT_REST_ONLY = ("word that points at no sentence",)


class ServiceTest(unittest.TestCase):
    """A test with a folder and a library of its own."""

    maxDiff = None
    settings = None

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="tyindexer-service-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.library = Library(self.folder / "library", self.settings)

    def started(self, *arguments, library=None, **options):
        """Starts the service; the test's end is its end."""
        process = (library or self.library).start(*arguments, **options)
        self.addCleanup(end, process)
        return process

    def assert_sound(self, library=None):
        self.assertEqual((library or self.library).faults(), [])

    def assert_no_plugin_survives(self, library=None):
        library = library or self.library
        wait_until(lambda: not library.plugin_processes(), "no plug-in process is left")


def end(process):
    if process.poll() is None:
        process.kill()
    process.wait()


def main():
    unittest.main(verbosity=2)
