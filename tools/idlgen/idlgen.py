#!/usr/bin/env python3
"""Turns api/orvogeneric.idl into the public class declarations and the automation registry.

One description feeds both, so a member's C++ signature (types, by-reference parameters,
defaults) and what late binding knows about it cannot drift apart.

usage: idlgen.py [--require-docs] IDL OUTDIR
(--require-docs: every member, event and parameter must have its "##" line)
writes OUTDIR/include/orvogeneric/classes.hpp, OUTDIR/include/orvogeneric/enums.hpp and
OUTDIR/src/registry_gen.cpp
"""
import os
import re
import sys

SCALARS = {
    # idl type: (C++ type of an in-parameter, C++ type of a value: a result, a by-reference
    # parameter, and what the invokers coerce an argument to)
    "String": ("const String&", "String"),
    "Variant": ("const Variant&", "Variant"),
    "Boolean": ("VBool", "VBool"),
    "Integer": ("std::int16_t", "std::int16_t"),
    "Long": ("std::int32_t", "std::int32_t"),
    "Single": ("float", "float"),
    "Double": ("double", "double"),
    "Byte": ("std::uint8_t", "std::uint8_t"),
    "Currency": ("Currency", "Currency"),
    "Date": ("Date", "Date"),
    "Collection": ("const std::shared_ptr<Collection>&", "std::shared_ptr<Collection>"),
    # The record of four Longs (Left, Top, Right, Bottom); late-bound, a RectRecord object.
    "RECT": ("const RECT&", "RECT"),
    # Any automation object (a font a host hands in, ...), reached by late binding.
    "Object": ("const std::shared_ptr<Object>&", "std::shared_ptr<Object>"),
}
# Names of the classes declared in the file being read: a member may take or return one.
CLASSES = set()
# The shared enumerations declared in the file being read: name -> [(member, value), ...].
ENUMS = {}


class IdlError(Exception):
    pass


class Param:
    def __init__(self, text, where):
        m = re.fullmatch(
            r"\s*(?P<inout>inout\s+)?(?P<opt>optional\s+)?(?P<type>\w+)(?P<arr>\[\])?\s+"
            r"(?P<name>\w+)\s*(=\s*(?P<default>.+?))?\s*", text)
        if not m:
            raise IdlError(f"{where}: cannot read parameter '{text}'")
        self.doc = ""
        self.inout = bool(m["inout"])
        self.type = m["type"]
        self.array = bool(m["arr"])
        self.name = m["name"]
        self.default = m["default"]
        self.optional = bool(m["opt"]) or self.default is not None
        if self.type not in SCALARS and self.type not in ENUMS and self.type not in CLASSES:
            raise IdlError(f"{where}: unknown type {self.type}")
        if self.optional and not self.inout and self.default is None and self.type != "Variant":
            raise IdlError(f"{where}: optional {self.name} needs a default")

    @property
    def idl_type(self):
        return self.type + ("[]" if self.array else "")

    def value_type(self):
        if self.type in CLASSES:
            return f"std::shared_ptr<{self.type}>"
        return SCALARS[self.type][1] if self.type in SCALARS else self.type

    def cpp_decl(self):
        if self.array:
            decl = f"SafeArray& {self.name}"
        elif self.inout and self.optional:
            decl = f"{self.value_type()}* {self.name} = nullptr"
            return decl
        elif self.inout:
            decl = f"{self.value_type()}& {self.name}"
        else:
            if self.type in CLASSES:
                cpp = f"const std::shared_ptr<{self.type}>&"
            else:
                cpp = SCALARS[self.type][0] if self.type in SCALARS else self.type
            decl = f"{cpp} {self.name}"
        if self.optional and not self.inout:
            decl += " = " + (cpp_default(self) if self.default is not None else "Variant::missing()")
        return decl


def cpp_default(p):
    d = p.default
    if p.type == "Boolean":
        return {"True": "VBool::True", "False": "VBool::False"}[d]
    if p.type == "String":
        return "u" + d
    if p.type in ENUMS:
        return d
    if p.type == "Date":
        return "Date{" + d + "}"
    if p.type == "Variant" and d.startswith('"'):
        return "Variant(String(u" + d + "))"
    return d


def variant_default(p):
    d = p.default
    if p.type == "Boolean":
        return "Variant(" + cpp_default(p) + ")"
    if p.type == "String" or (p.type == "Variant" and d.startswith('"')):
        return f"Variant(String(u{d}))"
    if p.type in ENUMS:
        return f"Variant(static_cast<std::int32_t>({d}))"
    return f"Variant({p.value_type()}{{{d}}})"


