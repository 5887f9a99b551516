"""The report's pictures: plain SVG with its own colours for light and dark."""

import math

STYLE = """<style>
.ground { fill: #ffffff } .ink { fill: #1f2328 } .soft { fill: #59636e }
.frame { stroke: #59636e; fill: none } .grid { stroke: #d1d9e0; fill: none }
.ideal { stroke: #59636e; stroke-dasharray: 4 3 }
.one { stroke: #0550ae; fill: none } .one-dot { fill: #0550ae }
.two { stroke: #bc4c00; fill: none } .two-dot { fill: #bc4c00 }
text { font-family: sans-serif; font-size: 12px }
@media (prefers-color-scheme: dark) {
.ground { fill: #0d1117 } .ink { fill: #f0f6fc } .soft { fill: #9198a1 }
.frame { stroke: #9198a1 } .grid { stroke: #3d444d } .ideal { stroke: #9198a1 }
.one { stroke: #58a6ff } .one-dot { fill: #58a6ff } .two { stroke: #f0883e } .two-dot { fill: #f0883e }
}
</style>"""
WIDTH, HEIGHT = 360, 320
LEFT, RIGHT, TOP, BOTTOM = 56, 16, 36, 52


def steps(low, high, most=6):
    """Round tick values within low..high."""
    for size in (factor * 10.0**power for power in range(-4, 5) for factor in (1, 2, 5)):
        if (high - low) / size <= most:
            break
    return [k * size for k in range(math.ceil(low / size - 1e-9), math.floor(high / size + 1e-9) + 1)]


class Panel:
    """One diagram; x and y are (low, high)."""

    def __init__(self, left, title, x_label, y_label, x, y):
        self.left, self.x, self.y = left, x, y
        self.parts = [f'<text class="ink" x="{left + LEFT}" y="20" font-weight="bold">{title}</text>']
        for tick in steps(*x):
            self.parts.append(self._line("grid", (tick, y[0]), (tick, y[1])))
            self._text(self.across(tick), HEIGHT - BOTTOM + 16, f"{tick:g}", "middle", "soft")
        for tick in steps(*y):
            self.parts.append(self._line("grid", (x[0], tick), (x[1], tick)))
            self._text(left + LEFT - 6, self.down(tick) + 4, f"{tick:g}", "end", "soft")
        self.parts.append(
            f'<rect class="frame" x="{left + LEFT}" y="{TOP}" width="{WIDTH - LEFT - RIGHT}" '
            f'height="{HEIGHT - TOP - BOTTOM}"/>'
        )
        self._text(left + LEFT + (WIDTH - LEFT - RIGHT) / 2, HEIGHT - 14, x_label, "middle")
        middle = TOP + (HEIGHT - TOP - BOTTOM) / 2
        self.parts.append(
            f'<text class="ink" text-anchor="middle" transform="translate({left + 16} {middle:.0f}) '
            f'rotate(-90)">{y_label}</text>'
        )

    def across(self, value):
        return self.left + LEFT + (value - self.x[0]) / (self.x[1] - self.x[0]) * (WIDTH - LEFT - RIGHT)

    def down(self, value):
        return HEIGHT - BOTTOM - (value - self.y[0]) / (self.y[1] - self.y[0]) * (HEIGHT - TOP - BOTTOM)

    def _line(self, style, first, second):
        return (
            f'<line class="{style}" x1="{self.across(first[0]):.1f}" y1="{self.down(first[1]):.1f}" '
            f'x2="{self.across(second[0]):.1f}" y2="{self.down(second[1]):.1f}"/>'
        )

    def _text(self, x, y, text, anchor="start", style="ink"):
        self.parts.append(
            f'<text class="{style}" x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}">{text}</text>'
        )

    def diagonal(self):
        self.parts.append(self._line("ideal", (self.x[0], self.x[0]), (self.x[1], self.x[1])))

    def series(self, style, points, name="", row=0):
        """Points (x, (y, low, high)) with error bars, joined by a line; `row` places the name in the key."""
        points = [point for point in points if point[1] is not None]

        def clamp(value):
            return min(max(value, self.y[0]), self.y[1])

        path = " ".join(f"{self.across(x):.1f},{self.down(clamp(y[0])):.1f}" for x, y in points)
        self.parts.append(f'<polyline class="{style}" points="{path}"/>')
        for x, (y, low, high) in points:
            self.parts.append(self._line(style, (x, clamp(low)), (x, clamp(high))))
            self.parts.append(
                f'<circle class="{style}-dot" cx="{self.across(x):.1f}" cy="{self.down(clamp(y)):.1f}" '
                'r="3"/>'
            )
        if name:
            x, y = self.left + LEFT + 12, TOP + 16 + 16 * row
            self.parts.append(f'<circle class="{style}-dot" cx="{x}" cy="{y - 4}" r="4"/>')
            self._text(x + 10, y, name)


def save(path, description, panels):
    width = WIDTH * len(panels)
    body = "\n".join("\n".join(panel.parts) for panel in panels)
    with open(path, "w") as handle:
        handle.write(
            f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {HEIGHT}" width="{width}" '
            f'height="{HEIGHT}" role="img">\n<title>{description}</title>\n{STYLE}\n'
            f'<rect class="ground" width="{width}" height="{HEIGHT}"/>\n{body}\n</svg>\n'
        )


def draw_distance(path, rows):
    """Error of the accepted predictions against DIST; rows as from Figures.by_distance."""
    medians = [row[2] for row in rows]
    margin = 0.04 * (medians[-1] - medians[0]) or 0.5
    span = (medians[0] - margin, medians[-1] + margin)
    label = "DIST (distances), median of a tenth of them"
    errors = Panel(0, "Error by DIST", label, "RMSD, degrees", span, (0.0, 30.0))
    errors.series("one", list(zip(medians, (row[4] for row in rows))), "phi", 0)
    errors.series("two", list(zip(medians, (row[5] for row in rows))), "psi", 1)
    top = min(max(10.0, 1.05 * max(row[6][2] for row in rows)), 100.0)
    wrong = Panel(WIDTH, "Wrong predictions by DIST", label, "wrong among the accepted, %", span, (0.0, top))
    wrong.series("one", list(zip(medians, (row[6] for row in rows))))
    save(
        path,
        "Error and wrong share of the accepted predictions against DIST, with 95 % intervals",
        [errors, wrong],
    )


def draw_reliability(path, diagrams):
    """Reliability diagrams: (title, rows of Figures.calibration) each."""
    panels = []
    for number, (title, low, rows) in enumerate(diagrams):
        panel = Panel(
            number * WIDTH, title, "probability stated, %", "share right, %", (low, 100.0), (low, 100.0)
        )
        panel.diagonal()
        panel.series("one", [(row[3], row[4]) for row in rows])
        panels.append(panel)
    save(path, "Stated probability against the share that is right, with 95 % intervals", panels)
