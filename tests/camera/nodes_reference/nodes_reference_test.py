#!/usr/bin/env python3
"""Holds the camera library's evaluation of nodes against GenApi's reference implementation, which is installed into
a folder of its own: over the description with every kind of node, the emulator's own one, and those that the folder
KX_DESCRIPTIONS has.
    nodes_reference_test.py NODES_DUMP EVERY_NODE_KIND FOLDER"""
import collections
import json
import os
import pathlib
import re
import subprocess
import sys

sys.dont_write_bytecode = True  # the sources' folder stays as it is
# pylint: disable=wrong-import-position
import comparison
import meant
import reference

sys.path.insert(1, str(pathlib.Path(__file__).parent.parent))
from yardstick import install

SHOWN = 10  # differences of one description

# What the two descriptions have against the schema on purpose, and the reference therefore refuses to read.
OWN_REPAIRS = [
    (r"\s*<Group Comment=\"(circles|against the schema)[^>]*>.*?</Group>", ""),
    (r"\s*<EnumEntry Name=\"Lost\">.*?</EnumEntry>", ""),
    (r"<pInvalidator>[^<]*</pInvalidator>", ""),
    (r"(<StructReg [^>]*?) Name=\"\w+\"", r"\1"),
    (r"<Value>0<pSelected>ScratchValue</pSelected></Value>", "<Value>0</Value>"),
    (r"<pLength>WideLength</pLength>", "<Length>8</Length>"),
    (r"<pMax>OffsetMax</pMax>", "<Max>960</Max>"),  # values decide both bounds; the reference sees a circle
]


def compare(dump, file, xml, folder):
    from genicam import genapi
    copy = folder / file
    copy.write_text(xml, encoding="utf-8", errors="surrogateescape")
    printed = subprocess.run([dump, copy], capture_output=True, text=True, check=True).stdout
    lines = [json.loads(line) for line in printed.splitlines()]
    answers = reference.Reference(genapi, xml).answers(lines)
    return len(lines), list(comparison.differences(file, xml, lines, answers))


def report(file, asked, found, occurred):
    """The number of differences that are not meant."""
    rows = [meant.row_of(difference) for difference in found]
    occurred.update(row.name for row in rows if row)
    unmeant = [difference for difference, row in zip(found, rows) if not row]
    print(f"{file}: {asked} states and writes, {len(found) - len(unmeant)} differences that are meant, "
          f"{len(unmeant)} that are not", flush=True)
    for difference in unmeant[:SHOWN]:
        print("   ", *difference._replace(file="", source=""))
    return len(unmeant)


def own_descriptions(dump, every_node_kind):
    texts = {"every_node_kind.xml": pathlib.Path(every_node_kind).read_text(encoding="utf-8"),
             "emulator.xml": subprocess.run([dump], capture_output=True, text=True, check=True).stdout}
    for file, xml in texts.items():
        for pattern, replacement in OWN_REPAIRS:
            xml = re.sub(pattern, replacement, xml, flags=re.DOTALL)
        yield file, xml


def real_descriptions():
    folder = os.environ.get("KX_DESCRIPTIONS")
    if not folder:
        print("SKIPPED the real descriptions: KX_DESCRIPTIONS names no folder")
        return
    for path in sorted(pathlib.Path(folder).glob("*.xml")):
        yield path.name, path.read_text(encoding="utf-8", errors="surrogateescape")


def main():
    dump, every_node_kind, folder = sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3])
    folder.mkdir(parents=True, exist_ok=True)
    reason = install(folder)
    if reason:
        print(f"SKIPPED: {reason}")
        return 0
    occurred = collections.Counter()
    unmeant = 0
    for file, xml in own_descriptions(dump, every_node_kind):
        unmeant += report(file, *compare(dump, file, xml, folder), occurred)
    missing = [row.name for row in meant.ROWS if row.name not in occurred]
    for name in missing:
        print(f"no difference any more in the descriptions that are always compared: {name}")
    for file, xml in real_descriptions():
        unmeant += report(file, *compare(dump, file, xml, folder), occurred)
    return 1 if unmeant or missing else 0


if __name__ == "__main__":
    sys.exit(main())
