#!/usr/bin/env python3
"""Breaks the library in small ways, one at a time, and sees whether a test fails.

mutate.py [FOLDER|FILE]... [--max COUNT] [--jobs COUNT] [--list]

Works in a copy of the tree, build/mutate/tree. A change that does not compile is no change and is not
counted. Each other one is built and meets the tests of its file first, then, if it lives, all tests
that run the library; one that outlives them must be listed in tools/mutate-equivalent.txt with the
reason why no test can see it. Changes listed there are counted as survivors, and not run.
"""
import argparse
import concurrent.futures
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutate"
TREE = WORK / "tree"
EQUIVALENT = ROOT / "tools" / "mutate-equivalent.txt"
FOLDERS = ("frame", "install", "ui", "validate")
MINIMUM_CAUGHT = 0.95
START_LOCK = threading.Lock()

# The tests that a file's changes meet first: patterns of test names, of the native build and of the
# one for Windows. The first pattern that matches the file counts.
FIRST_TESTS = (
    (r"validate/EmailSyntax", r"(validate|fuzz)\.EmailSyntax\.native", None),
    (r"validate/", None, r"validate\.VerifyEmail(\.cp932)?"),
    (r"install/ChrcText", r"(install|fuzz)\.ChrcText\.native", None),
    (r"install/ChrcTemplate", r"install\.ChrcTemplate\.native", None),
    (r"install/PathHelpers", r"(install|fuzz)\.PathHelpers\.native", None),
    (r"install/Chrc", None, r"install\.Chrc(File|Export)"),
    (r"install/FileCopy", None, r"install\.FileCopy"),
    (r"install/", None, r"install\.RunOnce"),
    (r"ui/(WaitDlg\.rc|resource\.h)", None, r"binary\.PortableExecutable|ui\.WaitDlgExports"),
    (r"ui/FileOpenDialog", None, r"faults\.OpenDialogFaults|ui\.FileOpenDialog"),
    (r"ui/WaitDlgModless", None, r"faults\.JobFaults|ui\.(JobRunner|WaitDlgExports)"),
    (r"ui/", None, r"ui\.WaitDlgExports"),
    (r"", None, r"(frame\.(TarnApp|ExportGuard|LoadUnload)|binary\..*|validate\.VerifyEmail)"),
)
# All tests that run the library. The native ones run the same code as their namesakes here.
ALL_TESTS = r"(binary|faults|frame|framework|install|ui|validate)\..*"

TOKEN = re.compile(r"""
    (?P<comment>//[^\n]*|/\*.*?\*/)
  | (?P<directive>^[ \t]*\#(?:[^\n\\]|\\.|\\\n)*)
  | (?P<string>"(?:[^"\\\n]|\\.)*")
  | (?P<char>'(?:[^'\\\n]|\\.)*')
  | (?P<number>\b(?:0[xX][0-9a-fA-F]+|\d+)[uUlL]*\b)
  | (?P<name>[A-Za-z_]\w*)
  | (?P<op>->|\+\+|--|\+=|-=|<<|>>|<=|>=|==|!=|&&|\|\||::|[-+*/%<>=!&|?:;,.(){}\[\]~^])
""", re.X | re.M | re.S)

SWAPPED_OPERATORS = {
    "==": "!=", "!=": "==", "<": "<=", ">": ">=", "<=": "<", ">=": ">", "&&": "||", "||": "&&",
    "+": "-", "-": "+", "*": "/", "/": "*", "+=": "-="}
SWAPPED_NAMES = {
    "TRUE": "FALSE", "FALSE": "TRUE", "true": "false", "false": "true",
    "INFINITE": "0", "IDOK": "IDCANCEL", "WAIT_TIMEOUT": "WAIT_OBJECT_0",
    "SW_SHOWNORMAL": "SW_HIDE", "HWND_TOPMOST": "HWND_BOTTOM", "WM_SETTEXT": "WM_GETTEXT",
    "KEY_ALL_ACCESS": "KEY_READ", "REG_SZ": "REG_EXPAND_SZ", "ERROR_SUCCESS": "ERROR_ACCESS_DENIED",
    "HKEY_CURRENT_USER": "HKEY_LOCAL_MACHINE", "OFN_FILEMUSTEXIST": "0",
    "INVALID_FILE_ATTRIBUTES": "FILE_ATTRIBUTE_NORMAL", "TrimLeft": "TrimRight",
    "TrimRight": "TrimLeft", "left": "right", "right": "left", "top": "bottom", "bottom": "top"}
