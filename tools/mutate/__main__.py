"""Breaks the library in small ways, one at a time, and sees whether a test fails.

mutate [FOLDER|FILE]... [--max COUNT] [--jobs COUNT] [--list]

Works in a copy of the tree, build/mutate/tree. A change that does not compile is no change and is not
counted. Each other one is built and meets the tests of its file first, then, if it lives, all tests
that run the library; one that outlives them must be listed in tools/mutate/equivalent.txt with the
reason why no test can see it. Changes listed there are counted as survivors, and not run.
"""
import argparse
import concurrent.futures
import os
import queue
import re
import sys
import threading
import time

from changes import FOLDERS, equivalent, generate
from suites import ALL_TESTS, FIRST_TESTS, NATIVE_ONLY, TREE, WORK, Runner, Suite, copy_tree


def log(*words, **options):
    print(*words, flush=True, **options)


class Campaign:
    """One build at a time, while runners try what was built before."""

    def __init__(self, jobs):
        self.start = time.monotonic()
        copy_tree()
        self.suites = {}
        self.limits = {}
        self.runners = [Runner(i) for i in range(jobs)]
        self.free = queue.Queue()
        for runner in self.runners:
            self.free.put(runner)
        self.pool = concurrent.futures.ThreadPoolExecutor(jobs)
        self.lock = threading.Lock()
        self.report_file = open(WORK / "report.txt", "w", encoding="utf-8")
        self.counted = 0

    def suite(self, preset):
        """Built when it is first needed."""
        if preset not in self.suites:
            self.suites[preset] = Suite(preset)
        return self.suites[preset]

    def first_tests(self, file):
        preset, pattern = next((preset, tests) for files, preset, tests in FIRST_TESTS
                               if re.match(files, file))
        names = self.suite(preset).select(pattern)
        if not names:
            sys.exit(f"mutate: no tests for {file}")
        return self.suite(preset), names

    def all_tests(self, file):
        native = re.fullmatch(NATIVE_ONLY, file)
        suite = self.suite("sanitize" if native else "release")
        return suite, suite.select(".*" if native else ALL_TESTS)

    def submit(self, suite, names, done):
        """Runs tests on what is built now; done(failure, times) is called in the end."""
        runner = self.free.get()
        runner.take(suite, names)

        def work():
            try:
                done(*runner.run(suite, names, self.limits))
            finally:
                self.free.put(runner)
        return self.pool.submit(work)

    def baseline(self, wanted):
        """Unchanged. What fails then tells nothing later; how long the others take sets their limits."""
        futures = []
        for preset, name in sorted(wanted):
            def done(failure, times, name=name, suite=self.suites[preset]):
                # Beside other tests and builds, a test may take much longer.
                self.limits[name] = 30 + 3 * times[name]
                if failure:
                    del suite.tests[name]
                    log(f"  {name} fails on the unchanged library and is left out:")
                    log(*failure[1].splitlines()[:10], sep="\n    ")
            futures.append(self.submit(self.suites[preset], [name], done))
        for future in futures:
            future.result()
        log(f"  the unchanged library has met {len(self.limits)} tests, after {self.seconds()} s")

    def seconds(self):
        return round(time.monotonic() - self.start)

    def settle(self, mutant, outcome):
        with self.lock:
            mutant.outcome = outcome
            self.counted += 1
            self.report_file.write(f"{mutant}\n  {outcome}\n\n")
            self.report_file.flush()
            if self.counted % 20 == 0:
                log(f"  {self.counted} done, after {self.seconds()} s")

    def round(self, mutants, tests_of):
        """Builds each mutant and runs its tests; what none caught has no outcome afterwards."""
        self.baseline({(suite.preset, name) for suite, names in map(tests_of, {m.file for m in mutants})
                       for name in names if name not in self.limits})
        futures = []
        for mutant in mutants:
            suite, names = tests_of(mutant.file)
            path = TREE / mutant.file
            original = path.read_text()
            path.write_text(original[:mutant.begin] + mutant.new + original[mutant.end:])
            try:
                if suite.make(suite.targets(names)):
                    self.settle(mutant, "no program")
                    continue

                def done(failure, _times, mutant=mutant):
                    if failure:
                        endless = failure[1].startswith("no end after")
                        self.settle(mutant, f"caught by {failure[0]}" +
                                    (", which did not end" if endless else ""))
                futures.append(self.submit(suite, names, done))
            finally:
                path.write_text(original)
        for future in futures:
            future.result()

    def stop(self):
        self.pool.shutdown(wait=True)
        self.report_file.close()
        for runner in self.runners:
            runner.stop()


def summary(mutants, seconds):
    """Prints what came of it; the changes that nothing caught."""
    programs = [m for m in mutants if m.outcome != "no program"]
    for name, prefix in [(folder + "/", folder + "/") for folder in FOLDERS] + [("all", "")]:
        outcomes = [m.outcome for m in programs if m.file.startswith(prefix)]
        caught = sum(outcome.startswith("caught") for outcome in outcomes)
        known = sum(outcome.startswith("survives") for outcome in outcomes)
        if outcomes:
            log(f"{name:10} {caught:4} of {len(outcomes) - known:4} caught, "
                f"{100 * caught / max(len(outcomes) - known, 1):5.1f} %; {known} are known to change nothing")
    endless = sum(m.outcome.endswith("did not end") for m in programs)
    log(f"{endless} were caught by a test that did not end; {len(mutants) - len(programs)} did not "
        f"compile; {seconds} s; all outcomes: build/mutate/report.txt")
    survivors = [m for m in programs if m.outcome == "SURVIVES"]
    for mutant in survivors:
        log(f"\nNothing caught {mutant}")
    return survivors


def main():
    parser = argparse.ArgumentParser(prog="mutate", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("wanted", nargs="*", metavar="FOLDER|FILE")
    parser.add_argument("--max", type=int, metavar="COUNT", help="no more changes than that, spread")
    parser.add_argument("--jobs", type=int, default=2 * (os.cpu_count() or 1),
                        help="tests at a time; most of them wait more than they work")
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

    log(f"{len(mutants)} changes; first, the unchanged library")
    campaign = Campaign(arguments.jobs)
    try:
        for mutant in mutants:
            if mutant.key() in reasons:
                campaign.settle(mutant, "survives: " + reasons[mutant.key()])
        campaign.round([m for m in mutants if m.outcome is None], campaign.first_tests)
        alive = [m for m in mutants if m.outcome is None]
        log(f"{len(alive)} got past the tests of their own file; now all tests")
        campaign.round(alive, campaign.all_tests)
        for mutant in mutants:
            if mutant.outcome is None:
                campaign.settle(mutant, "SURVIVES")
    finally:
        campaign.stop()
    if summary(mutants, campaign.seconds()):
        sys.exit(1)


main()
