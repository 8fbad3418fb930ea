"""Reads what morvale_bench wrote: the medians of one run, and each job's peers and targets."""

import json
from dataclasses import dataclass, field

MICROSECONDS = {"ns": 1e-3, "us": 1.0, "ms": 1e3, "s": 1e6}


@dataclass
class Job:
    name: str
    differs: str
    target: float  # ours may take this share of the fastest peer's time; 0: no target
    portable_target: float  # and this share of the portable kernels' time
    not_rivals: list[str]
    place: int = 0  # in the program's list
    times: dict[str, float] = field(default_factory=dict)  # way -> µs

    @property
    def ours(self):
        return self.times["ours"]

    @property
    def peers(self):
        return {way: t for way, t in self.times.items() if way not in ("ours", "portable", "floor")}

    @property
    def fastest_peer(self):
        rivals = {way: t for way, t in self.peers.items() if way not in self.not_rivals}
        return min(rivals.items(), key=lambda item: item[1])

    @property
    def ratio(self):
        return self.ours / self.fastest_peer[1]

    @property
    def portable_ratio(self):
        return self.ours / self.times["portable"]

    @property
    def excess(self):
        """How far the worse of the two targets is missed, as a share of it; 0 or less: both are met."""
        misses = [self.ratio / self.target - 1] if self.target else []
        if self.portable_target:
            misses.append(self.portable_ratio / self.portable_target - 1)
        return max(misses, default=0.0)


@dataclass
class GrowthPoint:
    x: int
    source_pixels: int
    output_pixels: int
    times: dict[str, float] = field(default_factory=dict)


class Measurements:
    def __init__(self, path):
        with open(path, encoding="utf-8") as file:
            data = json.load(file)
        self.context = data["context"]
        self.jobs = self._jobs()
        self.curves = {}
        self.spreads = []
        self.repetitions = 0
        for entry in sorted(data["benchmarks"], key=lambda entry: entry["family_index"]):
            self._take(entry)
        for points in self.curves.values():
            points.sort(key=lambda point: point.x)

    def _jobs(self):
        jobs = {}
        for key in self.context:
            if not key.startswith("job.") or not key.endswith(".differs"):
                continue
            name = key[len("job."):-len(".differs")]
            target, portable = map(float, self.context[f"job.{name}.target"].split())
            jobs[name] = Job(name, self.context[key], target, portable,
                             self.context[f"job.{name}.not_rivals"].split())
        return jobs

    def _take(self, entry):
        aggregate = entry.get("aggregate_name")
        if aggregate == "cv":
            self.spreads.append(entry["cpu_time"])
        if aggregate != "median":
            return
        self.repetitions = entry["repetitions"]
        name, way = entry["run_name"].split("/")
        time = entry["cpu_time"] * MICROSECONDS[entry["time_unit"]]
        if name.startswith("growth."):
            self._point(name.split(".")[1], entry).times[way] = time
        else:
            self.jobs[name].place = entry["family_index"]
            self.jobs[name].times[way] = time

    def _point(self, curve, entry):
        points = self.curves.setdefault(curve, [])
        for point in points:
            if point.x == entry["x"]:
                return point
        points.append(GrowthPoint(int(entry["x"]), int(entry["source_pixels"]), int(entry["output_pixels"])))
        return points[-1]

    def in_order(self):
        """The jobs that were run, as the program lists them: the context sorts them by name."""
        return sorted((job for job in self.jobs.values() if job.times), key=lambda job: job.place)
