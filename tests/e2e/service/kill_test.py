"""The service is killed at random moments, again and again: the library stays sound and no document is lost but the one
in work, which the next start drops."""

import concurrent.futures
import os
import random
import shutil
import signal
import sqlite3
import time

import harness
from harness import INDEX, SOUND, SOUND_AT_REST_ONLY

KILLS = int(os.environ.get("TYINDEXER_TEST_KILLS", "50"))
LIBRARIES = 2
DOCUMENTS = 40

# A job writes some 35 lines: the kills fall into the start-up and the first dozen of documents that follow it.
MOST_LINES = 420

VOICES = ("captain", "pilot", "harbour master", "lamplighter", "ferryman", "diver")
DEEDS = ("watched", "counted", "mended", "painted", "lost", "found")


def document_text(number, markdown):
    """A text of some fifty sentences with words of its own and words that many share."""
    lines = [f"# Log {number}\n"] if markdown else []
    for sentence in range(20 + number % 7 * 10):
        lines.append(f"The {VOICES[(number + sentence) % 6]} {DEEDS[sentence % 6]} boat b{number}x{sentence} "
                     f"near pier p{sentence}, and O'Brien's crew saw it.")
        if sentence % 5 == 4:
            lines.append("")
    return "\n".join(lines) + "\n"


def mail_text(number):
    """A mail with an attachment."""
    part = "--part\nContent-Type: text/plain; charset=utf-8\n"
    return (f"From: Crew {number} <crew@example.org>\nTo: Pilot <pilot@example.org>\nSubject: Log {number}\n"
            "Date: Tue, 05 Mar 2002 09:07:04 +0000\nMIME-Version: 1.0\n"
            'Content-Type: multipart/mixed; boundary="part"\n\n'
            f"{part}\n{document_text(number, False)}\n"
            f'{part}Content-Disposition: attachment; filename="log{number}.txt"\n\n'
            f"{document_text(number + 100, False)}\n--part--\n")


def content(number, data_type):
    return mail_text(number) if data_type == "eml" else document_text(number, data_type == "md")


def fingerprint(library, path):
    """Everything that the index tells of a document and its attachment, keys left out."""
    if not path.endswith(".eml"):
        return whole_document(library, path)
    words, sentences, important, record = whole_document(library, path + "?attach=1")
    # An attachment's own path is that of a temporary file, another one each time.
    kinds = dict(library.rows("SELECT type, description FROM search_weight WHERE type <> 0"))
    words = [word for word in words if kinds[word[2]] != "document_path"]
    return whole_document(library, path) + (words, sentences, important, [row[:3] for row in record])


def whole_document(library, path):
    id_document = library.document_id(path)
    words = library.rows(
        "SELECT word, comp_type, type, hit_count, first_matching_sentence FROM word_index "
        "JOIN root_word ON root_word.id = id_root_word WHERE id_document_object = ?", (id_document,))
    sentences = library.rows("SELECT num_sentence, content, sentence_length FROM ascii_sentences "
                             "WHERE id_document_object = ?", (id_document,))
    important = library.rows("SELECT type FROM important_text WHERE id_document = ?", (id_document,))
    record = library.rows("SELECT title, data_type, data_size, source_url, flag_indexing_failed "
                          "FROM document_object WHERE id = ?", (id_document,))
    return sorted(words), sorted(sentences), sorted(important), record


