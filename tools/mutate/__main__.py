"""Breaks the library in small ways, one at a time, and sees whether a test fails.

mutate [FOLDER|FILE]... [--max COUNT] [--first] [--again] [--jobs COUNT] [--list]

Works in copies of the tree, build/mutate. A change that does not compile is no change and is not
counted; nor is one of which the compiler makes the same program. Each other one meets the tests of its
file first, then, if it lives, all tests that run the library; one that outlives them must be listed in
tools/mutate/equivalent.txt with the reason why no test can see it. Changes listed there are counted as
survivors, and not run.

What came of each change is kept in build/mutate/outcomes.jsonl, and a run goes on from there: a change is
tried again when its file has changed, and one that nothing caught also when anything else has. --again
forgets it all.
"""
import argparse
import collections
import hashlib
import json
import os
import queue
import re
import subprocess
import sys
import threading
import time

from changes import FOLDERS, ROOT, equivalent, generate
from suites import ALL_TESTS, FIRST_TESTS, NATIVE_ONLY, WORK, NoProgram, Runner, Suite, copy_tree

NO_PROGRAM = "no program"
SAME = "the same program"
ALIVE = "got past the tests of its own file"
SURVIVES = "SURVIVES"


def log(*words, **options):
    print(*words, flush=True, **options)


def digest(*paths):
    """Of files, and of all that is in folders."""
    names = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "--", *paths], cwd=ROOT,
                           check=True, capture_output=True, text=True).stdout.split("\n")
    result = hashlib.sha256()
    for path in (ROOT / name for name in sorted(filter(None, names))):
        if path.is_file():
            result.update(str(path.relative_to(ROOT)).encode() + b"\0" + path.read_bytes() + b"\0")
    return result.hexdigest()


class Outcomes:
    """A line for each, of this run and of those before it."""

    def __init__(self, again):
        self.file = WORK / "outcomes.jsonl"
        self.everything = digest(*FOLDERS, "include", "tests", "fuzz")
        self.digests = {}
        self.lock = threading.Lock()
        self.known = {}
        # How many changes to a file each test has caught.
        self.catches = collections.defaultdict(collections.Counter)
        WORK.mkdir(parents=True, exist_ok=True)
        if again:
            self.file.unlink(missing_ok=True)
        for line in self.file.read_text(encoding="utf-8").splitlines() if self.file.exists() else ():
            entry = json.loads(line)
            alive = entry["outcome"] in (ALIVE, SURVIVES)
            if entry["of"] == (self.everything if alive else self.digest(entry["change"][0])):
                self.remember(tuple(entry["change"]), entry["outcome"])

    def digest(self, file):
        if file not in self.digests:
            self.digests[file] = digest(file)
        return self.digests[file]

    def remember(self, change, outcome):
        self.known[change] = outcome
        if caught := re.match(r"caught by ([^\s,]+)", outcome):
            self.catches[change[0]][caught.group(1)] += 1

    def add(self, mutant, outcome, seconds):
        with self.lock:
            mutant.outcome = outcome
            self.remember(mutant.identity(), outcome)
            of = self.everything if outcome in (ALIVE, SURVIVES) else self.digest(mutant.file)
            entry = {"change": mutant.identity(), "of": of, "outcome": outcome, "seconds": round(seconds, 1)}
            with open(self.file, "a", encoding="utf-8") as file:
                file.write(json.dumps(entry, ensure_ascii=False) + "\n")

    def in_order(self, tests, file):
        """The likely ones first: those that caught others there, those of its name, the quick ones."""
        name = re.split(r"[/.]", file)[-2]
        with self.lock:
            catches = self.catches[file].copy()
        return sorted(tests, key=lambda test: (test.slow, -catches[test.name], f".{name}" not in test.name,
                                               test.seconds or 5, test.name))


