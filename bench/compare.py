"""Measures the indexer's release build, which script/bench makes: indexes a corpus into a new library through the real
service and its plug-ins, and, in turn with it, two yardsticks on the same text: the floor (a program that writes the
same rows with nothing in between) and recollindex, where it is installed. Then it tells where the time goes and what a
document costs once the library has grown. Writes build/bench/result.json beside the tables."""
import argparse
import json
import os
import pathlib
import shutil
import sqlite3
import statistics
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
BIN = ROOT / "build/release/bin"
PLUGINS = ROOT / "build/release/plugins"
WORK = ROOT / "build/bench"

TEXT_TYPES = {".txt", ".md"}
MAIL_TYPES = {".eml"}
TABLES = ("document_object", "document_share", "prv", "prv_history", "important_text", "root_word", "word_index",
          "ascii_sentences")
# Sums that differ when rows are as many but not the same.
SUMS = {"word_index": "hit_count + first_matching_sentence + type", "ascii_sentences": "sentence_length + num_sentence",
        "important_text": "type"}
# A library of the full size holds as many times the documents of the corpus.
FULL = 20


def main():
    options = parse_arguments()
    folder = corpus_folder(options.corpus)
    shutil.rmtree(WORK, ignore_errors=True)
    WORK.mkdir(parents=True)
    text = Corpus(folder, TEXT_TYPES, "text", options.copies)
    mail = Corpus(folder, MAIL_TYPES, "mail", options.copies)
    if not text.files:
        sys.exit(f"{folder} holds no .txt or .md file to measure with")
    note(f"Corpus: {folder}: {text}" + (f", {mail}" if mail.files else "") + f"; {options.rounds} rounds")
    result = {"corpus": {"folder": str(folder), "text": text.described(), "mail": mail.described(),
                         "copies": options.copies}, "rounds": options.rounds,
              "machine": {"cores": os.cpu_count(), "sqlite": sqlite3.sqlite_version}}
    result["runs"] = measure_runs(text, mail, options)
    result["same_rows"] = compare_rows(result["runs"])
    print_runs(result["runs"])
    print_ratios(result)
    if not options.no_stages:
        result["stages"] = measure_stages(text)
        print_stages(result["stages"])
        print_growth(result["stages"])
    (WORK / "result.json").write_text(json.dumps(result, indent=2) + "\n")
    print(f"\nAll figures: {WORK / 'result.json'}")
    if not options.keep:
        for entry in WORK.iterdir():
            if entry.is_dir():
                shutil.rmtree(entry)
    return 0 if result["same_rows"] else 1


def parse_arguments():
    parser = argparse.ArgumentParser(prog="script/bench", description=__doc__)
    parser.add_argument("corpus", nargs="?", help="a folder with .txt, .md and .eml files (default: ../shared/corpus "
                        "where there is one, else samples)")
    parser.add_argument("--copies", type=number_from_one, default=1, metavar="N", help="index the corpus N times over")
    parser.add_argument("--rounds", type=number_from_one, default=3, metavar="N",
                        help="run everything N times in turn and tell the median (default: 3)")
    parser.add_argument("--no-stages", action="store_true", help="only compare with the yardsticks")
    parser.add_argument("--keep", action="store_true", help="leave libraries and logs in build/bench")
    return parser.parse_args()


def number_from_one(text):
    number = int(text)
    if number < 1:
        raise argparse.ArgumentTypeError("must be at least 1")
    return number


def corpus_folder(argument):
    candidates = [pathlib.Path(argument)] if argument else [ROOT.parent / "shared/corpus", ROOT / "samples"]
    for folder in candidates:
        if folder.is_dir():
            return folder.resolve()
    sys.exit(f"there is no folder {candidates[-1]}; name one with documents: script/bench FOLDER")


def note(text):
    print(text, flush=True)


class Corpus:
    """The files of some types, copied to a folder of their own so that all programs read the same ones."""

    def __init__(self, folder, types, name, copies):
        self.name = name
        self.folder = WORK / "corpus" / name
        found = sorted(file for file in folder.rglob("*") if file.suffix.lower() in types and file.is_file())
        self.files = []
        for copy in range(copies):
            for file in found:
                target = self.folder / f"copy{copy + 1}" / file.relative_to(folder)
                target.parent.mkdir(parents=True, exist_ok=True)
                shutil.copyfile(file, target)
                self.files.append(target)
        self.files.sort()
        self.bytes = sum(file.stat().st_size for file in self.files)

    def moved(self, name):
        """The same files in another folder, so that their paths are new to a library."""
        other = object.__new__(Corpus)
        other.name, other.folder, other.bytes = name, WORK / "corpus" / name, self.bytes
        if not other.folder.exists():
            shutil.copytree(self.folder, other.folder)
        other.files = sorted(other.folder / file.relative_to(self.folder) for file in self.files)
        return other

    def described(self):
        return {"documents": len(self.files), "bytes": self.bytes}

    def __str__(self):
        return f"{len(self.files)} {self.name} files ({self.bytes / 1e6:.1f} MB)"


