import unittest

import figures


def run(seconds, processor=1.0, documents=10):
    return {"working_seconds": seconds, "processor_seconds": processor, "documents": documents}


class SpreadTest(unittest.TestCase):
    def test_the_median_stands_between_the_smallest_and_the_largest(self):
        self.assertEqual(figures.median_and_spread([5.0, 1.0, 2.0]), {"median": 2.0, "min": 1.0, "max": 5.0})

    def test_the_median_of_an_even_number_is_the_middle_of_the_two_in_the_middle(self):
        self.assertEqual(figures.median_and_spread([4.0, 1.0, 3.0, 2.0])["median"], 2.5)

    def test_ratios_are_taken_round_by_round(self):
        # The sums have another ratio: the second round ran on a machine half as fast.
        self.assertEqual(figures.ratios([2.0, 4.0, 9.0], [1.0, 2.0, 3.0]), {"median": 2.0, "min": 2.0, "max": 3.0})

    def test_ratios_of_unequal_numbers_of_rounds_are_refused(self):
        with self.assertRaises(ValueError):
            figures.ratios([1.0, 2.0], [1.0])

    def test_the_median_run_is_the_one_in_the_middle_by_time(self):
        self.assertEqual(figures.median_run([run(3), run(1), run(2)]), run(2))

    def test_of_two_runs_the_slower_one_is_told(self):
        self.assertEqual(figures.median_run([run(3), run(1)]), run(3))

    def test_a_spread_that_rounds_away_is_not_shown(self):
        self.assertEqual(figures.shown({"median": 1.001, "min": 1.0, "max": 1.004}), "1.00")
        self.assertEqual(figures.shown({"median": 1.5, "min": 1.25, "max": 2.0}, 1), "1.5 (1.2–2.0)")


class GoalTest(unittest.TestCase):
    def test_a_figure_at_its_limit_is_reached(self):
        goal = figures.GOALS["floor"]
        self.assertEqual([goal.verdict(value) for value in (1.3, 1.31, 2.3, 2.31)], ["aim", "must", "must", "missed"])

    def test_a_figure_that_has_to_be_large_is_reached_from_above(self):
        goal = figures.GOALS["peer"]
        self.assertEqual([goal.verdict(value) for value in (3.0, 2.99, 1.4, 1.39)], ["aim", "must", "must", "missed"])

    def test_limits_are_told_with_their_direction_and_unit(self):
        self.assertEqual(figures.GOALS["peer"].limit(1.4), "≥ 1.4 ×")
        self.assertEqual(figures.GOALS["written"].limit(8), "≤ 8")
        self.assertEqual(figures.GOALS["pause"].limit(200), "≤ 200 ms")


class GrowthTest(unittest.TestCase):
    def test_the_empty_library_costs_its_own_cost(self):
        first, second = figures.growth([{**run(1.0, 2.0), "times": 0}, {**run(1.5, 3.0), "times": 1}])
        self.assertEqual((first["wall"], first["processor"]), (1.0, 1.0))
        self.assertEqual(second["times"], 1)
        self.assertAlmostEqual(second["wall"], 1.5)
        self.assertAlmostEqual(second["processor"], 1.5)

    def test_batches_of_different_sizes_are_compared_by_the_document(self):
        points = [{**run(1.0, documents=10), "times": 0}, {**run(4.0, documents=20), "times": 1}]
        self.assertAlmostEqual(figures.growth(points)[1]["wall"], 2.0)

    def test_a_dear_batch_among_the_last_ones_counts_for_all_of_them(self):
        points = [run(2.0), run(1.0), run(1.0), run(1.0), run(7.0)]
        factor = figures.grown_factor(points, 1, last=3)
        for name, expected in {"median": 3.0, "min": 1.0, "max": 7.0}.items():
            self.assertAlmostEqual(factor[name], expected)


class BaselineTest(unittest.TestCase):
    baseline = {"own": 1000, "total": 5000, "compiler": "12.2.0", "libraries": {"libsqlite3-0": "3.40", "libc6": "2.36"}}

    def judged(self, **changes):
        return figures.judge(self.baseline, {**self.baseline, **changes})

    def test_the_same_counts_pass(self):
        self.assertTrue(self.judged()[0])

    def test_three_percent_more_pass_and_the_next_instruction_fails(self):
        self.assertTrue(self.judged(own=1030)[0])
        passed, text = self.judged(own=1031)
        self.assertFalse(passed)
        self.assertIn("Own instructions: 1,031, baseline 1,000, +3.10%: TOO MANY", text)
        self.assertIn("--update-baseline", text)

    def test_the_libraries_instructions_count_too(self):
        self.assertFalse(self.judged(total=5151)[0])

    def test_fewer_instructions_pass(self):
        passed, text = self.judged(own=500, total=3000)
        self.assertTrue(passed)
        self.assertIn("-50.00%", text)

    def test_under_other_libraries_only_our_own_code_is_compared(self):
        newer = {"libsqlite3-0": "3.46", "libc6": "2.36"}
        passed, text = self.judged(total=9000, libraries=newer)
        self.assertTrue(passed)
        self.assertIn("not the baseline's: libsqlite3-0.", text)
        self.assertNotIn("All instructions", text)
        self.assertFalse(self.judged(own=1100, libraries=newer)[0])

    def test_another_compilers_code_is_not_compared(self):
        passed, text = self.judged(own=9000, compiler="14.2.0")
        self.assertTrue(passed)
        self.assertIn("Not compared", text)


if __name__ == "__main__":
    unittest.main()
