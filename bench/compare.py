"""Measures the indexer's release build, which script/bench makes: indexes documents into a new library through the
real service and its plug-ins, and, in turn with it, two yardsticks on the same text: the floor (a program that writes
the same rows with nothing in between) and recollindex, where it is installed. Then it tells what a document costs as
the library grows, and where the time goes. Writes build/bench/result.json and a picture beside the tables."""
import argparse
import datetime
import json
import os
import pathlib
import platform
import shutil
import sqlite3
import sys

import check
import report
from corpus import MAIL_TYPES, TEXT_TYPES, Corpus, large_corpus
from figures import median_run
from growth import measure_growth
from programs import ROOT, WORK, has_recollindex, run_floor, run_recollindex, run_service

RESULT = WORK / "result.json"
DOCUMENT = ROOT / "docs/performance.md"
PICTURE = "pictures/cost-per-document.svg"


def main():
    options = parse_arguments()
    if options.check:
        return check.check()
    if options.update_baseline:
        return check.update_baseline()
    if options.last:
        result = json.loads(RESULT.read_text())
    else:
        result = measure(options)
    result["figures"] = report.summarise(result)
    RESULT.write_text(json.dumps(result, indent=2) + "\n")
    report.print_tables(result)
    print(f"\nAll figures: {RESULT}")
    if result.get("growth"):
        drawn = report.draw(result, WORK / "cost-per-document.svg")
        print(f"Picture: {WORK / 'cost-per-document.svg'}" if drawn else "No picture: gnuplot-nox is not installed.")
    if options.write_docs:
        write_docs(result)
    return 0 if result["same_rows"] else 1


def parse_arguments():
    parser = argparse.ArgumentParser(prog="script/bench", description=__doc__)
    parser.add_argument("corpus", nargs="?", type=pathlib.Path, help="a folder with .txt, .md and .eml files (default: "
                        "a large corpus made of Debian's documentation packages, kept in ~/.cache/tyindexer-bench)")
    parser.add_argument("--copies", type=number_from_one, default=1, metavar="N", help="index the corpus N times over")
    parser.add_argument("--documents", type=number_from_one, metavar="N",
                        help="use only N text documents, taken evenly from the corpus")
    parser.add_argument("--rounds", type=number_from_one, default=3, metavar="N",
                        help="run everything N times in turn and tell the median (default: 3)")
    parser.add_argument("--growth-corpus", type=number_from_one, default=2000, metavar="N",
                        help="let the library grow by N documents at a time, up to 20 times (default: 2000)")
    parser.add_argument("--no-growth", action="store_true", help="leave out the growing library and the stages")
    parser.add_argument("--no-stages", action="store_true", help="leave out the stages")
    parser.add_argument("--warm", action="store_true", help="have the documents in memory before each run, not on the "
                        "disk alone")
    parser.add_argument("--keep", action="store_true", help="leave libraries and logs of the rounds in build/bench")
    parser.add_argument("--write-docs", action="store_true", help="put the tables into docs/performance.md and the "
                        "picture beside it")
    parser.add_argument("--last", action="store_true", help="measure nothing; show the result of the last time again")
    parser.add_argument("--check", action="store_true", help="measure nothing but the instructions of a fixed small "
                        "job, and fail when they are more than 3 %% above bench/baseline.json")
    parser.add_argument("--update-baseline", action="store_true", help="write that count to bench/baseline.json")
    return parser.parse_args()


def number_from_one(text):
    number = int(text)
    if number < 1:
        raise argparse.ArgumentTypeError("must be at least 1")
    return number


def note(text):
    print(text, flush=True)


def measure(options):
    if options.corpus is not None and not options.corpus.is_dir():
        sys.exit(f"there is no folder {options.corpus}; name one with documents: script/bench FOLDER")
    shutil.rmtree(WORK, ignore_errors=True)
    WORK.mkdir(parents=True)
    folder, made = (options.corpus.resolve(), {}) if options.corpus else large_corpus(note)
    text = Corpus(folder, TEXT_TYPES, "text", WORK, options.copies, options.documents, options.warm)
    mail = Corpus(folder, MAIL_TYPES, "mail", WORK, options.copies, warm=options.warm)
    if not text.files:
        sys.exit(f"{folder} holds no .txt or .md file to measure with")
    note(f"Corpus: {folder}: {text}" + (f", {mail}" if mail.files else "") + f"; {options.rounds} rounds")
    result = {"machine": described_machine(), "rounds": options.rounds,
              "corpus": {"folder": str(folder), "text": text.described(), "mail": mail.described(),
                         "copies": options.copies, "warm": options.warm, **made}}
    result["runs"] = measure_runs(text, mail, options)
    result["same_rows"] = compare_rows(result["runs"])
    if not options.no_growth:
        batch = Corpus(folder, TEXT_TYPES, "batch", WORK, options.copies, options.growth_corpus, options.warm)
        grown = measure_growth(batch, not options.no_stages, note)
        result["growth"], result["stages"] = grown.points, grown.stages
    if not options.keep:
        for entry in WORK.iterdir():
            if entry.is_dir():
                shutil.rmtree(entry)
    return result


def measure_runs(text, mail, options):
    """Every program in turn, round by round, so that a machine that drifts drifts under all of them alike."""
    programs = {"service": lambda name: run_service(text, name), "floor": lambda name: run_floor(text, name)}
    if has_recollindex():
        programs["recollindex"] = lambda name: run_recollindex(text, name)
    else:
        note("recollindex is not installed (Debian package recollcmd), so there is no comparison with it.")
    if mail.files:
        programs["service, mail"] = lambda name: run_service(mail, name)
    runs = {program: [] for program in programs}
    for number in range(1, options.rounds + 1):
        for program, run in programs.items():
            name = f"{program.replace(', ', '-')}-{number}"
            runs[program].append(run(name))
            if not options.keep:
                shutil.rmtree(WORK / name)
            note(f"  round {number}: {program}: {runs[program][-1]['documents_per_second']:.1f} documents/s")
    return {program: {**median_run(measured), "all_rounds": measured} for program, measured in runs.items()}


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


def described_machine():
    def field(file, name):
        lines = pathlib.Path(file).read_text().splitlines()
        return next((line.partition(":")[2].strip() for line in lines if line.startswith(name)), "unknown")

    return {"date": datetime.date.today().isoformat(), "processor": field("/proc/cpuinfo", "model name"),
            "cores": os.cpu_count(), "memory_gb": round(int(field("/proc/meminfo", "MemTotal").split()[0]) / 2**20),
            "system": platform.freedesktop_os_release()["PRETTY_NAME"], "kernel": platform.release(),
            "sqlite": sqlite3.sqlite_version, "compiler": "GCC " + check.compiler(),
            "libraries": check.library_versions()}


def write_docs(result):
    text = report.document_text(result, PICTURE)
    DOCUMENT.write_text(report.put_between_markers(DOCUMENT.read_text(), text))
    if result.get("growth"):
        report.draw(result, DOCUMENT.parent / PICTURE)
    print(f"Written: {DOCUMENT}")


if __name__ == "__main__":
    sys.exit(main())
