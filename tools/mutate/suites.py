"""The tests: what ninja and ctest know of them, and how they are made and run of changed sources."""
import collections
import filecmp
import hashlib
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import threading
import time

from changes import ROOT

WORK = ROOT / "build" / "mutate"
TREE = WORK / "tree"
# What makes a build quick, and two builds of the same the same. The sanitizers see what a change leaks or
# writes beside its place.
OPTIONS = {
    "sanitize": ("-DCMAKE_CXX_FLAGS=-w",),
    "release": ("-DCMAKE_CXX_FLAGS=-w", "-DTARN_LTO=OFF", "-DCMAKE_CXX_FLAGS_RELEASE=-Os -DNDEBUG",
                "-DCMAKE_EXE_LINKER_FLAGS=-s -Wl,--no-insert-timestamp",
                "-DCMAKE_SHARED_LINKER_FLAGS=-Wl,--no-insert-timestamp"),
}
START_LOCK = threading.Lock()

# The tests that a file's changes meet first: patterns of test names, of the native build with the
# sanitizers or of the one for Windows. The first pattern that matches the file counts.
FIRST_TESTS = (
    (r"validate/EmailSyntax", "sanitize", r"(validate|fuzz)\.EmailSyntax"),
    (r"validate/", "release", r"validate\.VerifyEmail(\.cp932)?|faults\.FrameFaults"),
    (r"install/ChrcText", "sanitize", r"(install|fuzz)\.ChrcText"),
    (r"install/ChrcTemplate", "sanitize", r"install\.ChrcTemplate"),
    (r"install/PathHelpers", "sanitize", r"(install|fuzz)\.PathHelpers"),
    (r"install/Chrc", "release", r"install\.Chrc(File|Export)|frame\.ExportGuard"),
    (r"install/FileCopy", "release", r"install\.FileCopy|frame\.ExportGuard"),
    (r"install/", "release", r"install\.RunOnce|frame\.ExportGuard"),
    (r"ui/(WaitDlg\.rc|resource\.h)", "release", r"binary\.PortableExecutable|ui\.WaitDlgExports"),
    (r"ui/FileOpenDialog", "release",
     r"faults\.OpenDialogFaults|ui\.FileOpenDialog|frame\.ExportGuard|codepages\.Windows(\.cp932)?"),
    (r"ui/WaitDlgModless", "release", r"faults\.JobFaults|ui\.(JobRunner(Leak)?|WaitDlgExports)"),
    (r"ui/", "release",
     r"ui\.WaitDlgExports|frame\.ExportGuard|faults\.WaitWindowFaults|hosts\.(Reentrance|SectionThreads)"),
    (r"framework/text/(CodePageWin|.*\.h)", "release", r"framework\.text\..*"),
    (r"framework/text/", "sanitize", r"framework\..*|fuzz\.CString"),
    (r"framework/exceptions/", "release", r"framework\.exceptions\..*|frame\.AllocationFailure|runtime\.Heap"),
    (r"framework/files/", "release", r"framework\.(files|exceptions)\..*|install\.(FileCopy|ChrcExport)"),
    (r"framework/windows/CFileDialog", "release", r"faults\.OpenDialogFaults|ui\.FileOpenDialog"),
    (r"framework/windows/AfxMessageBox", "release", r"framework\.exceptions\..*|install\.ChrcFile"),
    (r"framework/windows/ModalOwner", "release", r"hosts\.Boxes|install\.ChrcFile|ui\.FileOpenDialog"),
    (r"framework/windows/C(Dialog|Wnd)", "release",
     r"framework\.windows\..*|ui\.(WaitDlgExports|JobRunner)|install\.ChrcFile|faults\.WaitWindowFaults"),
    (r"framework/windows/", "release",
     r"framework\.windows\..*|ui\.(WaitDlgExports|JobRunner)|install\.ChrcFile"),
    (r"framework/modules/CWinThread", "release", r"framework\.modules\..*|faults\.JobFaults"),
    (r"framework/modules/MaintainState", "release",
     r"framework\.modules\..*|frame\.ExportGuard|hosts\.StructuredHost"),
    (r"framework/modules/", "release",
     r"framework\.modules\..*|frame\.(TarnApp|ExportGuard|LoadUnload)|faults\.FrameFaults"),
    (r"framework/(Dll|Static)Module", "release",
     r"framework\.modules\..*|frame\.(TarnApp|ExportGuard|LoadUnload)|ui\.WaitDlgExports"),
    (r"runtime/(HandlerTable|Unwinder)", "release",
     r"runtime\.(HandlerTable|Unwinder)|frame\.ExportGuard|hosts\.StructuredHost|hosts\.SameCompilerHost"),
    (r"runtime/(DllStart|ExceptionRuntime)", "release",
     r"frame\.(AllocationFailure|ExportGuard|LoadUnload|TarnApp)|faults\.FrameFaults|hosts\.S.*Host"),
    (r"runtime/(Heap|SystemLibrary|ThreadBlock)", "release",
     r"runtime\..*|frame\.(AllocationFailure|LoadUnload)|faults\.(FrameFaults|OpenDialogFaults)"),
    (r"runtime/", "release",
     r"runtime\..*|frame\.(TarnApp|ExportGuard|LoadUnload)|faults\.FrameFaults|hosts\.S.*Host"),
    (r"", "release", r"(frame\.(TarnApp|ExportGuard|LoadUnload)|binary\..*|validate\.VerifyEmail)"),
)
# All tests that run the library; the native ones run the same code as their namesakes there.
ALL_TESTS = r"(binary|codepages|faults|frame|framework|hosts|install|runtime|ui|validate)\..*"
NATIVE_ONLY = r".*Native\.(cpp|h)|.*/PlatformTypes\.h"


