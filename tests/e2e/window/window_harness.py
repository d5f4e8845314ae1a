"""What the tests of the window share: the program on a desktop of its own, its controls, and a job that lasts as long
as a test wants.
"""

import concurrent.futures
import pathlib
import select
import socket
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "service"))
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import accessible  # noqa: E402
import desktop as desktops  # noqa: E402
import harness  # noqa: E402
from harness import DATA_TYPES, DEADLINE, INDEXER, wait_until  # noqa: E402

CAPTION = "orlentbar indexer"

CONTROLS = ("lblPoll", "txtPollInterval", "lblSeconds", "lstStatus", "chkLogit", "txtLogFile", "btnBrowse",
            "cmdStartStop", "cmdExit")

DIALOGS = ("dialog", "alert message")

SENTENCES_A_TURN = 50  # after so many the service handles the window's events

SLOW_PLUGIN = """#!/usr/bin/env python3
import json, socket, sys

class Extractor:
    sentences = 0
    left = 0
    ended = False
    def SetDocumentID(self, path):
        self.test = socket.socket(socket.AF_UNIX)
        self.test.connect({socket!r})
        return True
    def GetLastErrorNumber(self): return 0
    def GetLastErrorString(self): return ""
    def GetDocumentProperty(self, name): return {{"data_size": 1000, "title": "Slow"}}.get(name)
    def GetNumberOfSentences(self): return -1
    def MoreSentences(self):
        if self.left == 0 and not self.ended:
            self.test.sendall(b"?")
            self.ended = self.test.recv(1) != b"t"
            self.left = 0 if self.ended else {turn}
        return self.left > 0
    def GetNextSentence(self):
        self.left -= 1
        self.sentences += 1
        return f"Buoy b{{self.sentences}} swings."
    def GetNumberofImportantText(self): return 0
    def GetNumberofAnnotations(self): return 0
    def GetNumberofMetaTags(self): return 0
    def GetNumberofSubDocuments(self): return 0

def answer(method, params):
    global extractor
    if method == "create":
        extractor = Extractor()
        return {{"result": 1}}
    if method == "call":
        return {{"result": {{"result": getattr(extractor, params["method"])(*params["arguments"])}}}}
    if method == "release":
        return {{"result": None}}
    return {{"error": {{"code": -32601, "message": "no method " + method}}}}

for line in sys.stdin:
    request = json.loads(line)
    reply = answer(request["method"], request.get("params", {{}}))
    print(json.dumps({{"jsonrpc": "2.0", "id": request["id"], **reply}}), flush=True)
"""


class SlowJob:
    """A document whose sentences come when the test says so, so that the service stays in the middle of its job."""

    pause = 0.05  # between two turns, so that the document does not run out of sentences while a test waits

    def __init__(self, library):
        self.library = library
        self.turns = 0
        self.connection = None
        self.path = library.write("slow.slow", "The plug-in makes up the text.")
        place = library.folder / "job"
        self.listener = socket.socket(socket.AF_UNIX)
        self.listener.bind(str(place))
        self.listener.listen()
        plugin = library.own_plugins / "Test.SlowExtractor"
        plugin.write_text(SLOW_PLUGIN.format(socket=str(place), turn=SENTENCES_A_TURN))
        plugin.chmod(0o755)
        library.set({(DATA_TYPES + "slow", "IndexPlugin"): "Test.SlowExtractor",
                     (INDEXER, "PluginTimeoutSeconds"): 2 * DEADLINE})

    def close(self):
        for end in (self.connection, self.listener):
            if end is not None:
                end.close()

    def begin(self):
        """Queues the document and waits until the service asks for its first sentence."""
        self.library.queue(self.path, data_type="slow")
        self.listener.settimeout(DEADLINE)
        self.connection, _ = self.listener.accept()
        self.connection.settimeout(DEADLINE)
        self.wait_for_question()

    def wait_for_question(self):
        if self.connection.recv(1) != b"?":
            raise AssertionError("the service has left the job:\n" + self.library.log_tail())

    def turn(self):
        """Gives as many sentences as make the service handle the window's events once."""
        self.connection.sendall(b"t")
        self.turns += 1
        self.wait_for_question()

    def turn_until(self, condition, what):
        """Lets the window live in the middle of the job until the condition holds."""
        def looked():
            self.turn()
            return condition()
        return wait_until(looked, what, pause=self.pause)

    def turning(self, look):
        """What the look at the window gives, which the window answers only in the job's turns."""
        with concurrent.futures.ThreadPoolExecutor(1) as pool:
            looking = pool.submit(look)
            while not looking.done():
                self.turn()
                select.select([], [], [], self.pause)
            return looking.result()

    def finish(self):
        self.connection.sendall(b"e")

    def sentences(self):
        return self.turns * SENTENCES_A_TURN


