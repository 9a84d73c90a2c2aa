#!/usr/bin/env python3
"""Expand the compact code page files and check them.

    cp_check.py [--raw RAWDIR] [GOLDENDIR]

GOLDENDIR defaults to data/codepages.  For every cp*.txt in it the
file is expanded following the reader contract in tools/oracle/README.md,
written here again from scratch (nothing is shared with cp_compact.py), and
checked for
  * complete, non-overlapping coverage: w2m 0000..FFFF, m2w1 00..FF, m2w2
    every lead byte x 00..FF;
  * classes that agree with the tables themselves (m/b/d, s);
  * its own seqm/seqw lines, which the contract's decoder and encoder must
    reproduce;
  * a few facts about these code pages known independently of this data.
With --raw, every line of RAWDIR/cp<cp>.raw (the probe's raw output) must be
reproduced exactly: each table entry, each byte pair with and without a
following 'A', each random string, and the MB_ERR_INVALID_CHARS verdicts.
utf8.tsv is checked for its shape and a few known cases.
Prints one summary line per code page; exits non-zero on the first problem.
"""
import os
import sys


class Bad(Exception):
    pass


def check(cond, msg):
    if not cond:
        raise Bad(msg)


def hexbytes(s):
    return b"" if s == "-" else bytes.fromhex(s)


def hexunits(s):
    if s == "-":
        return ()
    check(len(s) % 4 == 0, "bad unit string " + s)
    return tuple(int(s[i:i + 4], 16) for i in range(0, len(s), 4))


def run_values(value, count, step):
    """The count values of a run: the hex string read as a big-endian
    number of fixed width, increased by one per key for '+', kept for '='."""
    if step == "=" or value == "-":
        check(step == "=" or count == 1, "'+' run of '-'")
        return [value] * count
    check(step == "+", "bad step " + step)
    width = len(value)
    base = int(value, 16)
    check(base + count - 1 < 16 ** width, "run overflows its width: " + value)
    return ["%0*X" % (width, base + k) for k in range(count)]