# --- Running and watching programs -----------------------------------------------------------------------------------

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


class Watch:
    """Runs a program and notes its time, memory and writing, and those of the plug-ins that it starts."""

    def __init__(self, command, environment=None, log=None, stdin=None):
        self.first_document = None
        self.child_peaks = {}
        start = time.perf_counter()
        with open(WORK / "output.txt", "ab") as output:
            process = subprocess.Popen([str(part) for part in command], env={**os.environ, **(environment or {})},
                                       stdin=stdin, stdout=output, stderr=output)
        while os.waitid(os.P_PID, process.pid, os.WEXITED | os.WNOWAIT | os.WNOHANG) is None:
            if log is not None and self.first_document is None and self.log_shows_document(log):
                self.first_document = time.perf_counter()
            for child in children_of(process.pid):
                peak = int(read_proc(child, "status").get("VmHWM", 0)) * 1024
                self.child_peaks[child] = max(peak, self.child_peaks.get(child, 0))
            time.sleep(0.002 if log is not None and self.first_document is None else 0.02)
        end = time.perf_counter()
        # The process is gone but not yet collected: its counters can still be read.
        written = read_proc(process.pid, "io")
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode != 0:
            sys.exit(f"{command[0]} ended with status {process.returncode}; its output is in {WORK / 'output.txt'}")
        self.seconds = end - start
        self.working = end - (self.first_document or start)
        self.processor = usage.ru_utime + usage.ru_stime
        self.peak = usage.ru_maxrss * 1024
        self.written = int(written.get("wchar", 0))
        self.written_to_disk = int(written.get("write_bytes", 0))

    @staticmethod
    def log_shows_document(log):
        try:
            return b"Starting: " in log.read_bytes()
        except OSError:
            return False

    def figures(self, corpus, size):
        return {"documents": len(corpus.files), "bytes": corpus.bytes, "wall_seconds": self.seconds,
                "working_seconds": self.working, "processor_seconds": self.processor,
                "documents_per_second": len(corpus.files) / self.working,
                "megabytes_per_second": corpus.bytes / 1e6 / self.working, "peak_bytes": self.peak,
                "child_peak_bytes": max(self.child_peaks.values(), default=0), "bytes_written": self.written,
                "bytes_written_to_disk": self.written_to_disk,
                "index_bytes": size}


# --- The service -----------------------------------------------------------------------------------------------------

class Service:
    """A library with settings of its own."""

    def __init__(self, name):
        self.folder = WORK / name
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
        watch = Watch([BIN / "tyindexerd", "--until-idle", "--poll-interval", "0.001"], self.environment, self.log)
        return {**watch.figures(corpus, self.library.stat().st_size), **rows_of(self.library)}

    def stages(self, corpus):
        """Indexes a corpus with the stages program."""
        self.queue(corpus)
        done = subprocess.run([BIN / "tyindexer-stages"], env={**os.environ, **self.environment},
                              stdout=subprocess.PIPE, text=True)
        if done.returncode != 0:
            sys.exit("the stages program failed")
        return json.loads(done.stdout)

    def grow(self, times):
        """Adds the rows of the documents again, under other keys and paths: a library of as many times the size."""
        with sqlite3.connect(self.library) as database:
            step, = database.execute("SELECT max(id) FROM document_object").fetchone()
            prv_step, = database.execute("SELECT max(id) FROM prv").fetchone()
            for copy in range(1, times):
                for table in TABLES:
                    if table != "root_word":
                        database.execute(growing_statement(database, table, copy, step, prv_step))
        database.execute("PRAGMA wal_checkpoint(TRUNCATE)")
        database.close()


