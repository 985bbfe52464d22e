"""What is changed: small changes to the sources, one at a time."""
import pathlib
import re
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
FOLDERS = ("frame", "install", "ui", "validate", "framework", "runtime")

SWAPPED = {
    "==": "!=", "!=": "==", "<": "<=", ">": ">=", "<=": "<", ">=": ">", "&&": "||", "||": "&&",
    "+": "-", "-": "+", "*": "/", "/": "*", "+=": "-=", "++": "--", "--": "++",
    "TRUE": "FALSE", "FALSE": "TRUE", "true": "false", "false": "true",
    "INFINITE": "0", "IDOK": "IDCANCEL", "WAIT_TIMEOUT": "WAIT_OBJECT_0",
    "SW_SHOWNORMAL": "SW_HIDE", "HWND_TOPMOST": "HWND_BOTTOM", "WM_SETTEXT": "WM_GETTEXT",
    "KEY_ALL_ACCESS": "KEY_READ", "REG_SZ": "REG_EXPAND_SZ", "ERROR_SUCCESS": "ERROR_ACCESS_DENIED",
    "HKEY_CURRENT_USER": "HKEY_LOCAL_MACHINE", "OFN_FILEMUSTEXIST": "0",
    "INVALID_FILE_ATTRIBUTES": "FILE_ATTRIBUTE_NORMAL", "TrimLeft": "TrimRight",
    "TrimRight": "TrimLeft", "left": "right", "right": "left", "top": "bottom", "bottom": "top"}


def one_of(words):
    """A pattern."""
    return "|".join(re.escape(word) for word in words)


def next_number(match):
    value = int(re.sub("[uUlL]+$", "", match.group()), 0)
    return "0" if value == 1 else str(value + 1)


SIGNS = one_of(word for word in SWAPPED if not word[0].isalpha())
NAMES = one_of(word for word in SWAPPED if word[0].isalpha())
NAME = r"(?:::)?\b[A-Za-z_][\w:]*"
# What no statement begins with that is an expression.
NOT_FIRST = one_of("""return break continue case default goto throw if else for while do switch const static
    constexpr using typedef friend struct class enum explicit virtual namespace extern""".split())


def swapped(match):
    return SWAPPED[match.group()]


# A part of the code, found in the source with its comments and texts blanked out, and what takes its
# place: each occurrence is one change.
OPERATORS = tuple((re.compile(pattern, re.M | re.X), replacement) for pattern, replacement in (
    # an operator between two operands; one beside its operand
    (rf"(?<=[ ]) (?:{SIGNS}) (?=[ \n])", swapped),
    (r"\+\+ | --", swapped),
    (rf"(?<![>]) \b(?:{NAMES})\b", swapped),
    (r"(?<![\w.\[]) (?:0[xX][0-9a-fA-F]+|\d+) [uUlL]* \b", next_number),
    # each flag of several
    (rf"{NAME} (?=\s\|\s) | (?<=[^|]\|\s) \s* {NAME} (?![\w:(])", lambda match: "0"),
    # a statement that is an expression
    (rf"""(?: (?<=[;{{}}:)~]\n) | (?<=\n\n) | (?<=else\n) ) [ ]+ (?!(?:{NOT_FIRST})\b)
          (?: (?:::)? \*? [\w>.:-]*\w (?:\[[^;{{}}]*?\])? (?:[ ](?:=|\+=|-=)[ ] | \() | \+\+ | -- | delete\b )
          [^;{{}}]*;""", lambda match: ";"),
    # an entry of a message map
    (r"^[ ]+ON_\w+\(.*\)$", lambda match: ""),
))
QUOTED = r'"(?:[^"\\\n]|\\.)*"' + r"|'(?:[^'\\\n]|\\.)*'"
NO_CODE = re.compile(r"//[^\n]*|/\*.*?\*/|^[ \t]*#(?:[^\n\\]|\\.|\\\n)*|static_assert\(.*?;|"
                     r'extern "C"|' + QUOTED, re.M | re.S)


def blanked(text):
    """Of the same length, and with the same lines."""
    return NO_CODE.sub(lambda match: re.sub(r"[^\n]", "~", match.group()), text)


