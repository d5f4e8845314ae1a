"""The arithmetic of the benchmark: what the rounds give together, and what counts as reached."""
import dataclasses
import operator
import statistics

# The instruction count of the fixed job may grow by so many percent before the check fails.
TOLERANCE = 3


def median_and_spread(values):
    return {"median": statistics.median(values), "min": min(values), "max": max(values)}


def ratios(dividends, divisors):
    """Round by round: a machine that drifts drifts under both alike."""
    return median_and_spread([own / other for own, other in zip(dividends, divisors, strict=True)])


def median_run(runs, key="working_seconds"):
    """The run in the middle; of an even number, the slower one."""
    return sorted(runs, key=operator.itemgetter(key))[len(runs) // 2]


def megabytes(count):
    return f"{count / 1e6:.1f}"


def shown(spread, digits=2):
    """A median with its spread, as it stands in a table."""
    text = f"{spread['median']:.{digits}f}"
    if f"{spread['min']:.{digits}f}" == f"{spread['max']:.{digits}f}":
        return text
    return f"{text} ({spread['min']:.{digits}f}–{spread['max']:.{digits}f})"


@dataclasses.dataclass(frozen=True)
class Goal:
    title: str
    must: float
    aim: float
    unit: str = "×"
    at_least: bool = False

    def verdict(self, value):
        reached = operator.ge if self.at_least else operator.le
        return "aim" if reached(value, self.aim) else "must" if reached(value, self.must) else "missed"

    def limit(self, value):
        return f"{'≥' if self.at_least else '≤'} {value:g} {self.unit}".rstrip()


GOALS = {
    "peer": Goal("documents per second against recollindex", 1.4, 3.0, at_least=True),
    "floor": Goal("wall time against the floor", 2.3, 1.3),
    "written": Goal("bytes written / library size", 8, 4, ""),
    "growth": Goal("cost per document at 20 times the library / empty", 2.0, 1.1),
    "growth of known words": Goal("the same against a library that knows the words", 2.0, 1.1),
    "pause": Goal("longest single stay in the database", 200, 50, "ms"),
    "memory": Goal("peak memory of the service", 150, 80, "MB"),
    "size": Goal("library size / text", 3.0, 2.0, ""),
}


def growth(points):
    """Cost per document at each size against the empty library's, by wall clock and by processor."""
    first = points[0]
    return [{"times": point["times"], "wall": cost(point, "working_seconds") / cost(first, "working_seconds"),
             "processor": cost(point, "processor_seconds") / cost(first, "processor_seconds")} for point in points]


def grown_factor(points, reference, last=5):
    """What a document costs in the last batches against the batch at `reference`. The mean, because storage that is
    settled now and then makes some batches dear for all the others."""
    first = cost(points[reference], "working_seconds")
    factors = [cost(point, "working_seconds") / first for point in points[-last:]]
    return {"median": statistics.fmean(factors), "min": min(factors), "max": max(factors)}


def cost(run, key):
    return run[key] / run["documents"]


def judge(baseline, measured):
    """What to say about a fixed job's instruction counts against a baseline, and whether it passes. The libraries'
    own instructions only count while the libraries are the baseline's; another compiler's code is not comparable."""
    if baseline["compiler"] != measured["compiler"]:
        return True, (f"Not compared: the baseline was taken with {baseline['compiler']}, this is "
                      f"{measured['compiler']}.")
    kinds = ["own", "total"]
    text = []
    if baseline["libraries"] != measured["libraries"]:
        names = sorted(set(baseline["libraries"].items()) ^ set(measured["libraries"].items()))
        text.append("Only the project's own code is compared, for these libraries are not the baseline's: "
                    + ", ".join(sorted({name for name, _ in names})) + ".")
        kinds = ["own"]
    passed = True
    for kind in kinds:
        change = measured[kind] / baseline[kind] - 1
        too_many = 100 * measured[kind] > (100 + TOLERANCE) * baseline[kind]
        passed = passed and not too_many
        text.append(f"{'Own' if kind == 'own' else 'All'} instructions: {measured[kind]:,}, baseline "
                    f"{baseline[kind]:,}, {change:+.2%}" + (": TOO MANY" if too_many else ""))
    if not passed:
        text.append(f"More than {TOLERANCE} % is too much. Find out why; when it has to be so, "
                    "script/bench --update-baseline makes it the new baseline.")
    return passed, "\n".join(text)
