#!/usr/bin/env python3
"""Makes orvo's manual page and its bash completion from the interface description, so that both
list every class and member with the line it is documented with, and cannot fall behind it.

usage: docgen.py IDL VERSION MAN_TEMPLATE COMPLETION_TEMPLATE OUTDIR
writes OUTDIR/share/man/man1/orvo.1 and OUTDIR/share/bash-completion/completions/orvo
"""
import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import idlgen  # noqa: E402  (beside this file)


def roff(text):
    """Text safe in a manual page: backslashes escaped, no line read as a request."""
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return "\\&" + text if text[:1] in (".", "'") else text


def signature(member):
    params = ", ".join(
        ("inout " if p.inout else "") + ("optional " if p.optional else "") + p.idl_type + " " +
        p.name for p in member.params)
    kind = {"PropertyGet": "get ", "PropertyLet": "let "}.get(member.kind, "")
    return f"{kind}{member.result} {member.name}({params})"


def manual_classes(classes):
    out = []
    for c in classes:
        out += [f".SS {c.name}" + (" (global)" if c.is_global else "")]
        for m in c.members:
            out += [".TP", f'.B "{roff(signature(m))}"', roff(m.doc or "(undocumented)")]
            for p in m.params:
                if p.name == "RHS":
                    continue
                out += [".br", f".I {p.name}", f"\\(em {roff(p.doc or '(undocumented)')}"]
        for e in c.events:
            params = ", ".join(p.idl_type + " " + p.name for p in e.params)
            out += [".TP", f'.B "{roff(f"event {e.name}({params})")}"',
                    roff(e.doc or "(undocumented)")]
    return "\n".join(out)


def fill(template, values):
    with open(template, encoding="utf-8") as f:
        text = f.read()
    for key, value in values.items():
        text = text.replace(f"@{key}@", value)
    return text


def main():
    if len(sys.argv) != 6:
        sys.exit(__doc__)
    idl, version, man_template, completion_template, outdir = sys.argv[1:]
    try:
        classes = idlgen.parse(idl)
    except idlgen.IdlError as e:
        sys.exit(f"docgen: {e}")
    idlgen.write_if_changed(
        os.path.join(outdir, "share/man/man1/orvo.1"),
        fill(man_template, {"VERSION": version, "CLASSES": manual_classes(classes)}))
    callable_members = sorted({f"{c.name}.{m.name}" for c in classes if c.is_global
                               for m in c.members})
    idlgen.write_if_changed(
        os.path.join(outdir, "share/bash-completion/completions/orvo"),
        fill(completion_template, {"MEMBERS": " ".join(callable_members),
                                   "CLASSES": " ".join(c.name for c in classes)}))


if __name__ == "__main__":
    main()
