#!/usr/bin/env python3
"""Turn the raw output of codepage_tables.exe <cp> into the compact,
run-length encoded golden file data/codepages/cp<cp>.txt.

    cp_compact.py RAW OUT

The line kinds of OUT are described in tools/oracle/README.md ("Code page
tables"); cp_check.py expands OUT again and compares it with RAW.

Everything unusual in RAW (a failing call on a table entry, a usedDefault
that is neither 0 nor 1, a byte pair that decodes to more than one unit)
stops the script: the compact format has no way to say it, and silently
dropping it would make the golden data lie.
"""
import sys


def fail(msg):
    sys.exit("cp_compact.py: " + msg)


def split_hex(s, width):
    if s == "-":
        return []
    return [s[i:i + width] for i in range(0, len(s), width)]


def read_raw(path):
    info, names = {}, {}
    w2m, m2w1, m2w2, m2w2_strict, m2w1_strict = {}, {}, {}, {}, {}
    seqm, seqw = [], []
    with open(path, encoding="ascii") as f:
        for line in f:
            line = line.rstrip("\n")
            if not line or line.startswith("#"):
                continue
            fld = line.split("\t")
            kind = fld[0]
            if kind == "cpinfo":
                if fld[1] == "CodePageName":
                    names["CodePageName"] = fld[2]
                else:
                    info[fld[1]] = fld[2]
            elif kind == "w2m":
                if fld[2].startswith("err") or fld[4] not in ("0", "1"):
                    fail("unexpected w2m line: " + line)
                w2m[int(fld[1], 16)] = (fld[3], int(fld[4]))
            elif kind == "m2w1":
                if fld[2].startswith("err"):
                    fail("unexpected m2w1 line: " + line)
                m2w1[int(fld[1], 16)] = fld[3]
                m2w1_strict[int(fld[1], 16)] = not fld[4].startswith("err")
            elif kind == "m2w2":
                if fld[2].startswith("err"):
                    fail("unexpected m2w2 line: " + line)
                m2w2[int(fld[1], 16)] = fld[3]
                m2w2_strict[int(fld[1], 16)] = not fld[4].startswith("err")
            elif kind == "m2w3":
                pass  # only a cross-check for cp_check.py
            elif kind == "seqm":
                if fld[2].startswith("err"):
                    fail("unexpected seqm line: " + line)
                seqm.append((fld[1], fld[3]))
            elif kind == "seqw":
                if fld[2].startswith("err") or fld[4] not in ("0", "1"):
                    fail("unexpected seqw line: " + line)
                seqw.append((fld[1], fld[3], fld[4]))
            else:
                fail("unknown raw line: " + line)
    return info, names, w2m, m2w1, m2w1_strict, m2w2, m2w2_strict, seqm, seqw


def runs(keys, value_of, class_of):
    """Greedy maximal runs over consecutive keys: '+' when the value (a hex
    string read as a big-endian number of fixed width) goes up by one per
    key, '=' when it stays the same.  Both must keep the class unchanged."""
    out = []
    i = 0
    while i < len(keys):
        k0, v0, c0 = keys[i], value_of(keys[i]), class_of(keys[i])
        step, n = "+", 1
        if i + 1 < len(keys) and keys[i + 1] == k0 + 1 and class_of(keys[i + 1]) == c0:
            v1 = value_of(keys[i + 1])
            if v0 != "-" and v1 != "-" and len(v1) == len(v0) and int(v1, 16) == int(v0, 16) + 1:
                step = "+"
            elif v1 == v0:
                step = "="
            else:
                step = None
            if step:
                n = 2
                while i + n < len(keys) and keys[i + n] == k0 + n and class_of(keys[i + n]) == c0:
                    v = value_of(keys[i + n])
                    if step == "=":
                        ok = v == v0
                    else:
                        ok = v != "-" and len(v) == len(v0) and int(v, 16) == int(v0, 16) + n
                    if not ok:
                        break
                    n += 1
            else:
                step = "+"
        out.append((k0, n, v0, step, c0))
        i += n
    return out


