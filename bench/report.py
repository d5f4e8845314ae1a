"""Shows what was measured: tables on the screen, tables for the documents, and the picture."""
import shutil
import subprocess

from figures import GOALS, cost, grown_factor, growth, median_and_spread, megabytes, ratios, shown

BEGIN, END = "<!-- measured: begin -->", "<!-- measured: end -->"


def summarise(result):
    """The figures that there are goals for, each with its median and spread, as far as they were measured."""
    runs = {name: run["all_rounds"] for name, run in result["runs"].items()}
    service = runs["service"]

    def each(rounds, key):
        return [run[key] for run in rounds]

    figures = {
        "floor": ratios(each(service, "working_seconds"), each(runs["floor"], "working_seconds")),
        "written": ratios(each(service, "bytes_written"), each(service, "index_bytes")),
        "size": ratios(each(service, "index_bytes"), each(service, "bytes")),
        "memory": median_and_spread([run["peak_bytes"] / 1e6 for run in service]),
    }
    if "recollindex" in runs:
        figures["peer"] = ratios(each(runs["recollindex"], "working_seconds"), each(service, "working_seconds"))
    if result.get("growth"):
        figures["growth"] = grown_factor(result["growth"], 0)
        # An empty library also has to learn every word, which makes its documents dearer than growth does.
        figures["growth of known words"] = grown_factor(result["growth"], 1)
        # Over a long time memory must not grow either.
        most = max(run["peak_bytes"] for run in result["growth"]) / 1e6
        figures["memory"]["max"] = max(most, figures["memory"]["max"])
    if result.get("stages"):
        figures["pause"] = median_and_spread([1000 * max(longest_stay(run) for run in result["stages"].values())])
    return {name: figures[name] for name in GOALS if name in figures}


def longest_stay(stages):
    return max(stage["longest"] for name, stage in stages["stages"].items() if name.startswith("SQL"))


# --- Tables, as a head and rows -------------------------------------------------------------------------------------

def goals_table(result):
    head = ["figure", "must", "aim", "measured", "reached"]
    rows = []
    for name, figure in result["figures"].items():
        goal = GOALS[name]
        digits = 2 if goal.unit in ("×", "") else 0
        rows.append([goal.title, goal.limit(goal.must), goal.limit(goal.aim),
                     shown(figure, digits) + (f" {goal.unit}" if goal.unit else ""), goal.verdict(figure["median"])])
    return head, rows


def runs_table(result):
    runs = result["runs"]

    def line(title, show):
        return [title, *(show(run["all_rounds"]) for run in runs.values())]

    def spread(key, scale=1.0, digits=1):
        return lambda rounds: shown(median_and_spread([run[key] * scale for run in rounds]), digits)

    def rows_per_second(rounds):
        if "rows" not in rounds[0]:
            return ""
        return shown(median_and_spread([sum(run["rows"].values()) / run["working_seconds"] for run in rounds]), 0)

    def with_children(rounds):
        both = [(run["peak_bytes"] + run["child_peak_bytes"]) / 1e6 for run in rounds]
        return shown(median_and_spread(both), 1) if any(run["child_peak_bytes"] for run in rounds) else ""

    return ["", *runs], [
        line("documents", lambda rounds: f"{rounds[0]['documents']:,}"),
        line("MB of documents", lambda rounds: megabytes(rounds[0]["bytes"])),
        line("documents/s", spread("documents_per_second")),
        line("MB/s", spread("megabytes_per_second", digits=2)),
        line("rows/s", rows_per_second),
        line("seconds, first document to end", spread("working_seconds")),
        line("seconds, start to end", spread("wall_seconds")),
        line("processor seconds, children too", spread("processor_seconds")),
        line("peak memory, MB", spread("peak_bytes", 1e-6)),
        line("peak memory with the largest child, MB", with_children),
        line("MB written", spread("bytes_written", 1e-6)),
        line("MB handed to write calls, pipes too", spread("bytes_written_by_calls", 1e-6)),
        line("MB of library or index", spread("index_bytes", 1e-6)),
    ]


def growth_table(result):
    points = result["growth"]
    head = ["the library holds", "library, MB", "ms/document", "of the empty one's", "processor, ms/document",
            "of the empty one's", "MB written", "peak memory, MB", "then look-up of a word, ms", "of a document, ms"]
    rows = [[f"{point['times']}x" if point["times"] else "nothing", f"{point['library_bytes'] / 1e6:.0f}",
             f"{1000 * cost(point, 'working_seconds'):.2f}", f"{factor['wall']:.2f}",
             f"{1000 * cost(point, 'processor_seconds'):.2f}", f"{factor['processor']:.2f}",
             megabytes(point["bytes_written"]), megabytes(point["peak_bytes"]),
             *(f"{1000 * point['look_ups'][kind]['median']:.2f}" for kind in ("word", "document"))]
            for point, factor in zip(points, growth(points)) if point["times"] in (0, 1, 5, 20)]
    return head, rows


