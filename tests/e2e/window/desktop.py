"""A desktop of a test's own: an X server without a screen, a window manager, the buses of assistive tools, and real
keys and mouse buttons. Nothing of the machine's own desktop is used or touched.
"""

import os
import pathlib
import re
import shlex
import shutil
import signal
import struct
import subprocess
import zlib

from harness import wait_until

# Whatever chooses another desktop, look or way of input than the test's own.
FOREIGN = re.compile(r"QT_|QML|WAYLAND_|XDG_|DBUS_|AT_SPI|GTK_|XMODIFIERS|XCURSOR|SESSION_|XAUTHORITY|LC_|LANG|NO_AT_")

BUS = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path={socket}</listen>
  <auth>EXTERNAL</auth>
  <servicedir>/usr/share/dbus-1/services</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""

# The keys with which the tests close and maximise a window. A click goes straight to the program.
WINDOW_MANAGER = """<?xml version="1.0"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><focusNew>yes</focusNew><followMouse>no</followMouse></focus>
  <theme><animateIconify>no</animateIconify></theme>
  <placement><policy>Smart</policy><center>yes</center></placement>
  <desktops><number>1</number><popupTime>0</popupTime></desktops>
  <keyboard>
    <keybind key="A-F4"><action name="Close"/></keybind>
    <keybind key="W-m"><action name="ToggleMaximize"/></keybind>
  </keyboard>
</openbox_config>
"""


def environment_without_desktop():
    return {name: value for name, value in os.environ.items()
            if name not in ("DISPLAY", "DESKTOP_SESSION") and not FOREIGN.match(name)}