class Member:
    def __init__(self, line, where, slot):
        self.slot = slot
        self.doc = ""
        m = re.fullmatch(r"(?P<kind>get|let)\s+(?P<type>\w+)\s+(?P<name>\w+)", line)
        if m:
            self.kind = {"get": "PropertyGet", "let": "PropertyLet"}[m["kind"]]
            self.name = m["name"]
            if self.kind == "PropertyGet":
                self.result = m["type"]
                self.params = []
            else:
                self.result = "void"
                self.params = [Param(f"{m['type']} RHS", where)]
            return
        m = re.fullmatch(r"(?P<result>\w+)\s+(?P<name>\w+)\((?P<params>.*)\)", line)
        if not m:
            raise IdlError(f"{where}: cannot read member '{line}'")
        self.kind = "Method"
        self.result = m["result"]
        self.name = m["name"]
        body = m["params"].strip()
        self.params = [Param(p, where) for p in split_params(body)] if body else []
        if (self.result != "void" and self.result not in SCALARS and self.result not in ENUMS
                and self.result not in CLASSES):
            raise IdlError(f"{where}: unknown result type {self.result}")

    def cpp_result(self):
        if self.result == "void":
            return "void"
        if self.result in CLASSES:
            return f"std::shared_ptr<{self.result}>"
        return SCALARS[self.result][1] if self.result in SCALARS else self.result


def split_params(body):
    parts, cur, quoted = [], "", False
    for ch in body:
        if ch == '"':
            quoted = not quoted
        if ch == "," and not quoted:
            parts.append(cur)
            cur = ""
        else:
            cur += ch
    parts.append(cur)
    return parts


class Klass:
    def __init__(self, name, flags):
        self.name = name
        self.is_global = "global" in flags
        self.creatable = "creatable" in flags
        self.oncreate = "oncreate" in flags
        # stateful: the object keeps state of its own, in an Impl its Class_Initialize makes.
        self.stateful = "stateful" in flags
        self.members = []
        self.events = []


class Event:
    """An outgoing event: raised by the object, handled by whoever listens to it."""

    def __init__(self, line, where):
        m = re.fullmatch(r"event\s+(?P<name>\w+)\((?P<params>.*)\)", line)
        if not m:
            raise IdlError(f"{where}: cannot read event '{line}'")
        self.doc = ""
        self.name = m["name"]
        body = m["params"].strip()
        self.params = [Param(p, where) for p in split_params(body)] if body else []
        for p in self.params:
            if p.optional:
                raise IdlError(f"{where}: event parameter {p.name} cannot be optional")


def parse_enum_value(text, where):
    m = re.fullmatch(r"(?P<name>\w+)\s*=\s*(?P<value>-?\d+)", text)
    if not m:
        raise IdlError(f"{where}: cannot read enumeration member '{text}'")
    value = int(m["value"])
    if not -2**31 <= value < 2**31:
        raise IdlError(f"{where}: {m['name']} does not fit 32 bits")
    return m["name"], value


def attach_docs(item, docs, where):
    """Gives a member or event the "##" lines above it: one line for itself, then "@Name" for
    each parameter in order. A property let's value is documented as its property is."""
    own = [text for name, text in docs if name is None]
    if len(own) > 1:
        raise IdlError(f"{where}: {item.name} has {len(own)} documentation lines, not one")
    item.doc = own[0] if own else ""
    named = [(name, text) for name, text in docs if name is not None]
    params = [p for p in item.params if p.name != "RHS"]
    if named and [n for n, _ in named] != [p.name for p in params]:
        raise IdlError(f"{where}: the documented parameters of {item.name} "
                       f"({', '.join(n for n, _ in named)}) are not its parameters "
                       f"({', '.join(p.name for p in params)}), in order")
    for p, (_, text) in zip(params, named):
        p.doc = text
    for p in item.params:
        if p.name == "RHS":
            p.doc = "the new value"


def undocumented(classes):
    """Every member, event and parameter without its line, as Class.Member(Param)."""
    missing = []
    for c in classes:
        for item in c.members + c.events:
            if not item.doc:
                missing.append(f"{c.name}.{item.name}")
            missing += [f"{c.name}.{item.name}({p.name})" for p in item.params if not p.doc]
    return missing


