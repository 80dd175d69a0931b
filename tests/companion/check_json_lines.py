#!/usr/bin/env python3
"""Holds JSON lines (the second file) against a schema (the first). Exit code 77 where there is no validator."""

import json
import sys

try:
    from jsonschema import Draft202012Validator
except ImportError:
    sys.exit(77)

with open(sys.argv[1], encoding="utf-8") as file:
    schema = json.load(file)
Draft202012Validator.check_schema(schema)
validator = Draft202012Validator(schema)
faults = 0
with open(sys.argv[2], encoding="utf-8") as lines:
    for line in lines:
        try:
            problem = next(validator.iter_errors(json.loads(line)), None)
        except ValueError as error:
            problem = error
        if problem is not None:
            faults += 1
            print(f"{getattr(problem, 'message', problem)}\n  in {line[:300].rstrip()}")
sys.exit(1 if faults else 0)
