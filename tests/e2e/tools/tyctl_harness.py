"""What the tests of tyctl share: the program, a folder of each test's own, and waiting for conditions."""
import os
import pathlib
import queue
import shutil
import signal
import sqlite3
import subprocess
import tempfile
import threading
import time
import unittest

TYCTL = os.environ["TYCTL"]
# Only a broken program takes this long; no test waits for it to pass.
PATIENCE = 60


class TyctlTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="tyctl-test-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.library = self.folder / "library.db"
        self.environment = {
            **os.environ,
            "TYINDEXER_SETTINGS": str(self.folder / "settings.db"),
            "HOME": str(self.folder),
            "XDG_DATA_HOME": str(self.folder / "data"),
            "TYCTL": TYCTL,
        }

    def tyctl(self, *arguments, status=0, **options):
        """Runs tyctl, checks its exit status and gives what it printed."""
        command = [TYCTL, *map(os.fspath, arguments)]
        done = subprocess.run(command, env=self.environment, capture_output=True, text=True, timeout=PATIENCE,
                              errors="surrogateescape", **options)
        self.assertEqual(done.returncode, status,
                         f"{command}\nstdout:\n{done.stdout}\nstderr:\n{done.stderr}")
        return done

    def write(self, name, text=""):
        file = self.folder / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)
        return str(file)

    def script(self, name, text):
        file = self.folder / name
        file.write_text("#!/bin/sh\n" + text)
        file.chmod(0o755)
        return str(file)

    def rows(self, statement, *values):
        """The rows of a statement on the library file itself."""
        connection = sqlite3.connect(self.library)
        try:
            with connection:
                return connection.execute(statement, values).fetchall()
        finally:
            connection.close()


class Running:
    """A tyctl that runs beside the test; its standard error is read line by line."""

    def __init__(self, test, *arguments):
        self.test = test
        self.lines = []
        self.fresh = queue.Queue()
        self.process = subprocess.Popen([TYCTL, *arguments], env=test.environment, stderr=subprocess.PIPE, text=True)
        self.reader = threading.Thread(target=self.read, daemon=True)
        self.reader.start()
        test.addCleanup(self.clean)

    def read(self):
        for line in self.process.stderr:
            self.fresh.put(line)
        self.fresh.put(None)

    def wait_for(self, text):
        """Reads on until a line holds the text, and gives that line."""
        end = time.monotonic() + PATIENCE
        while True:
            try:
                line = self.fresh.get(timeout=max(0.0, end - time.monotonic()))
            except queue.Empty:
                self.test.fail(f"no line with {text!r} within {PATIENCE} s; read:\n{''.join(self.lines)}")
            if line is None:
                self.fresh.put(None)
                self.test.fail(f"ended without a line with {text!r}; read:\n{''.join(self.lines)}")
            self.lines.append(line)
            if text in line:
                return line

    def signal(self, number=signal.SIGTERM):
        self.process.send_signal(number)

    def finish(self):
        """Waits for the end and gives the exit status."""
        return self.process.wait(timeout=PATIENCE)

    def clean(self):
        if self.process.poll() is None:
            self.process.terminate()
            try:
                self.process.wait(timeout=PATIENCE)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()
        self.reader.join(timeout=PATIENCE)
        self.process.stderr.close()


def wait_until(test, condition, what):
    """Looks again and again until the condition holds; what it gives is given back."""
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        result = condition()
        if result:
            return result
        time.sleep(0.01)
    return test.fail(f"{what} did not come within {PATIENCE} s")