def parse(path):
    classes, cur, enum = [], None, None
    docs = []  # the "##" lines waiting for the member below them
    with open(path, encoding="utf-8") as f:
        lines = f.readlines()
    # Classes and enumerations may be named before their declaration.
    for raw in lines:
        m = re.match(r"\s*(class|enum)\s+(\w+)", raw)
        if m and m[1] == "class":
            CLASSES.add(m[2])
        elif m:
            if m[2] in ENUMS:
                raise IdlError(f"{path}: enumeration {m[2]} declared twice")
            ENUMS[m[2]] = []
    for n, raw in enumerate(lines, 1):
        where = f"{path}:{n}"
        stripped = raw.strip()
        if stripped.startswith("##"):
            text = stripped[2:].strip()
            m = re.fullmatch(r"@(\w+)\s+(.+)", text)
            if not text or (text.startswith("@") and not m):
                raise IdlError(f"{where}: cannot read documentation line '{stripped}'")
            docs.append((m[1], m[2]) if m else (None, text))
            continue
        # Only whole-line comments: a default text may contain "#".
        line = "" if raw.lstrip().startswith("#") else stripped
        if not line:
            continue
        if docs and (cur is None or line == "end" or enum is not None):
            raise IdlError(f"{where}: documentation lines with no member below them")
        if enum is not None:
            if line == "end":
                if not ENUMS[enum]:
                    raise IdlError(f"{where}: enumeration {enum} has no members")
                enum = None
            else:
                ENUMS[enum].append(parse_enum_value(line, where))
            continue
        m = re.fullmatch(r"enum\s+(\w+)", line)
        if m:
            if cur:
                raise IdlError(f"{where}: enumeration inside class")
            enum = m[1]
            continue
        m = re.fullmatch(r"class\s+(\w+)((\s+\w+)*)", line)
        if m:
            if cur:
                raise IdlError(f"{where}: class inside class")
            cur = Klass(m[1], m[2].split())
            if cur.stateful and not cur.oncreate:
                raise IdlError(f"{where}: a stateful class needs oncreate to make its state")
            continue
        if line == "end":
            if not cur:
                raise IdlError(f"{where}: end without class")
            classes.append(cur)
            cur = None
            continue
        if not cur:
            raise IdlError(f"{where}: member outside class")
        if re.match(r"event\s", line):
            item = Event(line, where)
            cur.events.append(item)
        else:
            item = Member(line, where, len(cur.members) + 1)
            cur.members.append(item)
        attach_docs(item, docs, where)
        docs = []
    if cur:
        raise IdlError(f"{path}: class {cur.name} has no end")
    if enum is not None:
        raise IdlError(f"{path}: enumeration {enum} has no end")
    return classes


GENERATED_HEADER = [
    "#pragma once",
    "",
    "// Generated from api/orvogeneric.idl by tools/idlgen/idlgen.py; edit those, not this.",
    "",
]


def gen_enums():
    out = GENERATED_HEADER + [
        "#include <cstdint>",
        "",
        "namespace orvo {",
        "",
        "// Shared enumerations of the type library (32-bit signed). They are plain enumerations on",
        "// purpose: callers may pass any Long, and the procedures report values that are not",
        "// members.",
    ]
    for name, members in ENUMS.items():
        out.append(f"enum {name} : std::int32_t {{")
        out += [f"  {m} = {v}," for m, v in members]
        out += ["};", ""]
    out += ["}  // namespace orvo", ""]
    return "\n".join(out)


