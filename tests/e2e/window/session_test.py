"""Sessions of the window: window managers that come late, stops, minimising, ends, a supervisor, no display at all;
between jobs and within them.
"""

import signal

import window_harness
from harness import INDEXER, MASTER, SERVICE, stays_false
from window_harness import CAPTION, desktops

TEXT = "The ferry waits for the tide.\n"
POLL = "UI: Checking file index queue..."
FAILED = "ERROR while updating database."


class Session(window_harness.WindowTest):
    def polls(self):
        return self.library.log().count(POLL)

    def wait_for_polls(self, window, count=2):
        """Until the service has looked at the queue so often from now on."""
        wanted = self.polls() + count
        window.wait(lambda: self.polls() >= wanted, "the service polls")

    def queue_one_that_fails(self, window):
        """An entry without a path is claimed, and its job fails. Returns when the service has said so."""
        told = self.library.log().count("UI: " + FAILED)
        self.library.queue("")
        window.wait(lambda: self.library.log().count("UI: " + FAILED) > told, "the job has failed")

    # At log-in, when all comes up at once

    def assert_operated(self, window):
        """The window answers to clicks where its controls are seen."""
        window.click("cmdStartStop")
        window.wait(lambda: window.caption("cmdStartStop") == "Start", "polling is stopped")

    def test_a_window_that_came_before_the_window_manager_is_taken_over(self):
        self.desktop = desktops.Desktop(self.folder / "bare", self.screen, window_manager=False)
        self.addCleanup(self.desktop.close)
        window = window_harness.Window(self.desktop, self.launch(), self.library)
        window.wait(lambda: self.desktop.windows(CAPTION), "the window is shown without a window manager")
        self.desktop.start_window_manager()
        self.assert_operated(window.wait_until_shown())

    def test_a_window_that_comes_while_the_window_manager_is_busy_is_shown_in_the_end(self):
        manager = self.desktop.manager
        self.addCleanup(manager.send_signal, signal.SIGCONT)
        manager.send_signal(signal.SIGSTOP)
        window = window_harness.Window(self.desktop, self.launch(), self.library)
        self.library.wait_for_log("Interest: Indexer started.", window.process)
        self.assertEqual(self.desktop.windows(CAPTION), [])
        self.assertEqual(len(self.desktop.windows(CAPTION, only_visible=False)), 1)
        manager.send_signal(signal.SIGCONT)
        self.assert_operated(window.wait_until_shown())

    # Stop and start

    def test_a_stopped_service_claims_nothing_until_it_is_started(self):
        window = self.open_window("--poll-interval", "0.05")
        window.click("cmdStartStop")
        window.wait_for_message("Indexing stopped.")
        self.assertEqual(window.caption("cmdStartStop"), "Start")
        path = self.library.write("ferry.txt", TEXT)
        polls = self.polls()
        self.library.queue(path)
        self.assertTrue(stays_false(lambda: self.polls() > polls, 50, pause=0.01))
        self.assertEqual(self.library.queued(), [(path, 0)])
        window.click("cmdStartStop")
        window.wait_for_message("Indexing started.")
        self.assertEqual(window.caption("cmdStartStop"), "Stop")
        self.wait_until_indexed(window, path)

    def test_a_stop_in_the_middle_of_a_job_holds_until_the_job_is_done(self):
        window = self.open_window()
        job = self.slow_job()
        job.begin()
        window.click("cmdStartStop")
        job.turn_until(lambda: self.library.logged("UI: Indexing stopped."), "the stop is told")
        self.assertEqual(job.turning(lambda: window.caption("cmdStartStop")), "Start")
        self.assertEqual(self.library.queued(), [(job.path, 1)])
        path = self.library.write("ferry.txt", TEXT)
        self.library.queue(path)
        job.finish()
        self.wait_until_indexed(window, job.path, path)
        self.assertEqual(window.caption("cmdStartStop"), "Start")
        self.assertFalse(self.library.logged("UI: Indexing started."))

    def test_log_it_in_the_middle_of_a_job_holds_at_once(self):
        window = self.open_window(settings={(INDEXER, "LoggingOn"): 0})
        job = self.slow_job()
        job.begin()
        window.click("chkLogit")
        job.turn_until(lambda: self.library.get(INDEXER, "LoggingOn") == "1", "the switch is saved")
        self.assertTrue(job.turning(lambda: window.is_checked("chkLogit")))
        self.assertEqual(self.library.queued(), [(job.path, 1)])
        self.assertFalse(self.library.logged(POLL))
        job.finish()
        self.wait_until_indexed(window, job.path)
        window.wait(lambda: self.library.logged(POLL), "status lines are logged")
        self.assertEqual(len(self.library.sentences(self.library.document_id(job.path))), job.sentences())

    # Minimised and maximised

    def shows_no_line_of_now(self, window):
        """Whether the list stands still while the service polls."""
        before = window.lines()
        self.wait_for_polls(window)
        return window.lines() == before

    def test_status_lines_of_a_minimised_window_never_reach_the_list(self):
        window = self.open_window("--poll-interval", "0.3")
        window.minimise()
        window.wait(lambda: self.shows_no_line_of_now(window), "the list stands still")
        before = window.lines()
        self.queue_one_that_fails(window)
        self.wait_for_polls(window)
        self.assertEqual(window.lines(), before)
        window.restore()
        window.wait(lambda: window.lines() != before, "the list goes on")
        self.assertNotIn(FAILED, window.messages())
        self.queue_one_that_fails(window)
        window.wait_for_message(FAILED)

    def test_status_lines_of_a_maximised_window_never_reach_the_list(self):
        window = self.open_window("--poll-interval", "0.3")
        self.desktop.keys("super+m")
        window.wait(lambda: self.shows_no_line_of_now(window), "the list stands still")
        self.assertEqual(self.desktop.geometry(window.id)[2], self.screen[0])
        before = window.lines()
        self.queue_one_that_fails(window)
        self.assertEqual(window.lines(), before)
        self.desktop.keys("super+m")
        window.wait(lambda: window.lines() != before, "the list goes on")
        self.assertNotIn(FAILED, window.messages())

    def test_a_window_minimised_in_the_middle_of_a_job_shows_nothing_of_its_end(self):
        window = self.open_window("--poll-interval", "0.3")
        job = self.slow_job()
        job.begin()
        window.minimise()
        job.turn()  # handles what the window manager has told
        before = job.turning(window.lines)
        job.finish()
        self.wait_until_indexed(window, job.path)
        self.wait_for_polls(window)
        self.assertEqual(window.lines(), before)
        self.assertEqual(len(self.library.sentences(self.library.document_id(job.path))), job.sentences())

    # Ends

    def test_exit_ends_an_idle_service(self):
        window = self.open_window()
        self.library.wait_for_log("Main.Timer Action Complete", window.process)
        window.click("cmdExit")
        self.assert_ends(window.process)
        self.assert_sound()

    def test_closing_the_window_ends_an_idle_service(self):
        window = self.open_window()
        window.activate()
        self.desktop.keys("alt+F4")
        self.assert_ends(window.process)

    def test_sigterm_closes_the_window_of_an_idle_service(self):
        window = self.open_window()
        self.library.wait_for_log("Main.Timer Action Complete", window.process)
        window.process.send_signal(signal.SIGTERM)
        self.assert_ends(window.process)

    def test_sigterm_takes_the_file_dialog_along(self):
        window = self.open_window()
        window.click("btnBrowse")
        window.wait_for_dialog("text", "File name:")
        self.desktop.type("other")
        window.process.send_signal(signal.SIGTERM)
        self.assert_ends(window.process)
        self.assertEqual(self.library.get(INDEXER, "LogFilePath"), str(self.library.log_path))
        self.assert_sound()

    def end_in_the_middle_of_a_job(self, end):
        """The window goes at once; the document is finished, the next one is left alone."""
        window = self.open_window()
        job = self.slow_job()
        job.begin()
        end(window)
        job.turn_until(lambda: not window.visible(), "the window is gone")
        self.assertIsNone(window.process.poll())
        self.assertEqual(self.library.queued(), [(job.path, 1)])
        path = self.library.write("ferry.txt", TEXT)
        self.library.queue(path)
        job.turn()
        job.finish()
        self.assert_ends(window.process)
        self.assertEqual(self.library.queued(), [(path, 0)])
        id_document = self.library.document_id(job.path)
        self.assertEqual(len(self.library.sentences(id_document)), job.sentences())
        self.assertEqual(self.library.words(id_document)["swings"], job.sentences())
        self.assert_sound()

    def test_a_window_closed_in_the_middle_of_a_job_goes_at_once_and_the_document_is_finished(self):
        def close(window):
            window.activate()
            self.desktop.keys("alt+F4")
        self.end_in_the_middle_of_a_job(close)

    def test_exit_in_the_middle_of_a_job_finishes_the_document(self):
        self.end_in_the_middle_of_a_job(lambda window: window.click("cmdExit"))

    def test_sigterm_in_the_middle_of_a_job_finishes_the_document(self):
        self.end_in_the_middle_of_a_job(lambda window: window.process.send_signal(signal.SIGTERM))

    def test_sigterm_in_the_middle_of_a_job_takes_the_menu_of_a_text_box_along(self):
        window = self.open_window()
        before = self.desktop.on_screen()
        job = self.slow_job()
        job.begin()
        window.right_click("txtLogFile")
        job.turn_until(lambda: len(self.desktop.on_screen()) > len(before), "the menu is open")
        window.process.send_signal(signal.SIGTERM)
        job.turn_until(lambda: len(self.desktop.on_screen()) < len(before), "the window and the menu are gone")
        self.assertIsNone(window.process.poll())
        job.finish()
        self.assert_ends(window.process)
        self.assert_indexed(job.path)

    def test_the_service_ends_after_one_document_more_than_the_limit(self):
        paths = [self.library.write(f"{number}.txt", TEXT) for number in range(3)]
        self.library.queue(*paths)
        self.library.set({(INDEXER, "MaxDocsBeforeRestart"): 1})
        self.assert_ends(self.launch("--poll-interval", "0.01"))
        self.assertEqual([path for path, _ in self.library.queued()], [paths[2]])

    def test_a_library_that_cannot_be_opened_is_told_and_ends_the_program(self):
        self.library.set({(SERVICE, "DataBasePath"): str(self.library.folder / "missing.db")})
        window = window_harness.Window(self.desktop, self.launch(), self.library)
        window.wait_for_dialog("push button", "OK")
        self.desktop.keys("Return")
        self.library.finish(window.process, 1)
        self.assertFalse(self.library.logged("UI: Connected."))

    def test_sigterm_under_the_message_of_a_missing_library_is_no_further_error(self):
        self.library.set({(SERVICE, "DataBasePath"): str(self.library.folder / "missing.db")})
        window = window_harness.Window(self.desktop, self.launch(), self.library)
        window.wait_for_dialog("push button", "OK")
        window.process.send_signal(signal.SIGTERM)
        self.assert_ends(window.process, expect=1)
        self.assertFalse(self.library.logged("Error: Indexer failed to start."))

    # With a supervisor

    def test_with_a_supervisor_the_window_is_hidden_and_the_service_polls(self):
        path = self.library.write("ferry.txt", TEXT)
        self.library.queue(path)
        self.library.set({(MASTER, ""): "supervisor"})
        window = window_harness.Window(self.desktop, self.launch(), self.library)
        self.library.wait_for_log("Interest: Indexer started.", window.process)
        window.wait(lambda: not self.desktop.windows(CAPTION), "the window is hidden")
        self.wait_until_indexed(window, path)
        self.assertEqual(self.desktop.windows(CAPTION), [])
        self.assertEqual(len(self.desktop.windows(CAPTION, only_visible=False)), 1)
        window.process.send_signal(signal.SIGTERM)
        self.assert_ends(window.process)

    def test_with_a_supervisor_a_minimised_window_is_hidden(self):
        window = self.open_window()
        self.library.set({(MASTER, ""): "supervisor"})
        self.desktop.run("xdotool", "windowminimize", window.id)
        window.wait(lambda: self.desktop.state(window.id) == "Withdrawn", "the window is hidden")
        path = self.library.write("ferry.txt", TEXT)
        self.library.queue(path)
        self.wait_until_indexed(window, path)

    # Without a display

    def check_refusal(self, display):
        environment = {name: value for name, value in self.desktop.environment.items() if name != "DISPLAY"}
        self.library.finish(self.launch(environment=environment | display), 1)
        self.assertRegex(self.library.errors(), r"\Atyindexer: [^\n]*tyindexerd[^\n]*\n\Z")
        self.assertEqual(self.library.log(), [])

    def test_without_a_display_the_program_names_the_service_that_needs_none(self):
        self.check_refusal({})

    def test_on_a_display_that_is_not_there_the_program_names_the_service_that_needs_none(self):
        self.check_refusal({"DISPLAY": ":64999"})


if __name__ == "__main__":
    window_harness.main()
