#!/usr/bin/env python3
"""Draws docs/feature-scores.svg from scores that the library evaluated.

Usage: feature_scores | draw_feature_scores.py > docs/feature-scores.svg

`feature_scores` is the example of that name; it prints a row for each evaluated point. Everything that depends on
the functions, the levels y0 and y1 included, is read from those rows.
"""

import csv
import sys

PANEL_WIDTH, PANEL_HEIGHT = 335, 240
PLOT_LEFT, PLOT_TOP, PLOT_WIDTH, PLOT_HEIGHT = 62, 52, 245, 140
X_END = 10.0
# A score that changes by more than JUMP between values less than NEXT_TO apart has jumped.
JUMP, NEXT_TO = 0.05, 1e-9
TITLES = {
    "rising": "One-sided, rising: x0 \u2264 x1 \u2264 xc",
    "falling": "One-sided, falling: xc \u2264 x1 \u2264 x0",
    "two-sided": "Two-sided: a low part and a high part",
}
# The level at which each named value is read off.
LEVELS = {"x0": "y0", "x1": "y1", "x0h": "y0h", "x1h": "y1h"}

STYLE = """
text { font-family: "DejaVu Sans", Verdana, Helvetica, sans-serif; fill: #222222; }
.title { font-size: 14px; font-weight: bold; }
.label { font-size: 13px; }
.name { font-size: 13px; font-style: italic; }
.axis { stroke: #222222; stroke-width: 1.2; fill: none; }
.guide { stroke: #9a9a9a; stroke-width: 1; stroke-dasharray: 2 3; fill: none; }
.score { stroke: #0b5fa5; stroke-width: 2.6; fill: none; stroke-linejoin: round; stroke-linecap: round; }
.jump { stroke: #0b5fa5; stroke-width: 1.2; stroke-dasharray: 5 4; fill: none; }
.taken { fill: #0b5fa5; stroke: #0b5fa5; stroke-width: 1.6; }
.left-out { fill: #ffffff; stroke: #0b5fa5; stroke-width: 1.6; }
"""


def to_x(x):
    return PLOT_LEFT + PLOT_WIDTH * x / X_END


def to_y(score):
    return PLOT_TOP + PLOT_HEIGHT * (1.0 - score)


def number(value):
    return f"{value:.2f}".rstrip("0").rstrip(".")


def line(css, x1, y1, x2, y2):
    return f'<line class="{css}" x1="{number(x1)}" y1="{number(y1)}" x2="{number(x2)}" y2="{number(y2)}"/>'


def text(css, anchor, x, y, words):
    return f'<text class="{css}" text-anchor="{anchor}" x="{number(x)}" y="{number(y)}">{words}</text>'


def circle(css, point):
    return f'<circle class="{css}" cx="{number(to_x(point[0]))}" cy="{number(to_y(point[1]))}" r="4"/>'


def read(source):
    """Returns {shape: (named points, curve points)} in the order of the rows."""
    shapes = {}
    for row in csv.DictReader(source):
        marks, curve = shapes.setdefault(row["shape"], ({}, []))
        point = (float(row["x"]), float(row["score"]))
        if row["name"]:
            marks[row["name"]] = point
        elif 0.0 <= point[0] <= X_END:
            curve.append(point)
    return shapes


def split_at_jumps(curve):
    pieces = [[curve[0]]]
    for previous, point in zip(curve, curve[1:]):
        if abs(point[1] - previous[1]) > JUMP and point[0] - previous[0] < NEXT_TO:
            pieces.append([])
        pieces[-1].append(point)
    return pieces


def grouped(pairs):
    """Joins the names that share a place: [("xc", 5), ("xch", 5)] gives {5: "xc, xch"}."""
    names = {}
    for name, place in pairs:
        names[place] = f"{names[place]} = {name}" if place in names else name
    return names


def axes():
    bottom, right = to_y(0.0), PLOT_LEFT + PLOT_WIDTH
    parts = [
        line("axis", PLOT_LEFT, bottom, right + 12, bottom),
        line("axis", PLOT_LEFT, bottom, PLOT_LEFT, PLOT_TOP - 10),
        text("label", "end", right + 12, bottom + 40, "feature value x"),
        text("label", "start", PLOT_LEFT - 40, PLOT_TOP - 14, "score"),
    ]
    for score in (0, 1):
        parts.append(line("axis", PLOT_LEFT - 4, to_y(score), PLOT_LEFT, to_y(score)))
        parts.append(text("label", "end", PLOT_LEFT - 34, to_y(score) + 4.5, str(score)))
    return parts


def guides(marks):
    parts = []
    for x, name in grouped((name, mark[0]) for name, mark in marks.items()).items():
        top = max(mark[1] for mark in marks.values() if mark[0] == x)
        parts.append(line("guide", to_x(x), to_y(0.0), to_x(x), to_y(top)))
        parts.append(text("name", "middle", to_x(x), to_y(0.0) + 18, name))
    for score, name in grouped((LEVELS[name], mark[1]) for name, mark in marks.items() if name in LEVELS).items():
        far = max(mark[0] for mark_name, mark in marks.items() if mark_name in LEVELS and mark[1] == score)
        parts.append(line("guide", PLOT_LEFT, to_y(score), to_x(far), to_y(score)))
        parts.append(text("name", "end", PLOT_LEFT - 6, to_y(score) + 4.5, name))
    return parts


def curves(marks, curve):
    named = {mark for mark in marks.values()}
    pieces = split_at_jumps(curve)
    parts = []
    for left, right in zip(pieces, pieces[1:]):
        x = to_x(left[-1][0])
        parts.append(line("jump", x, to_y(left[-1][1]), x, to_y(right[0][1])))
    for piece in pieces:
        points = dict.fromkeys(f"{number(to_x(x))},{number(to_y(score))}" for x, score in piece)
        parts.append(f'<polyline class="score" points="{" ".join(points)}"/>')
    for left, right in zip(pieces, pieces[1:]):
        for point in (left[-1], right[0]):
            parts.append(circle("taken" if point in named else "left-out", point))
    return parts


def panel(column, shape, marks, curve):
    title = text("title", "start", 22, 22, TITLES[shape])
    body = [title, *axes(), *guides(marks), *curves(marks, curve)]
    return [f'<g transform="translate({column * PANEL_WIDTH} 0)">', *body, "</g>"]


def main():
    sys.stdout.reconfigure(encoding="utf-8")
    shapes = read(sys.stdin)
    width = PANEL_WIDTH * len(shapes)
    print(f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{PANEL_HEIGHT}" '
          f'viewBox="0 0 {width} {PANEL_HEIGHT}" role="img">')
    print("<title>The shapes of the feature score functions</title>")
    print(f"<style>{STYLE}</style>")
    print(f'<rect width="{width}" height="{PANEL_HEIGHT}" fill="#ffffff"/>')
    for column, (shape, (marks, curve)) in enumerate(shapes.items()):
        print("\n".join(panel(column, shape, marks, curve)))
    print("</svg>")


if __name__ == "__main__":
    main()