class NoProgram(Exception):
    """What the compiler says."""


def output_of(command, **options):
    return subprocess.run(command, check=True, capture_output=True, text=True, **options).stdout


class Suite:
    """A build of the unchanged library. What is made of what, and how, as ninja knows it; the tests'
    programs, arguments and environment, as ctest does."""

    def __init__(self, preset):
        self.preset = preset
        self.build = TREE / "build" / preset
        self.library = (["lib/libtarn_core.a", "bin/tarn.dll"] if preset == "release" else
                        ["lib/libtarn_portable.a"])
        self.lock = threading.RLock()
        self.tests = {}
        self.deps = None
        self.known_inputs = {}
        self.known_commands = {}
        self.known_sources = {}
        self.must(["cmake", "--preset", preset, *OPTIONS[preset]], cwd=TREE)

    def must(self, command, **options):
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options)
        if done.returncode != 0:
            sys.exit(f"mutate: the unchanged library does not build:\n{done.stdout}")

    def ninja(self, *arguments):
        return output_of(["ninja", *arguments], cwd=self.build)

    def prepare(self, pattern):
        """Builds the programs of the tests whose names match."""
        suffix = r"(\.sanitize)?" if self.preset == "sanitize" else "()"
        programs = re.findall(r"^((?:tests|fuzz)/([\w.-]+?)(?:Test)?(?:\.exe)?): CXX_EXECUTABLE",
                              self.ninja("-t", "targets", "all"), re.M)
        libraries = ["bin/tarn.dll", "tests/jobs.dll"] if self.preset == "release" else []
        self.must(["cmake", "--build", self.build, "--target", *libraries,
                   *(target for target, name in programs if re.fullmatch(pattern, name))])
        self.read_deps()
        # ctest tells no command of a test that is not built yet.
        for test in json.loads(output_of(["ctest", "--test-dir", self.build, "--show-only=json-v1"]))["tests"]:
            properties = {p["name"]: p["value"] for p in test["properties"]}
            environment = dict(e.split("=", 1) for e in properties.get("ENVIRONMENT", []))
            command = test.get("command", [])
            program = self.program(command)
            if program and program.exists() and re.fullmatch(f"({pattern}){suffix}", test["name"]):
                self.tests.setdefault(test["name"], Test(self, test["name"], command, environment, program,
                                                         "RESOURCE_GROUPS" in properties))

    def program(self, command):
        """Of a test that is one program of the build; others are not run here."""
        for argument in command:
            path = pathlib.Path(argument)
            if path.is_relative_to(self.build) and not argument.endswith("/wine"):
                return path
        return None

    def select(self, pattern):
        suffix = r"(\.sanitize)" if self.preset == "sanitize" else "()"
        return [test for name, test in self.tests.items() if re.fullmatch(f"({pattern}){suffix}", name)]

    def read_deps(self):
        """The headers that the compiler found."""
        self.deps = collections.defaultdict(list)
        node = None
        for line in self.ninja("-t", "deps").splitlines():
            if line.startswith("    "):
                path = pathlib.Path(os.path.normpath(self.build / line.strip()))
                if path.is_relative_to(TREE):
                    self.deps[node].append(str(path))
            elif line:
                node = line.partition(": #deps")[0]
        self.known_sources.clear()

    def inputs(self, node):
        """What it is made of; empty for a source."""
        with self.lock:
            if node not in self.known_inputs:
                found = []
                if not node.startswith("/"):
                    text = self.ninja("-t", "query", node).partition("  outputs:")[0]
                    found = [line.strip() for line in text.splitlines() if line.startswith("    ")]
                    found = [line.removeprefix("| ") for line in found if not line.startswith("||")]
                self.known_inputs[node] = found
            return self.known_inputs[node] + self.deps.get(node, [])

    def command(self, node):
        with self.lock:
            if node not in self.known_commands:
                self.known_commands[node] = self.quickly(self.ninja("-t", "commands", "-s", node).strip())
            return self.known_commands[node]

    def quickly(self, command):
        """Most of what the compiler reads is the system's header: with that read before, by a compiler of
        the same options, it takes a tenth of the time."""
        options, mark, rest = command.partition(" -MD ")
        if self.preset != "release" or not mark or "-std=c++" not in options:
            return command
        header = WORK / "headers" / hashlib.sha256(options.encode()).hexdigest()[:16] / "system.h"
        if not header.with_suffix(".h.gch").exists():
            header.parent.mkdir(parents=True, exist_ok=True)
            header.write_text("".join(f"#include <{name}>\n" for name in (
                ["gtest/gtest.h"] * ("gtest" in options) + ["windows.h"])))
            self.must(f"{options} -x c++-header {header} -o {header}.part && mv {header}.part {header}.gch",
                      shell=True, cwd=self.build)
        return f"{options} -include {header}{mark}{rest}"

    def sources(self, node):
        """All that it is made of in the end."""
        with self.lock:
            if node not in self.known_sources:
                inputs = self.inputs(node)
                self.known_sources[node] = frozenset().union(*map(self.sources, inputs)) if inputs else {node}
            return self.known_sources[node]


