"""Flips and removes the library's conditional jumps, one at a time, and runs
the tests against each copy of the library.

A mutant is killed when a test fails, crashes or runs out of time. One that
survives is a branch that no test needs, unless survivors.txt explains it.
"""

import argparse
import collections
import concurrent.futures
import json
import os
import pathlib
import queue
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time

NOP = 0x90
MEMORY = 8 << 30  # enough for every test, too little for an endless loop
FILE_SIZE = 8 << 30
# These look at the build, not at what the library does.
NOT_BEHAVIOUR = re.compile(
    r"headers|package|exported_symbols|rejects_|thread_safety|missing_tools|hardening"
)


class Jump:
    """A conditional jump of the library."""

    def __init__(self, source, line, text, offset, code):
        self.source, self.line, self.text = source, line, text
        self.offset, self.code = offset, code

    def mutants(self):
        flipped = bytearray(self.code)
        flipped[1 if flipped[0] == 0x0F else 0] ^= 1
        yield Mutant(self, "flipped", bytes(flipped))
        yield Mutant(self, "removed", bytes([NOP] * len(self.code)))


class Mutant:
    def __init__(self, jump, kind, code):
        self.jump, self.kind, self.code = jump, kind, code

    def is_explained(self, explanations):
        key = f"{self.jump.source}: {self.jump.text}"
        return key in explanations or f"{key} ({self.kind})" in explanations

    def __str__(self):
        jump = self.jump
        return f"{jump.source}:{jump.line} {self.kind} at {jump.offset:#x}: {jump.text}"


class Test:
    def __init__(self, entry):
        self.name = entry["name"]
        self.command = entry["command"]
        self.seconds = 0.0
        self.kills = collections.Counter()  # by source


def text_section(library):
    """Where the code stands in the file, relative to its addresses."""
    listing = subprocess.run(["readelf", "-SW", library], check=True,
                             capture_output=True, text=True).stdout
    match = re.search(r"\s\.text\s+PROGBITS\s+(\w+)\s+(\w+)", listing)
    return int(match[2], 16) - int(match[1], 16)


def find_jumps(library, root):
    """The conditional jumps that the project's own sources were compiled to."""
    shift = text_section(library)
    lines = {}
    source, number, jumps, is_written = None, 0, [], False
    previous = ""
    with subprocess.Popen(["objdump", "-dlw", "-j", ".text", library],
                          stdout=subprocess.PIPE, text=True) as listing:
        for row in listing.stdout:
            function = re.match(r"\w+ <(.*)>:$", row)
            if function:
                # No source has the jumps that start the globals of a file.
                is_written = "__static_initialization_and_destruction" not in function[1]
            place = re.match(r"(/.*):(\d+)(?: \(discriminator \d+\))?$", row)
            if place:
                path = pathlib.Path(os.path.normpath(place[1]))
                source = path if path.is_relative_to(root / "src") else None
                number = int(place[2])
                continue
            code = re.match(r"\s+(\w+):\s((?:[0-9a-f]{2} )+)\s*(j\w+)\s", row)
            guards_stack, previous = "%fs:0x28" in previous, row
            if not is_written or not source or not code or code[3].startswith("jmp") or guards_stack:
                continue
            if source not in lines:
                lines[source] = source.read_text().split("\n")
            text = lines[source][number - 1].strip()
            jumps.append(Jump(str(source.relative_to(root)), number, text,
                              int(code[1], 16) + shift,
                              bytes.fromhex(code[2])))
    return jumps


def find_tests(build, only):
    listing = subprocess.run(["ctest", "--test-dir", build, "--show-only=json-v1"],
                             check=True, capture_output=True, text=True).stdout
    return [Test(entry) for entry in json.loads(listing)["tests"]
            if not NOT_BEHAVIOUR.match(entry["name"]) and re.match(only, entry["name"])]


def limit_resources():
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_FSIZE, (FILE_SIZE, FILE_SIZE))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def passes(test, folder, seconds, output=subprocess.DEVNULL):
    """Whether a test accepts the library in the folder; None if it takes too
    long to tell."""
    environment = dict(os.environ, LD_LIBRARY_PATH=str(folder), TMPDIR=str(folder / "tmp"),
                       GTEST_FAIL_FAST="1", GTEST_BRIEF="1")
    process = subprocess.Popen(test.command, cwd=folder / "work", env=environment,
                               stdin=subprocess.DEVNULL, stdout=output, stderr=output,
                               start_new_session=True, preexec_fn=limit_resources)
    try:
        return process.wait(seconds) == 0
    except subprocess.TimeoutExpired:
        return None
    finally:
        # What a test has started may outlive it.
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        process.wait()


