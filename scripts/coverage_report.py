# usage: coverage_report.py LINES.json
# Prints the shares of folders, of files that are below 95 %, and the lines that were not reached.
import collections
import json
import sys


def ranges(lines):
    """1, 2, 3, 7 -> "1-3, 7"."""
    runs = []
    for line in sorted(lines):
        if runs and line == runs[-1][1] + 1:
            runs[-1][1] = line
        else:
            runs.append([line, line])
    return ", ".join(str(a) if a == b else f"{a}-{b}" for a, b in runs)


def share(reached, all_lines):
    return f"{100 * reached / max(1, all_lines):5.1f} % of {all_lines:6}"


files = {}
for file in json.load(open(sys.argv[1]))["files"]:
    counts = {}
    for line in file["lines"]:
        if not line.get("gcovr/noncode"):
            counts[line["line_number"]] = counts.get(line["line_number"], 0) + line["count"]
    if counts:
        files[file["file"]] = counts

folders = collections.defaultdict(lambda: [0, 0])
for name, counts in files.items():
    for folder in (name.split("/")[1], "all"):
        folders[folder][0] += sum(1 for count in counts.values() if count)
        folders[folder][1] += len(counts)
for folder, (reached, all_lines) in sorted(folders.items()):
    print(f"{share(reached, all_lines)}  {folder}")
print()
for name, counts in sorted(files.items()):
    missed = [line for line, count in counts.items() if not count]
    if missed:
        print(f"{share(len(counts) - len(missed), len(counts))}  {name}: {ranges(missed)}")
