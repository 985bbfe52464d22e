#!/usr/bin/env python3
"""workflows.py SOURCE_DIR - what can be known here of .github/workflows, which run elsewhere.

Every file is read as YAML and has the parts that a workflow needs; every line of a step is a command that
./dev has, or stands in known_lines.txt; jobs, artifacts, files and options that are named are there. Last,
the checks meet mistakes made on purpose, each of which must be found."""

import copy
import fnmatch
import os
import re
import sys

import yaml

ACTIONS = {"actions/checkout@v4", "actions/upload-artifact@v4", "actions/download-artifact@v4"}
RUNNERS = re.compile(r"^(ubuntu-latest|windows-20(22|25)|\$\{\{ matrix\.system \}\})$")


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


class Checker:
    def __init__(self, source):
        self.commands = re.findall(r"(?m)^([a-z]+) ", read(f"{source}/tools/packages.txt").split("\n[")[0])
        lines = read(f"{source}/tests/workflows/known_lines.txt").splitlines()
        self.known = {line for line in lines if line and not line.startswith("#")}
        self.options = set(re.findall(r"(?:set|option)\((TARN_[A-Z_]+)", read(f"{source}/CMakeLists.txt")))
        version = re.search(r"project\(tarn VERSION ([0-9.]+)", read(f"{source}/CMakeLists.txt"))[1]
        self.zips = [f"tarn-{version}-win64.zip", f"tarn-{version}-selftest-win64.zip"]
        self.selftest_options = read(f"{source}/selftest/Options.cpp")

    def faults(self, workflow):
        """Yields a sentence for each mistake."""
        # YAML takes a bare "on" for a truth value.
        if not workflow.get("name") or True not in workflow:
            yield "no name, or nothing that starts it"
        if workflow.get("permissions") != {"contents": "read"}:
            yield "more rights than reading"
        jobs = workflow.get("jobs", {})
        if not jobs:
            yield "no jobs"
        for name, job in jobs.items():
            for sentence in self.job_faults(job, jobs):
                yield f"{name}: {sentence}"
        uploads = [step["with"]["name"] for step in self.uses(jobs, "upload-artifact")]
        for step in self.uses(jobs, "download-artifact"):
            if step["with"]["name"] not in uploads:
                yield f"nobody makes the artifact {step['with']['name']}"
        for upload in self.uses(jobs, "upload-artifact"):
            pattern = os.path.basename(upload["with"]["path"])
            if upload["with"]["name"] == "zips" and fnmatch.filter(self.zips, pattern) != self.zips:
                yield f"{pattern} is not kit and self-test"

    @staticmethod
    def uses(jobs, action):
        return [step for job in jobs.values() for step in job.get("steps", [])
                if step.get("uses", "").startswith(f"actions/{action}@")]

    def job_faults(self, job, jobs):
        if not RUNNERS.match(job.get("runs-on", "")):
            yield f"runs on {job.get('runs-on')}"
        if not isinstance(job.get("timeout-minutes"), int):
            yield "no time limit"
        if job.get("needs", next(iter(jobs))) not in jobs:
            yield f"needs {job['needs']}, which is no job"
        for variable in re.findall(r"matrix\.([a-z]+)", str(job)):
            if variable not in job.get("strategy", {}).get("matrix", {}):
                yield f"no {variable} in the matrix"
        for step in job.get("steps", []):
            if ("run" in step) == ("uses" in step):
                yield f"neither a command nor an action, or both: {step}"
            elif "uses" in step and step["uses"] not in ACTIONS:
                yield f"an action that is not known: {step['uses']}"
            for line in step.get("run", "").splitlines():
                yield from self.line_faults(line)

    def line_faults(self, line):
        command = re.fullmatch(r"\./dev ([a-z]+)", line)
        if command:
            if command[1] not in self.commands:
                yield f"./dev has no {command[1]}"
        elif line not in self.known:
            yield f"not in known_lines.txt: {line}"
        for option in re.findall(r"-D (TARN_[A-Z_]+)", line):
            if option not in self.options:
                yield f"CMakeLists.txt has no {option}"
        if "selftest.exe" in line:
            for option in re.findall(r"--[a-z-]+", line):
                if f'"{option}"' not in self.selftest_options:
                    yield f"selftest.exe has no {option}"


def spoil(workflow, path, value):
    spoilt = copy.deepcopy(workflow)
    place = spoilt
    for key in path[:-1]:
        place = place[key]
    place[path[-1]] = value
    return spoilt


def main():
    source = sys.argv[1]
    folder = f"{source}/.github/workflows"
    checker = Checker(source)
    bad = 0
    workflows = {}
    for name in sorted(os.listdir(folder)):
        workflows[name] = yaml.safe_load(read(f"{folder}/{name}"))
        for sentence in checker.faults(workflows[name]):
            print(f"FAILED  {name}: {sentence}")
            bad += 1
    used = {line for workflow in workflows.values() for job in workflow["jobs"].values()
            for step in job["steps"] for line in step.get("run", "").splitlines()}
    for line in checker.known - used:
        print(f"FAILED  known_lines.txt has a line that no workflow has: {line}")
        bad += 1
    for needed in ("check", "test", "package"):
        if f"./dev {needed}" not in used:
            print(f"FAILED  no workflow has ./dev {needed}")
            bad += 1

    tests = workflows["tests.yml"]
    steps = tests["jobs"]["debian"]["steps"]
    first_command = next(i for i, step in enumerate(steps) if step.get("run") == "./dev check")
    mistakes = {
        "a command that is not there": (["jobs", "debian", "steps", first_command, "run"], "./dev chek"),
        "a line of its own": (["jobs", "debian", "steps", first_command, "run"], "make"),
        "a job that is not there": (["jobs", "windows", "needs"], "ubuntu"),
        "an artifact that nobody makes": (["jobs", "windows", "steps", 0, "with", "name"], "zip"),
        "an option that is not there": (["jobs", "windows", "steps", 2, "run"], ".\\selftest.exe --all"),
        "another action": (["jobs", "windows", "steps", 0, "uses"], "somebody/else@main"),
        "too many rights": (["permissions"], {"contents": "write"}),
        "a matrix without what is used": (["jobs", "windows", "strategy", "matrix"], {"os": ["x"]}),
    }
    for what, (path, value) in mistakes.items():
        if not list(checker.faults(spoil(tests, path, value))):
            print(f"FAILED  not noticed: {what}")
            bad += 1
    print(f"{len(workflows)} workflows, {len(used)} lines, {len(mistakes)} mistakes on purpose")
    return 1 if bad else 0


sys.exit(main())