class Window:
    """The running program and what its operator can do with it."""

    def __init__(self, desktop, process, library):
        self.desktop = desktop
        self.process = process
        self.library = library
        self.places = {}
        self.scale = 1  # of the screen's pixels that make up one of the program's
        self.bus = accessible.Bus(desktop.bus, DEADLINE)
        self.program = self.wait(lambda: next(iter(self.bus.programs()), None), "the program is known by its name")
        self.controls = self.wait(self.find_controls, "the window has its controls")

    def wait(self, condition, what, **options):
        """Waits until the condition holds, as long as the program runs."""
        def looked():
            result = condition()
            if not result and self.process.poll() is not None:
                raise AssertionError(f"the program ended with {self.process.returncode} before {what}")
            return result
        try:
            return wait_until(looked, what, pause=options.pop("pause", 0.01), **options)
        except AssertionError as error:
            raise AssertionError(f"{error}\n{self.library.errors()}\n{self.library.log_tail()}\n"
                                 f"{self.desktop.description()}") from None

    def find_controls(self):
        try:
            found = {control.name(): control for control in self.program.descendants()}
        except accessible.Gone:
            return None
        return {name: found[name] for name in CONTROLS} if found.keys() >= set(CONTROLS) else None

    def wait_until_shown(self):
        self.id = self.wait(lambda: self.desktop.windows(CAPTION), "the window is on the screen")[0]
        self.wait(lambda: self.desktop.state(self.id) == "Normal", "the window is in its normal state")
        frame = self.program.children()[0]
        # Positions that the program tells of its controls are right as soon as it knows its own.
        self.wait(lambda: self.is_at(frame.place(), self.desktop.geometry(self.id)), "the program knows its place")
        left, top = frame.place()[:2]
        # Within the window, so that a click needs no answer of the program.
        for name, control in self.controls.items():
            x, y, width, height = control.place()
            self.places[name] = (self.scale * (x - left + min(width, 40) // 2), self.scale * (y - top + height // 2))
        return self

    def is_at(self, told, place):
        """Whether what the program tells is that place on the screen. It tells whole pixels of its own."""
        self.scale = max(round(place[2] / told[2]), 1)
        return all(abs(self.scale * own - real) < self.scale for own, real in zip(told, place))

    def visible(self):
        return self.id in self.desktop.windows(CAPTION)

    # What it shows

    def text(self, name):
        return self.controls[name].text()

    def caption(self, name):
        return self.controls[name].description()

    def is_checked(self, name):
        return self.controls[name].has(accessible.CHECKED)

    def focused(self):
        return [name for name in CONTROLS if self.controls[name].has(accessible.FOCUSED)]

    def lines(self):
        """The status list from its top."""
        while True:
            try:
                return [line.name() for line in self.controls["lstStatus"].children()]
            except accessible.Gone:
                pass  # a line was pushed out meanwhile

    def messages(self):
        """The status list without the times."""
        return [line[len("hh:mm:ss: "):] for line in self.lines()]

    def wait_for_message(self, message):
        self.wait(lambda: message in self.messages(), f"the status list tells '{message}'")

    def wait_for_setting(self, name, value):
        """Saved, and so told by what it is now."""
        self.wait(lambda: self.library.get(INDEXER, name) == str(value), f"{name} is {value}")

    def dialog(self):
        """The controls of the dialogs that are open, by role and name."""
        try:
            return {(control.role(), control.name()): control for child in self.program.children()
                    if child.role() in DIALOGS for control in [child, *child.descendants()]}
        except accessible.Gone:
            return {}

    def wait_for_dialog(self, role, name):
        """Waits until a dialog with that control is open and takes keys; gives the control."""
        def found():
            controls = self.dialog()
            control = controls.get((role, name))
            return control if any(each.has(accessible.FOCUSED) for each in controls.values()) else None
        return self.wait(found, f"a dialog with '{name}' is open")

    def wait_until_answered(self):
        self.wait(lambda: not self.dialog(), "no dialog is open")

    # What the operator does

    def click(self, name):
        self.desktop.click(self.id, *self.places[name])

    def right_click(self, name):
        self.desktop.click(self.id, *self.places[name], button=3)

    def focus(self, name):
        self.click(name)
        self.wait(lambda: self.focused() == [name], f"{name} has the focus")

    def type(self, name, text):
        """Types over what stands in the box."""
        self.focus(name)
        self.desktop.keys("ctrl+a")
        self.desktop.type(text)

    def minimise(self):
        self.desktop.run("xdotool", "windowminimize", self.id)
        self.wait(lambda: self.desktop.state(self.id) == "Iconic" and not self.visible()
                  and self.desktop.active() != self.id, "the window is minimised")

    def restore(self):
        self.desktop.run("xdotool", "windowmap", self.id)
        self.activate()
        self.wait(lambda: self.desktop.state(self.id) == "Normal", "the window is restored")

    def activate(self):
        """Brings the window to the front and gives it the keys."""
        self.desktop.run("xdotool", "windowactivate", self.id)
        self.wait(lambda: self.visible() and self.desktop.active() == self.id, "the window takes keys")


class WindowTest(harness.ServiceTest):
    """A test with a library and a desktop of its own."""

    screen = (1024, 768)

    def setUp(self):
        missing = desktops.missing_programs()
        self.assertEqual(missing, [], "script/bootstrap installs what is missing")
        super().setUp()
        self.desktop = desktops.Desktop(self.folder / "desktop", self.screen)
        self.addCleanup(self.desktop.close)

    def launch(self, *arguments, environment=None):
        """Starts the program; the test's end is its end."""
        process = start(self.library, environment or self.desktop.environment, *arguments)
        self.addCleanup(harness.end, process)
        return process

    def open_window(self, *arguments, settings=None):
        """The window of a service that has come up."""
        if settings:
            self.library.set(settings)
        window = Window(self.desktop, self.launch(*arguments), self.library).wait_until_shown()
        self.library.wait_for_log("Interest: Indexer started.", window.process)
        return window

    def slow_job(self):
        job = SlowJob(self.library)
        self.addCleanup(job.close)
        return job

    def assert_ends(self, process, expect=0, errors=""):
        self.library.finish(process, expect)
        self.assertEqual(self.library.errors(), errors)
        self.assert_no_plugin_survives()

    def assert_indexed(self, *paths):
        for path in paths:
            self.assertIsNotNone(self.library.document_id(path), path)

    def wait_until_indexed(self, window, *paths):
        for path in paths:
            window.wait(lambda: path not in dict(self.library.queued()), f"{path} is out of the queue")
        self.assert_indexed(*paths)


def start(library, desktop_environment, *arguments):
    """The program, on a desktop and a library."""
    own = {name: value for name, value in library.environment().items()
           if name.startswith("TYINDEXER_") or name == "TMPDIR"}
    environment = desktop_environment | own
    with open(library.errors_path, "ab") as errors:
        return subprocess.Popen([harness.BIN / "tyindexer", *map(str, arguments)], cwd=library.folder,
                                stdin=subprocess.DEVNULL, stdout=errors, stderr=errors, env=environment)


def main():
    harness.main()
