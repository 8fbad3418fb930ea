#!/usr/bin/python3
"""The report on a made-up run: which peer is the one to beat, which targets are met, in which order."""

import json
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parent))
from measurements import Measurements  # noqa: E402
from report import arm_counts_table, figure, others_table, summary, times_table  # noqa: E402


def entry(index, name, time, unit="us", aggregate="median"):
    return {"family_index": index, "run_name": name, "aggregate_name": aggregate, "repetitions": 5,
            "cpu_time": time, "time_unit": unit}


RUN = {
    "context": {
        "job.a_second.differs": "nothing", "job.a_second.target": "0.5 0", "job.a_second.not_rivals": "opencv:nearest",
        "job.b_first.differs": "all", "job.b_first.target": "0.5 0.2", "job.b_first.not_rivals": "",
    },
    "benchmarks": [  # shuffled, as interleaving leaves them
        entry(4, "a_second/ours", 4), entry(7, "a_second/opencv:nearest", 2), entry(5, "a_second/portable", 40),
        entry(6, "a_second/libyuv", 0.010, "ms"), entry(8, "a_second/floor", 1),
        entry(4, "a_second/ours", 99, aggregate="mean"), entry(4, "a_second/ours", 0.03, aggregate="cv"),
        entry(0, "b_first/ours", 3), entry(1, "b_first/portable", 10), entry(2, "b_first/opencv", 10),
        entry(3, "b_first/floor", 1),
    ],
}


class ReportTest(unittest.TestCase):
    def setUp(self):
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "run.json"
            path.write_text(json.dumps(RUN), encoding="utf-8")
            self.run_ = Measurements(path)

    def test_a_way_that_does_less_is_shown_but_is_not_the_one_to_beat(self):
        job = self.run_.jobs["a_second"]
        self.assertEqual(job.fastest_peer, ("libyuv", 10))
        self.assertAlmostEqual(job.ratio, 0.4)
        self.assertIn("| a_second | opencv:nearest | 2.00 | 2.00 |", others_table([job]))

    def test_the_medians_count_and_the_programs_order(self):
        self.assertEqual([job.name for job in self.run_.in_order()], ["b_first", "a_second"])
        self.assertEqual(self.run_.jobs["a_second"].ours, 4)
        self.assertEqual(self.run_.spreads, [0.03])

    def test_a_target_of_portable_can_be_missed_although_the_peer_is_beaten(self):
        self.assertLess(self.run_.jobs["a_second"].excess, 0)
        self.assertAlmostEqual(self.run_.jobs["b_first"].excess, 0.5)
        self.assertIn("missed by 50 %", times_table(self.run_.in_order()))
        self.assertIn("meets its target in 1 of 2. Missed: b_first (by 50 %).", summary(self.run_.in_order()))

    def test_of_the_counts_on_arm_frames_come_first_and_what_vectors_do_not_change_is_left_out(self):
        counts = {"neon/grey": 100, "portable/grey": 1000, "neon/mirror": 10, "portable/mirror": 10,
                  "neon/front_frame": 1500000, "portable/front_frame": 6000000}
        rows = arm_counts_table(counts).splitlines()[2:]
        self.assertEqual(rows, ["| front_frame | 1,500,000 | 6,000,000 | 0.25 |", "| grey | 100 | 1,000 | 0.10 |"])

    def test_figures_have_three_digits(self):
        self.assertEqual([figure(v) for v in (0.0123, 0.5, 9.999, 99.96, 2263.4)],
                         ["0.012", "0.50", "10.0", "100", "2263"])


if __name__ == "__main__":
    unittest.main()
