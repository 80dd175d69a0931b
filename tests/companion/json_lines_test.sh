#!/usr/bin/env bash
# Objects for scripts that programs under Wine have left, held against the schema.
# usage: json_lines_test.sh CHECK_JSON_LINES.py SCHEMA FOLDER
set -euo pipefail
check=$1 schema=$2 folder=$3
failed=0 count=0
for file in "$folder"/*.jsonl; do
    [ -s "$file" ] || continue
    code=0
    python3 "$check" "$schema" "$file" || code=$?
    [ "$code" -ne 77 ] || { echo "SKIPPED: no python3-jsonschema, so no object was held against the schema"; exit 0; }
    [ "$code" -eq 0 ] || { printf 'FAILED: %s\n' "$file" >&2; failed=1; }
    count=$((count + 1))
done
printf '%d programs have printed objects\n' "$count"
[ "$count" -gt 0 ] && [ "$failed" -eq 0 ]
