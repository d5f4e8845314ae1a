"""What the operator does with the controls: each with real keys and clicks, and with what it leaves in the settings."""

import pathlib

import window_harness
from harness import INDEXER
from window_harness import CAPTION, desktops

NO_LOG = {(INDEXER, "LogFilePath"): "", (INDEXER, "LoggingOn"): 0}


class Controls(window_harness.WindowTest):
    def open_without_log(self):
        self.library.set(NO_LOG)
        window = window_harness.Window(self.desktop, self.launch(), self.library).wait_until_shown()
        window.wait_for_message("Running.")
        return window

    def test_every_control_is_found_by_its_name_and_shows_its_caption(self):
        window = self.open_window()
        self.assertEqual(self.desktop.windows(CAPTION), [window.id])
        roles = {name: window.controls[name].role() for name in window_harness.CONTROLS}
        self.assertEqual(roles, {
            "lblPoll": "label", "txtPollInterval": "text", "lblSeconds": "label", "lstStatus": "list",
            "chkLogit": "check box", "txtLogFile": "text", "btnBrowse": "push button",
            "cmdStartStop": "push button", "cmdExit": "push button"})
        captions = {name: window.caption(name) for name in roles if roles[name] not in ("text", "list")}
        self.assertEqual(captions, {
            "lblPoll": "Poll Index Queue every", "lblSeconds": "seconds", "chkLogit": "Log it",
            "btnBrowse": "Browse...", "cmdStartStop": "Stop", "cmdExit": "Exit"})
        self.assertEqual(window.text("txtPollInterval"), "1")
        self.assertEqual(window.text("txtLogFile"), str(self.library.log_path))
        self.assertTrue(window.is_checked("chkLogit"))

    def test_the_tabulator_goes_from_control_to_control_in_their_order(self):
        window = self.open_window()
        order = ("cmdStartStop", "lstStatus", "cmdExit", "chkLogit", "txtLogFile", "txtPollInterval", "btnBrowse")
        window.wait(lambda: window.focused() == [order[0]], "the first control has the focus")
        for name in order[1:] + order[:1]:
            self.desktop.keys("Tab")
            window.wait(lambda: window.focused() == [name], f"{name} has the focus")

    def test_the_status_list_tells_of_the_start_newest_first(self):
        window = self.open_window()
        start = ["Running.", "Starting timers...", "Connected.", "Connecting to database...",
                 "Checking for zombies...", "Starting..."]
        self.assertEqual(window.messages()[-6:], start)
        window.wait(lambda: window.messages()[0] == "Checking file index queue...", "the newest line is on top")
        for line in window.lines():
            self.assertRegex(line, r"^\d\d:\d\d:\d\d: ")

    def test_the_status_list_keeps_fifty_lines(self):
        window = self.open_window("--poll-interval", "0.01")
        window.wait(lambda: self.library.log().count("UI: Checking file index queue...") > 60, "sixty polls are over")
        window.click("cmdStartStop")
        window.wait(lambda: window.caption("cmdStartStop") == "Start", "polling is stopped")
        self.assertEqual(window.messages(), ["Indexing stopped."] + ["Checking file index queue..."] * 49)

    def test_a_typed_poll_interval_is_saved_as_a_whole_number(self):
        window = self.open_window()
        window.type("txtPollInterval", "25")
        window.wait_for_setting("PollInterval", 25)
        window.type("txtPollInterval", "3.6")
        window.wait_for_setting("PollInterval", 4)
        self.assertEqual(window.text("txtPollInterval"), "3.6")

    def test_a_poll_interval_of_zero_becomes_one(self):
        window = self.open_window(settings={(INDEXER, "PollInterval"): 7})
        window.type("txtPollInterval", "0")
        window.wait(lambda: window.text("txtPollInterval") == "1", "the box shows 1")
        window.wait_for_setting("PollInterval", 1)

    def test_a_poll_interval_that_no_timer_can_wait_is_refused(self):
        window = self.open_window()
        window.type("txtPollInterval", "66")
        window.wait_for_message("Poll interval must be between 0.001 and 65.535 seconds.")
        window.wait(lambda: window.text("txtPollInterval") == "6", "the box shows the last interval it took")
        window.wait_for_setting("PollInterval", 6)

    def test_a_poll_interval_that_is_no_number_ends_the_program(self):
        window = self.open_window()
        window.focus("txtPollInterval")
        self.desktop.type("x")
        self.library.finish(window.process, 1)
        self.assertRegex(self.library.errors(), r"\Atyindexer: .*Type mismatch.*\n\Z")

    def test_an_emptied_poll_interval_ends_the_program(self):
        window = self.open_window()
        window.focus("txtPollInterval")
        self.desktop.keys("ctrl+a", "BackSpace")
        self.library.finish(window.process, 1)
        self.assertRegex(self.library.errors(), r"\Atyindexer: .*Type mismatch.*\n\Z")

    def test_a_typed_log_file_is_saved_and_written_at_once(self):
        window = self.open_without_log()
        # Whatever is typed is the log's path for a moment; none of it leads out of the test's folder.
        window.type("txtLogFile", "typed.txt")
        window.wait_for_setting("LogFilePath", "typed.txt")
        window.wait((self.library.folder / "typed.txt").exists, "the log is written")

    def test_a_log_file_is_browsed_for(self):
        window = self.open_without_log()
        path = self.library.folder / "chosen"
        window.click("btnBrowse")
        window.wait_for_dialog("text", "File name:")
        self.desktop.type(str(path))
        self.desktop.keys("Return")
        window.wait_until_answered()
        window.wait(lambda: window.text("txtLogFile") == f"{path}.log", "the box shows the path")
        window.wait_for_setting("LogFilePath", f"{path}.log")
        window.wait(pathlib.Path(f"{path}.log").exists, "the log is written")

    def test_the_dialog_offers_logs_and_all_files(self):
        window = self.open_without_log()
        window.click("btnBrowse")
        window.wait_for_dialog("combo box", "Log Files (*.log)")
        kinds = [name for control in window.program.children() if control.role() in window_harness.DIALOGS
                 for box in control.descendants() if box.role() == "list"
                 for name in [line.name() for line in box.children()] if "Files" in name]
        self.assertEqual(kinds, ["Log Files (*.log)", "All Files (*.*)"])

    def test_the_dialog_fits_on_a_small_screen_of_large_letters(self):
        screen = (800, 600)
        self.desktop = desktops.Desktop(self.folder / "small", screen, environment={"QT_SCALE_FACTOR": "2"})
        self.addCleanup(self.desktop.close)
        window = self.open_without_log()
        window.click("btnBrowse")
        window.wait_for_dialog("text", "File name:")
        left, top, width, height = self.desktop.geometry(self.desktop.windows("Save As")[0])
        self.assertGreaterEqual(min(left, top), 0)
        self.assertLessEqual(left + width, screen[0])
        self.assertLessEqual(top + height, screen[1])

    def test_a_cancelled_dialog_changes_nothing(self):
        window = self.open_window()
        before = self.library.log_path
        window.click("btnBrowse")
        window.wait_for_dialog("text", "File name:")
        self.desktop.type("other")
        self.desktop.keys("Escape")
        window.wait_until_answered()
        self.assertEqual(window.text("txtLogFile"), str(before))
        self.assertEqual(self.library.get(INDEXER, "LogFilePath"), str(before))

    def test_logging_without_a_log_file_is_refused(self):
        window = self.open_without_log()
        window.click("chkLogit")
        window.wait_for_dialog("label", "Logging cannot be enabled until you choose a log file.")
        self.assertIn(("push button", "OK"), window.dialog())
        self.desktop.keys("Return")
        window.wait_until_answered()
        self.assertFalse(window.is_checked("chkLogit"))
        self.assertEqual(self.library.get(INDEXER, "LoggingOn"), "0")

    def test_logging_is_switched_on_and_off(self):
        window = self.open_window(settings={(INDEXER, "LoggingOn"): 0})
        self.assertFalse(window.is_checked("chkLogit"))
        window.click("chkLogit")
        window.wait_for_setting("LoggingOn", 1)
        self.assertTrue(window.is_checked("chkLogit"))
        window.wait(lambda: self.library.logged("UI: Checking file index queue..."), "status lines are logged")
        window.focus("chkLogit")
        window.wait_for_setting("LoggingOn", 0)
        self.desktop.keys("space")
        window.wait_for_setting("LoggingOn", 1)

    def test_alt_and_the_marked_letter_press_a_button(self):
        window = self.open_window()
        self.desktop.keys("alt+t")
        window.wait(lambda: window.caption("cmdStartStop") == "Start", "polling is stopped")
        self.desktop.keys("alt+t")
        window.wait(lambda: window.caption("cmdStartStop") == "Stop", "polling goes on")
        self.desktop.keys("alt+x")
        self.assert_ends(window.process)


if __name__ == "__main__":
    window_harness.main()