class KilledService:
    """One library whose service is killed time and again."""

    def __init__(self, test, library, documents, expected, kills, moments):
        self.test = test
        self.library = library
        self.documents = documents  # (path, data type)
        self.expected = expected
        self.kills = kills
        self.moments = moments
        self.in_the_middle = 0  # kills that met a document in work
        self.dropped = set()  # documents that were in work at a kill since they were queued last
        self.in_pieces = set()  # dropped documents that have not been indexed again since

    def run(self):
        self.queue_all()
        while self.kills > 0:
            self.library.forget_log()
            process = self.library.start(until_idle=True)
            try:
                killed = self.kill_at_a_random_moment(process)
            finally:
                harness.end(process)
            if killed:
                self.kills -= 1
                self.after_kill()
            else:
                self.after_work(process)
                self.queue_all()
        self.after_work(self.last_run())

    def queue_all(self):
        self.dropped.clear()
        for data_type in ("txt", "md", "eml"):
            self.library.queue(*[path for path, kind in self.documents if kind == data_type],
                               index_type=INDEX, data_type=data_type)

    def last_run(self):
        process = self.library.start(until_idle=True)
        try:
            self.library.finish(process)
        finally:
            harness.end(process)
        return process

    def kill_at_a_random_moment(self, process):
        """After so many lines of the log and up to as long again as a commit takes; false when it ended before."""
        lines = self.moments.randrange(MOST_LINES)
        delay = self.moments.uniform(0, 0.01)

        def reached():
            return process.poll() is not None or self.library.log_text().count("\n") >= lines
        harness.wait_until(reached, f"the log has {lines} lines", pause=0.001)
        end = time.monotonic() + delay
        while time.monotonic() < end and process.poll() is None:
            pass
        if process.poll() is not None:
            return False
        process.send_signal(signal.SIGKILL)
        return process.wait(harness.DEADLINE) == -signal.SIGKILL

    def after_kill(self):
        harness.wait_until(lambda: not self.library.plugin_processes(), "no plug-in has outlived the service")
        # The kill's own state is looked at in a copy, so that the service and nobody else recovers the library.
        copy = self.library.folder / "copy"
        shutil.rmtree(copy, ignore_errors=True)
        copy.mkdir()
        for file in self.library.folder.glob("library.db*"):
            if not file.name.endswith("-shm"):
                shutil.copy(file, copy / file.name)
        connection = sqlite3.connect(copy / "library.db")
        in_work = [row[0] for row in connection.execute("SELECT doc_path FROM file_index_queue WHERE flag_dirty <> 0")]
        queued = {row[0] for row in connection.execute("SELECT doc_path FROM file_index_queue")}
        faults = [row[0] for row in connection.execute("PRAGMA integrity_check") if row[0] != "ok"]
        done = {path for path, _ in self.documents} - queued - self.dropped
        self.in_pieces = (self.in_pieces - done).union(in_work)
        in_pieces = set()
        for path in self.in_pieces:
            in_pieces |= self.documents_at(connection, path)
        for what, sql in SOUND.items():
            found = connection.execute(sql).fetchall()
            if what in SOUND_AT_REST_ONLY:
                found = [row for row in found if row[0] not in in_pieces]
            faults += [f"{what}: {row}" for row in found[:3]]
        connection.close()
        self.test.assertEqual(faults, [])
        self.test.assertLessEqual(len(in_work), 1)
        # An entry in work at an earlier kill goes with the first tick, which a kill during the start forestalls.
        left = self.dropped & queued
        self.test.assertFalse(left if self.library.logged("Main.Timer Fire") else left.difference(in_work))
        self.dropped.update(in_work)
        self.in_the_middle += len(in_work)

    @staticmethod
    def documents_at(connection, path):
        """Keys of the document and of all attachments that it has had."""
        rows = connection.execute("SELECT id FROM document_object WHERE saved_location = ? OR saved_location = ?",
                                  (path, path + "?attach=1"))
        return {row[0] for row in rows}

    def after_work(self, process):
        self.test.assertEqual(process.returncode, 0, self.library.errors() + self.library.log_tail())
        self.test.assertEqual(self.library.queued(), [])
        whole = [path for path, _ in self.documents if path not in self.dropped]
        for path in whole:
            self.test.assertEqual(fingerprint(self.library, path), self.expected[path], path)
        self.in_pieces = set(self.dropped)
        if not self.in_pieces:
            self.test.assertEqual(self.library.faults(), [])


class Kill(harness.ServiceTest):
    def test_kills_at_random_moments_lose_nothing_but_the_document_in_work(self):
        seed = int(os.environ.get("TYINDEXER_TEST_SEED", random.SystemRandom().randrange(10 ** 6)))
        print(f"seed {seed} (TYINDEXER_TEST_SEED), {KILLS} kills", flush=True)
        documents = []
        for number in range(DOCUMENTS):
            data_type = {3: "md", 5: "eml", 7: "md"}.get(number % 8, "txt")
            path = self.library.write(f"{number}.{data_type}", content(number, data_type))
            documents.append((path, data_type))
        expected = self.undisturbed(documents)
        with concurrent.futures.ThreadPoolExecutor(LIBRARIES) as pool:
            killed = [self.killed(number, documents, expected, seed) for number in range(LIBRARIES)]
            for run in [pool.submit(one.run) for one in killed]:
                run.result()
        in_the_middle = sum(one.in_the_middle for one in killed)
        print(f"{in_the_middle} kills in the middle of a document", flush=True)
        self.assertGreater(in_the_middle, 0)

    def undisturbed(self, documents):
        for path, data_type in documents:
            self.library.queue(path, index_type=INDEX, data_type=data_type)
        self.library.run()
        self.assert_sound()
        self.assertEqual(list(self.library.temporary.iterdir()), [])
        expected = {path: fingerprint(self.library, path) for path, _ in documents}
        self.assertTrue(all(words and len(sentences) > 20 for words, sentences, *_ in expected.values()))
        return expected

    def killed(self, number, documents, expected, seed):
        kills = KILLS // LIBRARIES + (number < KILLS % LIBRARIES)
        library = harness.Library(self.folder / f"killed{number}")
        return KilledService(self, library, documents, expected, kills, random.Random(f"{seed} {number}"))


if __name__ == "__main__":
    harness.main()
