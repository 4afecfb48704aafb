"""The changes that scripts/mutate tries: in which sources, of what kind, and the tests that should notice."""

import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
JUDGED = ROOT / "tests" / "mutation" / "judged.txt"
LEFT_OUT = ROOT / "tests" / "mutation" / "left_out.txt"

# Tests that take most of the time of their programs: the others come first.
SLOW_ARCHIVE_TESTS = "StoringCore.AChainOfAnyLengthNeedsNoDeepStack"
SLOW_SEARCHES = "CompactSearch.Finds*:CompactSearch.LeavesNearTies*"
SLOW_CLASSIFIERS = "FastKNN.Decides*"

# For each area: its sources, as patterns, and the test programs below build/dev/tests that should notice, the quick ones first;
# behind a program there can be a filter of its tests. A header is compiled again with the sources that include it.
AREAS = {
    "archive": (
        ["platform/archive/*.cpp", "platform/archive/*.h"],
        ["platform/archive/archive_internal_test", "platform/archive/archive_format_test",
         f"platform/archive/archive_test -{SLOW_ARCHIVE_TESTS}", "platform/archive/archive_threads_test", "golden/golden_test",
         "laws/laws_test", "clastool/foundation/foundation_hostile_test", "clastool/foundation/foundation_test",
         f"platform/archive/archive_test {SLOW_ARCHIVE_TESTS}"],
    ),
    "handles": (
        ["platform/handle/*.cpp", "platform/handle/share_count.h"],
        ["platform/handle/ptr_handle_test", "platform/handle/ptr_handle_threads_test", "laws/laws_test",
         "platform/archive/archive_test"],
    ),
    "handle templates": (
        ["include/vxclassifier/platform/ptr_handle.h"],
        ["platform/handle/ptr_handle_test", "platform/handle/ptr_handle_threads_test"],
    ),
    "decision rule": (
        ["clss/clastool/foundation/classifier_result.cpp", "clss/clastool/foundation/classifier_costs.cpp",
         "clss/clastool/foundation/classifier_frequencies.cpp", "clss/clastool/foundation/decision_rule.*",
         "clss/clastool/foundation/result_access.h", "clss/clastool/foundation/override_access.h",
         "clss/clastool/foundation/parallel_vectors.h", "clss/clastool/foundation/stable_merge_sort.h"],
        ["clastool/foundation/foundation_test", "clastool/foundation/foundation_internal_test",
         "clastool/foundation/foundation_hostile_test", "golden/golden_test", "clastool/bayes/bayes_test",
         "clastool/knn/knn_test"],
    ),
    "binomial": (
        ["clss/clastool/bayes/pdf_binomial.cpp", "clss/clastool/bayes/log_factorials.*", "clss/clastool/bayes/truncated.h"],
        ["clastool/bayes/bayes_parts_test", "clastool/bayes/bayes_test", "laws/laws_test",
         "clastool/bayes/bayes_hostile_test"],
    ),
    "neighbour search": (
        ["clss/clastool/knn/*.cpp", "clss/clastool/knn/*.h", "clss/clastool/foundation/observed_patterns.cpp",
         "clss/clastool/foundation/stored_rows.h"],
        [f"clastool/knn/knn_internal_test -{SLOW_SEARCHES}", f"clastool/knn/knn_test -{SLOW_CLASSIFIERS}",
         "clastool/knn/knn_hostile_test", "laws/laws_test", f"clastool/knn/knn_test {SLOW_CLASSIFIERS}",
         "growth/load_memory_test", f"clastool/knn/knn_internal_test {SLOW_SEARCHES}"],
    ),
    "score functions": (
        ["clss/rules/*.cpp", "clss/rules/*.h"],
        ["rules/rules_tests", "golden/golden_test", "rules/rules_hostile_tests"],
    ),
}

# The whole library includes it; the tests, which instantiate all of its templates, are compiled again instead.
ONLY_WITH_THE_TESTS = {"include/vxclassifier/platform/ptr_handle.h"}

