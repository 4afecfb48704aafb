#!/usr/bin/env python3
"""Tests of scripts/check-headers: each rule with a header that keeps it and one that does not."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECKER = pathlib.Path(__file__).resolve().parents[2] / "scripts" / "check-headers"

COMMENT = """/// Counts sheep.
///
/// Initial state: none counted.
///
/// Ownership: a plain value. Threads: as any plain value.
"""


def header(body="", name="SHEEP", first="", comment=COMMENT):
    guard = f"VXCLASSIFIER_{name}_H"
    return (
        f"#ifndef {guard}\n#define {guard}\n{first}\n{comment}"
        f"class VXCLASSIFIER_API vxSheep {{\n{body}}};\n\n#endif\n"
    )


class CheckHeaders(unittest.TestCase):
    def check(self, **files):
        """Runs the checker over headers, given as name (without .h) = text, and returns what it prints."""
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder) / "vxclassifier"
            root.mkdir()
            for name, text in files.items():
                (root / f"{name}.h").write_text(text, encoding="utf-8")
            run = subprocess.run(
                [sys.executable, str(CHECKER), folder], capture_output=True, text=True, check=False
            )
            self.assertEqual(run.stderr, "")
            self.assertEqual(run.returncode, 1 if run.stdout else 0)
            return run.stdout.replace(str(root) + "/", "")

    def test_a_good_header_passes(self):
        self.assertEqual(self.check(sheep=header()), "")

    def test_a_folder_without_headers_is_a_finding(self):
        self.assertIn("there is no header here", self.check())

    def test_each_missing_fact_is_named(self):
        self.assertEqual(
            self.check(sheep=header(comment="")),
            'sheep.h:4: the comment above vxSheep lacks what it is for, "Initial state:", "Ownership:", "Threads:"\n',
        )
        for fact, line in (
            ("what it is for", "/// Counts sheep.\n"),
            ('"Initial state:"', "/// Initial state: none counted.\n"),
            ('"Ownership:"', "Ownership: a plain value. "),
            ('"Threads:"', " Threads: as any plain value."),
        ):
            comment = COMMENT.replace(line, "///\n" if line.startswith("///") else "")
            self.assertNotEqual(comment, COMMENT)
            found = self.check(sheep=header(comment=comment))
            self.assertTrue(found.endswith(f": the comment above vxSheep lacks {fact}\n"), found)

    def test_facts_may_be_given_together(self):
        for facts in (
            "Initial state: none. Ownership and threads: as for vxPtrHandle.",
            "Initial state, ownership, threads: as for vxPtrHandle.",
            "States: open, closed. Ownership: none. Threads: any.",
        ):
            self.assertEqual(self.check(sheep=header(comment=f"/// Counts.\n///\n/// {facts}\n")), "")

    def test_a_label_without_text_gives_no_fact(self):
        comment = COMMENT.replace("Threads: as any plain value.", "Threads:")
        self.assertIn('lacks "Threads:"', self.check(sheep=header(comment=comment)))

    def test_a_word_within_a_sentence_gives_no_fact(self):
        comment = COMMENT.replace("Threads: as any plain value.", "It counts threads: all of them.")
        self.assertIn('lacks "Threads:"', self.check(sheep=header(comment=comment)))

    def test_a_comment_that_is_apart_from_the_class_does_not_count(self):
        self.assertIn("lacks what it is for", self.check(sheep=header(comment=COMMENT + "\n")))

    def test_an_exported_base_on_the_next_line_and_a_template_head_are_seen_through(self):
        text = header(comment="").replace("vxSheep {", "vxSheep\n    : public vxAnimal {")
        self.assertIn("vxSheep lacks", self.check(sheep=text))
        text = header(comment=COMMENT + "template <class T>\n")
        self.assertEqual(self.check(sheep=text), "")

    def test_announced_nested_and_unexported_classes_need_no_facts(self):
        first = "class VXCLASSIFIER_API vxGoat;\nclass vxWolf {};\n"
        self.assertEqual(self.check(sheep=header(first=first, body="    class VXCLASSIFIER_API Wool {};\n")), "")

    def test_heavy_and_foreign_headers_are_refused(self):
        for heavy in ("iostream", "map", "unordered_map", "regex", "Eigen/Dense", "unistd.h"):
            self.assertIn(
                f"sheep.h:3: <{heavy}> is not one of the light headers",
                self.check(sheep=header(first=f"#include <{heavy}>\n")),
            )
        self.assertEqual(self.check(sheep=header(first="#include <vector>\n")), "")

    def test_headers_that_are_not_public_are_refused(self):
        self.assertIn(
            "<vxclassifier/wool.h> is not a public header",
            self.check(sheep=header(first="#include <vxclassifier/wool.h>\n")),
        )
        self.assertIn(
            '"platform/wool.h" should be included with angle brackets',
            self.check(sheep=header(first='#include "platform/wool.h"\n')),
        )

    def test_the_guard_is_the_path_and_the_only_condition(self):
        self.assertIn(
            "goat.h:1: the include guard should be VXCLASSIFIER_GOAT_H", self.check(goat=header(name="SHEEP"))
        )
        self.assertIn("should be VXCLASSIFIER_SHEEP_H", self.check(sheep="#pragma once\n"))
        for condition in ("#ifdef NDEBUG", "#if NDEBUG", "# ifndef NDEBUG"):
            self.assertIn(
                "sheep.h:3: a public header reads no macro, but there is #",
                self.check(sheep=header(first=f"{condition}\n#endif\n")),
            )

    def test_the_header_of_all_includes_each_directly_or_not(self):
        def plain(name, *included):
            guard = f"VXCLASSIFIER_{name.upper()}_H"
            lines = "".join(f"#include <vxclassifier/{other}.h>\n" for other in included)
            return f"#ifndef {guard}\n#define {guard}\n{lines}#endif\n"

        files = {"vxclassifier": plain("vxclassifier", "a"), "a": plain("a", "b"), "b": plain("b", "a")}
        self.assertEqual(self.check(**files), "")
        files["c"] = plain("c", "a")
        self.assertEqual(
            self.check(**files), "c.h:1: <vxclassifier/vxclassifier.h> does not include this header\n"
        )


if __name__ == "__main__":
    unittest.main()
