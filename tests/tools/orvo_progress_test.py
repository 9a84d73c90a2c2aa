#!/usr/bin/env python3
"""orvo's progress on standard error: shown on a terminal once work has taken the delay
(ORVO_PROGRESS_DELAY seconds; 0 shows it from the start), never on a pipe, never for quick work
under the usual delay, and ended on a line of its own before the verb's own messages."""

import os
import pty
import shutil
import subprocess
import sys
import tempfile

ORVO = sys.argv[1]
FIXTURES = sys.argv[2]


def run(args, delay, terminal=True):
    """The exit status, standard output and standard error (a terminal or a pipe) of orvo."""
    env = dict(os.environ, ORVO_PROGRESS_DELAY=delay, LC_ALL="en_US.UTF-8")
    if not terminal:
        p = subprocess.run([ORVO] + args, capture_output=True, env=env, timeout=60)
        return p.returncode, p.stdout.decode(), p.stderr.decode()
    leader, follower = pty.openpty()
    p = subprocess.run([ORVO] + args, stdout=subprocess.PIPE, stderr=follower, env=env,
                       timeout=60)
    os.close(follower)
    err = b""
    while True:
        try:
            chunk = os.read(leader, 4096)
        except OSError:  # the terminal's other end is closed: all has been read
            break
        if not chunk:
            break
        err += chunk
    os.close(leader)
    return p.returncode, p.stdout.decode(), err.decode().replace("\r\n", "\n")


def last_line(err):
    """What a person sees last on the progress line: the text after the last carriage return,
    without the erase-to-end-of-line sequence."""
    return err.split("\r")[-1].replace("\x1b[K", "")


def main():
    work = tempfile.mkdtemp(prefix="orvo_progress.")
    text = os.path.join(work, "text.txt")
    with open(text, "wb") as f:
        f.write(b"".join(b"line %d\r\n" % i for i in range(200000)))
    ini = os.path.join(work, "s.ini")
    with open(ini, "wb") as f:
        f.write(b"[S]\r\nk=v\r\n")
    dll = os.path.join(FIXTURES, "Mgr809.dll")
    out = os.path.join(work, "out.txt")

    # args, delay, on a terminal, exit status, what the progress line ends with ("" for none),
    # standard output's start
    cases = [
        (["lines", text], "0", True, 0, f"orvo lines {text}: 100%\n", "200000\t"),
        (["convert", "--to", "65001", text, out], "0", True, 0,
         f"orvo convert {text}: 100%\n", ""),
        (["ini", "get", ini, "S", "k"], "0", True, 0, f"orvo ini {ini}: done\n", "v\n"),
        (["strings", dll, "1"], "0", True, 0, f"orvo strings {dll}: done\n", ""),
        # Quick work under the usual delay, and a pipe, are left alone.
        (["lines", text], "30", True, 0, "", "200000\t"),
        (["lines", text], "0", False, 0, "", "200000\t"),
        # A file that cannot be read is said at once, with no progress before it.
        (["lines", os.path.join(work, "missing.txt")], "0", True, 1, "", ""),
    ]
    failures = 0
    for args, delay, terminal, want_status, want_end, want_out in cases:
        status, stdout, err = run(args, delay, terminal)
        shown = last_line(err) if "orvo " + args[0] + " " in err and ":" in err else ""
        progress_end = shown if want_end else ""
        problems = []
        if status != want_status:
            problems.append(f"exit {status}, want {want_status}")
        if not stdout.startswith(want_out):
            problems.append(f"output {stdout[:60]!r}, want it to start {want_out!r}")
        if want_end and progress_end != want_end:
            problems.append(f"progress ends {progress_end!r}, want {want_end!r}")
        if not want_end and ("%" in err or "working" in err or ": done" in err):
            problems.append(f"progress shown: {err[:120]!r}")
        if problems:
            failures += 1
            print(f"FAIL: orvo {' '.join(args)} (delay {delay}, "
                  f"{'terminal' if terminal else 'pipe'}): " + "; ".join(problems))
    shutil.rmtree(work, ignore_errors=True)
    print(f"{len(cases) - failures} of {len(cases)} progress cases pass")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
