#!/usr/bin/env python3
"""Whole programs against the programs a user would run instead, in the same run.

Each pair runs in turn (ours, theirs, ours, ...) after a warm-up pair that also brings the input
into the page cache, and every figure is a median: of wall seconds, of the ratio taken pair by
pair, of peak resident memory. A run whose output differs from the peer's, or that fails, stops
the benchmark without a figure.

usage: bench/programs.py --orvo build/release/bin/orvo [--dir DIR] [--runs N]
                         [--only lines,convert,call] [--lines-mib 512] [--convert-mib 128]
"""

import argparse
import os
import random
import shutil
import statistics
import sys
import time

MIB = 1 << 20


def run(command, output=None):
    """Runs a command to its end; its wall seconds and peak resident KiB. The child is spawned,
    not forked, so that its peak is its own and not this script's (which holds the test data)."""
    errors_path = os.path.join(os.environ.get("TMPDIR", "/tmp"), f"orvo-bench-{os.getpid()}.err")
    actions = [(os.POSIX_SPAWN_OPEN, 0, "/dev/null", os.O_RDONLY, 0),
               (os.POSIX_SPAWN_OPEN, 1, output or "/dev/null",
                os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o644),
               (os.POSIX_SPAWN_OPEN, 2, errors_path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC,
                0o644)]
    program = command[0] if os.sep in command[0] else shutil.which(command[0])
    start = time.monotonic()
    pid = os.posix_spawn(program, command, os.environ, file_actions=actions)
    _, status, usage = os.wait4(pid, 0)
    wall = time.monotonic() - start
    code = os.waitstatus_to_exitcode(status)
    with open(errors_path, errors="replace") as f:
        errors = f.read()
    os.unlink(errors_path)
    if code != 0:
        sys.exit(f"failed ({code}): {' '.join(command)}\n{errors}")
    return wall, usage.ru_maxrss


def own_peak(command):
    """The command's own peak resident KiB, as /usr/bin/time reports it: a child spawned from
    this script starts with the script's pages counted in its peak."""
    report = os.path.join(os.environ.get("TMPDIR", "/tmp"), f"orvo-bench-{os.getpid()}.peak")
    run(["/usr/bin/time", "-o", report, "-f", "%M"] + command)
    with open(report) as f:
        kib = int(f.read().split()[-1])
    os.unlink(report)
    return kib


def paired(name, ours, theirs, runs, check, prepare=None):
    """Times ours against theirs in turn; check() after the warm-up says whether both did the
    same work. prepare, when given, is a pair of calls made untimed before ours and theirs."""
    times = {"ours": [], "theirs": [], "ratio": []}
    for i in range(runs + 1):
        if prepare:
            prepare[0]()
        a, _ = run(ours[0], ours[1])
        if prepare:
            prepare[1]()
        b, _ = run(theirs[0], theirs[1])
        if i == 0:
            problem = check()
            if problem:
                sys.exit(f"{name}: {problem}; no figure")
            continue
        times["ours"].append(a)
        times["theirs"].append(b)
        times["ratio"].append(b / a)
    median = statistics.median
    peak = own_peak(ours[0])
    print(f"{name}: ours {median(times['ours']):.3f} s, peer {median(times['theirs']):.3f} s; "
          f"ours at {median(times['ratio']):.2f}x the peer's speed "
          f"(range {min(times['ratio']):.2f}-{max(times['ratio']):.2f}); "
          f"our peak {peak / 1024:.1f} MiB", flush=True)
    return median(times["ratio"])


def text_bytes(size, seed, line_break=b"\r\n", extra=()):
    """Random printable text of random line lengths (a line ends where a random byte says so,
    about every 40 bytes), with the extra byte strings strewn through it."""
    rng = random.Random(seed)
    chunk = 16 * MIB
    raw = b"".join(rng.randbytes(min(chunk, size - at)) for at in range(0, size, chunk))
    table = bytearray(256)
    for v in range(256):
        if v < 6:
            table[v] = 0x0A
        elif v < 6 + len(extra):
            table[v] = v - 5  # placeholders 1.., replaced below
        else:
            table[v] = 0x20 + v % 95
    text = raw.translate(bytes(table))
    for i, replacement in enumerate(extra):
        text = text.replace(bytes([i + 1]), replacement)
    if line_break != b"\n":
        text = text.replace(b"\n", line_break)
    return text[:size]


def write(path, data):
    with open(path, "wb") as f:
        f.write(data)