class Desktop:
    """Starts what a window needs; close() ends it."""

    def __init__(self, folder, size=(1024, 768), window_manager=True, environment=None):
        self.folder = pathlib.Path(folder)
        self.size = size
        home = self.folder / "home"
        runtime = self.folder / "runtime"
        home.mkdir(parents=True)
        runtime.mkdir(mode=0o700)
        self.processes = []
        self.bus = f"unix:path={runtime}/bus"
        self.environment = environment_without_desktop() | {
            "HOME": str(home), "XDG_RUNTIME_DIR": str(runtime), "XDG_CONFIG_HOME": str(home / ".config"),
            "LANG": "C.UTF-8", "DBUS_SESSION_BUS_ADDRESS": self.bus, "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
        } | (environment or {})
        try:
            self.environment["DISPLAY"] = self.start_server()
            self.start_bus()
            if window_manager:
                self.start_window_manager()
        except BaseException:
            self.close()
            raise

    def start(self, *command, **options):
        with open(self.folder / (pathlib.Path(command[0]).name + ".txt"), "ab") as messages:
            options = {"stdout": messages, "stderr": messages, "env": self.environment} | options
            # In a session of its own, so that what it has started ends with it; and it ends when the test is killed.
            process = subprocess.Popen(("setpriv", "--pdeathsig", "TERM", *command), cwd=self.folder,
                                       stdin=subprocess.DEVNULL, start_new_session=True, **options)
        self.processes.append(process)
        return process

    def start_server(self):
        """The server chooses a display that is free, and tells which once it takes connections."""
        read, write = os.pipe()
        width, height = self.size
        self.start("Xvfb", "-displayfd", str(write), "-screen", "0", f"{width}x{height}x24", "-nolisten", "tcp",
                   "-noreset", "-fbdir", str(self.folder), pass_fds=[write])
        os.close(write)
        with os.fdopen(read) as told:
            number = told.readline().strip()
        if not number:
            raise AssertionError(f"Xvfb did not start: {self.messages('Xvfb')}")
        return ":" + number

    def start_bus(self):
        config = self.folder / "bus.conf"
        config.write_text(BUS.format(socket=self.folder / "runtime" / "bus"))
        bus = self.start("dbus-daemon", f"--config-file={config}", "--nofork", "--print-address=1",
                         stdout=subprocess.PIPE)
        if not bus.stdout.readline():
            raise AssertionError(f"dbus-daemon did not start: {self.messages('dbus-daemon')}")

    def start_window_manager(self):
        """Openbox runs the command once it has come up. It tells that it is there long before, but a window that wants
        to be shown in between may wait until something else happens on the screen: openbox has read that wish while it
        looked for something else, and sleeps until the server sends more.
        """
        config = self.folder / "rc.xml"
        config.write_text(WINDOW_MANAGER)
        ready = self.folder / "window-manager-is-up"
        self.manager = self.start("openbox", "--sm-disable", "--config-file", str(config),
                                  "--startup", f"touch {shlex.quote(str(ready))}")

        def is_up():
            if self.manager.poll() is not None:
                raise AssertionError(f"openbox did not start: {self.messages('openbox')}")
            return ready.exists()
        wait_until(is_up, "the window manager is up", pause=0.01)

    def messages(self, program):
        return (self.folder / (program + ".txt")).read_text(errors="replace")

    def close(self):
        for process in reversed(self.processes):
            if process.poll() is None:
                os.killpg(process.pid, signal.SIGTERM)
            process.wait()
            if process.stdout is not None:
                process.stdout.close()
        self.processes = []

    # What an operator does and sees

    def run(self, *command, check=True):
        done = subprocess.run(list(map(str, command)), env=self.environment, capture_output=True, text=True,
                              stdin=subprocess.DEVNULL)
        if check and done.returncode != 0:
            raise AssertionError(f"{command} gave {done.returncode}: {done.stdout}{done.stderr}")
        return done.stdout

    def keys(self, *keys):
        self.run("xdotool", "key", "--clearmodifiers", *keys)

    def type(self, text):
        self.run("xdotool", "type", "--clearmodifiers", "--", text)

    def click(self, window, x, y, button=1):
        self.run("xdotool", "mousemove", "--window", window, x, y, "click", button)

    def windows(self, caption, only_visible=True):
        """Ids of the windows with that caption."""
        visible = ["--onlyvisible"] if only_visible else []
        return self.run("xdotool", "search", *visible, "--name", f"^{re.escape(caption)}$", check=False).split()

    def on_screen(self):
        """Ids of all windows that are on the screen, menus included."""
        return self.run("xdotool", "search", "--onlyvisible", "--maxdepth", 1, "--name", "", check=False).split()

    def properties(self, *arguments):
        return self.run("xprop", *arguments, check=False)

    def state(self, window):
        """"Normal", "Iconic" or "Withdrawn"."""
        found = re.search(r"window state: (\w+)", self.properties("-id", window, "WM_STATE"))
        return found.group(1) if found else "Withdrawn"

    def active(self):
        """The window that takes keys."""
        return self.run("xdotool", "getactivewindow", check=False).strip()

    def geometry(self, window):
        """Left, top, width and height on the screen, without the frame."""
        told = self.run("xwininfo", "-id", window)
        names = ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height")
        return tuple(int(re.search(rf"{name}: +(-?\d+)", told).group(1)) for name in names)

    def frame(self, window):
        """Left, right, top and bottom width of the frame that the window manager drew."""
        found = re.search(r"= (\d+), (\d+), (\d+), (\d+)", self.properties("-id", window, "_NET_FRAME_EXTENTS"))
        return tuple(map(int, found.groups())) if found else (0, 0, 0, 0)

    def description(self):
        """What runs here and what the server knows of the windows, for a test that failed."""
        lines = []
        for process in self.processes:
            status = process.poll()
            lines.append(f"{process.args[3]}: " + ("runs" if status is None else f"ended with {status}"))
        # Those without a name are what the window manager draws.
        for line in re.findall(r'0x[0-9a-f]+ ".*', self.told("xwininfo", "-root", "-tree")):
            window = line.split()[0]
            mapped = re.findall(r"Map State: \w+", self.told("xwininfo", "-stats", "-id", window))
            lines += ["; ".join([line, *mapped]), self.told("xprop", "-id", window, "WM_STATE", "_NET_WM_STATE")]
        lines.append(self.told("xprop", "-root", "_NET_SUPPORTING_WM_CHECK", "_NET_CLIENT_LIST", "_NET_ACTIVE_WINDOW"))
        return "\n".join(lines)

    def told(self, *command):
        """What the command prints, whatever becomes of it: a server that is grabbed answers nobody."""
        try:
            return subprocess.run(command, env=self.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT, text=True, timeout=20).stdout
        except subprocess.TimeoutExpired:
            return f"{command[0]} waited in vain for the server"

    def write_picture(self, path, left=0, top=0, width=None, height=None):
        """Writes what the screen shows there as a PNG file."""
        shown = (self.folder / "Xvfb_screen0").read_bytes()
        # The dump's header: its own size, ..., bits and bytes per row, ..., and the number of colours.
        header = struct.unpack(">25I", shown[:100])
        start, bits, row_bytes, colours = header[0] + header[19] * 12, header[11], header[12], header[19]
        if bits != 32:
            raise AssertionError(f"a screen of {bits} bits a pixel and {colours} colours cannot be drawn")
        right = min(left + (width or self.size[0]), self.size[0])
        bottom = min(top + (height or self.size[1]), self.size[1])
        rows = bytearray()
        for y in range(top, bottom):
            row = shown[start + y * row_bytes + left * 4:start + y * row_bytes + right * 4]
            pixels = bytearray(len(row) // 4 * 3)
            pixels[0::3], pixels[1::3], pixels[2::3] = row[2::4], row[1::4], row[0::4]
            rows += b"\0" + pixels
        size = struct.pack(">IIBBBBB", right - left, bottom - top, 8, 2, 0, 0, 0)
        chunks = [(b"IHDR", size), (b"IDAT", zlib.compress(bytes(rows), 9)), (b"IEND", b"")]
        picture = b"\x89PNG\r\n\x1a\n" + b"".join(
            struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
            for kind, data in chunks)
        pathlib.Path(path).write_bytes(picture)


def missing_programs():
    needed = ("Xvfb", "openbox", "dbus-daemon", "xdotool", "xprop", "xwininfo")
    return [program for program in needed if shutil.which(program) is None]
