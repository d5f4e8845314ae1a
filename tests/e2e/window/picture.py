"""Takes a picture of the window while it works on the samples: picture.py FILE [SCALE [WIDTHxHEIGHT]].

The window stands on a desktop of its own and works on a small library of its own.
"""

import pathlib
import sys
import tempfile

import window_harness
import harness
from harness import INDEXER
from window_harness import desktops

SAMPLES = pathlib.Path(__file__).resolve().parents[3] / "samples"

# In the library's own folder, where the program runs: a short name for the picture.
LOG = "tyindexer.log"


def take(path, scale, screen):
    with tempfile.TemporaryDirectory(prefix="tyindexer-picture-") as folder:
        folder = pathlib.Path(folder)
        library = harness.Library(folder / "library", {
            (INDEXER, "LogFilePath"): LOG, (INDEXER, "LoggingOn"): 1})
        harness.run_tool("add", SAMPLES, settings=library.settings)
        documents = library.value("SELECT count(*) FROM file_index_queue")
        environment = {"QT_SCALE_FACTOR": scale} if scale != "1" else {}
        desktop = desktops.Desktop(folder / "desktop", screen, environment=environment)
        process = None
        try:
            process = window_harness.start(library, desktop.environment)
            window = window_harness.Window(desktop, process, library).wait_until_shown()
            window.wait(lambda: not library.queued(), "the samples are indexed")
            for message in ("Indexing stopped.", "Indexing started."):
                window.click("cmdStartStop")
                window.wait_for_message(message)
            window.wait(lambda: window.messages()[0] == "Checking file index queue...", "the service polls again")
            # The picture is of what the program has drawn when it has answered another question.
            window.lines()
            left, top, width, height = desktop.geometry(window.id)
            before, after, above, below = desktop.frame(window.id)
            width, height = width + before + after, height + above + below
            # The pointer is not part of the picture.
            desktop.run("xdotool", "mousemove", *screen)
            desktop.write_picture(path, left - before, top - above, width, height)
            window.click("cmdExit")
            library.finish(process)
            print(f"{path}: {width} x {height} pixels, {documents} samples queued, "
                  f"{library.value('SELECT count(*) FROM document_object')} documents indexed, attachments included")
        finally:
            if process is not None:
                harness.end(process)
            desktop.close()


def main():
    path, scale, screen = (sys.argv[1:] + ["1", "1024x768"][len(sys.argv) - 2:])[:3]
    take(path, scale, tuple(map(int, screen.split("x"))))


if __name__ == "__main__":
    main()
