"""Drives the real orvo program as a person does: an X server of its own, windows found by title,
keys typed with xdotool, and the database, the fiscal printer's memory and its tickets read back.

Reusable by any script that needs the program running (end-to-end scenarios, crash trials):

    with XServer() as x:
        reg = Register(root, build, "/tmp/e2e-orvo", x.display)
        reg.prepare_sqlite()          # or reg.prepare_postgres("127.0.0.1:5432", "tienda")
        reg.start()                   # scripts/run.sh: emulated printer, card terminal, program
        reg.desk.login("ADMIN", "1234")
        ...
        reg.stop()
"""

import glob
import json
import os
import re
import shutil
import signal
import sqlite3
import subprocess
import time


class Failure(AssertionError):
    pass


def wait_for(condition, what, timeout=30.0, interval=0.1):
    """Polls `condition` until it returns something truthy; returns it, or fails naming `what`."""
    end = time.monotonic() + timeout
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise Failure(f"no llegó a tiempo ({timeout:.0f} s): {what}")
        time.sleep(interval)


class XServer:
    """An Xvfb of its own; the display number comes from Xvfb itself unless one is asked for."""

    def __init__(self, display=None, size="1600x1000x24"):
        self.display = display
        self.size = size
        self.proc = None

    def __enter__(self):
        if self.display:
            self.proc = subprocess.Popen(["Xvfb", self.display, "-screen", "0", self.size,
                                          "-nolisten", "tcp"], stderr=subprocess.DEVNULL)
        else:
            r, w = os.pipe()
            self.proc = subprocess.Popen(["Xvfb", "-displayfd", str(w), "-screen", "0", self.size,
                                          "-nolisten", "tcp"], pass_fds=(w,),
                                         stderr=subprocess.DEVNULL)
            os.close(w)
            with os.fdopen(r) as f:
                self.display = ":" + f.readline().strip()
        env = dict(os.environ, DISPLAY=self.display)
        wait_for(lambda: subprocess.run(["xdpyinfo"], env=env, capture_output=True).returncode == 0,
                 f"el servidor X {self.display}", timeout=15)
        return self

    def __exit__(self, *exc):
        self.proc.terminate()
        self.proc.wait()


