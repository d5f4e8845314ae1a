"""The window is operated all the time while it indexes a library of some hundred documents."""

import itertools
import random

import window_harness

DOCUMENTS = 300
PORTION = 15
WORDS = ("anchor", "beacon", "current", "dredger", "estuary", "fairway", "gale", "harbour", "island", "jetty")


class OperatedLibrary(window_harness.WindowTest):
    def write_documents(self):
        """Paths and numbers of sentences."""
        chance = random.Random(DOCUMENTS)
        documents = {}
        for number in range(DOCUMENTS):
            sentences = [f"{' '.join(chance.choices(WORDS, k=8)).capitalize()} n{line}."
                         for line in range(chance.randint(1, 120))]
            documents[self.library.write(f"{number:03}.txt", "\n".join(sentences) + "\n")] = len(sentences)
        return documents

    def waiting(self):
        return self.library.value("SELECT count(*) FROM file_index_queue")

    def type_interval(self, window):
        """A digit more or less behind the point: what is typed is never a long interval, not for a moment."""
        text = window.text("txtPollInterval")
        longer = len(text) < len("0.0019")
        window.focus("txtPollInterval")
        self.desktop.keys("End", "9" if longer else "BackSpace")
        wanted = text + "9" if longer else text[:-1]
        window.wait(lambda: window.text("txtPollInterval") == wanted, "the interval is typed")

    def stop_and_start(self, window):
        for caption in ("Start", "Stop"):
            window.click("cmdStartStop")
            window.wait(lambda wanted=caption: window.caption("cmdStartStop") == wanted, f"the button says {caption}")

    def resize(self, window):
        left, top, width, height = self.desktop.geometry(window.id)
        for size in ((width + 200, height + 100), (width, height)):
            self.desktop.run("xdotool", "windowsize", window.id, *size)
            window.wait(lambda wanted=size: self.desktop.geometry(window.id) == (left, top, *wanted),
                        "the window has its size")

    def minimise_and_restore(self, window):
        window.minimise()
        window.restore()

    def switch_logging(self, window):
        checked = window.is_checked("chkLogit")
        window.click("chkLogit")
        window.wait(lambda: window.is_checked("chkLogit") != checked, "the box is switched")

    def operations(self):
        return itertools.cycle((self.type_interval, self.stop_and_start, self.resize, self.minimise_and_restore,
                                self.switch_logging))

    def test_all_documents_are_indexed_while_the_window_is_operated(self):
        documents = self.write_documents()
        paths = list(documents)
        window = self.open_window("--poll-interval", "0.001")
        # The first look comes after a second, and each start begins that second anew.
        self.library.wait_for_log("Main.Timer Action Complete", window.process)
        operations = self.operations()
        # In portions, so that each operation meets a service at work, however fast it is.
        for first in range(0, DOCUMENTS, PORTION):
            self.library.queue(*paths[first:first + PORTION])
            next(operations)(window)
        while self.waiting() > 0:
            next(operations)(window)
        window.click("cmdExit")
        self.assert_ends(window.process)
        indexed = dict(self.library.rows(
            "SELECT saved_location, (SELECT count(*) FROM ascii_sentences "
            "WHERE id_document_object = document_object.id AND num_sentence > 0) FROM document_object"))
        self.assertEqual(indexed, documents)
        self.assert_sound()


if __name__ == "__main__":
    window_harness.main()