class CodePage:
    def __init__(self, path):
        self.info = {}
        self.w2m = {}    # unit -> (bytes, usedDefault, class)
        self.m2w1 = {}   # byte -> (units, class)
        self.m2w2 = {}   # (lead, trail) -> (unit tuple or None, class)
        self.seqm = []
        self.seqw = []
        with open(path, "rb") as f:
            data = f.read()
        check(b"\r" not in data, path + ": CR in file")
        for no, line in enumerate(data.decode("ascii").split("\n"), 1):
            if not line or line.startswith("#"):
                continue
            fld = line.split("\t")
            where = "%s:%d: " % (path, no)
            kind = fld[0]
            if kind == "cpinfo":
                check(len(fld) == 3, where + "cpinfo needs 3 fields")
                self.info[fld[1]] = fld[2]
            elif kind in ("w2m", "m2w1", "m2w2"):
                if len(fld) == 4:
                    first, count, value, step, cls = fld[1], 1, fld[2], "+", fld[3]
                else:
                    check(len(fld) == 6, where + kind + " needs 4 or 6 fields")
                    first, count, value, step, cls = fld[1], int(fld[2]), fld[3], fld[4], fld[5]
                    check(count >= 2, where + "a run of one key takes the short form")
                check(count >= 1, where + "count < 1")
                vals = run_values(value, count, step)
                for k in range(count):
                    key = int(first, 16) + k
                    if kind == "w2m":
                        check(len(first) == 4 and key <= 0xFFFF, where + "unit out of range")
                        check(cls in "mbd", where + "class")
                        check(key not in self.w2m, where + "unit %04X twice" % key)
                        self.w2m[key] = (hexbytes(vals[k]), 1 if cls == "d" else 0, cls)
                    elif kind == "m2w1":
                        check(len(first) == 2 and key <= 0xFF, where + "byte out of range")
                        check(cls in "vi", where + "class")
                        check(key not in self.m2w1, where + "byte %02X twice" % key)
                        self.m2w1[key] = (hexunits(vals[k]), cls)
                    else:
                        lead, trail = key >> 8, key & 0xFF
                        check(len(first) == 4 and lead == int(first[:2], 16),
                              where + "m2w2 run crosses a lead byte")
                        check(cls in "vis", where + "class")
                        check((vals[k] == "-") == (cls == "s"), where + "'-' only for s")
                        check((lead, trail) not in self.m2w2, where + "pair twice")
                        self.m2w2[(lead, trail)] = (
                            None if cls == "s" else hexunits(vals[k]), cls)
            elif kind == "seqm":
                check(len(fld) == 3, where + "seqm needs 3 fields")
                self.seqm.append((hexbytes(fld[1]), hexunits(fld[2])))
            elif kind == "seqw":
                check(len(fld) == 4, where + "seqw needs 4 fields")
                self.seqw.append((hexunits(fld[1]), hexbytes(fld[2]), int(fld[3])))
            else:
                raise Bad(where + "unknown line kind " + kind)

        for key in ("MaxCharSize", "DefaultChar", "LeadByte", "UnicodeDefaultChar"):
            check(key in self.info, path + ": cpinfo " + key + " missing")
        self.leads = set()
        if self.info["LeadByte"] != "-":
            for r in self.info["LeadByte"].split(" "):
                lo, hi = (int(x, 16) for x in r.split("-"))
                self.leads.update(range(lo, hi + 1))
        dc = bytes.fromhex(self.info["DefaultChar"])
        self.default = dc[:1] if dc[1] == 0 else dc
        check(set(self.w2m) == set(range(0x10000)), path + ": w2m coverage")
        check(set(self.m2w1) == set(range(0x100)), path + ": m2w1 coverage")
        check(set(self.m2w2) == {(l, t) for l in self.leads for t in range(256)},
              path + ": m2w2 coverage")

    # The reader contract.
    def decode(self, bs):
        out, i = [], 0
        while i < len(bs):
            b = bs[i]
            if b in self.leads and i + 1 < len(bs):
                units, cls = self.m2w2[(b, bs[i + 1])]
                if cls != "s":
                    out.extend(units)
                    i += 2
                    continue
            out.extend(self.m2w1[b][0])
            i += 1
        return tuple(out)

    def encode(self, units):
        out, used = b"", 0
        for u in units:
            bs, d, _ = self.w2m[u]
            out += bs
            used |= d
        return out, used

    def self_check(self, name):
        for u, (bs, used, cls) in self.w2m.items():
            if cls == "d":
                check(bs == self.default, "%s: d entry %04X is not the default char" % (name, u))
            elif cls == "m":
                check(self.decode(bs) == (u,), "%s: m entry %04X does not round-trip" % (name, u))
            else:
                check(self.decode(bs) != (u,), "%s: b entry %04X round-trips" % (name, u))
        udef = (int(self.info["UnicodeDefaultChar"], 16),)
        for (l, t), (units, cls) in self.m2w2.items():
            if cls != "s":
                check(len(units) == 1, "%s: pair %02X%02X gives %d units" % (name, l, t, len(units)))
            if cls == "i":
                check(units == udef, "%s: invalid pair %02X%02X is not the default" % (name, l, t))
        for bs, units in self.seqm:
            check(self.decode(bs) == units, "%s: seqm %s" % (name, bs.hex()))
        for units, bs, used in self.seqw:
            check(self.encode(units) == (bs, used), "%s: seqw %s" % (name, units))


