"""tyctl supervise, with small shell scripts in the place of the service."""
import os
import signal
import unittest

from tyctl_harness import Running, TyctlTest, wait_until

INDEXER = "Indexer\\"
MASTER = "Master\\"


class SuperviseTest(TyctlTest):
    def supervise(self, *arguments, poll="0.02"):
        return Running(self, "supervise", "--poll", poll, *arguments)

    def setting(self, name):
        """The value, or nothing when there is none."""
        listed = self.tyctl("settings", "list").stdout
        return self.tyctl("settings", "get", name).stdout.rstrip("\n") if f"{name} = " in listed else None

    def assert_process_is_gone(self, process):
        def gone():
            try:
                os.kill(process, 0)
            except ProcessLookupError:
                return True
            return False
        wait_until(self, gone, f"the end of process {process}")

    def test_marks_its_presence_and_removes_the_mark_when_it_is_stopped(self):
        service = self.script("service", 'echo ready >&2\nexec sleep 1000\n')
        running = self.supervise("--", service)
        running.wait_for("ready")
        self.assertIn("tyctl supervise", self.tyctl("settings", "get", MASTER).stdout)
        running.signal()
        running.wait_for("stopped with signal 15")
        self.assertEqual(running.finish(), 0)
        self.tyctl("settings", "get", MASTER, status=1)

    def test_lets_the_service_come_to_its_own_end(self):
        service = self.script("service", "trap 'echo orderly >&2; exit 0' TERM\necho ready >&2\n"
                                         "while :; do sleep 0.02; done\n")
        running = self.supervise("--", service)
        running.wait_for("ready")
        running.signal()
        running.wait_for("orderly")
        running.wait_for("stopped with status 0")
        self.assertEqual(running.finish(), 0)

    def test_stops_on_an_interrupt_as_well(self):
        running = self.supervise("--", self.script("service", "echo ready >&2\nexec sleep 1000\n"))
        running.wait_for("ready")
        running.signal(signal.SIGINT)
        self.assertEqual(running.finish(), 0)

    def test_kills_a_service_that_does_not_stop_within_the_grace_time(self):
        service = self.script("service", "trap '' TERM\necho ready $$ >&2\nwhile :; do sleep 0.02; done\n")
        running = self.supervise("--grace", "0.2", "--", service)
        process = int(running.wait_for("ready").split()[1])
        running.signal()
        running.wait_for("killing it")
        self.assertEqual(running.finish(), 1)
        self.assert_process_is_gone(process)

    def test_waits_longer_each_time_the_service_ends_at_once(self):
        running = self.supervise("--", self.script("service", "exit 3\n"))
        running.wait_for("ended with status 3; waiting 1 s")
        running.wait_for("ended with status 3; waiting 2 s")
        running.signal()
        self.assertEqual(running.finish(), 0)

    def test_starts_again_without_delay_after_a_self_restart(self):
        self.tyctl("settings", "set", MASTER + "DocsIndexedSinceCompaction", "5")
        counter = self.folder / "runs"
        service = self.script("service", f"""echo run >> '{counter}'
case $(wc -l < '{counter}') in
1) "$TYCTL" settings set 'Master\\DocsIndexedSinceCompaction' 105; exit 0;;
*) echo second >&2; exec sleep 1000;;
esac
""")
        running = self.supervise("--", service)
        running.wait_for("ended with status 0; starting again")
        running.wait_for("second")

    def test_kills_and_restarts_a_service_whose_job_shows_no_sign_of_life(self):
        counter = self.folder / "runs"
        service = self.script("service", f"""echo run >> '{counter}'
case $(wc -l < '{counter}') in
1) "$TYCTL" settings set 'Indexer\\LastTouch' '16 Nov 2026 01:47:03'
   "$TYCTL" settings set 'Indexer\\DeadMansSwitchSeconds' 1
   "$TYCTL" settings set 'Indexer\\IndexingQueueNumber' 7
   trap '' TERM; echo hanging $$ >&2; while :; do sleep 0.02; done;;
*) echo second >&2; exec sleep 1000;;
esac
""")
        running = self.supervise("--", service)
        process = int(running.wait_for("hanging").split()[1])
        running.wait_for("queue entry 7 has shown no sign of life for 1 s (last one: 16 Nov 2026 01:47:03)")
        running.wait_for("second")
        self.assert_process_is_gone(process)

    def test_does_not_take_a_job_that_a_killed_service_left_for_one_in_work(self):
        self.tyctl("settings", "set", INDEXER + "LastTouch", "16 Nov 1999 01:47:03")
        self.tyctl("settings", "set", INDEXER + "DeadMansSwitchSeconds", "1")
        counter = self.folder / "runs"
        service = self.script("service", f"""echo run >> '{counter}'
case $(wc -l < '{counter}') in
1) "$TYCTL" settings set 'Indexer\\IndexingQueueNumber' 7; "$TYCTL" settings set 'Indexer\\IndexingKey' x.txt; exit 1;;
*) echo second >&2; exec sleep 1000;;
esac
""")
        running = self.supervise("--", service)
        running.wait_for("second")
        self.assertEqual(self.setting("service\\" + INDEXER + "IndexingQueueNumber"), "0")
        self.assertEqual(self.setting("service\\" + INDEXER + "IndexingKey"), "")

    def test_kills_what_the_service_started_together_with_it(self):
        service = self.script("service", "trap '' TERM\nsleep 1000 &\necho helper $! >&2\nwait\nwhile :; do wait; done\n")
        running = self.supervise("--grace", "0.1", "--", service)
        helper = int(running.wait_for("helper").split()[1])
        running.signal()
        self.assertEqual(running.finish(), 1)
        self.assert_process_is_gone(helper)

    def test_a_second_signal_kills_at_once(self):
        service = self.script("service", "trap 'echo asked >&2' TERM\necho ready >&2\nwhile :; do sleep 0.02; done\n")
        running = self.supervise("--grace", "1000", "--", service)
        running.wait_for("ready")
        running.signal()
        running.wait_for("asked")
        running.signal()
        running.wait_for("a second time")
        self.assertEqual(running.finish(), 1)

    def test_a_killed_supervisor_leaves_no_service_behind(self):
        running = self.supervise("--", self.script("service", 'echo "ready $$ end" >&2\nexec sleep 1000\n'))
        service = int(running.wait_for("ready").split()[-2])
        running.signal(signal.SIGKILL)
        self.assert_process_is_gone(service)

    def test_refuses_times_that_are_none(self):
        service = self.script("service", "exit 0\n")
        for option in (("--grace", "inf"), ("--grace", "nan"), ("--grace", "-1"), ("--poll", "nan")):
            refused = self.tyctl("supervise", *option, "--", service, status=2)
            self.assertIn("is no number of seconds from", refused.stderr)

    def test_refuses_to_run_beside_another_supervisor(self):
        running = self.supervise("--", self.script("service", "echo ready >&2\nexec sleep 1000\n"))
        running.wait_for("ready")
        refused = self.tyctl("supervise", "--", "true", status=1)
        self.assertIn("another tyctl supervise is at work", refused.stderr)
        self.assertIn("tyctl supervise", self.tyctl("settings", "get", MASTER).stdout)

    def test_says_when_the_service_cannot_be_started(self):
        failed = self.tyctl("supervise", "--", self.folder / "missing", status=1)
        self.assertIn("missing: No such file or directory", failed.stderr)
        self.tyctl("settings", "get", MASTER, status=1)


if __name__ == "__main__":
    unittest.main()