# clang-format puts a space on each side of a binary operator and none inside of template brackets.
REPLACEMENTS = {
    "relational": {
        " < ": [" <= ", " >= "],
        " <= ": [" < ", " > "],
        " > ": [" >= ", " <= "],
        " >= ": [" > ", " < "],
        " == ": [" != "],
        " != ": [" == "],
        " && ": [" || "],
        " || ": [" && "],
    },
    "arithmetic": {
        " + ": [" - "],
        " - ": [" + "],
        " * ": [" / "],
        " / ": [" * "],
        " % ": [" / "],
        " += ": [" -= "],
        " -= ": [" += "],
        " *= ": [" /= "],
        " & ": [" | "],
        " | ": [" & "],
        " ^ ": [" & "],
        " << ": [" >> "],
        " >> ": [" << "],
        "++": ["--"],
        "--": ["++"],
    },
}
# Of a number with an exponent the whole is changed, not the exponent alone.
NUMBER = re.compile(
    r"(?<![\w.])(?<![eEpP][-+])(0x[0-9a-fA-F.]+p[-+]?\d+|\d+(?:\.\d+)?[eE][-+]?\d+|\d+\.\d+|0x[0-9a-fA-F]+|\d+)"
    r"(?=[uUlL]*\b)(?![\w.]*\.)"
)
WORDS = {"true": "false", "false": "true"}
# One line; what begins with a type, and so declares something, has a blank before its name.
STATEMENT = re.compile(
    r"^ +(?:(?:\+\+|--)?[\w.:>\[\]*()-]+(?:\(.*\))?(?: [-+*/|&^]?= .*|<<=.*|>>=.*|\(.*\)|\+\+|--)?|throw .*|break|continue);$"
)
CONSTANT = re.compile(r"^(?:inline |static )*constexpr [^(]* = ")
NO_STATEMENT = re.compile(
    r"^ +(?:return|using|case|default|friend|struct|class|static|namespace|virtual|explicit|public|private)\b|.* = (?:delete|default);$"
)


class Mutant:
    def __init__(self, area, path, line, column, old, new, kind, code):
        self.area, self.path, self.line, self.column = area, path, line, column
        self.old, self.new, self.kind, self.code = old, new, kind, code

    def apply(self, lines):
        changed = list(lines)
        text = changed[self.line]
        changed[self.line] = text[: self.column] + self.new + text[self.column + len(self.old):]
        return changed

    def text(self):
        """Says where it is without the number of the line."""
        return f"{self.path} {self.code} {self.column} {self.old} {self.new}"

    def place(self):
        return f"{self.path}:{self.line + 1}"


def without_comments_and_texts(lines):
    """The same lines with blanks in place of what is not code."""
    source = "\n".join(lines)
    pattern = re.compile(r'//[^\n]*|/\*.*?\*/|L?"(?:\\.|[^"\\\n])*"|L?\'(?:\\.|[^\'\\\n])+\'|^[ \t]*#[^\n]*(?:\\\n[^\n]*)*', re.S | re.M)
    blank = lambda match: re.sub(r"[^\n]", "\0", match.group())
    return pattern.sub(blank, source).split("\n")


def function_bodies(lines, is_header):
    """The lines of constants and within the bodies of functions, by the indentation that clang-format gives."""
    inside = []
    in_body = False
    for number, line in enumerate(lines):
        if not line.strip("\0 "):
            continue
        indent = len(line) - len(line.lstrip(" "))
        opens = line.rstrip("\0 ").endswith("{")
        if indent == 0:
            in_body = opens and not re.match(r"(namespace|extern|class|struct|enum|union)\b", line)
        if (in_body and indent > 0) or CONSTANT.match(line):
            inside.append(number)
        elif is_header and indent > 0 and (";" in line or opens):
            # Members in the class; declarations give candidates that do not compile or change nothing, so only lines with code.
            if re.search(r"\breturn\b|\{ .*\}| = |^ {8,}", line) and "operator" not in line:
                inside.append(number)
    return inside