def raw_check(cp, rawpath):
    def fmt_units(t):
        return "".join("%04X" % u for u in t) or "-"

    def fmt_bytes(b):
        return b.hex().upper() or "-"

    def ret_ok(ret, n):
        return ret == str(n) if n else ret.startswith("err=")

    n = 0
    seqm, seqw = [], []
    with open(rawpath, encoding="ascii") as f:
        for line in f:
            line = line.rstrip("\n")
            if not line or line.startswith("#"):
                continue
            fld = line.split("\t")
            kind = fld[0]
            n += 1
            if kind == "cpinfo":
                if fld[1] != "CodePageName":
                    check(cp.info.get(fld[1]) == fld[2], "raw " + line)
            elif kind == "w2m":
                bs, used, _ = cp.w2m[int(fld[1], 16)]
                check(ret_ok(fld[2], len(bs)) and fld[3] == fmt_bytes(bs) and fld[4] == str(used),
                      "raw " + line)
            elif kind == "m2w1":
                units, cls = cp.m2w1[int(fld[1], 16)]
                check(ret_ok(fld[2], len(units)) and fld[3] == fmt_units(units), "raw " + line)
                check((cls == "v") == (not fld[4].startswith("err=")), "raw strict " + line)
                check(cls == "v" or fld[4] == "err=1113", "raw strict error " + line)
            elif kind in ("m2w2", "m2w3", "seqm"):
                bs = hexbytes(fld[1])
                units = cp.decode(bs)
                check(ret_ok(fld[2], len(units)) and fld[3] == fmt_units(units), "raw " + line)
                if kind == "m2w2":
                    cls = cp.m2w2[(bs[0], bs[1])][1]
                    check((cls == "v") == (not fld[4].startswith("err=")), "raw strict " + line)
                if kind == "seqm":
                    seqm.append((bs, units))
            elif kind == "seqw":
                units = hexunits(fld[1])
                bs, used = cp.encode(units)
                check(ret_ok(fld[2], len(bs)) and fld[3] == fmt_bytes(bs) and fld[4] == str(used),
                      "raw " + line)
                seqw.append((units, bs, used))
            else:
                raise Bad("raw: unknown line " + line)
    check(seqm == cp.seqm and seqw == cp.seqw, "seqm/seqw lines differ from raw")
    return n


# Facts about these code pages that hold independently of this recording.
FACTS = [
    # (cp, kind, input, expected output, expected class or None)
    (1252, "m1", 0x81, (0x0081,), "v"),
    (1252, "w", 0x0081, b"\x81", "m"),
    (1252, "w", 0x20AC, b"\x80", "m"),
    (1252, "w", 0x0101, b"a", "b"),
    (1252, "w", 0x221E, b"8", "b"),
    (1252, "w", 0x3042, b"?", "d"),
    (1252, "w", 0x0080, b"?", "d"),
    (1250, "w", 0x20AC, b"\x80", "m"),
    (1251, "w", 0x20AC, b"\x88", "m"),
    (874, "w", 0x20AC, b"\x80", "m"),
    (874, "m1", 0xDB, (0xF8C1,), "i"),
    (932, "m1", 0x82, (0x30FB,), "i"),
    (932, "m", b"\x82\x20", (0x30FB,), None),
    (932, "m", b"\x82\xA0", (0x3042,), None),
    (932, "m1", 0x5C, (0x005C,), "v"),
    (932, "m1", 0x7E, (0x007E,), "v"),
    (932, "m1", 0xB1, (0xFF71,), "v"),
    (932, "m1", 0xA0, (0xF8F0,), "i"),
    (932, "m1", 0xFD, (0xF8F1,), "i"),
    (932, "w", 0x3042, b"\x82\xA0", "m"),
    (932, "w", 0x221E, b"\x81\x87", "m"),
    (932, "w", 0x20AC, b"?", "d"),
    (936, "m1", 0x80, (0x20AC,), "v"),
    (936, "m1", 0xFF, (0xF8F5,), "i"),
    (936, "m1", 0xD6, (0x003F,), "i"),
    (936, "w", 0x0101, b"\xA8\xA1", "m"),
    (936, "w", 0x3042, b"\xA4\xA2", "m"),
    (936, "w", 0x221E, b"\xA1\xDE", "m"),
    (949, "w", 0x20AC, b"\xA2\xE6", "m"),
    (949, "w", 0x3042, b"\xAA\xA2", "m"),
    (950, "w", 0x20AC, b"\xA3\xE1", "m"),
    (950, "w", 0x2022, b"\xA1\x45", "b"),
]


