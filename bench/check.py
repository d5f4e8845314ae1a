"""Counts the instructions of a fixed small job and holds them to bench/baseline.json: a slower machine or a busy one
does not change them. The job indexes documents made by rule, through the whole engine and the text plug-in's code in
one process, into a new library; callgrind counts."""
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys

from figures import judge
from programs import BIN, ROOT

BASELINE = ROOT / "bench/baseline.json"
DOCUMENTS = 24
WORDS = 1_500  # in each
# Without these the C library picks its copy and compare routines by the processor at hand.
TUNABLES = "glibc.cpu.hwcaps=-AVX,-AVX2,-AVX512F,-AVX512VL,-AVX512BW,-BMI2,-ERMS,-FSRM"


def check():
    measured = measure()
    try:
        baseline = json.loads(BASELINE.read_text())
    except FileNotFoundError:
        sys.exit(f"there is no {BASELINE}; script/bench --update-baseline makes it")
    passed, text = judge(baseline, measured)
    print(text)
    return 0 if passed else 1


def update_baseline():
    measured = measure()
    BASELINE.write_text(json.dumps(measured, indent=2) + "\n")
    print(f"{BASELINE}: {measured['own']:,} own instructions, {measured['total']:,} in all")
    return 0


def measure():
    if shutil.which("valgrind") is None:
        sys.exit("valgrind is needed to count instructions; script/bootstrap installs it")
    # Every run has a path of the same length and the same words, whatever folder the repository is in.
    folder = pathlib.Path(f"/tmp/tyindexer-job-{os.getpid():010d}")
    try:
        folder.mkdir()
        counted = run_job(folder)
    finally:
        shutil.rmtree(folder, ignore_errors=True)
    return {**counted, "job": {"documents": DOCUMENTS, "words": WORDS}, "compiler": compiler(),
            "libraries": library_versions()}


def run_job(folder):
    write_documents(folder / "documents")
    environment = {"PATH": os.environ["PATH"], "HOME": str(folder), "LC_ALL": "C.UTF-8", "TZ": "UTC",
                   "TYINDEXER_SETTINGS": str(folder / "settings.db"), "GLIBC_TUNABLES": TUNABLES}

    def run(*command):
        done = subprocess.run([str(part) for part in command], env=environment, cwd=folder, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        if done.returncode != 0:
            sys.exit(f"{command[0]} ended with status {done.returncode}: {done.stdout}")
        return done.stdout

    run(BIN / "tyctl", "init", folder / "library.db", "--log", folder / "service.log")
    run(BIN / "tyctl", "add", folder / "documents")
    counts = folder / "callgrind.out"
    output = run("valgrind", "--quiet", "--tool=callgrind", f"--callgrind-out-file={counts}",
                 BIN / "tyindexer-stages", "--in-process")
    indexed = json.loads(output[output.index("{"):])["documents"]
    if indexed != DOCUMENTS:
        sys.exit(f"the job indexed {indexed} documents, not {DOCUMENTS}")
    objects = instructions_by_object(counts)
    own = sum(count for name, count in objects.items() if pathlib.Path(name).name == "tyindexer-stages")
    return {"own": own, "total": sum(objects.values())}


def write_documents(folder):
    """Documents whose words are as unevenly frequent as those of a language, and always the same."""
    folder.mkdir()
    state = 1

    def random(below):
        nonlocal state
        state = (state * 6364136223846793005 + 1442695040888963407) % 2**64
        return (state >> 33) % below

    def word():
        number = random(1 << (1 + random(15)))
        text = ""
        while True:
            number, digit = divmod(number, 105)
            text += "bcdfghjklmnprstvwxyzq"[digit % 21] + "aeiou"[digit // 21]
            if number == 0:
                return text

    for document in range(DOCUMENTS):
        words = []
        while len(words) < WORDS:
            sentence = [word() for _ in range(5 + random(20))]
            words += [sentence[0].capitalize(), *sentence[1:-1], sentence[-1] + "."]
            if random(8) == 0:
                words[-1] += "\n\n"
        kind = ".md" if document % 8 == 0 else ".txt"
        heading = f"# {word().capitalize()} {word()}\n\n" if kind == ".md" else ""
        (folder / f"document{document:02d}{kind}").write_text(heading + " ".join(words) + "\n")


def instructions_by_object(file):
    """The own cost of each program and library in callgrind's output: a line with the cost of calls, which follows
    "calls=", holds what is counted elsewhere."""
    names, costs, current, follows_call = {}, {}, None, False
    for line in file.read_text().splitlines():
        if match := re.match(r"(c?ob)=\((\d+)\)(?: (.*))?", line):
            if match[3] is not None:
                names[match[2]] = match[3]
            current = match[2] if match[1] == "ob" else current
        elif line.startswith("calls="):
            follows_call = True
        elif line[:1] in "0123456789+-*" and line:
            if not follows_call:
                costs[current] = costs.get(current, 0) + int(line.split()[1])
            follows_call = False
    return {names[key]: count for key, count in costs.items()}


def compiler():
    text = (ROOT / "build/release/CMakeCache.txt").read_text()
    path = re.search(r"^CMAKE_CXX_COMPILER:\w+=(.*)$", text, re.MULTILINE)[1]
    line = subprocess.run([path, "--version"], check=True, text=True, stdout=subprocess.PIPE).stdout.splitlines()[0]
    return line.partition(" ")[2]


def library_versions():
    done = subprocess.run(["dpkg-query", "--show", "--showformat=${binary:Package} ${Version} ${db:Status-Status}\n",
                           "libsqlite3-0", "libstdc++6", "libc6", "libicu[0-9]*", "valgrind"], text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    lines = (line.split() for line in done.stdout.splitlines())
    return {name.partition(":")[0]: version for name, version, status in
            (line for line in lines if len(line) == 3) if status == "installed"}