class Campaign:
    """Runners that each take the next change."""

    def __init__(self, jobs, outcomes):
        self.start = time.monotonic()
        self.outcomes = outcomes
        copy_tree()
        self.suites = {}
        self.runners = [Runner(i) for i in range(jobs)]
        self.unsteady = set()

    def suite(self, preset):
        """Configured when it is first needed."""
        if preset not in self.suites:
            self.suites[preset] = Suite(preset)
        return self.suites[preset]

    def first_tests(self, file):
        return next((self.suite(preset), tests) for files, preset, tests in FIRST_TESTS
                    if re.match(files, file))

    def all_tests(self, file):
        native = re.fullmatch(NATIVE_ONLY, file)
        return self.suite("sanitize" if native else "release"), ".*" if native else ALL_TESTS

    def seconds(self):
        return round(time.monotonic() - self.start)

    def round(self, mutants, tests_of, last):
        """Each one meets its tests."""
        if not mutants:
            return
        for suite, pattern in sorted({tests_of(m.file) for m in mutants}, key=lambda pair: pair[1]):
            suite.prepare(pattern)
        for runner in self.runners:
            runner.sync()
        log(f"  built, after {self.seconds()} s")
        waiting = queue.SimpleQueue()
        for mutant in mutants:
            waiting.put(mutant)
        threads = [threading.Thread(target=self.work, args=(runner, waiting, tests_of, last))
                   for runner in self.runners]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        for test in (test for suite in self.suites.values() for test in suite.tests.values() if test.broken):
            if test.name not in self.unsteady:
                self.unsteady.add(test.name)
                log(f"  {test.name} fails on the unchanged library and was left out:")
                log(*test.broken.splitlines()[:10], sep="\n    ")

    def work(self, runner, waiting, tests_of, last):
        while True:
            try:
                mutant = waiting.get_nowait()
            except queue.Empty:
                return
            start = time.monotonic()
            outcome = self.outcome(runner, mutant, tests_of, last)
            seconds = time.monotonic() - start
            self.outcomes.add(mutant, outcome, seconds)
            log(f"  {self.seconds():5} s, {seconds:5.1f} s: {mutant.file}:{mutant.line}: {outcome}; "
                f"{waiting.qsize()} left")

    def outcome(self, runner, mutant, tests_of, last):
        suite, pattern = tests_of(mutant.file)
        tests = suite.select(pattern)
        if not tests:
            sys.exit(f"mutate: no tests for {mutant.file}")
        runner.change(mutant)
        try:
            for test in self.outcomes.in_order(tests, mutant.file):
                failure = runner.meet(test)
                if failure:
                    return str(failure)
            differs = any(runner.make_all(test) for test in tests)
        except NoProgram:
            return NO_PROGRAM
        finally:
            runner.restore()
        if suite.preset == "release" and not differs:
            return SAME
        return SURVIVES if last else ALIVE

    def stop(self):
        for runner in self.runners:
            runner.stop()


def summary(mutants):
    """Prints what came of it; the changes that nothing caught."""
    groups = [(folder + "/", folder + "/") for folder in FOLDERS] + [("all", "")]
    for name, prefix in groups:
        outcomes = collections.Counter(kind(m.outcome) for m in mutants if m.file.startswith(prefix))
        counted = sum(outcomes[kind] for kind in ("caught", "endless", "lives"))
        if counted + outcomes["listed"]:
            caught = outcomes["caught"] + outcomes["endless"]
            log(f"{name:11}{caught:5} of {counted:5} caught, {100 * caught / max(counted, 1):5.1f} %, "
                f"{outcomes['endless']:3} of them by a test that did not end; besides, "
                f"{outcomes['none']:3} that do not compile, {outcomes['same']:3} of which the compiler makes the "
                f"same, {outcomes['listed']:3} that are known to change nothing")
    survivors = [m for m in mutants if kind(m.outcome) == "lives"]
    for mutant in survivors:
        log(f"\nNothing caught {mutant}" + (f"\n  {mutant.outcome}" if mutant.outcome != SURVIVES else ""))
    return survivors


def kind(outcome):
    if outcome.startswith("caught"):
        return "endless" if outcome.endswith("did not end") else "caught"
    if outcome.startswith("survives: "):
        return "listed"
    return {NO_PROGRAM: "none", SAME: "same"}.get(outcome, "lives")


def main():
    parser = argparse.ArgumentParser(prog="mutate", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("wanted", nargs="*", metavar="FOLDER|FILE")
    parser.add_argument("--max", type=int, metavar="COUNT", help="no more changes than that, spread")
    parser.add_argument("--first", action="store_true", help="the tests of each file only, not all tests")
    parser.add_argument("--again", action="store_true", help="forget the runs before")
    parser.add_argument("--jobs", type=int, default=2 * (os.cpu_count() or 1),
                        help="changes at a time; most tests wait more than they work")
    parser.add_argument("--list", action="store_true", help="show the changes and do nothing")
    arguments = parser.parse_args()

    mutants = generate(arguments.wanted)
    if not mutants:
        sys.exit("mutate: nothing to change there")
    reasons = equivalent()
    stale = set() if arguments.wanted else set(reasons) - {m.key() for m in mutants}
    if stale:
        sys.exit("mutate: no such change any more, in equivalent.txt:\n" +
                 "\n".join("\n".join(key) for key in sorted(stale)))
    if arguments.max and arguments.max < len(mutants):
        mutants = [mutants[i * len(mutants) // arguments.max] for i in range(arguments.max)]
    if arguments.list:
        log(*mutants, f"{len(mutants)} changes", sep="\n")
        return

    outcomes = Outcomes(arguments.again)
    for mutant in mutants:
        mutant.outcome = outcomes.known.get(mutant.identity())
        if mutant.key() in reasons:
            mutant.outcome = "survives: " + reasons[mutant.key()]
    unknown = [m for m in mutants if m.outcome is None]
    log(f"{len(mutants)} changes, {len(mutants) - len(unknown)} of them known already")
    campaign = Campaign(arguments.jobs, outcomes)
    try:
        campaign.round(unknown, campaign.first_tests, last=False)
        if not arguments.first:
            alive = [m for m in mutants if m.outcome == ALIVE]
            log(f"{len(alive)} got past the tests of their own file; now all tests")
            campaign.round(alive, campaign.all_tests, last=True)
    finally:
        campaign.stop()
    log(f"{campaign.seconds()} s")
    if summary(mutants):
        sys.exit(1)


main()