def stages_table(result):
    stages = result["stages"]
    head = ["ms/document in a library that"]
    for name in stages:
        head += [name, "share", "longest, ms"]

    def line(title, stage_of):
        row = [title]
        for run in stages.values():
            stage = stage_of(run)
            longest = stage.get("longest") or 0
            row += [f"{1000 * stage['seconds'] / run['documents']:.3f}",
                    f"{100 * stage['seconds'] / run['seconds']:.1f} %", f"{1000 * longest:.1f}" if longest else ""]
        return row

    first = next(iter(stages.values()))
    rows = [line(name, lambda run, name=name: run["stages"][name]) for name in first["stages"]]
    return head, [*rows, line("a whole document", lambda run: run["document"])]


def statements_table(result):
    stages = result["stages"]
    head = ["costliest statements", *(cell for name in stages for cell in (f"{name}: calls", "µs each"))]
    rows = []
    last = list(stages.values())[-1]
    for kind, _ in sorted(last["statements"].items(), key=lambda item: -item[1]["seconds"])[:10]:
        row = [kind]
        for run in stages.values():
            stage = run["statements"].get(kind, {"calls": 0, "seconds": 0})
            row += [stage["calls"], f"{1e6 * stage['seconds'] / max(stage['calls'], 1):.1f}"]
        rows.append(row)
    return head, rows


def tables_of(result):
    yield goals_table(result)
    yield runs_table(result)
    if result.get("growth"):
        yield growth_table(result)
    if result.get("stages"):
        yield stages_table(result)
        yield statements_table(result)


# --- Where they go ----------------------------------------------------------------------------------------------------

def print_tables(result):
    for head, rows in tables_of(result):
        lines = [[str(cell) for cell in row] for row in [head, *rows]]
        widths = [max(len(row[column]) for row in lines) for column in range(len(head))]
        print()
        for row in lines:
            print("  ".join(cell.ljust(width) if column == 0 else cell.rjust(width)
                            for column, (cell, width) in enumerate(zip(row, widths))).rstrip())
    if "recollindex" not in result["runs"]:
        print("\nrecollindex is not installed (Debian package recollcmd), so there is no comparison with it.")


def markdown_table(head, rows):
    lines = [head, ["---"] * len(head), *rows]
    return "\n".join("| " + " | ".join(str(cell) for cell in line) + " |" for line in lines)


def described_machine(result):
    machine, corpus = result["machine"], result["corpus"]
    packages = "; ".join(f"{name} {source['version']} ({source['documents']})"
                         for name, source in corpus.get("packages", {}).items())
    text = (f"Measured on {machine['date']}: {machine['processor']}, {machine['cores']} cores, "
            f"{machine['memory_gb']} GB of memory, {machine['system']}, Linux {machine['kernel']}, SQLite "
            f"{machine['sqlite']}, {machine['compiler']}; {corpus['text']['documents']:,} documents, "
            f"{megabytes(corpus['text']['bytes'])} MB of text, "
            f"{'in memory' if corpus.get('warm') else 'read from the disk'}; "
            f"{result['rounds']} rounds, told as the median with the "
            "smallest and the largest value.")
    return text + (f"\n\nThe documents come from {packages}." if packages else "")


def document_text(result, picture):
    parts = [described_machine(result), *(markdown_table(*table) for table in tables_of(result))]
    if result.get("growth"):
        parts.insert(4, f"![Cost per document against the size of the library]({picture})")
    return "\n\n".join(parts)


def put_between_markers(document, text):
    before, found, rest = document.partition(BEGIN)
    _, found_end, after = rest.partition(END)
    if not found or not found_end:
        raise ValueError(f"the document has no {BEGIN} and {END}")
    return f"{before}{BEGIN}\n\n{text}\n\n{END}{after}"


PLOT = """\
set terminal svg size 800,420 font "sans-serif,13" background "white"
set output "{target}"
set xlabel "documents in the library"
set ylabel "milliseconds per document"
set yrange [0:*]
set grid ytics lt 1 lc rgb "#dddddd"
set border 3
set tics nomirror
set key top left
set format x "%'.0f"
$costs << END
{rows}
END
plot $costs using 1:2 with linespoints pt 7 ps 0.6 lw 2 lc rgb "#1f6fb4" title "wall clock", \\
     $costs using 1:3 with linespoints pt 5 ps 0.6 lw 2 lc rgb "#c8641e" title "processor, plug-in too"
"""


def draw(result, target):
    """The cost of a document against the size of the library, as an SVG; False without gnuplot."""
    if shutil.which("gnuplot") is None:
        return False
    rows = "\n".join(f"{point['times'] * point['documents']} {1000 * cost(point, 'working_seconds'):.4f} "
                     f"{1000 * cost(point, 'processor_seconds'):.4f}" for point in result["growth"])
    target.parent.mkdir(parents=True, exist_ok=True)
    subprocess.run(["gnuplot"], input=PLOT.format(target=target, rows=rows), text=True, check=True)
    return True
