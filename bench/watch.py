"""Runs a program and watches what it takes: time, memory, and what it writes."""
import os
import pathlib
import subprocess
import sys
import time


def read_proc(pid, file):
    try:
        lines = pathlib.Path(f"/proc/{pid}/{file}").read_text().splitlines()
    except OSError:
        return {}
    return {name: value.split()[0] for name, _, value in (line.partition(":") for line in lines) if value.strip()}


def children_of(pid):
    try:
        return [int(child) for child in pathlib.Path(f"/proc/{pid}/task/{pid}/children").read_text().split()]
    except OSError:
        return []


def peak_of(pid):
    return int(read_proc(pid, "status").get("VmHWM", 0)) * 1024


class Watch:
    """One run of a program with the plug-ins that it starts. The kernel counts the writing (write_bytes) page by page
    when a page of a file becomes dirty, through whichever call or mapping, and charges it to the process that did it:
    nothing is missed when the page goes to the disk later, and pipes do not count. A process's counters hold those of
    its children that have ended. What is handed to write calls (wchar) is noted besides; it counts pipes too."""

    def __init__(self, command, work, environment=None, log=None, stdin=None):
        self.first_document = None
        self.peak = 0
        self.child_peaks = {}
        output = work / "output.txt"
        start = time.perf_counter()
        with open(output, "ab") as sink:
            process = subprocess.Popen([str(part) for part in command], env={**os.environ, **(environment or {})},
                                       stdin=stdin, stdout=sink, stderr=sink)
        while os.waitid(os.P_PID, process.pid, os.WEXITED | os.WNOWAIT | os.WNOHANG) is None:
            if log is not None and self.first_document is None and log_shows_document(log):
                self.first_document = time.perf_counter()
            self.peak = max(self.peak, peak_of(process.pid))
            for child in children_of(process.pid):
                self.child_peaks[child] = max(peak_of(child), self.child_peaks.get(child, 0))
            time.sleep(0.002 if log is not None and self.first_document is None else 0.05)
        end = time.perf_counter()
        # The process is gone but not yet collected: its counters can still be read.
        written = read_proc(process.pid, "io")
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode != 0:
            sys.exit(f"{command[0]} ended with status {process.returncode}; its output is in {output}")
        self.seconds = end - start
        self.working = end - (self.first_document or start)
        self.processor = usage.ru_utime + usage.ru_stime
        self.written_to_disk = int(written.get("write_bytes", 0))
        self.written_by_calls = int(written.get("wchar", 0))

    def figures(self, corpus, size):
        count = len(corpus.files)
        return {"documents": count, "bytes": corpus.bytes, "wall_seconds": self.seconds,
                "working_seconds": self.working, "processor_seconds": self.processor,
                "documents_per_second": count / self.working,
                "megabytes_per_second": corpus.bytes / 1e6 / self.working, "peak_bytes": self.peak,
                "child_peak_bytes": max(self.child_peaks.values(), default=0),
                "bytes_written": self.written_to_disk or self.written_by_calls,
                "bytes_written_counts": "pages" if self.written_to_disk else "calls",
                "bytes_written_by_calls": self.written_by_calls, "index_bytes": size}


def log_shows_document(log):
    try:
        return b"Starting: " in log.read_bytes()
    except OSError:
        return False
