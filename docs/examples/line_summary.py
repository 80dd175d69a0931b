#!/usr/bin/env python3
"""What of a line needs a person: reads the objects of `iefeatures line check FILE --json`.

    line_summary.py hall.toml
"""

import json
import subprocess
import sys


def objects(inventory):
    """The objects of one check, one a line; the last one has the exit code."""
    command = ["iefeatures", "line", "check", inventory, "--json"]
    run = subprocess.run(command, stdout=subprocess.PIPE, text=True, encoding="utf-8", check=False)
    for line in run.stdout.splitlines():
        found = json.loads(line)
        if found["format_version"] != 1:
            sys.exit(f"format_version {found['format_version']} is not known here")
        yield found


def name_of(camera):
    if camera["name"] is not None:
        return camera["name"]
    return f"{camera['camera']['model']} {camera['camera']['serial']}"


def main():
    for found in objects(sys.argv[1]):
        if found["kind"] == "end":
            print("\n".join(found["messages"]), end="")
            return found["exit"]
        if found["kind"] != "line" or found["state"] == "in order":
            continue
        print(f"{name_of(found)}: {found['state']}")
        if found["reason"]:
            print(f"  {found['reason']}")
        for difference in found["differences"]:
            print(f"  {difference['what']}: {difference['found']}, should be {difference['expected']}")
        for feature in found["features"]:
            print(f"  {feature['feature']}: {feature['camera']}, should be {feature['file']}")
    return 1


if __name__ == "__main__":
    sys.exit(main())
