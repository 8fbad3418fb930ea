"""Draws the page's two charts as SVG that reads on light and on dark ground."""

import math
from html import escape

STYLE = """<style>
  text { font: 12px system-ui, sans-serif; fill: #24292f; }
  .title { font-weight: 600; }
  .quiet { fill: #57606a; }
  .grid { stroke: #d0d7de; stroke-width: 1; }
  .peer { stroke: #57606a; stroke-width: 1.5; stroke-dasharray: 4 3; }
  .met { fill: #2da44e; }
  .missed { fill: #d4802a; }
  .target { stroke: #24292f; stroke-width: 2.5; }
  .floor { fill: none; stroke: #24292f; stroke-width: 1.3; }
  .line { fill: none; stroke-width: 2; }
  .ours { stroke: #2da44e; } .dot.ours { fill: #2da44e; }
  .portable { stroke: #8250df; } .dot.portable { fill: #8250df; }
  .library { stroke: #0969da; } .dot.library { fill: #0969da; }
  @media (prefers-color-scheme: dark) {
    text { fill: #e6edf3; }
    .quiet { fill: #9198a1; }
    .grid { stroke: #3d444d; }
    .peer { stroke: #9198a1; }
    .target, .floor { stroke: #e6edf3; }
    .portable { stroke: #b394f4; } .dot.portable { fill: #b394f4; }
    .library { stroke: #58a6ff; } .dot.library { fill: #58a6ff; }
  }
</style>"""


def text(x, y, content, style="", anchor="start"):
    return f'<text x="{x:.1f}" y="{y:.1f}" class="{style}" text-anchor="{anchor}">{escape(content)}</text>'


def line(x1, y1, x2, y2, style):
    return f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" class="{style}"/>'


def svg(width, height, label, parts):
    head = (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" '
            f'height="{height}" role="img" aria-label="{escape(label)}">')
    return "\n".join([head, STYLE, *parts, "</svg>"]) + "\n"


def ratio_chart(jobs):
    """One bar a job: its time as a share of the fastest peer's."""
    left, plot, row, top, limit = 255, 480, 22, 46, 1.6
    bottom = top + row * len(jobs)
    x = lambda ratio: left + plot * min(ratio, limit) / limit
    parts = [text(8, 18, "Time as a share of the fastest peer's (shorter is faster)", "title")]
    parts += [f'<rect x="{left}" y="27" width="14" height="9" class="met"/>',
              text(left + 19, 36, "target met"),
              f'<rect x="{left + 95}" y="27" width="14" height="9" class="missed"/>',
              text(left + 114, 36, "target missed"),
              line(left + 212, 26, left + 212, 37, "target"), text(left + 219, 36, "target"),
              f'<circle cx="{left + 275}" cy="31.5" r="3.5" class="floor"/>',
              text(left + 283, 36, "floor: only moving the data")]
    for tenths in range(0, int(limit * 10) + 1, 2):
        at = x(tenths / 10)
        parts.append(line(at, top, at, bottom, "peer" if tenths == 10 else "grid"))
        parts.append(text(at, bottom + 16, f"{tenths / 10:.1f}", "quiet", "middle"))
    parts.append(text(x(1), bottom + 32, "the fastest peer", "quiet", "middle"))
    for i, job in enumerate(jobs):
        y = top + row * i
        met = job.excess <= 0
        parts.append(text(left - 8, y + 15, job.name, "", "end"))
        parts.append(f'<rect x="{left}" y="{y + 4}" width="{x(job.ratio) - left:.1f}" height="{row - 8}" '
                     f'class="{"met" if met else "missed"}"/>')
        if job.target:
            parts.append(line(x(job.target), y + 2, x(job.target), y + row - 2, "target"))
        floor = job.times["floor"] / job.fastest_peer[1]
        parts.append(f'<circle cx="{x(floor):.1f}" cy="{y + row / 2}" r="3.5" class="floor"/>')
        value = f"{job.ratio:.2f}" + ("" if met else " missed")
        parts.append(text(x(max(job.ratio, job.target, floor)) + 8, y + 15, value))
    return svg(left + plot + 110, bottom + 42, "Time of each job as a share of the fastest peer's", parts)