class Test:
    def __init__(self, suite, name, command, environment, program, on_desktop):
        self.suite, self.name, self.command, self.environment = suite, name, command, environment
        self.on_desktop = on_desktop
        self.slow = re.search("Slow|Leak", name) is not None
        # Files of the build: the program itself, and the libraries that it loads.
        self.goals = [program.relative_to(suite.build).as_posix()]
        content = program.read_bytes()
        self.goals += [goal for goal, mark in (("bin/tarn.dll", b"TARN_DLL"), ("tests/jobs.dll", b"jobs.dll"))
                       if suite.preset == "release" and mark in content]
        self.lock = threading.Lock()
        self.seconds = None
        self.broken = None


class Failure:
    """A test that fails; how, if not in the ordinary way."""

    ENDLESS = ", which did not end"
    COMPILER = ", which did not compile"

    def __init__(self, test, output, how=""):
        self.test, self.output, self.how = test, output, how

    def __str__(self):
        return f"caught by {self.test.name}{self.how}"


class Runner:
    """A copy of the tree and its builds, in which one change at a time is made, with a Wine of its own."""

    def __init__(self, number):
        self.tree = WORK / f"run{number}" / "tree"
        self.mutant = None
        self.made = {}

    def sync(self):
        for folder, folders, files in os.walk(TREE):
            folders[:] = [f for f in folders if not re.fullmatch(r"wine(-\d+)?|googletest", f)]
            target = self.tree / pathlib.Path(folder).relative_to(TREE)
            target.mkdir(parents=True, exist_ok=True)
            for name in files:
                refresh(pathlib.Path(folder) / name, target / name)

    def change(self, mutant):
        self.restore()
        self.mutant = mutant
        text = (TREE / mutant.file).read_text()
        (self.tree / mutant.file).write_text(text[:mutant.begin] + mutant.new + text[mutant.end:])

    def restore(self):
        if self.mutant:
            refresh(TREE / self.mutant.file, self.tree / self.mutant.file)
        for suite, node in self.made:
            refresh(suite.build / node, self.here(suite.build / node))
        self.made.clear()
        self.mutant = None

    def here(self, path):
        """In the copy; a path or a text that has such."""
        if isinstance(path, pathlib.Path):
            return self.tree / path.relative_to(TREE)
        return path.replace(f"{TREE}", f"{self.tree}").replace(windows(TREE), windows(self.tree))

    def make(self, suite, node):
        """Makes it again, if need be. Whether it is another one than without the change."""
        if node.startswith("/"):
            return node == str(TREE / self.mutant.file)
        if str(TREE / self.mutant.file) not in suite.sources(node):
            return False
        if (suite, node) not in self.made:
            differs = False
            # Not any(), which would leave the rest unmade.
            if True in [self.make(suite, part) for part in suite.inputs(node)]:
                self.made[suite, node] = False
                target = self.here(suite.build / node)
                target.unlink(missing_ok=True)
                done = subprocess.run(self.here(suite.command(node)), shell=True, cwd=self.here(suite.build),
                                      stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False,
                                      env=dict(os.environ, CCACHE_DISABLE="1"),
                                      start_new_session=True)  # Linux shares its time among sessions
                if done.returncode != 0:
                    self.made[suite, node] = NoProgram(done.stdout)
                    raise self.made[suite, node]
                differs = not filecmp.cmp(suite.build / node, target, shallow=False)
            self.made[suite, node] = differs
        elif isinstance(self.made[suite, node], NoProgram):
            raise self.made[suite, node]
        return self.made[suite, node]

    def meet(self, test):
        """None when the test passes on the changed library, or does not see anything of the change."""
        try:
            if not self.make_all(test):
                return None
        except NoProgram as problem:
            # Of the library, it is no change at all.
            for node in test.suite.library:
                self.make(test.suite, node)
            return Failure(test, str(problem), Failure.COMPILER)
        self.calibrate(test)
        if test.broken:
            return None
        failure = self.run(test, changed=True)
        if failure and failure.how == Failure.ENDLESS:
            # On a machine that has become busier, the unchanged library may take as long.
            before = test.seconds
            self.calibrate(test, again=True)
            if test.seconds > 1.5 * before:
                failure = self.run(test, changed=True)
        if failure and not failure.how and test.on_desktop:
            # A window may come late for other reasons.
            failure = self.run(test, changed=True)
        return failure

    def make_all(self, test):
        return True in [self.make(test.suite, goal) for goal in test.goals]

    def calibrate(self, test, again=False):
        """On the unchanged library: what fails there tells nothing, and how long it takes sets a limit."""
        with test.lock:
            if test.seconds is None or again:
                start = time.monotonic()
                failure = self.run(test, changed=False)
                test.seconds = max(time.monotonic() - start, test.seconds or 0)
                if failure and not again:
                    test.broken = failure.output or "did not end"

    def run(self, test, changed):
        def place(text):
            if changed:
                return self.here(text)
            wine = test.suite.build / "wine"
            return str(self.here(wine)) if text == str(wine) else text
        command = [place(c) for c in test.command]
        environment = dict(os.environ, GTEST_FAIL_FAST="1", GTEST_BRIEF="1",
                           **{name: place(value) for name, value in test.environment.items()})
        limit = 30 + 4 * test.seconds if test.seconds is not None else 900
        folder = self.tree.parent / "current"
        folder.mkdir(exist_ok=True)
        with START_LOCK:
            process = subprocess.Popen(command, env=environment, cwd=folder,
                                       stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                       stderr=subprocess.STDOUT, start_new_session=True)
        try:
            output, _ = process.communicate(timeout=limit)
        except subprocess.TimeoutExpired:
            self.stop()
            try:
                os.killpg(process.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            process.communicate()
            return Failure(test, f"no end after {limit:.0f} s", Failure.ENDLESS)
        return None if process.returncode == 0 else Failure(test, output.decode(errors="replace"))

    def stop(self):
        """Ends this runner's Windows programs and its display."""
        wine = self.tree / "build" / "release" / "wine"
        if wine.exists():
            script = f'TARN_WINE_DIR={wine}; . {TREE}/tools/wine-env.sh; wine_stop'
            subprocess.run(["bash", "-c", script], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                           check=False)


def windows(path):
    return str(path).replace("/", "\\")


def refresh(source, target):
    """An unchanged file keeps its time, and what was built of it."""
    if target.exists() and target.stat().st_mtime_ns == source.stat().st_mtime_ns and \
            target.stat().st_size == source.stat().st_size:
        return
    target.unlink(missing_ok=True)
    shutil.copy2(source, target)


def copy_tree():
    files = output_of(["git", "ls-files", "-co", "--exclude-standard"], cwd=ROOT).split("\n")
    for file in filter(None, files):
        source, target = ROOT / file, TREE / file
        if source.is_file() and not (target.exists() and source.read_bytes() == target.read_bytes()):
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, target)
            os.utime(target)
