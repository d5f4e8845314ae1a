"""What a document costs as the library grows. The library grows through the service itself, so that it is in the
state in which the service leaves it: the same documents under new paths, one batch after the other."""
import dataclasses

from figures import cost, megabytes
from programs import Service

# The largest size, in multiples of the batch.
FULL = 20


@dataclasses.dataclass
class Growth:
    points: list      # a run of the service for each batch, with "times": how often the library held it before, and what
                      # look-ups take after it
    stages: dict      # the stages of one more batch, in an empty and in the grown library


def measure_growth(batch, with_stages, note):
    note(f"\nGrowth: {batch}, {FULL + 1} times under new paths")
    stages = {}
    if with_stages:
        service = Service("stages")
        stages["is empty"] = service.stages(batch)
        service.remove()
    service = Service("growth")
    points = []
    for times in range(FULL + 1):
        moved = batch.moved(f"grown{times}")
        run = {"times": times, "library_bytes": service.size(), **service.index(moved), "look_ups": service.look_ups()}
        points.append(run)
        moved.remove()
        note(f"  holds {times}x ({megabytes(run['library_bytes'])} MB): {1000 * cost(run, 'working_seconds'):.2f} ms a "
             f"document, {1000 * cost(run, 'processor_seconds'):.2f} ms of processor, "
             f"{run['peak_bytes'] / 1e6:.0f} MB of memory")
    held, expected = service.documents(), len(points) * len(batch.files)
    if held != expected:
        raise SystemExit(f"the growing library holds {held} documents, not {expected}")
    if with_stages:
        moved = batch.moved("grown-last")
        stages[f"holds {len(points)}x"] = service.stages(moved)
        moved.remove()
    service.remove()
    return Growth(points, stages)