def growing_statement(database, table, copy, step, prv_step):
    columns = [row[1] for row in database.execute(f"PRAGMA table_info({table})")]
    values = []
    for column in columns:
        if column == "id_prv" or (table == "prv" and column == "id"):
            values.append(f"{column} + {copy * prv_step}")
        elif column in ("id_document", "id_document_object") or (column == "id" and table == "document_object"):
            values.append(f"{column} + {copy * step}")
        elif column == "id":
            values.append("NULL")
        elif column == "saved_location":
            values.append(f"'/grown/{copy}' || saved_location")
        else:
            values.append(column)
    key = {"prv_history": "id_prv", "document_object": "id", "prv": "id", "word_index": "id_document_object",
           "ascii_sentences": "id_document_object"}.get(table, "id_document")
    last = prv_step if key == "id_prv" or table == "prv" else step
    return f"INSERT INTO {table} ({', '.join(columns)}) SELECT {', '.join(values)} FROM {table} WHERE {key} <= {last}"


def rows_of(library):
    database = sqlite3.connect(library)
    try:
        rows = {table: database.execute(f"SELECT count(*) FROM {table}").fetchone()[0] for table in TABLES}
        sums = {table: database.execute(f"SELECT total({column}) FROM {table}").fetchone()[0]
                for table, column in SUMS.items()}
        return {"rows": rows, "sums": sums}
    finally:
        database.close()


# --- The yardsticks --------------------------------------------------------------------------------------------------

def run_floor(corpus, name):
    folder = WORK / name
    folder.mkdir()
    library, paths = folder / "library.db", folder / "paths.txt"
    paths.write_text("".join(f"{file}\n" for file in corpus.files))
    with open(paths, "rb") as source:
        watch = Watch([BIN / "tyindexer-floor", library], stdin=source)
    return {**watch.figures(corpus, library.stat().st_size), **rows_of(library)}


def run_recollindex(corpus, name):
    folder = WORK / name
    folder.mkdir()
    (folder / "recoll.conf").write_text(f"topdirs = {corpus.folder}\nloglevel = 2\nnoaspell = 1\n")
    watch = Watch(["recollindex", "-z", "-c", folder], {"RECOLL_CONFDIR": str(folder)})
    index = [file for file in (folder / "xapiandb").rglob("*") if file.is_file()]
    return watch.figures(corpus, sum(file.stat().st_size for file in index))


def measure_runs(text, mail, options):
    """Every program in turn, round by round, so that a machine that drifts drifts under all of them alike."""
    programs = {"service": lambda name: Service(name).index(text), "floor": lambda name: run_floor(text, name)}
    if shutil.which("recollindex"):
        programs["recollindex"] = lambda name: run_recollindex(text, name)
    if mail.files:
        programs["service, mail"] = lambda name: Service(name).index(mail)
    runs = {program: [] for program in programs}
    for number in range(1, options.rounds + 1):
        for program, run in programs.items():
            name = f"{program.replace(', ', '-')}-{number}"
            runs[program].append(run(name))
            if not options.keep:
                shutil.rmtree(WORK / name)
            note(f"  round {number}: {program}: {runs[program][-1]['documents_per_second']:.1f} documents/s")
    return {program: {**median_run(measured), "all_rounds": measured} for program, measured in runs.items()}