# What the rules below do not see: directives, declarations, files in other languages.
SPECIAL = (
    ("frame/ExportGuard.h", "AfxGetStaticModuleState()", "GetDefaultModuleState()"),
    ("frame/TarnApp.cpp", "static CTarnApp g_theApp;", ""),
    ("frame/tarn.def", "    CloseWaitDlg\n", ""),
    ("frame/tarn.def", "    DoFileOpenDialog\n", ""),
    ("frame/tarn.def", "    DoWaitDlgModless\n", ""),
    ("frame/tarn.def", "    FileCopy\n", ""),
    ("frame/tarn.def", "    PutInRunOnce\n", ""),
    ("frame/tarn.def", "    VerifyEmail\n", ""),
    ("frame/tarn.def", "    Write_ch_config_File\n", ""),
    ("frame/tarn.def", "LIBRARY tarn.dll", "LIBRARY tarm.dll"),
    ("frame/tarn.rc", "frame/tarn.manifest", "frame/tarn.def"),
    ("frame/tarn.manifest", 'version="6.0.0.0"', 'version="5.0.0.0"'),
    ("ui/resource.h", "IDD_WAITDLG 14000", "IDD_WAITDLG 14001"),
    ("ui/resource.h", "IDC_WAITDLG_MESSAGE 14000", "IDC_WAITDLG_MESSAGE 14001"),
    ("ui/WaitDlgModless.h", "WM_USER + 1", "WM_USER + 2"),
    ("ui/WaitDlg.rc", "DIALOG 0, 0,", "DIALOG 1, 0,"),
    ("ui/WaitDlg.rc", "DIALOG 0, 0,", "DIALOG 0, 1,"),
    ("ui/WaitDlg.rc", "229, 45", "230, 45"),
    ("ui/WaitDlg.rc", "229, 45", "229, 46"),
    ("ui/WaitDlg.rc", "WS_POPUP", "WS_CHILD"),
    ("ui/WaitDlg.rc", " | WS_VISIBLE", ""),
    ("ui/WaitDlg.rc", " | WS_CAPTION", ""),
    ("ui/WaitDlg.rc", " | WS_CAPTION", " | WS_CAPTION | WS_SYSMENU"),
    ("ui/WaitDlg.rc", " | DS_MODALFRAME", ""),
    ("ui/WaitDlg.rc", "FONT 8,", "FONT 9,"),
    ("ui/WaitDlg.rc", "MS Sans Serif", "MS Serif"),
    ("ui/WaitDlg.rc", "LTEXT", "CTEXT"),
    ("ui/WaitDlg.rc", 'LTEXT ""', 'LTEXT "a"'),
    ("ui/WaitDlg.rc", "13, 9,", "14, 9,"),
    ("ui/WaitDlg.rc", "13, 9,", "13, 10,"),
    ("ui/WaitDlg.rc", "197, 22", "198, 22"),
    ("ui/WaitDlg.rc", "197, 22", "197, 23"),
)


class Mutant:
    def __init__(self, file, text, begin, end, new):
        self.file = file
        self.begin, self.end, self.new = begin, end, new
        self.line = text.count("\n", 0, begin) + 1
        first = text.rfind("\n", 0, begin) + 1
        last = text.find("\n", end)
        last = len(text) if last == -1 else last
        self.before = " ".join(text[first:last].split())
        self.after = " ".join((text[first:begin] + new + text[end:last]).split())
        self.outcome = None

    def key(self):
        return self.file, self.before, self.after

    def __str__(self):
        return f"{self.file}:{self.line}\n- {self.before}\n+ {self.after}"


def matching(tokens, i):
    """Index of the token that closes the parenthesis at i."""
    depth = 0
    for k in range(i, len(tokens)):
        depth += {"(": 1, ")": -1}.get(tokens[k].group(), 0)
        if depth == 0:
            return k
    return len(tokens) - 1