def make_folders(folder):
    """Empty ones, because a mutant may leave anything behind."""
    for name in "work", "tmp":
        shutil.rmtree(folder / name, ignore_errors=True)
        (folder / name).mkdir(parents=True)


def stem(path):
    return pathlib.Path(path).stem


def order(tests, source):
    """What has killed most in the source so far, then the tests named after it,
    then the others, the quickest first."""
    return sorted(tests, key=lambda test: (-test.kills[source],
                                           not test.name.startswith(stem(source)),
                                           test.seconds))


def killer(mutant, image, tests, folder):
    """The test that notices the mutant and how it does; None if none does."""
    changed = bytearray(image)
    offset = mutant.jump.offset
    changed[offset:offset + len(mutant.code)] = mutant.code
    # A new file each time, because an ended test's child may still run the old.
    library = folder / "liborvo.so.1"
    library.unlink(missing_ok=True)
    library.write_bytes(changed)
    make_folders(folder)
    for test in order(tests, mutant.jump.source):
        passed = passes(test, folder, 5 + 10 * test.seconds)
        if not passed:
            test.kills[mutant.jump.source] += 1
            return test.name, "fails" if passed is False else "takes too long"
    return None


def read_explained(path):
    """Lines of the form "FILE: SOURCE LINE", with " (flipped)" or " (removed)"
    behind it if that is true of one kind of mutant only, below a comment that
    says why."""
    rows = path.read_text().split("\n")
    return {row for row in rows if row and not row.startswith("#")}


def read_options():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("library", type=pathlib.Path)
    parser.add_argument("tests", help="build tree with the tests")
    parser.add_argument("--root", type=pathlib.Path, help="folder that holds src/",
                        default=pathlib.Path(__file__).resolve().parents[2])
    parser.add_argument("--explained", type=pathlib.Path,
                        default=pathlib.Path(__file__).with_name("survivors.txt"))
    parser.add_argument("--sample", type=int, help="number of mutants to draw")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--source", help="only the jumps of this source")
    parser.add_argument("--only", default="", help="only the tests of names like this")
    parser.add_argument("--least", type=float, default=98.0, help="per cent to kill")
    parser.add_argument("--verbose", action="store_true", help="say what kills each mutant")
    return parser.parse_args()


def choose_mutants(options):
    mutants = [mutant for jump in find_jumps(options.library, options.root.resolve())
               for mutant in jump.mutants()
               if options.source in (None, jump.source)]
    if options.sample:
        random.seed(options.seed)
        mutants = random.sample(mutants, min(options.sample, len(mutants)))
    return mutants


def find_killers(mutants, image, tests):
    """Yields what killer() returns for each mutant in turn."""
    with tempfile.TemporaryDirectory() as name:
        os.chmod(name, 0o755)  # some tests give up the rights of root
        folders = queue.SimpleQueue()
        for worker in range(os.cpu_count()):
            folder = pathlib.Path(name) / str(worker)
            make_folders(folder)
            (folder / "liborvo.so.1").write_bytes(image)
            folders.put(folder)

        for test in tests:
            start = time.monotonic()
            if not passes(test, folder, 600, None):
                sys.exit(f"{test.name} fails without any mutant")
            test.seconds = time.monotonic() - start

        def judge(mutant):
            folder = folders.get()
            try:
                return killer(mutant, image, tests, folder)
            finally:
                folders.put(folder)

        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            yield from pool.map(judge, mutants)


def report(mutants, killers, explanations, options):
    """Lists the survivors and the figures; says whether these suffice."""
    unexplained, explained, slow = 0, 0, 0
    for mutant, found in zip(mutants, killers):
        if not found and mutant.is_explained(explanations):
            explained += 1
            if options.verbose:
                print(f"survived, explained: {mutant}", flush=True)
        elif not found:
            unexplained += 1
            print(f"survived: {mutant}", flush=True)
        else:
            slow += found[1] != "fails"
            if options.verbose or found[1] != "fails":
                print(f"{found[0]} {found[1]}: {mutant}", flush=True)
    killed = len(mutants) - unexplained - explained
    score = 100 * killed / max(killed + unexplained, 1)
    raw = 100 * killed / max(len(mutants), 1)
    print(f"{killed} of {len(mutants)} mutants killed, {slow} of them by the clock; "
          f"{explained} survivors are explained, {unexplained} are not: "
          f"{score:.1f} % ({raw:.1f} % of all)")
    return killed > 0 and score >= options.least


def main():
    options = read_options()
    mutants = choose_mutants(options)
    tests = find_tests(options.tests, options.only)
    killers = find_killers(mutants, options.library.read_bytes(), tests)
    sys.exit(not report(mutants, killers, read_explained(options.explained), options))


if __name__ == "__main__":
    main()
