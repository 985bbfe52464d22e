"""The tests: what ctest knows of them, and how they are run on a changed library."""
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
# What makes a build quick. The sanitizers see what a change leaks or writes beside its place.
OPTIONS = {
    "sanitize": (),
    "release": ("-DTARN_LTO=OFF", "-DCMAKE_CXX_FLAGS_RELEASE=-Os -DNDEBUG", "-DCMAKE_EXE_LINKER_FLAGS=-s"),
}
START_LOCK = threading.Lock()

# The tests that a file's changes meet first: patterns of test names, of the native build with the
# sanitizers or of the one for Windows. The first pattern that matches the file counts.
FIRST_TESTS = (
    (r"validate/EmailSyntax", "sanitize", r"(validate|fuzz)\.EmailSyntax"),
    (r"validate/", "release", r"validate\.VerifyEmail(\.cp932)?"),
    (r"install/ChrcText", "sanitize", r"(install|fuzz)\.ChrcText"),
    (r"install/ChrcTemplate", "sanitize", r"install\.ChrcTemplate"),
    (r"install/PathHelpers", "sanitize", r"(install|fuzz)\.PathHelpers"),
    (r"install/Chrc", "release", r"install\.Chrc(File|Export)"),
    (r"install/FileCopy", "release", r"install\.FileCopy"),
    (r"install/", "release", r"install\.RunOnce"),
    (r"ui/(WaitDlg\.rc|resource\.h)", "release", r"binary\.PortableExecutable|ui\.WaitDlgExports"),
    (r"ui/FileOpenDialog", "release", r"faults\.OpenDialogFaults|ui\.FileOpenDialog"),
    (r"ui/WaitDlgModless", "release", r"faults\.JobFaults|ui\.(JobRunner|WaitDlgExports)"),
    (r"ui/", "release", r"ui\.WaitDlgExports"),
    (r"framework/text/CodePageWin", "release", r"framework\.text\..*"),
    (r"framework/text/", "sanitize", r"framework\..*|fuzz\.CString"),
    (r"framework/exceptions/", "release", r"framework\.exceptions\..*|frame\.AllocationFailure"),
    (r"framework/files/", "release", r"framework\.files\..*|install\.FileCopy|install\.ChrcExport"),
    (r"framework/windows/CFileDialog", "release", r"faults\.OpenDialogFaults|ui\.FileOpenDialog"),
    (r"framework/windows/", "release", r"framework\.windows\..*|ui\.WaitDlgExports|install\.ChrcFile"),
    (r"framework/modules/", "release",
     r"framework\.modules\..*|frame\.(TarnApp|ExportGuard|LoadUnload)|faults\.FrameFaults"),
    (r"runtime/", "release", r"runtime\..*|frame\.(TarnApp|ExportGuard|LoadUnload)|hosts\..*"),
    (r"", "release", r"(frame\.(TarnApp|ExportGuard|LoadUnload)|binary\..*|validate\.VerifyEmail)"),
)
# All tests that run the library; the native ones run the same code as their namesakes there.
ALL_TESTS = r"(binary|faults|frame|framework|hosts|install|runtime|ui|validate)\..*"
NATIVE_ONLY = r".*Native\.(cpp|h)|.*/PlatformTypes\.h"


class Suite:
    """A build, and what ctest knows of its tests: programs, arguments, environment."""

    def __init__(self, preset):
        self.preset = preset
        self.build = TREE / "build" / preset
        done = subprocess.run(["cmake", "--preset", preset, "-DCMAKE_CXX_FLAGS=-w", *OPTIONS[preset]], cwd=TREE,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        if done.returncode != 0:
            sys.exit(f"mutate: cannot configure {preset}:\n{done.stdout}")
        # ctest tells no command of a test that is not built yet.
        problem = self.make(["all"])
        if problem:
            sys.exit(f"mutate: the unchanged library does not build:\n{problem}")
        listing = subprocess.run(["ctest", "--test-dir", self.build, "--show-only=json-v1"],
                                 check=True, capture_output=True, text=True).stdout
        self.tests = {}
        for test in json.loads(listing)["tests"]:
            properties = {p["name"]: p["value"] for p in test["properties"]}
            environment = dict(e.split("=", 1) for e in properties.get("ENVIRONMENT", []))
            self.tests[test["name"]] = test.get("command", []), environment

    def make(self, targets):
        """None, or what the compiler says."""
        done = subprocess.run(["cmake", "--build", self.build, "--target", *targets],
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        return None if done.returncode == 0 else done.stdout

    def select(self, pattern):
        """The quick ones first."""
        suffix = r"(\.sanitize)" if self.preset == "sanitize" else "()"
        found = [name for name, (command, _) in self.tests.items()
                 if re.fullmatch(f"({pattern}){suffix}", name) and self.program(command) is not None]
        return sorted(found, key=lambda name: (re.search("Slow|Leak", name) is not None, name))

    def program(self, command):
        """Of a test that is one program of the build; others are not run here."""
        for index, argument in enumerate(command):
            path = pathlib.Path(argument)
            if path.is_relative_to(self.build) and not argument.endswith("/wine"):
                return index
        return None

    def programs(self, names):
        return [pathlib.Path(command[self.program(command)])
                for command, _ in (self.tests[name] for name in names)]

    def targets(self, names):
        library = ["tarn"] if self.preset == "release" else []
        return library + sorted({path.name.removesuffix(".exe") for path in self.programs(names)})


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
        # A process that starts meanwhile would hold the copy open for writing, and it could not start.
        with START_LOCK:
            for file in {suite.build / "bin" / "tarn.dll", *(suite.build / "tests").glob("*.dll"),
                         *suite.programs(names)}:
                if file.exists():
                    shutil.copy(file, self.files)

    def run(self, suite, names, limits):
        """The first test that fails, with its output, or None; and how long each took."""
        times = {}
        for name in names:
            command, environment = suite.tests[name]
            command = list(command)
            index = suite.program(command)
            command[index] = str(self.files / pathlib.Path(command[index]).name)
            command = [str(self.wine) if c == str(suite.build / "wine") else c for c in command]
            environment = dict(os.environ, **environment, GTEST_FAIL_FAST="1", GTEST_BRIEF="1")
            if "TARN_DLL" in environment:
                environment["TARN_DLL"] = "Z:" + str(self.files / "tarn.dll").replace("/", "\\")
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
                os.killpg(process.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            process.communicate()
            return f"no end after {limit:.0f} s"
        return None if process.returncode == 0 else output.decode(errors="replace")

    def stop(self):
        """Ends this runner's Windows programs and its display."""
        if self.wine.exists():
            script = f'TARN_WINE_DIR={self.wine}; . {TREE}/tools/wine-env.sh; wine_stop'
            subprocess.run(["bash", "-c", script], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


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