def bench_lines(args):
    path = os.path.join(args.dir, "lines.txt")
    if not os.path.exists(path) or os.path.getsize(path) != args.lines_mib * MIB:
        write(path, text_bytes(args.lines_mib * MIB, 1))
    ours_out = os.path.join(args.dir, "lines.orvo")
    theirs_out = os.path.join(args.dir, "lines.wc")

    def check():
        ours = open(ours_out).read().split("\t")[0]
        theirs = open(theirs_out).read().split()[0]
        # wc counts LFs; a file ending without one has one line more for orvo.
        with open(path, "rb") as f:
            f.seek(-1, os.SEEK_END)
            last = f.read(1)
        expected = int(theirs) + (0 if last in (b"\n", b"\r") else 1)
        return None if int(ours) == expected else f"orvo counted {ours}, wc -l {theirs}"

    return paired(f"lines, {args.lines_mib} MiB of CRLF lines, against wc -l",
                  ([args.orvo, "lines", path], ours_out), (["wc", "-l", path], theirs_out),
                  args.runs, check)


def bench_convert(args):
    n = args.convert_mib * MIB
    latin = [c.encode("cp1252") for c in "éàüöñçÉ€"]
    unicode_extra = [c.encode("utf-8") for c in "éüñ€Ωж日本語"]
    makers = {  # made one at a time and let go, so that this script stays small while timing
        "1252": lambda: text_bytes(n, 4, extra=latin),
        "utf8": lambda: text_bytes(n, 2, extra=unicode_extra),
        "utf16": lambda: text_bytes(n, 2, extra=unicode_extra).decode("utf-8").encode("utf-16-le"),
        "932": lambda: text_bytes(n, 3, extra=[c.encode("cp932") for c in "日本語のテキスト、漢字"]),
    }
    for key, make in makers.items():
        source = os.path.join(args.dir, f"convert.{key}")
        if not os.path.exists(source):
            write(source + ".part", make())
            os.rename(source + ".part", source)
    cases = [  # name, input, orvo --from, iconv -f, orvo --to, iconv -t
        ("1252 to UTF-16LE", "1252", "1252", "CP1252", "1200", "UTF-16LE"),
        ("UTF-8 to UTF-16LE", "utf8", "65001", "UTF-8", "1200", "UTF-16LE"),
        ("UTF-16LE to UTF-8", "utf16", "1200", "UTF-16LE", "65001", "UTF-8"),
        ("932 to UTF-16LE", "932", "932", "CP932", "1200", "UTF-16LE"),
    ]
    ratios = []
    for name, key, ours_from, iconv_from, ours_to, iconv_to in cases:
        source = os.path.join(args.dir, f"convert.{key}")
        ours_out = os.path.join(args.dir, "convert.orvo")
        theirs_out = os.path.join(args.dir, "convert.iconv")

        def check():
            with open(ours_out, "rb") as a, open(theirs_out, "rb") as b:
                same = a.read() == b.read()
            return None if same else "the outputs differ"

        def fresh(path):
            # Each side writes a new file, with no earlier run's output still on its way to
            # the disk: replacing a file whose pages are being written back waits for them
            # (a rename over it and a truncation alike), which added up to half a second at
            # random to either side. That wait is the disk's, not the program's.
            def prepare():
                if os.path.exists(path):
                    os.unlink(path)
                os.sync()
            return prepare

        ratios.append(paired(
            f"convert {name}, {os.path.getsize(source) // MIB} MiB, against iconv",
            ([args.orvo, "convert", "--from", ours_from, "--to", ours_to, "--no-bom", source,
              ours_out], None),
            (["iconv", "-f", iconv_from, "-t", iconv_to, source, "-o", theirs_out], None),
            args.runs, check, (fresh(ours_out), fresh(theirs_out))))
    return ratios


def bench_call(args):
    out = os.path.join(args.dir, "call.orvo")

    def check():
        answer = open(out).read().strip()
        return None if answer == '{"result":1}' else f"the answer was {answer}"

    return paired("one call (StringUtilities.LenTrim x), against /bin/true",
                  ([args.orvo, "call", "StringUtilities.LenTrim", "x"], out),
                  (["/bin/true"], None), max(args.runs, 20), check)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--orvo", required=True)
    parser.add_argument("--dir", default=os.path.join(os.environ.get("TMPDIR", "/tmp"),
                                                      "orvo-bench"))
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--only", default="lines,convert,call")
    parser.add_argument("--lines-mib", type=int, default=512)
    parser.add_argument("--convert-mib", type=int, default=128)
    args = parser.parse_args()
    os.makedirs(args.dir, exist_ok=True)
    chosen = args.only.split(",")
    if "lines" in chosen:
        bench_lines(args)
    if "convert" in chosen:
        bench_convert(args)
    if "call" in chosen:
        bench_call(args)


if __name__ == "__main__":
    main()