def fact_check(pages):
    for cp, kind, inp, want, cls in FACTS:
        if cp not in pages:
            continue
        p = pages[cp]
        if kind == "w":
            bs, _, c = p.w2m[inp]
            check((bs, c) == (want, cls), "fact cp%d U+%04X -> %r %s, not %r %s" % (cp, inp, bs, c, want, cls))
        elif kind == "m1":
            units, c = p.m2w1[inp]
            check((units, c) == (want, cls), "fact cp%d %02X -> %r %s" % (cp, inp, units, c))
        else:
            check(p.decode(inp) == want, "fact cp%d %s -> %r" % (cp, inp.hex(), p.decode(inp)))
    if 1252 in pages:
        check(pages[1252].encode((0xD83D, 0xDE00)) == (b"??", 1), "fact cp1252 U+1F600")


def utf8_check(path):
    n = 0
    seen = {}
    with open(path, encoding="ascii") as f:
        for line in f:
            line = line.rstrip("\n")
            if not line or line.startswith("#"):
                continue
            fld = line.split("\t")
            check(len(fld) == 5 and fld[0] in ("m2w", "w2m"), "utf8.tsv: " + line)
            width_in, width_out = (2, 4) if fld[0] == "m2w" else (4, 2)
            check(fld[2] != "-" and len(fld[2]) % width_in == 0, "utf8.tsv input: " + line)
            if fld[3].startswith("err="):
                check(fld[4] == "-", "utf8.tsv: " + line)
            else:
                check(len(fld[4]) == int(fld[3]) * width_out, "utf8.tsv ret: " + line)
            seen[(fld[0], fld[2])] = fld[4]
            n += 1
    for key, want in [(("m2w", "80"), "FFFD"), (("m2w", "E282AC"), "20AC"),
                      (("m2w", "F09F9880"), "D83DDE00"), (("m2w", "41"), "0041"),
                      (("w2m", "D800"), "EFBFBD"), (("w2m", "D83DDE00"), "F09F9880"),
                      # published results of Windows Vista..10 for these inputs
                      (("m2w", "C000"), "FFFD0000"), (("m2w", "C0C08000"), "FFFDFFFDFFFD0000"),
                      (("m2w", "E0C000"), "FFFDFFFD0000"), (("m2w", "E020C000"), "FFFD0020FFFD0000"),
                      (("m2w", "82A082A200"), "FFFDFFFDFFFDFFFD0000"),
                      (("m2w", "82A082A28200"), "FFFDFFFDFFFDFFFDFFFD0000")]:
        check(seen.get(key) == want, "utf8.tsv fact %s -> %s" % (key, seen.get(key)))
    return n


def main():
    args = sys.argv[1:]
    rawdir = None
    if args[:1] == ["--raw"]:
        rawdir = args[1]
        args = args[2:]
    here = os.path.dirname(os.path.abspath(__file__))
    gdir = args[0] if args else os.path.join(here, "..", "..", "data", "codepages")
    pages = {}
    try:
        names = sorted(f for f in os.listdir(gdir) if f.startswith("cp") and f.endswith(".txt"))
        check(names, "no cp*.txt in " + gdir)
        for name in names:
            cp = int(name[2:-4])
            p = CodePage(os.path.join(gdir, name))
            p.self_check(name)
            pages[cp] = p
            nraw = raw_check(p, os.path.join(rawdir, "cp%d.raw" % cp)) if rawdir else 0
            w = {c: sum(1 for v in p.w2m.values() if v[2] == c) for c in "mbd"}
            m1 = {c: sum(1 for v in p.m2w1.values() if v[1] == c) for c in "vi"}
            m2 = {c: sum(1 for v in p.m2w2.values() if v[1] == c) for c in "vis"}
            print("cp%-5d w2m mapped %5d best-fit %4d default %5d | m2w1 valid %3d invalid %3d"
                  " | m2w2 valid %5d invalid %5d split %3d | seq %d+%d%s"
                  % (cp, w["m"], w["b"], w["d"], m1["v"], m1["i"], m2["v"], m2["i"], m2["s"],
                     len(p.seqm), len(p.seqw),
                     " | raw lines %d ok" % nraw if rawdir else ""))
        fact_check(pages)
        u8 = os.path.join(gdir, "utf8.tsv")
        if os.path.exists(u8):
            print("utf8.tsv %d cases ok" % utf8_check(u8))
    except Bad as e:
        sys.exit("cp_check.py: FAIL: %s" % e)
    print("cp_check.py: all ok")


if __name__ == "__main__":
    main()