def gen_header(classes):
    out = GENERATED_HEADER + [
        "#include <cstdint>",
        "#include <functional>",
        "#include <memory>",
        "#include <span>",
        "#include <string_view>",
        "#include <utility>",
        "",
        '#include "orvogeneric/collection.hpp"',
        '#include "orvogeneric/export.hpp"',
        '#include "orvogeneric/types.hpp"',
        '#include "orvogeneric/variant.hpp"',
        "",
        "namespace orvo {",
        "",
    ]
    out += [f"class {c.name};" for c in classes] + [""]
    for c in classes:
        out.append(f"class ORVO_API {c.name} : public Object {{")
        out.append(" public:")
        out.append(f"  {c.name}();")
        if c.events:
            # An object that raises events is one source of them, handed out by reference.
            out.append(f"  {c.name}(const {c.name}&) = delete;")
            out.append(f"  {c.name}& operator=(const {c.name}&) = delete;")
        out.append("  [[nodiscard]] std::string_view className() const noexcept override {")
        out.append(f'    return "{c.name}";')
        out.append("  }")
        for m in c.members:
            if m.doc:
                out.append(f"  // {m.doc}")
                out += [f"  //   {p.name}: {p.doc}" for p in m.params if p.doc and p.name != "RHS"]
            params = ", ".join(p.cpp_decl() for p in m.params)
            if m.kind == "PropertyLet":
                params = f"{m.params[0].cpp_decl().replace(' RHS', ' value')}"
            out.append(f"  {m.cpp_result()} {m.name}({params});")
        for e in c.events:
            # A typed handler over the object's one event listener, on the thread that raises
            # the event; an empty handler removes it.
            if e.doc:
                out.append(f"  // {e.doc}")
            out.append(f"  // Makes handler the object's listener, for {e.name}; an empty one removes it.")
            if e.params:
                out.append(f"  void On{e.name}(std::function<void(std::span<Variant> args)> handler) {{")
                call = "h(args);"
                ignored = "std::span<Variant> args"
            else:
                out.append(f"  void On{e.name}(std::function<void()> handler) {{")
                call = "h();"
                ignored = "std::span<Variant>"
            out.append("    if (!handler) return setEventListener({});")
            out.append(f"    setEventListener([h = std::move(handler)](std::string_view event, {ignored}) {{")
            out.append(f'      if (event == "{e.name}") {call}')
            out.append("    });")
            out.append("  }")
        if c.stateful:
            out.append("")
            out.append("  // The object's own state, defined where the class is implemented.")
            out.append("  struct Impl;")
            out.append("  [[nodiscard]] Impl& impl() const noexcept { return *impl_; }")
        if c.events:
            out.append("")
            out.append(" protected:")
            for e in c.events:
                if e.params:
                    out.append(f"  void Raise{e.name}(std::span<Variant> args) const {{ raiseEvent(\"{e.name}\", args); }}")
                else:
                    out.append(f"  void Raise{e.name}() const {{ raiseEvent(\"{e.name}\", {{}}); }}")
        if c.oncreate:
            out.append("")
            out.append(" private:")
            out.append("  void Class_Initialize();")
        if c.stateful:
            out.append("  std::shared_ptr<Impl> impl_;")
        out.append("};")
        out.append("")
    out.append("}  // namespace orvo")
    out.append("")
    return "\n".join(out)


def cpp_text(text):
    """A narrow string literal of the text (documentation lines are UTF-8)."""
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'


def param_table(name, params):
    """The registry's description of a parameter list (a member's or an event's)."""
    out = [f"const ParamInfo {name}[] = {{"]
    for p in params:
        dflt = f"[] {{ return {variant_default(p)}; }}" if p.default is not None else "nullptr"
        direction = "Direction::InOut" if (p.inout or p.array) else "Direction::In"
        out.append(
            f'    {{"{p.name}", "{p.idl_type}", {direction}, {str(p.optional).lower()}, '
            f"{str(p.default is not None).lower()}, {dflt}, {cpp_text(p.doc)}}},")
    return out + ["};"]