def is_expression(words):
    """Whether a statement is no declaration, of which what follows may not go."""
    if words[0] in ("::", "++", "--", "*", "delete"):
        return True
    if words[0] in ("return", "break", "const", "static", "constexpr", "using", "typedef", "friend",
                    "struct", "class", "enum", "explicit", "virtual", "else", "public", "private",
                    "protected", "case", "goto", "namespace", "extern", "afx_msg"):
        return False
    if words[-2:] == ["=", "delete"] or words[-2:] == ["=", "default"]:
        return False
    return len(words) > 1 and words[1] in ("(", ".", "->", "=", "+=", "::", "[")


def changes_of(text):
    """All changes to a C++ source: begin, end, new text."""
    tokens = [m for m in TOKEN.finditer(text) if m.lastgroup not in ("comment", "directive")]
    words = [m.group() for m in tokens]
    statement = 0  # first token of the current statement
    template = "kChrcTemplate[]" in text
    i = 0
    strings = 0
    while i < len(tokens):
        token, word = tokens[i], words[i]
        begin, end = token.span()
        if word == "static_assert":
            while words[i] != ";":
                i += 1
            i += 1
            statement = i
            continue
        spaced = text[begin - 1] in " \n" and end < len(text) and text[end] in " \n"
        if token.lastgroup == "op" and spaced and word in SWAPPED_OPERATORS:
            yield begin, end, SWAPPED_OPERATORS[word]
        if word in ("++", "--"):
            yield begin, end, "--" if word == "++" else "++"
        if word == "|":
            for k in (i - 1, i + 1):
                # Each flag once: the left one only at the start of the chain.
                chained = i >= 4 and "|" in words[i - 4:i]
                if tokens[k].lastgroup == "name" and (k > i or not chained):
                    first = k
                    while words[first - 1] == "::" and first >= 2:
                        first -= 2
                    last = k
                    while words[last + 1] == "::":
                        last += 2
                    yield tokens[first].start(), tokens[last].end(), "0"
        if token.lastgroup == "number" and words[i - 1] != "[":
            value = int(re.sub("[uUlL]+$", "", word), 0)
            yield begin, end, "0" if value == 1 else str(value + 1)
        if token.lastgroup == "name" and word in SWAPPED_NAMES:
            if word not in ("left", "right", "top", "bottom") or words[i - 1] == ".":
                yield begin, end, SWAPPED_NAMES[word]
        if token.lastgroup == "char":
            yield begin, end, "'x'" if word != "'x'" else "'y'"
        if token.lastgroup == "string":
            strings += 1
            # Of the template's sixty lines every fifth is enough.
            if len(word) > 2 and words[i - 1] != "extern" and (not template or strings % 5 == 0):
                letter = re.search(r"(?<!\\)[A-Za-z]", word)
                if letter:
                    at = begin + letter.start()
                    yield at, at + 1, chr(ord(text[at]) ^ 1)
                if not template:
                    yield end - 1 - len(re.search(r'(\\.|.)"$', word).group(1)), end - 1, ""
        if word in ("if", "while") and words[i + 1] == "(":
            close = tokens[matching(tokens, i + 1)]
            condition = text[tokens[i + 1].end():close.start()]
            # A single comparison is turned round above.
            if re.search(r"&&|\|\|", condition) or not re.search(r" [!=]= ", condition):
                yield tokens[i + 1].end(), close.start(), "!(" + condition + ")"
            statement = matching(tokens, i + 1) + 1
        elif word == "else":
            statement = i + 1
        elif word in "{}":
            statement = i + 1
        elif word == ";":
            if i > statement and is_expression(words[statement:i]):
                yield tokens[statement].start(), end, ";"
            statement = i + 1
        elif word == "for":
            statement = len(tokens)  # its head is no statement
        i += 1
    for m in re.finditer(r"^ +ON_\w+\(.*\)$", text, re.M):
        yield m.start(), m.end(), ""


def generate(wanted):
    mutants = []
    files = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "--", *FOLDERS], cwd=ROOT,
                           check=True, capture_output=True, text=True).stdout.split()
    for file in sorted(files):
        if wanted and not any(file == w or file.startswith(w.rstrip("/") + "/") for w in wanted):
            continue
        text = (ROOT / file).read_text()
        changes = []
        # Other headers hold declarations.
        if file.endswith(".cpp") or file in ("install/RegistryKey.h", "install/ChrcTemplate.h"):
            changes = list(changes_of(text))
        for special_file, old, new in SPECIAL:
            if special_file == file:
                begin = text.find(old)
                if begin < 0:
                    sys.exit(f"mutate: {file} has no {old!r} any more")
                changes.append((begin, begin + len(old), new))
        unique = {}
        for begin, end, new in sorted(changes):
            if text[begin:end] != new:
                unique.setdefault((begin, end, new), Mutant(file, text, begin, end, new))
        mutants += unique.values()
    return mutants


