"""Drives the real marigold binary as a screen reader user does: controls found by accessible
name and role, worked through AT-SPI, on a private X server, session bus and accessibility bus
that leave the user's desktop and settings alone. A flow script calls `run(flow)`."""
import os
import re
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import traceback

TIMEOUT = 20.0
RETURN_KEYSYM = 0xFF0D
DOWN_KEYSYM = 0xFF54
UP_KEYSYM = 0xFF52
TAB_KEYSYM = 0xFF09
ALT_KEYCODE = 64  # Alt_L in the X server's default keymap
CONTROL_KEYCODE = 37  # Control_L
pyatspi = None  # imported once the private buses exist: libatspi binds to the bus it first sees


class Failure(Exception):
    pass


def wait_for(what, condition, timeout=TIMEOUT):
    """Polls `condition` until it returns something true. `what` names what is awaited; as a
    function it can tell the state at the moment of failure."""
    deadline = time.monotonic() + timeout
    while not (result := condition()):
        if time.monotonic() > deadline:
            raise Failure(f"timed out after {timeout:.0f} s waiting for "
                          f"{what() if callable(what) else what}")
        time.sleep(0.05)
    return result


def check(condition, message):
    if not condition:
        raise Failure(message)


def step(text):
    print(f"- {text}", flush=True)