def gen_registry(classes):
    out = [
        "// Generated from api/orvogeneric.idl by tools/idlgen/idlgen.py; edit those, not this.",
        "",
        '#include "automation/coerce.hpp"',
        '#include "frame/state.hpp"',
        '#include "orvogeneric/automation.hpp"',
        '#include "orvogeneric/classes.hpp"',
        "",
        "namespace orvo {",
        "",
    ]
    for c in classes:
        body = "frame::main();" + (" Class_Initialize();" if c.oncreate else "")
        out.append(f"{c.name}::{c.name}() {{ {body} }}")
    out += ["", "}  // namespace orvo", "", "namespace orvo::automation {", "namespace {", ""]
    for c in classes:
        for m in c.members:
            fn = f"{c.name}_{m.name}_{m.kind}"
            out.append(f"Variant {fn}(Object& self, [[maybe_unused]] std::vector<Variant>& a) {{")
            out.append(f"  auto& o = static_cast<{c.name}&>(self);")
            call_args, after = [], []
            for i, p in enumerate(m.params):
                v = f"p{i}"
                if p.array:
                    out.append(f"  SafeArray& {v} = arrayArgument(a[{i}]);")
                    call_args.append(v)
                elif p.type == "Variant":
                    # A Variant needs no coercion: the member works on the argument itself.
                    ref = "Variant&" if p.inout else "const Variant&"
                    out.append(f"  {ref} {v} = a[{i}];")
                    # An optional argument the caller did not pass reaches the member as not
                    # passed (null), as IsMissing tells the original's code.
                    if p.inout and p.optional:
                        call_args.append(f"a[{i}].isMissing() ? nullptr : &{v}")
                    else:
                        call_args.append(v)
                elif p.inout and p.optional:
                    t = p.value_type()
                    out.append(f"  const bool given{i} = !a[{i}].isMissing();")
                    out.append(f"  {t} {v} = given{i} ? coerce<{t}>(a[{i}]) : {t}{{}};")
                    call_args.append(f"given{i} ? &{v} : nullptr")
                    after.append(f"  if (given{i}) a[{i}] = toVariant(std::move({v}));")
                elif p.inout:
                    out.append(f"  {p.value_type()} {v} = coerce<{p.value_type()}>(a[{i}]);")
                    call_args.append(v)
                    after.append(f"  a[{i}] = toVariant(std::move({v}));")
                elif p.value_type() == "String":
                    # The argument list belongs to this call: text passed by value moves.
                    out.append(f"  const String {v} = takeString(a[{i}]);")
                    call_args.append(v)
                else:
                    out.append(f"  const {p.value_type()} {v} = coerce<{p.value_type()}>(a[{i}]);")
                    call_args.append(v)
            call = f"o.{m.name}({', '.join(call_args)})"
            if m.result == "void":
                out.append(f"  {call};")
                out += after
                out.append("  return Variant{};")
            else:
                out.append(f"  auto r = {call};")
                out += after
                out.append("  return toVariant(std::move(r));")
            out.append("}")
            out.append("")
            if m.params:
                out += param_table(f"{fn}_params", m.params) + [""]
        for e in c.events:
            if e.params:
                out += param_table(f"{c.name}_{e.name}_event_params", e.params)
        if c.events:
            out.append(f"const EventInfo {c.name}_events[] = {{")
            for e in c.events:
                params = (f"{c.name}_{e.name}_event_params" if e.params
                          else "std::span<const ParamInfo>{}")
                out.append(f'    {{"{e.name}", {params}, {cpp_text(e.doc)}}},')
            out.append("};")
            out.append("")
        out.append(f"const MemberInfo {c.name}_members[] = {{")
        for m in c.members:
            fn = f"{c.name}_{m.name}_{m.kind}"
            params = f"{fn}_params" if m.params else "std::span<const ParamInfo>{}"
            out.append(f'    {{"{m.name}", MemberKind::{m.kind}, {m.slot}, {params}, "{m.result}", &{fn}, '
                       f"{cpp_text(m.doc)}}},")
        out.append("};")
        out.append("")
    out.append("const ClassInfo kClasses[] = {")
    for c in classes:
        out.append(
            f'    {{"{c.name}", {str(c.is_global).lower()}, {str(c.creatable).lower()}, '
            f"[]() -> std::shared_ptr<Object> {{ return std::make_shared<{c.name}>(); }}, "
            f"{c.name}_members, "
            + (f"{c.name}_events" if c.events else "std::span<const EventInfo>{}") + "},")
    out += ["};", "", "}  // namespace", "",
            "std::span<const ClassInfo> classes() noexcept { return kClasses; }", "",
            "}  // namespace orvo::automation", ""]
    return "\n".join(out)


def write_if_changed(path, text):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    if os.path.exists(path):
        with open(path, encoding="utf-8") as f:
            if f.read() == text:
                os.utime(path)
                return
    with open(path, "w", encoding="utf-8") as f:
        f.write(text)


def main():
    args = [a for a in sys.argv[1:] if a != "--require-docs"]
    if len(args) != 2:
        sys.exit(__doc__)
    try:
        classes = parse(args[0])
    except IdlError as e:
        sys.exit(f"idlgen: {e}")
    missing = undocumented(classes)
    if missing and "--require-docs" in sys.argv:
        sys.exit(f"idlgen: {len(missing)} without a documentation line: " + ", ".join(missing[:20])
                 + (" ..." if len(missing) > 20 else ""))
    outdir = args[1]
    write_if_changed(os.path.join(outdir, "include/orvogeneric/enums.hpp"), gen_enums())
    write_if_changed(os.path.join(outdir, "include/orvogeneric/classes.hpp"), gen_header(classes))
    write_if_changed(os.path.join(outdir, "src/registry_gen.cpp"), gen_registry(classes))


if __name__ == "__main__":
    main()