def read_equivalent():
    """Blocks of file, - line, + line, reason; # comments; an empty line between."""
    reasons = {}
    lines = [line for line in EQUIVALENT.read_text().splitlines() if not line.startswith("#")]
    for block in re.split(r"\n\s*\n", "\n".join(lines).strip()):
        parts = block.splitlines()
        if not block:
            continue
        if len(parts) < 4 or not parts[1].startswith("- ") or parts[2][:1] != "+":
            sys.exit(f"mutate: not a block of {EQUIVALENT.name}:\n{block}")
        key = parts[0].strip(), parts[1][2:].strip(), parts[2][1:].strip()
        reasons[key] = " ".join(part.strip() for part in parts[3:])
    return reasons


class Tests:
    """What ctest knows of a build: programs, arguments, environment."""

    def __init__(self, preset):
        self.build = TREE / "build" / preset
        listing = subprocess.run(["ctest", "--test-dir", self.build, "--show-only=json-v1"],
                                 check=True, capture_output=True, text=True).stdout
        self.tests = {}
        for test in json.loads(listing)["tests"]:
            properties = {p["name"]: p["value"] for p in test["properties"]}
            environment = dict(e.split("=", 1) for e in properties.get("ENVIRONMENT", []))
            self.tests[test["name"]] = test.get("command", []), environment

    def select(self, pattern):
        found = [name for name, (command, _) in self.tests.items()
                 if re.fullmatch(pattern, name) and self.program(command) is not None]
        return sorted(found, key=lambda name: (re.search("Slow|Leak", name) is not None, name))

    def program(self, command):
        """Of a test that is one program of the build; others are not run here."""
        for index, argument in enumerate(command):
            path = pathlib.Path(argument)
            if path.is_relative_to(self.build) and not argument.endswith("/wine"):
                return index
        return None

    def targets(self, names):
        return sorted({pathlib.Path(command[self.program(command)]).stem
                       if command[self.program(command)].endswith(".exe")
                       else pathlib.Path(command[self.program(command)]).name
                       for command, _ in (self.tests[name] for name in names)})


def log(*words, **options):
    print(*words, flush=True, **options)


def build(preset, targets):
    """None, or what the compiler says."""
    done = subprocess.run(["cmake", "--build", TREE / "build" / preset, "--target", *targets],
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    return None if done.returncode == 0 else done.stdout


class Runner:
    """Runs tests, each time with copies of what was built, in a Wine of its own."""

    def __init__(self, number):
        self.folder = WORK / f"run{number}"
        self.wine = self.folder / "wine"
        self.files = self.folder / "files"
        self.folder.mkdir(parents=True, exist_ok=True)

    def take(self, suite, names):
        """Called before the next build begins."""
        shutil.rmtree(self.files, ignore_errors=True)
        self.files.mkdir()
        library = suite.build / "bin" / "tarn.dll"
        # A process that starts meanwhile would hold the copy open for writing, and it could not start.
        with START_LOCK:
            for other in (library, *(suite.build / "tests").glob("*.dll")):
                if other.exists():
                    shutil.copy(other, self.files)
            for name in names:
                command, _ = suite.tests[name]
                program = pathlib.Path(command[suite.program(command)])
                if not (self.files / program.name).exists():
                    shutil.copy(program, self.files)

    def run(self, suite, names, limits):
        """The first test that fails, with its output, or None; and how long each took."""
        times = {}
        for name in names:
            command, environment = suite.tests[name]
            command = list(command)
            index = suite.program(command)
            command[index] = str(self.files / pathlib.Path(command[index]).name)
            command = [str(self.wine) if c == str(suite.build / "wine") else c for c in command]
            windows_path = "Z:" + str(self.files / "tarn.dll").replace("/", "\\")
            environment = dict(os.environ, **environment, GTEST_FAIL_FAST="1", GTEST_BRIEF="1")
            if "TARN_DLL" in environment:
                environment["TARN_DLL"] = windows_path
            start = time.monotonic()
            failure = self.execute(command, environment, limits.get(name, 600))
            times[name] = time.monotonic() - start
            if failure is not None:
                return (name, failure), times
        return None, times

    def execute(self, command, environment, limit):
        with START_LOCK:
            process = subprocess.Popen(command, env=environment, cwd=self.folder,
                                       stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                       stderr=subprocess.STDOUT, start_new_session=True)
        try:
            output, _ = process.communicate(timeout=limit)
        except subprocess.TimeoutExpired:
            self.stop()
            try:
                os.killpg(process.pid, 9)
            except ProcessLookupError:
                pass
            process.communicate()
            return f"no end after {limit:.0f} s"
        return None if process.returncode == 0 else output.decode(errors="replace")

    def stop(self):
        """Ends this runner's Windows programs and its display."""
        if self.wine.exists():
            script = f'TARN_WINE_DIR={self.wine}; . {TREE}/tools/wine-env.sh; wine_stop'
            subprocess.run(["bash", "-c", script], stdout=subprocess.DEVNULL,
                           stderr=subprocess.DEVNULL)


def copy_tree():
    TREE.mkdir(parents=True, exist_ok=True)
    files = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=ROOT, check=True,
                           capture_output=True, text=True).stdout.split("\n")
    for file in filter(None, files):
        source, target = ROOT / file, TREE / file
        if not source.is_file():
            continue
        # An unchanged file keeps its time, and what was built of it.
        if not target.exists() or source.read_bytes() != target.read_bytes():
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, target)
            os.utime(target)
            target.chmod(source.stat().st_mode)


