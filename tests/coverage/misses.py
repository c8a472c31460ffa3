"""Prints the lines and branches of a gcovr JSON report that were not reached."""

import json
import sys

for file in json.load(open(sys.argv[1]))["files"]:
    source = open(file["file"]).read().split("\n")
    for line in file["lines"]:
        if line.get("gcovr/noncode") or line.get("gcovr/excluded"):
            continue
        missed = [str(number) for number, branch in enumerate(line["branches"], 1)
                  if branch["count"] == 0]
        if line["count"] == 0:
            what = "not reached"
        elif missed:
            what = f"branch {', '.join(missed)} of {len(line['branches'])} not taken"
        else:
            continue
        number = line["line_number"]
        print(f"{file['file']}:{number}: {what}: {source[number - 1].strip()}")