class Desktop:
    """Windows and keys on one X display."""

    def __init__(self, display, shots=None):
        self.env = dict(os.environ, DISPLAY=display)
        self.shots = shots

    def _x(self, *args, check=True):
        r = subprocess.run(["xdotool", *args], env=self.env, capture_output=True, text=True)
        if check and r.returncode != 0:
            raise Failure(f"xdotool {' '.join(args)}: {r.stderr.strip()}")
        return r.stdout.strip()

    def windows(self, title):
        """Visible windows whose whole title is `title` (a regular expression, matched without
        regard to case)."""
        out = self._x("search", "--onlyvisible", "--name", f"^{title}$", check=False)
        return [w for w in out.split() if w]

    def titles(self):
        """The titles of every visible window, for a report."""
        out = self._x("search", "--onlyvisible", "--name", ".+", check=False)
        return [self.title(w) for w in out.split()]

    def title(self, wid):
        return self._x("getwindowname", wid, check=False)

    def wait_window(self, title, timeout=30.0):
        """Waits for a window titled `title`, gives it the keyboard and returns its id."""
        wid = wait_for(lambda: (self.windows(title) or [None])[-1], f"la ventana «{title}»",
                       timeout)
        self.focus(wid)
        return wid

    def stack(self):
        """Every visible window; with no window manager the X server lists them bottom to top,
        the last one mapped on top."""
        return self._x("search", "--onlyvisible", "--name", ".*", check=False).split()

    def wait_closed(self, wid, timeout=30.0):
        wait_for(lambda: wid not in self.stack(), f"que se cierre «{self.title(wid)}»", timeout)

    def focus(self, wid):
        # No window manager: the program's window gets the X input focus directly.
        self._x("windowfocus", "--sync", wid, check=False)

    def keys(self, *keys):
        """Key names as xdotool knows them: Return, Tab, F5, alt+s, ctrl+c."""
        for k in keys:
            self._x("key", "--clearmodifiers", "--delay", "40", k)

    def type(self, text):
        self._x("type", "--clearmodifiers", "--delay", "30", text)

    def enter(self, text=None):
        if text is not None:
            self.type(text)
        self.keys("Return")

    def answer(self, title, keys=("Return",), timeout=30.0):
        """Waits for a message box titled `title` and answers it with `keys` (its default button
        with Enter). Qt offers no way to read a box's text on X11; the effects tell what it said."""
        wid = self.wait_window(title, timeout)
        self.keys(*keys)
        self.wait_closed(wid)

    def settle(self, answers, done, what, timeout=120.0):
        """Answers the boxes that come up, `answers` mapping a title to its keys, until `done()`
        holds and none of them is left (boxes from work running side by side come in any
        order)."""
        def step():
            # Only the box on top of a modal stack takes keys.
            for wid in reversed(self.stack()):
                keys = next((k for t, k in answers.items() if re.fullmatch(t, self.title(wid))),
                            None)
                if keys:
                    self.focus(wid)
                    self.keys(*keys)
                    return False
            return done()

        wait_for(step, what, timeout, 0.3)

    def screenshot(self, name):
        if not self.shots:
            return None
        os.makedirs(self.shots, exist_ok=True)
        path = os.path.join(self.shots, name + ".png")
        subprocess.run(["import", "-window", "root", path], env=self.env, check=False,
                       capture_output=True)
        return path

    # The program's own windows.

    def yes(self, title):
        """Answers Yes to a question whose default button is No."""
        self.answer(title, ("shift+Tab", "space"))

    def login(self, user, password, system=".+"):
        self.wait_window(f"Iniciar sesión en {system}", timeout=60)
        self.keys("ctrl+a")
        self.enter(user)
        self.enter(password)

    def open_system_menu(self):
        """Alt+S, and waits for the menu to show: keys typed before it would go elsewhere."""
        before = set(self.stack())
        self.keys("alt+s")
        wait_for(lambda: set(self.stack()) - before, "el menú Sistema abierto", 15)

    def menu(self, top, item):
        """Opens a screen from the menu bar by the keys: Alt+S opens "Sistema", Left moves `top`
        menus back from it, Down `item` rows down."""
        self.open_system_menu()
        for _ in range(top):
            self.keys("Left")
        for _ in range(item):
            self.keys("Down")
        self.keys("Return")


class Store:
    """The store's database as the program's configuration names it, read back by the tests."""

    def __init__(self, sqlite_path=None, pg=None):
        self.sqlite_path = sqlite_path
        self.pg = pg  # (host, port, user, database)

    def rows(self, sql, *params):
        if self.sqlite_path:
            # Read-write, never create: a missing file is the program's fault, not an empty store.
            con = sqlite3.connect(f"file:{self.sqlite_path}?mode=rw", uri=True, timeout=30)
            try:
                return [tuple(r) for r in con.execute(sql, params).fetchall()]
            finally:
                con.close()
        host, port, user, db = self.pg
        args = ["psql", "-X", "-q", "-At", "-F", "\t", "-v", "ON_ERROR_STOP=1", "-h", host,
                "-p", port, "-U", user, "-d", db]
        n = 0

        def bind(_):
            nonlocal n
            n += 1
            return f":'p{n}'"

        text = re.sub(r"\?", bind, sql)
        for i, p in enumerate(params, 1):
            args += ["-v", f"p{i}={p}"]
        r = subprocess.run(args, input=text, capture_output=True, text=True)
        if r.returncode != 0:
            raise Failure(f"psql: {r.stderr.strip()}\n{sql}")
        return [tuple(line.split("\t")) for line in r.stdout.splitlines()]

    def value(self, sql, *params):
        rows = self.rows(sql, *params)
        return rows[0][0] if rows else None

    def number(self, sql, *params):
        v = self.value(sql, *params)
        return 0.0 if v is None or v == "" else float(v)

    def count(self, table, where="1 = 1", *params):
        return int(self.number(f"SELECT COUNT(*) FROM {table} WHERE {where}", *params))