def median_run(measured):
    """The run in the middle by speed."""
    return sorted(measured, key=lambda run: run["working_seconds"])[len(measured) // 2]


def compare_rows(runs):
    service, floor = runs["service"], runs["floor"]
    same = True
    for kind in ("rows", "sums"):
        for table, value in service[kind].items():
            if floor[kind][table] != value:
                same = False
                note(f"The floor differs in {kind} of {table}: {floor[kind][table]:.0f}, the service has {value:.0f}")
    note("\nThe floor wrote the same rows as the service: " + ("yes." if same else "NO, so it is no yardstick."))
    return same


# --- Tables ----------------------------------------------------------------------------------------------------------

def print_table(head, rows):
    widths = [max(len(str(row[column])) for row in [head, *rows]) for column in range(len(head))]
    print()
    for row in [head, *rows]:
        cells = [str(cell).ljust(width) if column == 0 else str(cell).rjust(width)
                 for column, (cell, width) in enumerate(zip(row, widths))]
        print("  ".join(cells))


def megabytes(count):
    return f"{count / 1e6:.1f}"


def print_runs(runs):
    names = list(runs)

    def line(title, show):
        return [title, *(show(runs[name]) for name in names)]

    def total_rows(run):
        return sum(run["rows"].values()) if "rows" in run else None

    def per_second(run):
        return f"{total_rows(run) / run['working_seconds']:,.0f}" if "rows" in run else "-"

    print_table(["", *names], [
        line("documents", lambda run: run["documents"]),
        line("MB of documents", lambda run: megabytes(run["bytes"])),
        line("documents/s", lambda run: f"{run['documents_per_second']:.1f}"),
        line("MB/s", lambda run: f"{run['megabytes_per_second']:.2f}"),
        line("rows/s", per_second),
        line("rows", lambda run: f"{total_rows(run):,}" if "rows" in run else "-"),
        line("seconds, first document to end", lambda run: f"{run['working_seconds']:.2f}"),
        line("seconds, start to end", lambda run: f"{run['wall_seconds']:.2f}"),
        line("processor seconds, children too", lambda run: f"{run['processor_seconds']:.2f}"),
        line("peak memory, MB", lambda run: megabytes(run["peak_bytes"])),
        line("peak memory of the largest child, MB", lambda run: megabytes(run["child_peak_bytes"])
             if run["child_peak_bytes"] else "-"),
        line("MB written, without children", lambda run: megabytes(run["bytes_written"])),
        line("MB that reached the disk", lambda run: megabytes(run["bytes_written_to_disk"])),
        line("MB of library or index", lambda run: megabytes(run["index_bytes"])),
    ])


def print_ratios(result):
    runs = result["runs"]
    result["ratios"] = {}
    print()
    for name in ("floor", "recollindex"):
        if name not in runs:
            continue
        pairs = list(zip(runs[name]["all_rounds"], runs["service"]["all_rounds"]))
        speeds = [own["working_seconds"] / service["working_seconds"] for own, service in pairs]
        processor = [service["processor_seconds"] / own["processor_seconds"] for own, service in pairs]
        result["ratios"][name] = {"speed": statistics.median(speeds), "processor": statistics.median(processor)}
        print(f"The service has {statistics.median(speeds):.2f} of {name}'s speed "
              f"(by rounds: {', '.join(f'{each:.2f}' for each in speeds)}) "
              f"and takes {statistics.median(processor):.1f} times its processor time.")
    if "recollindex" not in runs:
        print("recollindex is not installed (Debian package recollcmd), so there is no comparison with it.")


def measure_stages(text):
    """The corpus into an empty library, then under new paths into one that holds it once and one that holds it more
    often. The last two know all words already, so their difference is growth alone."""
    note("\nStages: an empty library ...")
    service = Service("stages")
    stages = {"empty": service.stages(text)}
    note("Stages: a library that holds the corpus once ...")
    stages["holds 1x"] = service.stages(text.moved("text2"))
    shutil.rmtree(service.folder)
    service = Service("stages-full")
    service.stages(text)
    service.grow(FULL)
    note(f"Stages: a library that holds it {FULL} times ({service.library.stat().st_size / 1e6:.0f} MB) ...")
    stages[f"holds {FULL}x"] = service.stages(text.moved("text2"))
    return stages


def print_stages(stages):
    names = list(stages)
    head = ["", *(cell for name in names for cell in ("is empty" if name == "empty" else name, ""))]

    def line(title, seconds_of):
        row = [title]
        for name in names:
            seconds = seconds_of(stages[name])
            row.append(f"{1000 * seconds / stages[name]['documents']:.3f}")
            row.append(f"{100 * seconds / stages[name]['seconds']:.1f} %")
        return row

    rows = [line(stage, lambda run, stage=stage: run["stages"][stage]["seconds"]) for stage in stages["empty"]["stages"]]
    print("\nMilliseconds per document and share of time, by stage, in a library that ...")
    print_table(head, [*rows, line("all", lambda run: run["seconds"])])

    rows = []
    for kind, _ in sorted(stages["empty"]["statements"].items(), key=lambda item: -item[1]["seconds"])[:10]:
        row = [kind]
        for name in names:
            stage = stages[name]["statements"].get(kind, {"calls": 0, "seconds": 0})
            row += [stage["calls"], f"{1e6 * stage['seconds'] / max(stage['calls'], 1):.1f}"]
        rows.append(row)
    print("\nThe costliest statements: how often, and microseconds for one")
    print_table(head, rows)


def print_growth(stages):
    def cost(name):
        return 1000 * stages[name]["seconds"] / stages[name]["documents"]

    full = f"holds {FULL}x"
    print(f"\nA document costs {cost('empty'):.2f} ms in an empty library, {cost('holds 1x'):.2f} ms in one that holds the "
          f"corpus and\n{cost(full):.2f} ms in one that holds it {FULL} times: {cost(full) / cost('empty'):.2f} times the "
          f"empty one's, {cost(full) / cost('holds 1x'):.2f} times the small one's.")


if __name__ == "__main__":
    sys.exit(main())