def main():
    if len(sys.argv) != 3:
        sys.exit("usage: cp_compact.py RAW OUT")
    raw, outpath = sys.argv[1], sys.argv[2]
    (info, names, w2m, m2w1, m2w1_strict, m2w2, m2w2_strict,
     seqm, seqw) = read_raw(raw)
    cp = raw_cp(raw)

    if sorted(w2m) != list(range(0x10000)):
        fail("w2m does not cover 0000..FFFF")
    if sorted(m2w1) != list(range(0x100)):
        fail("m2w1 does not cover 00..FF")
    leads = lead_bytes(info["LeadByte"])
    if sorted(m2w2) != [(l << 8) | t for l in leads for t in range(256)]:
        fail("m2w2 does not cover every lead byte x 00..FF")

    # Byte pairs: a pair that yields one unit was taken as one character
    # (two bytes consumed).  Otherwise the lead byte must have been decoded on
    # its own, exactly like the lone byte, and the trail byte started the next
    # character; check that before calling it a split.
    def pair_class(key):
        units = split_hex(m2w2[key], 4)
        if len(units) == 1:
            return "v" if m2w2_strict[key] else "i"
        lead, trail = key >> 8, key & 0xFF
        if "".join(units) != m2w1[lead] + m2w1[trail] or m2w2_strict[key]:
            fail("byte pair %04X is neither one character nor two: %s" % (key, m2w2[key]))
        return "s"

    def pair_value(key):
        return m2w2[key] if pair_class(key) != "s" else "-"

    def decode(bs):
        """Decoder of the reader contract, used here only to classify the
        wide->multibyte entries as round trips or best fits."""
        out, i = "", 0
        while i < len(bs):
            b = bs[i]
            if b in leads and i + 1 < len(bs) and pair_class((b << 8) | bs[i + 1]) != "s":
                out += m2w2[(b << 8) | bs[i + 1]]
                i += 2
            else:
                out += m2w1[b]
                i += 1
        return out

    def w2m_class(u):
        bytes_hex, used = w2m[u]
        if used:
            if bytes_hex != default_bytes(info["DefaultChar"]):
                fail("usedDefault with non-default bytes for %04X" % u)
            return "d"
        bs = bytes(int(x, 16) for x in split_hex(bytes_hex, 2))
        return "m" if decode(bs) == "%04X" % u else "b"

    lines = []
    lines.append("# cp%s: Windows code page tables, flags 0, recorded under Wine by tools/oracle/codepage_tables.c" % cp)
    lines.append("# written by tools/oracle/cp_compact.py; line kinds: tools/oracle/README.md (\"Code page tables\")")
    lines.append("# (Wine's CodePageName is \"%s\"; Windows words its names differently, so it is no data here)"
                 % names.get("CodePageName", ""))
    for key in ("MaxCharSize", "DefaultChar", "LeadByte", "UnicodeDefaultChar"):
        lines.append("cpinfo\t%s\t%s" % (key, info[key]))

    keys = list(range(0x10000))
    for k, n, v, step, c in runs(keys, lambda u: w2m[u][0], w2m_class):
        lines.append(entry("w2m", "%04X" % k, n, v, step, c))

    keys = list(range(0x100))
    for k, n, v, step, c in runs(keys, lambda b: m2w1[b],
                                 lambda b: "v" if m2w1_strict[b] else "i"):
        lines.append(entry("m2w1", "%02X" % k, n, v, step, c))

    for lead in leads:
        keys = [(lead << 8) | t for t in range(256)]
        for k, n, v, step, c in runs(keys, pair_value, pair_class):
            lines.append(entry("m2w2", "%04X" % k, n, v, step, c))

    for bs, units in seqm:
        lines.append("seqm\t%s\t%s" % (bs, units))
    for units, bs, used in seqw:
        lines.append("seqw\t%s\t%s\t%s" % (units, bs, used))

    with open(outpath, "w", encoding="ascii", newline="\n") as f:
        f.write("\n".join(lines) + "\n")


def entry(kind, key, n, value, step, cls):
    """A run of one key is written without count and step; most entries of
    the double-byte tables are such singles, and the two fields would make
    up a fifth of those files."""
    if n == 1:
        return "%s\t%s\t%s\t%s" % (kind, key, value, cls)
    return "%s\t%s\t%d\t%s\t%s\t%s" % (kind, key, n, value, step, cls)


def raw_cp(path):
    with open(path, encoding="ascii") as f:
        first = f.readline()
    # "# codepage_tables 932: ..."
    if not first.startswith("# codepage_tables "):
        fail("raw file lacks the probe's header line (run the probe with -h)")
    return first.split()[2].rstrip(":")


def default_bytes(dc):
    """GetCPInfoEx's DefaultChar is two bytes; the second is 00 unless the
    default is itself a double-byte character."""
    return dc[:2] if dc[2:] == "00" else dc


def lead_bytes(ranges):
    if ranges == "-":
        return []
    out = []
    for r in ranges.split():
        lo, hi = r.split("-")
        out.extend(range(int(lo, 16), int(hi, 16) + 1))
    return out


if __name__ == "__main__":
    main()