class LogAxis:
    """Places values on a logarithmic axis and names its ticks."""

    def __init__(self, values, start, end):
        self.low, self.high = math.log10(min(values)) - 0.05, math.log10(max(values)) + 0.05
        self.start, self.end = start, end

    def __call__(self, value):
        share = (math.log10(value) - self.low) / (self.high - self.low)
        return self.start + share * (self.end - self.start)

    def ticks(self):
        steps = (1,) if self.high - self.low > 2.5 else (1, 2, 5)
        values = [step * 10.0**power for power in range(math.floor(self.low), math.ceil(self.high))
                  for step in steps]
        return [value for value in values if self.low <= math.log10(value) <= self.high]


class LinearAxis:
    def __init__(self, values, start, end):
        self.high, self.start, self.end = max(values), start, end

    def __call__(self, value):
        return self.start + value / self.high * (self.end - self.start)

    def ticks(self):
        return [self.high * share / 6 for share in range(7)]


def short(value):
    for limit, letter in ((1e6, "M"), (1e3, "k")):
        if value >= limit:
            return f"{value / limit:.3g}{letter}"
    return f"{value:.3g}"


def way_style(way):
    return way if way in ("ours", "portable") else "library"


def panel(x0, y0, title, x_name, curves, x_axis):
    """curves: way -> list of (x, y)."""
    width, height = 330, 190
    xs = [x for points in curves.values() for x, _ in points]
    ys = [y for points in curves.values() for _, y in points]
    to_x = x_axis(xs, x0 + 48, x0 + 48 + width)
    to_y = LogAxis(ys, y0 + 30 + height, y0 + 30)
    parts = [text(x0 + 48, y0 + 18, title, "title")]
    for tick in to_y.ticks():
        parts.append(line(x0 + 48, to_y(tick), x0 + 48 + width, to_y(tick), "grid"))
        parts.append(text(x0 + 42, to_y(tick) + 4, short(tick), "quiet", "end"))
    for tick in to_x.ticks():
        parts.append(text(to_x(tick), y0 + height + 48, short(tick), "quiet", "middle"))
    parts.append(text(x0 + 48 + width / 2, y0 + height + 66, x_name, "quiet", "middle"))
    names_below = 0.0  # two lines may end side by side, their names may not
    for way, points in sorted(curves.items(), key=lambda item: -item[1][-1][1]):
        style = way_style(way)
        path = " ".join(f"{to_x(x):.1f},{to_y(y):.1f}" for x, y in points)
        parts.append(f'<polyline points="{path}" class="line {style}"/>')
        parts += [f'<circle cx="{to_x(x):.1f}" cy="{to_y(y):.1f}" r="2.5" class="dot {style}"/>'
                  for x, y in points]
        names_below = max(to_y(points[-1][1]) + 4, names_below + 13)
        parts.append(text(to_x(points[-1][0]) + 7, names_below, way))
    return parts


def per(points, unit):
    """way -> (x, ns per unit), with the unit an attribute of the points, or None for µs as they are."""
    curves = {}
    for point in points:
        for way, time in point.times.items():
            y = time if unit is None else time * 1e3 / getattr(point, unit)
            curves.setdefault(way, []).append((point.x, y))
    return curves


def growth_chart(curves):
    size = "source pixels"
    parts = panel(0, 0, "NV21 to RGB: ns per pixel", size, per(curves["colour"], "source_pixels"), LogAxis)
    parts += panel(460, 0, "Region finding, 640 x 480: µs", "regions", per(curves["regions"], None),
                   LinearAxis)
    parts += panel(0, 285, "Shrink to 256 x 192: ns per source pixel", size,
                   per(curves["shrink"], "source_pixels"), LogAxis)
    parts += panel(460, 285, "Shrink to 256 x 192: ns per output pixel", size,
                   per(curves["shrink"], "output_pixels"), LogAxis)
    return svg(910, 560, "How time grows with the size of the frame and the number of regions", parts)