def configure(preset, *options):
    done = subprocess.run(["cmake", "--preset", preset, "-DCMAKE_CXX_FLAGS=-w", *options], cwd=TREE,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    if done.returncode != 0:
        sys.exit(f"mutate: cannot configure {preset}:\n{done.stdout}")
    # ctest tells no command of a test that is not built yet.
    problem = build(preset, ["all"])
    if problem:
        sys.exit(f"mutate: the unchanged library does not build:\n{problem}")


class Campaign:
    def __init__(self, jobs):
        self.native = Tests("native")
        self.windows = Tests("release")
        self.limits = {}
        self.runners = [Runner(i) for i in range(jobs)]
        self.free = list(self.runners)
        self.available = threading.Semaphore(jobs)
        self.lock = threading.Lock()
        self.pool = concurrent.futures.ThreadPoolExecutor(jobs)

    def first_tests(self, file):
        for pattern, native, windows in FIRST_TESTS:
            if re.match(pattern, file):
                suite = self.native if native else self.windows
                names = suite.select(native or windows)
                if not names:
                    sys.exit(f"mutate: no tests for {file}")
                return suite, names
        raise AssertionError(file)

    def submit(self, suite, names, done):
        """Runs tests on what is built now; done(failure, times) is called in the end."""
        self.available.acquire()
        with self.lock:
            runner = self.free.pop()
        runner.take(suite, names)

        def work():
            try:
                failure, times = runner.run(suite, names, self.limits)
                done(failure, times)
            finally:
                with self.lock:
                    self.free.append(runner)
                self.available.release()
        return self.pool.submit(work)

    def baseline(self, suites):
        """Unchanged. What fails then tells nothing later; how long the others take sets their limits."""
        for suite, names in suites:
            futures = []
            for name in names:
                def done(failure, times, name=name, suite=suite):
                    # Beside other tests and builds, a test may take much longer.
                    self.limits[name] = 30 + 3 * times[name]
                    if failure:
                        del suite.tests[name]
                        log(f"  {name} fails on the unchanged library and is left out:")
                        log(*failure[1].splitlines()[:10], sep="\n    ")
                futures.append(self.submit(suite, [name], done))
            for future in futures:
                future.result()

    def round(self, mutants, tests_of, report):
        """Builds each mutant and runs its tests; what none caught has no outcome afterwards."""
        futures = []
        for mutant in mutants:
            suite, names = tests_of(mutant)
            preset = "native" if suite is self.native else "release"
            path = TREE / mutant.file
            original = path.read_text()
            path.write_text(original[:mutant.begin] + mutant.new + original[mutant.end:])
            try:
                problem = build(preset, suite.targets(names) +
                                (["tarn"] if preset == "release" else []))
                if problem:
                    mutant.outcome = "no program"
                    report(mutant)
                    continue

                def done(failure, _times, mutant=mutant):
                    if failure:
                        mutant.outcome = f"caught by {failure[0]}"
                        if failure[1].startswith("no end after"):
                            mutant.outcome += ", which did not end"
                        report(mutant)
                futures.append(self.submit(suite, names, done))
            finally:
                path.write_text(original)
        for future in futures:
            future.result()

    def stop(self):
        self.pool.shutdown(wait=True)
        for runner in self.runners:
            runner.stop()


def main():
    parser = argparse.ArgumentParser(description=__doc__,
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
    reasons = read_equivalent()
    if not arguments.wanted:
        stale = set(reasons) - {m.key() for m in mutants}
        for key in sorted(stale):
            log("No such change any more, in", EQUIVALENT.name + ":", *key, sep="\n  ")
        if stale:
            sys.exit(1)
    if arguments.max and arguments.max < len(mutants):
        mutants = [mutants[i * len(mutants) // arguments.max] for i in range(arguments.max)]
    if arguments.list:
        for mutant in mutants:
            log(mutant)
        log(len(mutants), "changes")
        return

    start = time.monotonic()
    WORK.mkdir(parents=True, exist_ok=True)
    copy_tree()
    configure("native", "-DTARN_VALGRIND=OFF")
    configure("release", "-DTARN_LTO=OFF", "-DCMAKE_CXX_FLAGS_RELEASE=-Os -DNDEBUG", "-DCMAKE_EXE_LINKER_FLAGS=-s")
    campaign = Campaign(arguments.jobs)
    try:
        run(campaign, mutants, reasons, start)
    finally:
        campaign.stop()


def run(campaign, mutants, reasons, start):
    log(f"{len(mutants)} changes; first, the unchanged library")
    campaign.baseline(((campaign.native, campaign.native.select(r".*\.native")),
                       (campaign.windows, campaign.windows.select(ALL_TESTS))))
    everything = campaign.windows.select(ALL_TESTS)
    log(f"  passes {len(everything)} tests, after {time.monotonic() - start:.0f} s")

    counted = [0]
    report_file = open(WORK / "report.txt", "w", encoding="utf-8")

    def report(mutant):
        with campaign.lock:
            counted[0] += 1
            report_file.write(f"{mutant}\n  {mutant.outcome}\n\n")
            report_file.flush()
            if counted[0] % 20 == 0:
                log(f"  {counted[0]} done, after {time.monotonic() - start:.0f} s")

    known = [m for m in mutants if m.key() in reasons]
    for mutant in known:
        mutant.outcome = "survives: " + reasons[mutant.key()]
        report(mutant)
    fresh = [m for m in mutants if m.outcome is None]
    campaign.round(fresh, lambda m: campaign.first_tests(m.file), report)
    alive = [m for m in fresh if m.outcome is None]
    log(f"{len(alive)} got past the tests of their own file; now all tests")
    campaign.round(alive, lambda m: (campaign.windows, everything), report)
    survivors = [m for m in alive if m.outcome is None]
    for mutant in survivors:
        mutant.outcome = "SURVIVES"
        report(mutant)
    report_file.close()

    programs = [m for m in mutants if m.outcome != "no program"]
    caught = sum(m.outcome.startswith("caught") for m in programs)
    endless = sum(m.outcome.endswith("did not end") for m in programs)
    share = caught / len(programs)
    log("")
    for folder in FOLDERS:
        of_folder = [m for m in programs if m.file.startswith(folder + "/")]
        if of_folder:
            n = sum(m.outcome.startswith("caught") for m in of_folder)
            log(f"{folder + '/':10} {n:4} of {len(of_folder):4} caught")
    log(f"{'all':10} {caught:4} of {len(programs):4} caught: {100 * share:.1f} %"
        f" ({endless} of them by a test that did not end)")
    log(f"{len(mutants) - len(programs)} did not compile; {len(known)} are known to change nothing; "
        f"{time.monotonic() - start:.0f} s; all outcomes: {(WORK / 'report.txt').relative_to(ROOT)}")
    for mutant in survivors:
        log(f"\nNothing caught {mutant}")
    if survivors:
        sys.exit(1)
    if share < MINIMUM_CAUGHT:
        sys.exit(f"mutate: less than {100 * MINIMUM_CAUGHT:.0f} % caught")


main()
