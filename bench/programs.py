"""The programs that are measured: the service on a library of its own, the floor, and recollindex."""
import contextlib
import json
import os
import pathlib
import shutil
import sqlite3
import subprocess
import sys
import time

from figures import median_and_spread
from watch import Watch

ROOT = pathlib.Path(__file__).resolve().parent.parent
BIN = ROOT / "build/release/bin"
PLUGINS = ROOT / "build/release/plugins"
WORK = ROOT / "build/bench"

TABLES = ("document_object", "document_share", "prv", "prv_history", "important_text", "root_word", "word_index",
          "ascii_sentences")
# Sums that differ when rows are as many but not the same.
SUMS = {"word_index": "hit_count + first_matching_sentence + type", "ascii_sentences": "sentence_length + num_sentence",
        "important_text": "type"}


class Service:
    """A library with settings of its own."""

    def __init__(self, name, work=WORK):
        self.folder, self.work = work / name, work
        self.folder.mkdir(parents=True)
        self.library = self.folder / "library.db"
        self.log = self.folder / "service.log"
        self.environment = {"TYINDEXER_SETTINGS": str(self.folder / "settings.db"), "TYINDEXER_PLUGINS": str(PLUGINS)}
        self.control("init", self.library, "--log", self.log)
        self.control("settings", "set", "--number", "Indexer/MaxDocsBeforeRestart", "0")
        # The service runs with the lowest priority unless it is told otherwise; the yardsticks do not.
        self.control("settings", "set", "--text", "Indexer/Priority", "normal")

    def control(self, *arguments):
        done = subprocess.run([str(part) for part in (BIN / "tyctl", *arguments)],
                              env={**os.environ, **self.environment}, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              text=True)
        if done.returncode != 0:
            sys.exit(f"tyctl {arguments[0]} failed: {done.stdout}")

    def queue(self, corpus):
        self.control("add", corpus.folder)

    def index(self, corpus):
        self.queue(corpus)
        self.log.unlink(missing_ok=True)
        corpus.prepare_run()
        watch = Watch([BIN / "tyindexerd", "--until-idle", "--poll-interval", "0.001"], self.work, self.environment,
                      self.log)
        return watch.figures(corpus, self.size())

    def size(self):
        return sum(file.stat().st_size for file in self.folder.glob("library.db*"))

    def rows(self):
        return rows_of(self.library)

    def documents(self):
        with contextlib.closing(sqlite3.connect(self.library)) as database:
            return database.execute("SELECT count(*) FROM document_object").fetchone()[0]

    def look_ups(self, count=25):
        """Seconds that another program waits for the hits of a word and for the rows of a document, in the middle of
        many, each asked once before so that its pages are at hand."""
        with contextlib.closing(sqlite3.connect(self.library)) as database:
            def times(table, column):
                most, = database.execute(f"SELECT max(id) FROM {table}").fetchone()
                taken = []
                for key in [1 + number * (most - 1) // count for number in range(count)] * 2:
                    start = time.perf_counter()
                    database.execute(f"SELECT total(hit_count) FROM word_index WHERE {column} = ?", [key]).fetchone()
                    taken.append(time.perf_counter() - start)
                return median_and_spread(taken[count:])
            return {"word": times("root_word", "id_root_word"),
                    "document": times("document_object", "id_document_object")}

    def stages(self, corpus):
        """Indexes a corpus with the stages program."""
        self.queue(corpus)
        corpus.prepare_run()
        done = subprocess.run([BIN / "tyindexer-stages"], env={**os.environ, **self.environment},
                              stdout=subprocess.PIPE, text=True)
        if done.returncode != 0:
            sys.exit("the stages program failed")
        return json.loads(done.stdout)

    def remove(self):
        shutil.rmtree(self.folder)


def rows_of(library):
    with contextlib.closing(sqlite3.connect(library)) as database:
        def value(wanted, table):
            return database.execute(f"SELECT {wanted} FROM {table}").fetchone()[0]
        return {"rows": {table: value("count(*)", table) for table in TABLES},
                "sums": {table: value(f"total({column})", table) for table, column in SUMS.items()}}


def run_service(corpus, name):
    service = Service(name)
    return {**service.index(corpus), **service.rows()}


def run_floor(corpus, name):
    folder = WORK / name
    folder.mkdir()
    library, paths = folder / "library.db", folder / "paths.txt"
    paths.write_text("".join(f"{file}\n" for file in corpus.files))
    corpus.prepare_run()
    with open(paths, "rb") as source:
        watch = Watch([BIN / "tyindexer-floor", library], WORK, stdin=source)
    return {**watch.figures(corpus, library.stat().st_size), **rows_of(library)}


def has_recollindex():
    return shutil.which("recollindex") is not None


def run_recollindex(corpus, name):
    folder = WORK / name
    folder.mkdir()
    # It would run with the lowest priority, which on a busy machine starves it.
    (folder / "recoll.conf").write_text(f"topdirs = {corpus.folder}\nloglevel = 2\nnoaspell = 1\nidxniceprio = 0\n"
                                         "monioniceclass = 2\nmonioniceclassdata = 4\n")
    corpus.prepare_run()
    watch = Watch(["recollindex", "-z", "-c", folder], WORK, {"RECOLL_CONFDIR": str(folder)})
    index = [file for file in (folder / "xapiandb").rglob("*") if file.is_file()]
    return watch.figures(corpus, sum(file.stat().st_size for file in index))
