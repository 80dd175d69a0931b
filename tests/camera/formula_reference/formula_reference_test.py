#!/usr/bin/env python3
"""Holds the nodes' formulas against GenApi's reference implementation, which is installed into a folder of its own:
random formulas are worked out alike, and the reference does what the table of differences says of it.
    formula_reference_test.py FORMULA_ANSWERS FOLDER"""
import math
import pathlib
import random
import subprocess
import sys
from xml.sax.saxutils import escape

sys.dont_write_bytecode = True  # the sources' folder stays as it is
sys.path.insert(1, str(pathlib.Path(__file__).parent.parent))
# pylint: disable=wrong-import-position
from yardstick import install

FORMULAS = 6000
AT_ONCE = 2000  # formulas of one description
HEAD = """<?xml version="1.0" encoding="utf-8"?>
<RegisterDescription ModelName="Formulas" VendorName="None" ToolTip="" StandardNameSpace="None"
 SchemaMajorVersion="1" SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0"
 SubMinorVersion="0" ProductGuid="00000000-0000-0000-0000-000000000001"
 VersionGuid="00000000-0000-0000-0000-000000000002" xmlns="http://www.genicam.org/GenApi/Version_1_1">
<Category Name="Root"></Category>"""
SIGNS = "+ - * / % & | ^ << >> = <> < > <= >= && ||".split()


def random_operand(chance):
    literal = chance.choice("0 1 2 3 5 7 12 0xFF".split())
    return chance.choice([literal] * 6 + [f"(-{literal})", f"(~{literal})", f"{literal}**{chance.choice('0123')}"])


def random_formula(chance, depth):
    """Without what the table of differences names, as far as the text can tell it."""
    if depth == 0:
        return random_operand(chance)
    left, right = random_formula(chance, depth - 1), random_formula(chance, depth - 1)
    if chance.random() < 0.1:
        return f"({left})"
    if chance.random() < 0.1:
        return f"{left}?({right}):{random_formula(chance, depth - 1)}"
    return left + chance.choice(SIGNS) + right


def answers_of_reference(formulas):
    from genicam import genapi
    nodes = "".join(f'<SwissKnife Name="R{i}"><Formula>{escape(text)}</Formula></SwissKnife>'
                    f'<IntSwissKnife Name="I{i}"><Formula>{escape(text)}</Formula></IntSwissKnife>\n'
                    for i, text in enumerate(formulas))
    camera = genapi.NodeMap()
    camera.load_xml_from_string(f'{HEAD}{nodes}<Port Name="Device"/></RegisterDescription>')
    return [[value(camera, f"{kind}{i}") for kind in "RI"] for i in range(len(formulas))]


def value(camera, name):
    try:
        return str(camera.get_node(name).value)
    except Exception:  # pylint: disable=broad-except  # each refusal has a class of its own
        return "error"


def same(ours, theirs):
    if "error" in (ours, theirs):
        return ours == theirs
    ours, theirs = float(ours), float(theirs)
    return ours == theirs or math.isclose(ours, theirs, rel_tol=1e-12) or math.isnan(ours) and math.isnan(theirs)


def compare(lines, may_refuse):
    """How many results are the same numbers, and how many are not."""
    formulas = [line[0] for line in lines]
    theirs = [answer for start in range(0, len(formulas), AT_ONCE)
              for answer in answers_of_reference(formulas[start:start + AT_ONCE])]
    equal, wrong = 0, 0
    for line, answer in zip(lines, theirs):
        for ours, other, kind in zip(line[1:], answer, ("real", "integer")):
            if same(ours, other):
                equal += ours != "error"
            elif not (may_refuse and "error" in (ours, other)):
                wrong += 1
                print(f"{line[0]!r} ({kind}): {ours} here, {other} of the reference")
    return equal, wrong


def main():
    program = sys.argv[1]
    reason = install(sys.argv[2])
    if reason:
        print(f"SKIPPED: {reason}")
        return 0
    chance = random.Random(20)
    texts = [random_formula(chance, chance.choice((1, 2, 3))) for _ in range(FORMULAS)]
    printed = subprocess.run([program], input="\n".join(texts) + "\n", capture_output=True, text=True, check=True)
    lines = [line.split("\t") for line in printed.stdout.splitlines()]
    table, formulas = lines[:-FORMULAS], lines[-FORMULAS:]
    _, wrong_rows = compare(table, may_refuse=False)
    equal, wrong = compare(formulas, may_refuse=True)
    print(f"{len(table)} rows of differences, {wrong_rows} of them wrong; {FORMULAS} formulas twice, {equal} numbers "
          f"alike, {wrong} not")
    return int(wrong_rows > 0 or wrong > 0 or len(table) < 40 or equal < FORMULAS)


sys.exit(main())