def conditions(text, code):
    """Turned round; a single comparison is turned round as an operator."""
    for match in re.finditer(r"\b(?:if|while) \(", code):
        depth, end = 1, match.end()
        while depth:
            depth += {"(": 1, ")": -1}.get(code[end], 0)
            end += 1
        condition = text[match.end():end - 1]
        if re.search(r"&&|\|\|", condition) or not re.search(" [!=]= ", condition):
            yield match.end(), end - 1, f"!({condition})"


def quoted(text):
    """A text: its first letter becomes another, its last character goes. A character: another one."""
    template = "kChrcTemplate[]" in text
    texts = [m for m in re.finditer(NO_CODE, text) if m.group()[0] in "\"'" and len(m.group()) > 2]
    for number, match in enumerate(texts):
        begin, end = match.span()
        if match.group()[0] == "'":
            yield begin, end, "'y'" if match.group() == "'x'" else "'x'"
        elif not template or number % 5 == 0:  # of its sixty lines every fifth is enough
            letter = re.search(r"(?<!\\)[A-Za-z]", match.group())
            if letter:
                at = begin + letter.start()
                yield at, at + 1, chr(ord(text[at]) ^ 1)
            if not template:
                yield end - 1 - len(re.search(r'(\\.|.)"$', match.group()).group(1)), end - 1, ""


def changes_of(text):
    """All changes to a C++ source: begin, end, new text."""
    code = blanked(text)
    for pattern, replacement in OPERATORS:
        for match in pattern.finditer(code):
            begin = match.start() + len(match.group()) - len(match.group().lstrip())
            yield begin, match.end(), replacement(match)
    yield from conditions(text, code)
    yield from quoted(text)


class Mutant:
    """A change, by the lines that it changes, and what became of it."""

    def __init__(self, file, text, begin, end, new):
        self.file, self.begin, self.end, self.new = file, begin, end, new
        self.line = text.count("\n", 0, begin) + 1
        first = text.rfind("\n", 0, begin) + 1
        last = text.find("\n", end)
        last = len(text) if last == -1 else last
        self.before = " ".join(text[first:last].split())
        self.after = " ".join((text[first:begin] + new + text[end:last]).split())
        self.outcome = None

    def key(self):
        return self.file, self.before, self.after

    def identity(self):
        """Of two changes of the same look, too."""
        return self.file, self.begin, self.end, self.new

    def __str__(self):
        return f"{self.file}:{self.line}\n- {self.before}\n+ {self.after}"


def blocks(name):
    """A file of blocks, with an empty line between: file, - old, + new, and what else there is."""
    lines = [line for line in (HERE / name).read_text().splitlines() if not line.startswith("#")]
    for block in re.split(r"\n\s*\n", "\n".join(lines).strip()):
        parts = block.splitlines()
        if len(parts) < 3 or parts[1][:1] != "-" or parts[2][:1] != "+":
            sys.exit(f"mutate: not a block of {name}:\n{block}")
        yield parts[0].strip(), parts[1][2:], parts[2][2:], " ".join(p.strip() for p in parts[3:])


def equivalent():
    """The changes that no test can see, with the reason."""
    return {(file, old.strip(), new.strip()): reason
            for file, old, new, reason in blocks("equivalent.txt")}


def holds_code(file, text):
    if file.endswith(".h"):
        return re.search(r"\)(?: const)?(?: noexcept)?\s*\{|\[\] =", blanked(text)) is not None
    return file.endswith(".cpp")


def generate(wanted):
    files = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "--", *FOLDERS], cwd=ROOT,
                           check=True, capture_output=True, text=True).stdout.split()
    special = list(blocks("special.txt"))
    mutants = []
    for file in sorted(files):
        if wanted and not any(file == w or file.startswith(w.rstrip("/") + "/") for w in wanted):
            continue
        text = (ROOT / file).read_text()
        changes = list(changes_of(text)) if holds_code(file, text) else []
        for special_file, old, new, _ in special:
            if special_file == file:
                begin = text.find(old)
                if begin < 0:
                    sys.exit(f"mutate: {file} has no {old!r} any more")
                changes.append((begin, begin + len(old), new))
        mutants += [Mutant(file, text, *change) for change in sorted(set(changes))
                    if text[change[0]:change[1]] != change[2]]
    return mutants