class Register:
    """One workstation: its ORVO_HOME, HOME and TMPDIR under `base`, started with scripts/run.sh
    (the emulated fiscal printer and card terminal, then the program), on X display `display`."""

    def __init__(self, root, build, base, display):
        self.root, self.build, self.base = root, build, base
        self.home = os.path.join(base, "orvo")
        self.env = dict(os.environ, HOME=os.path.join(base, "home"),
                        TMPDIR=os.path.join(base, "tmp"), ORVO_HOME=self.home,
                        ORVO_BUILD_DIR=build, ORVO_RUN_BUILT="1", DISPLAY=display,
                        QT_QPA_PLATFORM="xcb")
        self.env.pop("QT_LOGGING_RULES", None)
        self.desk = Desktop(display, os.path.join(base, "pantallas"))
        self.proc = None
        self.store = None

    def orvo(self, *args, stdin=""):
        r = subprocess.run([os.path.join(self.build, "orvo"), *args], env=self.env, input=stdin,
                           capture_output=True, text=True)
        if r.returncode != 0:
            raise Failure(f"orvo {' '.join(args)}: {r.stdout}{r.stderr}")
        return r.stdout

    def _fresh(self):
        shutil.rmtree(self.base, ignore_errors=True)
        for d in ("home", "tmp", "orvo"):
            os.makedirs(os.path.join(self.base, d))

    def prepare_sqlite(self):
        """A fresh home; scripts/run.sh creates the demo store in the embedded database."""
        self._fresh()
        self.store = Store(sqlite_path=os.path.join(self.home, "data", "ORVO.sqlite"))

    def prepare_postgres(self, endpoint, database, user="orvo", password="orvo", demo=True):
        """A fresh home bound to `database` on the server at `endpoint`, with the demo store.
        (The test cluster trusts its connections; the program wants a password all the same.)"""
        self._fresh()
        host, port = endpoint.split(":")
        self.orvo("server-config", endpoint, database, "--usuario", user, stdin=password + "\n")
        if demo:
            self.orvo("db", "init", "--demo")
        self.store = Store(pg=(host, port, user, database))

    def start(self):
        log = open(os.path.join(self.base, "run.log"), "ab")
        self.proc = subprocess.Popen(["bash", os.path.join(self.root, "scripts", "run.sh")],
                                     env=self.env, stdout=log, stderr=subprocess.STDOUT,
                                     start_new_session=True)

    def running(self):
        return self.proc is not None and self.proc.poll() is None

    def wait_stopped(self, timeout=60):
        try:
            self.proc.wait(timeout)
        except subprocess.TimeoutExpired:
            raise Failure("el programa no terminó")
        self.proc = None

    def kill(self):
        """Ends the program and its services at once (the process group run.sh leads)."""
        if self.running():
            os.killpg(self.proc.pid, signal.SIGKILL)
            self.proc.wait()
        self.proc = None

    # The emulated devices' files.

    def printer(self):
        with open(os.path.join(self.home, "fiscal", "memoria.json"), encoding="utf-8") as f:
            return json.load(f)

    def tickets(self, prefix=""):
        return sorted(os.path.basename(p) for p in
                      glob.glob(os.path.join(self.home, "fiscal", "tickets", prefix + "*")))

    def ticket(self, name):
        with open(os.path.join(self.home, "fiscal", "tickets", name), encoding="utf-8",
                  errors="replace") as f:
            return f.read()

    def terminal(self):
        path = os.path.join(self.home, "vpos", "estado.json")
        if not os.path.exists(path):
            return []
        with open(path, encoding="utf-8") as f:
            return json.load(f).get("transacciones", [])
