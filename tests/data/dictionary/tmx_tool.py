#!/usr/bin/python3
"""A second client of TMX files, through translate-toolkit's own TMX support.
  tmx_tool.py write OUT   writes a memory of three units (one with a single language)
  tmx_tool.py read IN     prints each unit as one JSON object: its variants by language"""
import json
import sys
from translate.storage import tmx


def write(path):
    memory = tmx.tmxfile(sourcelanguage="en-US", targetlanguage="fr-FR")
    memory.addtranslation("Very satisfied", "en-US", "Très satisfait", "fr-FR")
    memory.addtranslation("Line one\nLine two\twith a tab & <b>", "en-US",
                          "Ligne un\nLigne deux\tavec \u05E9 \U0001F600", "fr-FR")
    memory.addtranslation("English only", "en-US", "", "fr-FR")
    with open(path, "wb") as out:
        out.write(bytes(memory))


def read(path):
    memory = tmx.tmxfile.parsefile(path)
    for unit in memory.units:
        variants = {}
        for tuv in unit.xmlelement.iter("{*}tuv"):
            lang = tuv.get("{http://www.w3.org/XML/1998/namespace}lang")
            seg = tuv.find("{*}seg")
            variants[lang] = "".join(seg.itertext()) if seg is not None else ""
        print(json.dumps(variants, ensure_ascii=True, sort_keys=True))


if __name__ == "__main__":
    {"write": write, "read": read}[sys.argv[1]](sys.argv[2])
