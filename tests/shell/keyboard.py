"""zosh at the keyboard, driven through a pseudo-terminal: line editing and
history, Ctrl-R, Ctrl-C during a program, at the error dialog and at the
prompt, and Ctrl-C ending a script run from the command line.

  keyboard.py ZOSH

Every wait is bounded; the whole test gives up after two minutes.
"""
import fcntl
import os
import pty
import select
import signal
import struct
import subprocess
import sys
import tempfile
import termios
import time

WAIT = 10.0
UP = b"\x1b[A"
CTRL_C = b"\x03"

failures = []


def check(description, condition):
    if not condition:
        failures.append(description)
        print("FAILED: " + description)


class Terminal:
    """zosh on the child side of a pty; `text` collects what it wrote."""

    def __init__(self, zosh, folder, env):
        self.pid, self.fd = pty.fork()
        if self.pid == 0:
            os.chdir(folder)
            signal.signal(signal.SIGINT, signal.SIG_DFL)
            os.execve(zosh, [zosh], env)
        fcntl.ioctl(self.fd, termios.TIOCSWINSZ, struct.pack("HHHH", 24, 100, 0, 0))
        self.text = b""
        self.mark = 0
        self.exit_code = None

    def read_some(self, timeout):
        ready, _, _ = select.select([self.fd], [], [], timeout)
        if not ready:
            return False
        try:
            chunk = os.read(self.fd, 4096)
        except OSError:
            return False
        self.text += chunk
        return bool(chunk)

    def wait_for(self, pattern):
        """True when `pattern` appears in what came since the last wait."""
        deadline = time.monotonic() + WAIT
        while pattern not in self.text[self.mark:]:
            if time.monotonic() > deadline or not self.read_some(0.1) and self.exited():
                return False
        self.mark = self.text.index(pattern, self.mark) + len(pattern)
        return True

    def prompt(self):
        return self.wait_for(b"> ")

    def type(self, keys):
        os.write(self.fd, keys)

    def run(self, line):
        self.type(line + b"\r")
        return self.prompt()

    def since(self):
        return self.text[self.mark:]

    def exited(self):
        if self.exit_code is None:
            pid, status = os.waitpid(self.pid, os.WNOHANG)
            if pid:
                self.exit_code = os.waitstatus_to_exitcode(status)
        return self.exit_code is not None

    def status(self):
        deadline = time.monotonic() + WAIT
        while time.monotonic() < deadline:
            self.read_some(0.1)
            if self.exited():
                return self.exit_code
        os.kill(self.pid, signal.SIGKILL)
        os.waitpid(self.pid, 0)
        return None


def editing_and_interrupts(zosh, folder, env):
    term = Terminal(zosh, folder, env)
    check("the prompt shows", term.prompt())
    check("a line runs", term.run(b"x = 1"))
    check("a second line runs", term.run(b"x = x + 1"))
    term.type(UP)
    check("the up arrow recalls the last line", term.wait_for(b"x = x + 1"))
    term.type(b"\r")
    term.prompt()
    term.type(b"? x\r")
    check("the recalled line ran again", term.wait_for(b"3\r\n") and term.prompt())

    term.type(b"DO spin\r")
    check("the program starts", term.wait_for(b"spinning"))
    term.type(CTRL_C)
    check("Ctrl-C stops the program where it was", term.wait_for(b"(Interrupted)") and term.wait_for(b"spin.prg"))
    check("the prompt comes back", term.prompt())
    term.type(b"? x\r")
    check("the variables set before are still there", term.wait_for(b"3\r\n") and term.prompt())

    term.type(b"DO fails\r")
    check("an error asks what to do", term.wait_for(b"[A]bort, [R]etry, [I]gnore? "))
    term.type(CTRL_C)
    check("Ctrl-C at the error dialog answers Abort", term.wait_for(b"(Stack trace)") and term.prompt())

    term.type(b"x = 100")
    term.wait_for(b"x = 100")
    term.type(CTRL_C)
    check("Ctrl-C at the prompt gives a new prompt", term.wait_for(b"^C") and term.prompt())
    term.type(b"? x\r")
    check("the line typed before Ctrl-C was dropped", term.wait_for(b"\r\n3\r\n") and term.prompt())
    term.type(b"QUIT\r")
    check("QUIT ends the shell with 0", term.status() == 0)


def history_across_runs(zosh, folder, env, state):
    history = os.path.join(state, "zobase", "history")
    check("the history is kept in the XDG state folder", os.path.exists(history))
    term = Terminal(zosh, folder, env)
    term.prompt()
    term.type(UP)
    check("the next run recalls the last line of the one before", term.wait_for(b"QUIT"))
    term.type(b"\r")
    check("and runs it", term.status() == 0)


def script_interrupted(zosh, folder):
    child = subprocess.Popen([zosh, "spin.prg"], cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                             preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL))
    # The signal must come once the loop runs, not while the program compiles.
    started = os.path.join(folder, "started")
    deadline = time.monotonic() + WAIT
    while not os.path.exists(started) and time.monotonic() < deadline:
        time.sleep(0.05)
    time.sleep(0.1)
    child.send_signal(signal.SIGINT)
    try:
        _, err = child.communicate(timeout=WAIT)
    except subprocess.TimeoutExpired:
        child.kill()
        _, err = child.communicate()
    check("Ctrl-C ends a script with status 130", child.returncode == 130)
    check("and says where it stopped", b"(Interrupted)" in err and b"spin.prg, line" in err)


def main():
    zosh = os.path.abspath(sys.argv[1])
    signal.alarm(120)
    with tempfile.TemporaryDirectory() as folder:
        with open(os.path.join(folder, "spin.prg"), "w") as spin:
            spin.write('? "spinning"\n= STRTOFILE("yes", "started")\nDO WHILE .T.\nENDDO\n')
        with open(os.path.join(folder, "fails.prg"), "w") as fails:
            fails.write("? no_such_variable\n")
        state = os.path.join(folder, "state")
        env = dict(os.environ, TERM="xterm", HOME=folder, XDG_STATE_HOME=state, LC_ALL="C.UTF-8")
        editing_and_interrupts(zosh, folder, env)
        history_across_runs(zosh, folder, env, state)
        script_interrupted(zosh, folder)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
