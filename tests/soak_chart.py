#!/usr/bin/env python3
"""Draws the memory of a soak: `soak_chart.py CSV SVG`, a line of frames and KiB each."""

import sys

WIDTH, HEIGHT, LEFT, BOTTOM = 720, 240, 70, 40


def main(source, target):
    samples = [tuple(map(int, line.split(","))) for line in open(source)]
    last, most = max(frame for frame, _ in samples) or 1, max(kib for _, kib in samples)
    points = " ".join(f"{LEFT + frame / last * (WIDTH - LEFT - 20):.1f},{(1 - kib / most) * (HEIGHT - BOTTOM - 20) + 20:.1f}"
                      for frame, kib in samples)
    with open(target, "w") as svg:
        svg.write(f"""<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" font-family="sans-serif" font-size="13">
<rect width="100%" height="100%" fill="#fff"/>
<path d="M{LEFT} 20V{HEIGHT - BOTTOM}H{WIDTH - 20}" fill="none" stroke="#888"/>
<polyline points="{points}" fill="none" stroke="#2563c9" stroke-width="2"/>
<text x="{LEFT - 8}" y="25" text-anchor="end">{most} KiB</text><text x="{LEFT - 8}" y="{HEIGHT - BOTTOM}" text-anchor="end">0</text>
<text x="{WIDTH - 20}" y="{HEIGHT - 14}" text-anchor="end">{last:,} frames</text><text x="{LEFT}" y="{HEIGHT - 14}">0</text>
</svg>
""")
    settled = [kib for frame, kib in samples if frame >= 1000]
    print(f"{len(samples)} samples, after the first thousand frames {min(settled)} to {max(settled)} KiB: {target}")


if __name__ == "__main__":
    main(*sys.argv[1:])