def candidates(area, path, without=()):
    """All changes of a file, but for the lines in `without`."""
    lines = (ROOT / path).read_text().split("\n")
    code = without_comments_and_texts(lines)
    found = []
    for number in function_bodies(code, path.endswith(".h")):
        line = code[number]
        if lines[number].strip() in without or line.lstrip().startswith("static_assert"):  # which the compiler checks
            continue
        for kind, table in REPLACEMENTS.items():
            for old, news in table.items():
                start = line.find(old)
                while start >= 0:
                    for new in news:
                        found.append(Mutant(area, path, number, start, old, new, kind, lines[number]))
                    start = line.find(old, start + len(old))
        for match in NUMBER.finditer(line):
            old = match.group(1)
            if re.search(r"[.p]|^\d+[eE]", old):
                new = "1.0" if old == "0.0" else "0.0"
            elif old.startswith("0x"):
                new = hex(int(old, 16) ^ 1)
            else:
                new = {"0": "1", "1": "0"}.get(old, str(int(old) + 1))
            found.append(Mutant(area, path, number, match.start(1), old, new, "constant", lines[number]))
        for old, new in WORDS.items():
            for match in re.finditer(rf"\b{old}\b", line):
                found.append(Mutant(area, path, number, match.start(), old, new, "constant", lines[number]))
        for match in re.finditer(r"(?<=[(\s])!(?=[\w(])", line):
            found.append(Mutant(area, path, number, match.start(), "!", "", "relational", lines[number]))
        before = next((each.rstrip("\0 ") for each in reversed(code[:number]) if each.strip("\0 ")), ";")
        if before[-1] in ";{}:" and STATEMENT.match(line.replace("\0", "x")) and not NO_STATEMENT.match(line):
            text = lines[number]
            indent = len(text) - len(text.lstrip(" "))
            found.append(Mutant(area, path, number, indent, text[indent:], ";", "deleted statement", lines[number]))
    return found


def blocks_of(path):
    """The entries of a file, separated by empty lines, as lists of lines; lines with # in front are comments."""
    blocks = []
    for block in (path.read_text() if path.exists() else "").split("\n\n"):
        lines = [line.strip() for line in block.splitlines() if line.strip() and not line.startswith("#")]
        if lines:
            blocks.append(lines)
    return blocks


def left_out():
    """From each file to the lines of it that are not changed."""
    lines = {}
    for block in blocks_of(LEFT_OUT):
        path = block[0]
        texts = [line.strip() for line in (ROOT / path).read_text().split("\n")]
        marked = [line[1:].strip() for line in block[1:] if line.startswith("=")]
        if not marked or len(marked) + 1 == len(block):
            sys.exit(f"{LEFT_OUT.name}: what is to be left out of {path}, or the reason, is missing")
        for text in marked:
            if text not in texts:
                print(f"{LEFT_OUT.name}: {path} has no line '{text}' any more", file=sys.stderr)
        lines.setdefault(path, set()).update(marked)
    return lines


def judgements():
    """From (file, old line, new line), stripped, to the reason why nothing can be noticed."""
    judged = {}
    for block in blocks_of(JUDGED):
        if len(block) < 4 or block[1][0] != "-" or block[2][0] != "+":
            sys.exit(f"{JUDGED.name}: not a file, an old line, a new line and a reason: {block[0]}")
        judged[(block[0], block[1][1:].strip(), block[2][1:].strip())] = " ".join(block[3:])
    return judged


def all_candidates(areas):
    found = []
    without = left_out()
    for area in areas:
        for pattern in AREAS[area][0]:
            paths = sorted(str(each.relative_to(ROOT)) for each in ROOT.glob(pattern))
            if not paths:
                sys.exit(f"scripts/mutants.py: there is no {pattern}; correct the list of areas")
            for path in paths:
                found += candidates(area, path, without.get(path, ()))
    return found
