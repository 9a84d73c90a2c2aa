#!/usr/bin/env python3
"""The interface generator on small descriptions: enumerations, events, and the mistakes it
must refuse rather than turn into C++ that fails to compile far from the cause."""
import os
import subprocess
import sys
import tempfile
import unittest

IDLGEN = os.path.join(os.path.dirname(__file__), "../../tools/idlgen/idlgen.py")


def generate(text, *options):
    with tempfile.TemporaryDirectory() as work:
        idl = os.path.join(work, "t.idl")
        with open(idl, "w", encoding="utf-8") as f:
            f.write(text)
        run = subprocess.run([sys.executable, IDLGEN, *options, idl, work], capture_output=True,
                             text=True)
        if run.returncode != 0:
            return None, run.stderr
        out = {}
        for rel in ("include/orvogeneric/enums.hpp", "include/orvogeneric/classes.hpp",
                    "src/registry_gen.cpp"):
            with open(os.path.join(work, rel), encoding="utf-8") as f:
                out[rel.rsplit("/", 1)[1]] = f.read()
        return out, ""


GOOD = """
enum enumSpeed
  Slow = -1
  Fast = 2147483647
end
class Clock creatable
  Long Tick(enumSpeed Speed = Fast)
  event Timer()
  event Progress(Long Done, String Stage)
end
"""


class Generated(unittest.TestCase):
    def test_enumerations_keep_their_values_and_serve_as_types_and_defaults(self):
        out, err = generate(GOOD)
        self.assertIsNotNone(out, err)
        self.assertIn("enum enumSpeed : std::int32_t {\n  Slow = -1,\n  Fast = 2147483647,\n};",
                      out["enums.hpp"])
        self.assertIn("std::int32_t Tick(enumSpeed Speed = Fast);", out["classes.hpp"])
        self.assertIn("static_cast<std::int32_t>(Fast)", out["registry_gen.cpp"])

    def test_events_are_registered_with_their_parameters_and_take_no_slot(self):
        out, err = generate(GOOD)
        self.assertIsNotNone(out, err)
        reg = out["registry_gen.cpp"]
        self.assertIn('{"Timer", std::span<const ParamInfo>{}, ""},', reg)
        self.assertIn('{"Progress", Clock_Progress_event_params, ""},', reg)
        self.assertIn('{"Done", "Long", Direction::In, false, false, nullptr, ""},', reg)
        self.assertIn('{"Tick", MemberKind::Method, 1,', reg)
        self.assertIn("Clock_members, Clock_events}", reg)

    def test_a_class_without_events_has_an_empty_list(self):
        out, err = generate("class A creatable\n  Long B()\nend\n")
        self.assertIsNotNone(out, err)
        self.assertIn("A_members, std::span<const EventInfo>{}}", out["registry_gen.cpp"])


DOCUMENTED = '''
class Clock creatable
  ## Ticks once; the "speed" picks how far.
  ## @Speed how fast, in C:\\ticks
  Long Tick(Long Speed)
  ## The clock's name.
  get String Name
  ## Renames the clock.
  let String Name
  ## Raised at each tick.
  ## @Done how many so far
  event Progress(Long Done)
end
'''


class Documented(unittest.TestCase):
    def test_each_line_reaches_the_header_and_the_registry_escaped(self):
        out, err = generate(DOCUMENTED, "--require-docs")
        self.assertIsNotNone(out, err)
        self.assertIn('  // Ticks once; the "speed" picks how far.\n  //   Speed: how fast, in '
                      'C:\\ticks\n  std::int32_t Tick(', out["classes.hpp"])
        reg = out["registry_gen.cpp"]
        self.assertIn('nullptr, "how fast, in C:\\\\ticks"},', reg)
        self.assertIn('&Clock_Tick_Method, "Ticks once; the \\"speed\\" picks how far."},', reg)
        self.assertIn('{"RHS", "String", Direction::In, false, false, nullptr, "the new value"}',
                      reg)
        self.assertIn('{"Progress", Clock_Progress_event_params, "Raised at each tick."}', reg)

    def test_a_missing_line_is_refused_only_when_required(self):
        text = "class A creatable\n  ## Does B.\n  Long B(Long X, Long Y)\n  Long C()\nend\n"
        out, err = generate(text)
        self.assertIsNotNone(out, err)
        out, err = generate(text, "--require-docs")
        self.assertIsNone(out)
        self.assertIn("3 without a documentation line: A.B(X), A.B(Y), A.C", err)

    MISTAKES = [
        ("two member lines", "class A\n  ## One.\n  ## Two.\n  Long B()\nend\n",
         "has 2 documentation lines"),
        ("a parameter that is not there", "class A\n  ## B.\n  ## @Z z\n  Long B(Long X)\nend\n",
         "are not its parameters"),
        ("parameters out of order",
         "class A\n  ## B.\n  ## @Y y\n  ## @X x\n  Long B(Long X, Long Y)\nend\n",
         "in order"),
        ("a line with nothing below", "class A\n  Long B()\n  ## Orphan.\nend\n",
         "no member below"),
        ("an empty line", "class A\n  ##\n  Long B()\nend\n", "cannot read documentation"),
        ("a parameter without text", "class A\n  ## @X\n  Long B(Long X)\nend\n",
         "cannot read documentation"),
    ]

    def test_each_misplaced_line_names_itself(self):
        for name, text, message in self.MISTAKES:
            with self.subTest(name):
                out, err = generate(text)
                self.assertIsNone(out)
                self.assertIn(message, err)


class Refused(unittest.TestCase):
    CASES = [
        ("enumeration without end", "enum E\n  A = 1\n", "has no end"),
        ("empty enumeration", "enum E\nend\n", "has no members"),
        ("enumeration declared twice", "enum E\n  A = 1\nend\nenum E\n  B = 2\nend\n",
         "declared twice"),
        ("value beyond 32 bits", "enum E\n  A = 2147483648\nend\n", "does not fit 32 bits"),
        ("member without value", "enum E\n  A\nend\n", "cannot read enumeration member"),
        ("enumeration in a class", "class C\n  enum E\nend\n", "enumeration inside class"),
        ("optional event parameter", "class C\n  event E(optional Long X = 1)\nend\n",
         "cannot be optional"),
        ("event outside a class", "event E()\n", "member outside class"),
        ("unknown enumeration used", "class C\n  Long F(enumNone X)\nend\n", "unknown type"),
    ]

    def test_each_mistake_names_itself(self):
        for name, text, message in self.CASES:
            with self.subTest(name):
                out, err = generate(text)
                self.assertIsNone(out)
                self.assertIn(message, err)


if __name__ == "__main__":
    unittest.main()