class Session:
    """A private desktop; its processes and folders go on exit, whatever happened."""

    def __init__(self):
        self.tmp = tempfile.mkdtemp(prefix="marigold-atspi-")
        self.app_log = self.path("app.log")
        self._procs = []
        for name in ("config", "data", "runtime", "tmp"):
            os.mkdir(self.path(name), 0o700)
        # The user's bus and folders stay out, and so do Qt choices: a platform theme could
        # swap Qt's own file dialog for a portal's.
        for name in [k for k in os.environ if k.startswith(("XDG_", "DBUS_", "AT_SPI", "QT_"))]:
            del os.environ[name]
        os.environ.update(XDG_CONFIG_HOME=self.path("config"), XDG_DATA_HOME=self.path("data"),
                          XDG_RUNTIME_DIR=self.path("runtime"), TMPDIR=self.path("tmp"))

    def path(self, name):
        return os.path.join(self.tmp, name)

    def spawn(self, args, log=os.devnull, stdout=None, **kwargs):
        with open(log, "ab") as out:
            proc = subprocess.Popen(args, stdin=subprocess.DEVNULL, stdout=stdout or out,
                                    stderr=out, start_new_session=True, **kwargs)
        self._procs.append(proc)
        return proc

    def __enter__(self):
        try:
            self._start_x()
            self._start_buses()
            global pyatspi
            import pyatspi
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *exc):
        # Each process leads its own group, which also holds whatever it started itself.
        for proc in reversed(self._procs):
            for sig in (signal.SIGTERM, signal.SIGKILL):
                if proc.poll() is None:
                    os.killpg(proc.pid, sig)
                    try:
                        proc.wait(5)
                    except subprocess.TimeoutExpired:
                        pass
        shutil.rmtree(self.tmp, ignore_errors=True)

    def _start_x(self):
        # Xvfb picks a free display and names it once it takes clients: no race with others.
        # Without -noreset it resets whenever its last client leaves, and whoever connects
        # during the reset is refused: the application, at times, on a busy machine.
        read, write = os.pipe()
        xvfb = self.spawn(["Xvfb", "-displayfd", str(write), "-screen", "0", "1280x860x24",
                           "-nolisten", "tcp", "-noreset"], pass_fds=(write,))
        os.close(write)
        with os.fdopen(read) as pipe:
            display = pipe.readline().strip() if select.select([pipe], [], [], TIMEOUT)[0] else ""
        check(display and xvfb.poll() is None, "the X server did not start")
        os.environ["DISPLAY"] = f":{display}"

    def _start_buses(self):
        bus = self.spawn(["dbus-daemon", "--session", "--nofork", "--print-address"],
                         log=self.path("dbus.log"), stdout=subprocess.PIPE)
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = bus.stdout.readline().decode().strip()
        check(os.environ["DBUS_SESSION_BUS_ADDRESS"], "the session bus did not start")
        self.spawn(["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"],
                   log=self.path("dbus.log"))
        # Asks who owns the name rather than calling it, which would start a second launcher.
        owned = lambda: b"true" in subprocess.run(
            ["dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus", "/",
             "org.freedesktop.DBus.NameHasOwner", "string:org.a11y.Bus"],
            capture_output=True).stdout
        wait_for("the accessibility bus launcher to own org.a11y.Bus", owned)

    def launch(self, binary, *args):
        env = dict(os.environ, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", QT_QPA_PLATFORM="xcb")
        step(f"start {os.path.basename(binary)} {' '.join(args)}")
        # Started in the private folder, so that file dialogs open on a small, known listing.
        return App(self.spawn([binary, *args], log=self.app_log, env=env, cwd=self.tmp))

    def app_stderr(self):
        with open(self.app_log, "a+", errors="replace") as log:
            log.seek(0)
            return log.read()


def _matches(name, role, prefix=False):
    return lambda acc: (acc is not None and acc.getRole() == role and
                        (acc.name.startswith(name) if prefix else acc.name == name))


def _names(acc):
    """The control's own name and the names of the labels that label it."""
    labels = [rel.getTarget(i).name for rel in acc.getRelationSet()
              if rel.getRelationType() == pyatspi.RELATION_LABELLED_BY
              for i in range(rel.getNTargets())]
    return [acc.name, *labels]


def _search(acc, test):
    """Depth first, but not into item views: their rows are content, not controls, and they
    change under the walk while a folder is listed."""
    views = (pyatspi.ROLE_LIST, pyatspi.ROLE_TREE, pyatspi.ROLE_TABLE, pyatspi.ROLE_TREE_TABLE)
    for child in acc:
        if test(child):
            return child
        if child is not None and child.getRole() not in views and (found := _search(child, test)):
            return found
    return None


def _middle(acc):
    box = acc.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
    return box.x + box.width / 2, box.y + box.height / 2


def _pointer_drag(x0, y0, x1, y1, steps):
    """xdotool moves the pointer: AT-SPI has no pointer drags."""
    moves = [["mousemove", str(round(x0 + (x1 - x0) * i / steps)),
              str(round(y0 + (y1 - y0) * i / steps))] for i in range(steps + 1)]
    for n, move in enumerate(moves):
        subprocess.run(["xdotool", *move, *(["mousedown", "1"] if n == 0 else [])], check=True)
        time.sleep(0.03)
    subprocess.run(["xdotool", "mouseup", "1"], check=True)


class App:
    """The running application, seen through its accessibility tree."""

    def __init__(self, proc):
        def registered():
            check(proc.poll() is None, f"the application exited with status {proc.returncode}")
            return next((a for a in pyatspi.Registry.getDesktop(0)
                         if a is not None and a.get_process_id() == proc.pid), None)
        self.proc = proc
        self.root = wait_for("the application in the AT-SPI registry", registered)
        # Live reads only: names, states and children change under the flow.
        self.root.set_cache_mask(pyatspi.Atspi.Cache.NONE)
        self.window = self.top_level("Marigold", pyatspi.ROLE_FRAME)

    def top_level(self, name, role):
        """The window or dialog named `name`, once it is shown."""
        showing = lambda w: _matches(name, role)(w) and w.getState().contains(pyatspi.STATE_SHOWING)
        return wait_for(f"the {pyatspi.Atspi.role_get_name(role)} {name!r} to show",
                        lambda: next(filter(showing, self.root), None))

    def find(self, name, role, within=None, prefix=False):
        what = f"a {pyatspi.Atspi.role_get_name(role)} named {name!r}{'…' if prefix else ''}"
        return wait_for(what, lambda: _search(within or self.window, _matches(name, role, prefix)))

    def other_application(self, name):
        """The window of another program this one started, such as a helper."""
        return wait_for(f"{name} in the AT-SPI registry", lambda: next(
            (a for a in pyatspi.Registry.getDesktop(0) if a is not None and a.name == name), None))

    def named(self, name, within=None):
        """The accessible named `name`, whatever its role: a custom view."""
        return wait_for(f"something named {name!r}", lambda: _search(
            within or self.window, lambda acc: acc is not None and acc.name == name))

    def act(self, acc, action="Press"):
        name = acc.name
        wait_for(f"{name!r} to be enabled", lambda: acc.getState().contains(pyatspi.STATE_ENABLED))
        actions = acc.queryAction()
        names = [actions.getName(i) for i in range(actions.nActions)]
        check(action in names, f"{name!r} offers {names}, not {action!r}")
        check(actions.doAction(names.index(action)), f"{name!r} refused {action!r}")

    def menu(self, menu, item, prefix=False):
        """Picks a menu item by its visible name; returns that name."""
        entry = self.find(item, pyatspi.ROLE_MENU_ITEM,
                          self.find(menu, pyatspi.ROLE_MENU_ITEM), prefix)
        name = entry.name  # read first: acting can rename it, as Undo does
        step(f"{menu} ▸ {name}")
        self.act(entry)
        return name

    def field(self, name, within=None):
        """A field a person types into: a plain text field, or a number field with a stepper,
        which is a spin button."""
        return wait_for(f"a text field or spin button named {name!r}", lambda: _search(
            within or self.window, lambda acc: _matches(name, pyatspi.ROLE_TEXT)(acc) or
            _matches(name, pyatspi.ROLE_SPIN_BUTTON)(acc)))

    def text(self, name, within=None):
        return self.field(name, within).queryText().getText(0, -1)

    def wait_text(self, name, expected):
        wait_for(lambda: f"{name!r} to read {expected!r}; it reads {self.text(name)!r}",
                 lambda: self.text(name) == expected)

    def type_into(self, name, value, within=None):
        """Focuses the field, selects what it holds and types over it, key by key."""
        field = self.field(name, within)
        check(field.queryComponent().grabFocus(), f"{name!r} refused the focus")
        wait_for(f"{name!r} to have the keyboard focus",
                 lambda: field.getState().contains(pyatspi.STATE_FOCUSED))
        text = field.queryText()
        text.addSelection(0, text.characterCount)
        pyatspi.Registry.generateKeyboardEvent(0, value, pyatspi.KEY_STRING)
        wait_for(lambda: f"{name!r} to show the typed {value!r}; it shows {text.getText(0, -1)!r}",
                 lambda: text.getText(0, -1) == value)

    def labelled(self, name, role):
        """The control named `name` or labelled so: a pop-up is called by its current item
        and said with its label. `role` is pyatspi's name for its role ("ROLE_COMBO_BOX"),
        since flows are loaded before pyatspi is."""
        role = getattr(pyatspi, role)
        return wait_for(f"a {pyatspi.Atspi.role_get_name(role)} named or labelled {name!r}",
                        lambda: _search(self.window, lambda acc: acc is not None and
                                        acc.getRole() == role and name in _names(acc)))

    def press_mnemonic(self, letter, control):
        """Alt and the underlined letter of a label: the keyboard way to its control."""
        step(f"press Alt+{letter}")
        pyatspi.Registry.generateKeyboardEvent(ALT_KEYCODE, None, pyatspi.KEY_PRESS)
        pyatspi.Registry.generateKeyboardEvent(ord(letter), None, pyatspi.KEY_SYM)
        pyatspi.Registry.generateKeyboardEvent(ALT_KEYCODE, None, pyatspi.KEY_RELEASE)
        wait_for(f"Alt+{letter} to focus {control.name!r}",
                 lambda: control.getState().contains(pyatspi.STATE_FOCUSED))

    def type_keys(self, text):
        """Types into whatever has the keyboard focus."""
        step(f"type {text!r}")
        pyatspi.Registry.generateKeyboardEvent(0, text, pyatspi.KEY_STRING)

    def chord(self, keycodes, keysym, text):
        """Holds the modifier keys down while `keysym` is pressed: a shortcut, as typed."""
        step(f"press {text}")
        for keycode in keycodes:
            pyatspi.Registry.generateKeyboardEvent(keycode, None, pyatspi.KEY_PRESS)
        pyatspi.Registry.generateKeyboardEvent(keysym, None, pyatspi.KEY_SYM)
        for keycode in reversed(keycodes):
            pyatspi.Registry.generateKeyboardEvent(keycode, None, pyatspi.KEY_RELEASE)

    def drop_files(self, session, paths, target):
        """Drags `paths` from another application's window, as from a file manager, onto the
        accessible `target`."""
        title = "Marigold test files"
        source = os.path.join(os.path.dirname(os.path.abspath(__file__)), "drag_source.py")
        session.spawn(["/usr/bin/python3", source, title, *paths], log=session.app_log)
        found = subprocess.run(["xdotool", "search", "--sync", "--onlyvisible", "--name", title],
                               capture_output=True, text=True, timeout=TIMEOUT)
        window = found.stdout.split()[0]
        shape = subprocess.run(["xdotool", "getwindowgeometry", "--shell", window],
                               capture_output=True, text=True).stdout
        box = dict(line.split("=") for line in shape.split())
        x0 = int(box["X"]) + int(box["WIDTH"]) / 2
        y0 = int(box["Y"]) + int(box["HEIGHT"]) / 2
        step(f"drag {paths} from another application onto {target.name!r}")
        _pointer_drag(x0, y0, *_middle(target), 16)

    def press(self, keysym):
        step(f"press key {keysym:#x}")
        pyatspi.Registry.generateKeyboardEvent(keysym, None, pyatspi.KEY_SYM)

    @staticmethod
    def role(name):
        """pyatspi's role of that name ("ROLE_LABEL"): flows are loaded before pyatspi is."""
        return getattr(pyatspi, name)

    @staticmethod
    def is_enabled(acc):
        return acc.getState().contains(pyatspi.STATE_ENABLED)

    def commit(self, name, value):
        """Types into the field and presses Return, where Qt reports the edit as finished."""
        step(f"type {value} into {name!r} and press Return")
        self.type_into(name, value)
        pyatspi.Registry.generateKeyboardEvent(RETURN_KEYSYM, None, pyatspi.KEY_SYM)

    def drag(self, name, start, end, steps=8):
        """Drags across the view named `name` from `start` to `end`, given as fractions of its
        size."""
        box = self.named(name).queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
        (x0, y0), (x1, y1) = [(box.x + fx * box.width, box.y + fy * box.height)
                              for fx, fy in (start, end)]
        step(f"drag across {name!r} from {start} to {end}")
        _pointer_drag(x0, y0, x1, y1, steps)

    def drag_onto(self, source, target, steps=12):
        """Drags the middle of one accessible onto the middle of another."""
        step(f"drag {source.name!r} onto {target.name!r}")
        (x0, y0), (x1, y1) = [_middle(acc) for acc in (source, target)]
        _pointer_drag(x0, y0, x1, y1, steps)

    def quit(self):
        """File ▸ Quit Marigold, and the process gone, its settings written."""
        self.menu("File", "Quit Marigold")
        wait_for("the application to exit", lambda: self.proc.poll() is not None)
        check(self.proc.returncode == 0, f"the application exited with status {self.proc.returncode}")

    def save_as(self, path):
        """File ▸ Save…, the full path typed into Qt's own file dialog, then its Save button."""
        self.menu("File", "Save…")
        dialog = self.top_level("Save", pyatspi.ROLE_DIALOG)
        step(f"save as {path}")
        self.type_into("File name:", path, dialog)
        self.act(self.find("Save", pyatspi.ROLE_PUSH_BUTTON, dialog))
        wait_for("the Save dialog to close",
                 lambda: not dialog.getState().contains(pyatspi.STATE_SHOWING))
        # The keyboard is back where the person left it, window manager or not.
        wait_for("the main window to be active again",
                 lambda: self.window.getState().contains(pyatspi.STATE_ACTIVE))


def run(flow):
    """Runs `flow(session, binary)`, which raises Failure to fail, on a fresh private desktop,
    and exits with its verdict; a failure tells what it was waiting for and the app's stderr."""
    started = time.monotonic()
    try:
        with Session() as session:
            try:
                flow(session, sys.argv[1])
                # A sanitized build reports on stderr and may carry on: that fails the flow.
                report = re.search(r"^==\d+==ERROR: .*|^.*: runtime error: .*",
                                   session.app_stderr(), re.MULTILINE)
                check(report is None, f"the sanitizer reported: {report and report.group(0)}")
            except Exception as error:
                reason = f"FAIL: {error}" if isinstance(error, Failure) else traceback.format_exc()
                print(f"{reason}\napplication stderr:\n{session.app_stderr()}", file=sys.stderr)
                raise SystemExit(1)
    except Failure as error:  # the private desktop did not come up
        print(f"FAIL: {error}", file=sys.stderr)
        raise SystemExit(1)
    print(f"PASS in {time.monotonic() - started:.1f} s")
