#!/usr/bin/env python3
"""Times the compiler on each public header.

usage: compile_time.py REPORT

Beside a header stand its limit, the standard headers that it includes itself or
through other headers of the library, and what abseil, Boost or fmt offer for the
same job. The report has the form of the benchmarks' reports; a table of the
headers that most programs include anyway goes to the standard output.
"""

import concurrent.futures
import json
import os
import pathlib
import re
import statistics
import subprocess
import sys
import tempfile

REPETITIONS = 5
INCLUDE = pathlib.Path(__file__).resolve().parent.parent / "include"
COMPILER = ["g++", "-std=c++17", "-O2", "-fsyntax-only", f"-I{INCLUDE}", "-xc++"]

ABSL_STRINGS = [
    f"absl/strings/{name}.h" for name in ("ascii", "match", "numbers", "str_join", "str_replace", "str_split", "strip")
]
ABSL_FORMAT = ["absl/strings/str_cat.h", "absl/strings/str_format.h"]
ABSL_TIME = ["absl/time/clock.h", "absl/time/time.h"]
ABSL_LOCKS = ["absl/synchronization/mutex.h"]
ABSL_STACKTRACE = ["absl/debugging/stacktrace.h", "absl/debugging/symbolize.h"]
BOOST_PATH = ["boost/filesystem.hpp"]

PEERS = {
    "byte_order": {"boost": ["boost/endian/conversion.hpp"]},
    "condition": {"absl": ABSL_LOCKS},
    "format": {"absl": ABSL_FORMAT, "fmt": ["fmt/printf.h"]},
    "lock": {"absl": ABSL_LOCKS},
    "path": {"boost": BOOST_PATH, "std": ["filesystem"]},
    "scope_lock": {"absl": ABSL_LOCKS},
    "stacktrace": {"absl": ABSL_STACKTRACE},
    "strings": {"absl": ABSL_STRINGS},
    "thread_safe_ostream": {"spdlog": ["spdlog/spdlog.h"]},
    "time_value": {"absl": ABSL_TIME, "fmt": ["fmt/chrono.h"]},
    "uuid": {"boost": ["boost/uuid/uuid.hpp", "boost/uuid/uuid_io.hpp"]},
    "orvo": {"absl": ABSL_STRINGS + ABSL_FORMAT + ABSL_TIME + ABSL_LOCKS + ABSL_STACKTRACE},
}
FAMILIAR = [["string"], ["vector"], ["iostream"], ["regex"], ["filesystem"]]


def run_compiler(headers, *options):
    """Compiles a file of these headers; returns (processor seconds, messages)."""
    with tempfile.TemporaryFile() as messages, tempfile.NamedTemporaryFile("w", suffix=".cpp") as source:
        source.writelines(f"#include <{header}>\n" for header in headers)
        source.flush()
        process = subprocess.Popen([*COMPILER, *options, source.name], stderr=messages)
        _, status, usage = os.wait4(process.pid, 0)
        messages.seek(0)
        text = messages.read().decode()
        if status != 0:
            sys.exit(f"compile_time.py: {' '.join(headers)}: {text}")
        return usage.ru_utime + usage.ru_stime, text


def system_folders():
    listing = subprocess.run(
        ["g++", "-xc++", "-E", "-v", os.devnull], capture_output=True, text=True, check=True
    ).stderr
    return [os.path.realpath(folder) for folder in re.findall(r"^ (/\S+)$", listing, re.MULTILINE)]


def foreign_headers(header, folders):
    """The headers of others that the library's headers include for this one."""
    found = []
    parents = [str(INCLUDE)]
    for dots, path in re.findall(r"^(\.+) (.+)$", run_compiler([header], "-H")[1], re.MULTILINE):
        path = os.path.realpath(path)
        parents[len(dots) :] = [path]
        if parents[len(dots) - 1].startswith(str(INCLUDE)) and not path.startswith(str(INCLUDE)):
            folder = max((folder for folder in folders if path.startswith(folder)), key=len)
            found.append(os.path.relpath(path, folder))
    return found


def contenders():
    """Returns {(header or "", who): headers}."""
    folders = system_folders()
    files = {("", headers[0]): headers for headers in FAMILIAR}
    for path in sorted(INCLUDE.glob("orvo/*.h")):
        header = f"orvo/{path.name}"
        files[path.stem, "orvo"] = [header]
        files[path.stem, "limit"] = foreign_headers(header, folders)
        for who, headers in PEERS.get(path.stem, {}).items():
            files[path.stem, who] = headers
    return files


def main():
    files = contenders()
    times = {key: [] for key in files}
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for _ in range(REPETITIONS):
            for key, (time, _) in zip(files, pool.map(run_compiler, files.values())):
                times[key].append(time)

    runs = [
        {"name": f"compile/{header}/{who}/1", "cpu_time": time, "time_unit": "s"}
        for (header, who), all_times in times.items()
        if header
        for time in all_times
    ]
    pathlib.Path(sys.argv[1]).write_text(json.dumps({"benchmarks": runs}, indent=1) + "\n")

    print("| header alone | time |\n|---|--:|")
    for who, all_times in [("orvo/orvo.h", times["orvo", "orvo"])] + [
        (headers[0], times["", headers[0]]) for headers in FAMILIAR
    ]:
        print(f"| `<{who}>` | {statistics.median(all_times) * 1000:.0f} ms |")


if __name__ == "__main__":
    main()
