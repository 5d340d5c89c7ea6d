"""Every language declares the functions of the public header with their types, and the same version."""

import ctypes
import pathlib
import re
import unittest

import orsanta
from orsanta._library import FUNCTIONS, Double, StationRecord

ROOT = pathlib.Path(__file__).parents[2]
PYTHON = {None: "void", ctypes.c_int: "int", ctypes.c_double: "double", Double: "double*"}
PYTHON[ctypes.POINTER(StationRecord)] = "record*"


def read(path):
    return re.sub(r"/\*.*?\*/|//[^\n]*", "", (ROOT / path).read_text(encoding="utf-8"), flags=re.S)


def functions(text, pattern):
    """name: (result, arguments) of each match, with the types alone."""
    found = {}
    for result, name, arguments in re.findall(pattern, text):
        types = [one.strip().rsplit(" ", 1)[0] for one in arguments.split(",") if one.strip() not in ("", "void")]
        found[name] = (result, types)
    return found


class Declarations(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        header = read("include/orsanta/orsanta.h").replace("const VCM_Resource_struct*", "record*")
        self.header = functions(header, r"ORSANTA_API (\w+) (\w+)\(([^)]*)\)")
        self.record = re.findall(r"int32_t (\w+)(?: = -1)?;", header)
        self.assertEqual(len(self.header), 18)

    def test_python_has_the_functions_and_the_record_of_the_header(self):
        declared = {name: (PYTHON[result], [PYTHON[one] for one in args]) for name, (result, args) in FUNCTIONS.items()}
        self.assertEqual(declared, self.header)
        self.assertEqual([name for name, _ in StationRecord._fields_], list(dict.fromkeys(self.record)))

    def test_csharp_has_the_functions_and_the_record_of_the_header(self):
        source = read("bindings/csharp/Orsanta.cs")
        text = source.replace("[In] StationRecord[]", "record*").replace("out double", "double*")
        self.assertEqual(functions(text, r"static extern (\w+) (\w+)\(([^)]*)\)"), self.header)
        fields = re.search(r"struct StationRecord.*?public int ([^;]*);", source, re.S).group(1)
        self.assertEqual(re.split(r",\s*", fields), list(dict.fromkeys(self.record)))

    def test_the_versions_are_one(self):
        version = re.search(r"project\(orsanta VERSION ([\d.]+)", read("CMakeLists.txt")).group(1)
        self.assertEqual(orsanta.__version__, version)


if __name__ == "__main__":
    unittest.main()
