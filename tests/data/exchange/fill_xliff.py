#!/usr/bin/python3
"""Fills an XLIFF 1.2 file as a translation tool would, through translate-toolkit's own API:
every unit without a target gets one. Units whose id is listed as ID=TEXT get exactly TEXT;
the others get "T:" followed by their source. Prints the number of units filled.
Usage: fill_xliff.py IN OUT [ID=TEXT ...] (TEXT may use \\n, \\t and \\uXXXX escapes)"""
import sys
from translate.storage import xliff

given = {}
for argument in sys.argv[3:]:
    key, text = argument.split("=", 1)
    given[key] = text.encode("ascii").decode("unicode_escape")

store = xliff.xlifffile.parsefile(sys.argv[1])
filled = 0
for unit in store.units:
    unit_id = unit.xmlelement.get("id")
    if unit.target and unit_id not in given:
        continue
    unit.target = given.get(unit_id, "T:" + (unit.source or ""))
    filled += 1
store.savefile(sys.argv[2])
print(filled)
