import unittest

import report


class MarkersTest(unittest.TestCase):
    def test_what_stands_between_the_markers_is_replaced_and_nothing_else(self):
        document = f"before\n\n{report.BEGIN}\nold\n{report.END}\n\nafter\n"
        once = report.put_between_markers(document, "new")
        self.assertEqual(once, f"before\n\n{report.BEGIN}\n\nnew\n\n{report.END}\n\nafter\n")
        self.assertEqual(report.put_between_markers(once, "new"), once)

    def test_a_document_without_markers_is_refused(self):
        with self.assertRaises(ValueError):
            report.put_between_markers("text", "new")


def run(seconds, written, documents=10):
    return {"working_seconds": seconds, "documents": documents, "bytes": 1000, "index_bytes": 2000,
            "bytes_written": written, "peak_bytes": 50e6, "child_peak_bytes": 7e6}


class SummaryTest(unittest.TestCase):
    runs = {"service": {"all_rounds": [run(2.0, 8000), run(4.0, 6000), run(3.0, 7000)]},
            "floor": {"all_rounds": [run(1.0, 1), run(2.0, 1), run(1.0, 1)]},
            "recollindex": {"all_rounds": [run(4.0, 1), run(4.0, 1), run(9.0, 1)]}}

    def test_each_figure_is_taken_from_the_rounds(self):
        figures = report.summarise({"runs": self.runs})
        self.assertEqual(figures["peer"], {"median": 2.0, "min": 1.0, "max": 3.0})
        self.assertEqual(figures["floor"], {"median": 2.0, "min": 2.0, "max": 3.0})
        self.assertEqual(figures["written"], {"median": 3.5, "min": 3.0, "max": 4.0})
        self.assertEqual(figures["size"]["median"], 2.0)
        self.assertEqual(figures["memory"]["median"], 50.0)
        self.assertNotIn("growth", figures)

    def test_without_the_peer_its_figure_is_missing(self):
        runs = {name: run for name, run in self.runs.items() if name != "recollindex"}
        self.assertNotIn("peer", report.summarise({"runs": runs}))

    def test_the_longest_stay_is_the_databases_in_any_library(self):
        def stages(longest):
            return {"stages": {"SQL commit": {"longest": longest}, "plug-in": {"longest": 9.0}}}
        figures = report.summarise({"runs": self.runs, "stages": {"is empty": stages(0.25), "holds 21x": stages(0.125)}})
        self.assertEqual(figures["pause"]["median"], 250.0)


if __name__ == "__main__":
    unittest.main()
