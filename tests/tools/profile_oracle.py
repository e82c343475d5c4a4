#!/usr/bin/python3
"""An independent check of `orvane profile` on one drawing, with ezdxf and shapely.

usage: profile_oracle.py DRAWING.dxf REPORT.json OUT.dxf
       profile_oracle.py --areas DRAWING.dxf   (the pipeline alone, for the benchmark)

Flattens every model-space entity with ezdxf (blocks through their virtual entities), snaps
end points that lie within the join tolerance the report states, merges the lines into rings
with shapely and nests the rings: parts at even depth, holes at odd depth. The number of parts, of holes and
the net areas must agree with the report within the flattening error. Then reads OUT.dxf back:
ezdxf's audit must find no error, it must hold the same parts and holes, and its boundaries
must lie within the arc tolerance (plus the flattening error) of the drawing's closed
contours, both ways. Exit status 0 when all holds; the findings go to standard output.
"""
import json
import math
import sys

import ezdxf
from ezdxf import path as ezpath
from shapely.geometry import LineString, Point, Polygon
from shapely.ops import linemerge
from shapely.strtree import STRtree

CURVES = {"LINE", "ARC", "CIRCLE", "LWPOLYLINE", "POLYLINE", "SPLINE", "ELLIPSE"}


def entities(layout):
    for e in layout:
        if e.dxftype() == "INSERT":
            yield from entities(e.virtual_entities())
        elif e.dxftype() in CURVES:
            yield e


def flat_pieces(doc, dist):
    pieces = []
    for e in entities(doc.modelspace()):
        pts = [(v.x, v.y) for v in ezpath.make_path(e).flattening(dist)]
        if len(pts) >= 2:
            pieces.append(pts)
    return pieces


class Snapper:
    """Ends within tol of an earlier end become that end."""

    def __init__(self, tol):
        self.tol, self.cells = tol, {}

    def __call__(self, p):
        cx, cy = math.floor(p[0] / self.tol), math.floor(p[1] / self.tol)
        for dx in (-1, 0, 1):
            for dy in (-1, 0, 1):
                for q in self.cells.get((cx + dx, cy + dy), ()):
                    if math.dist(p, q) <= self.tol:
                        return q
        self.cells.setdefault((cx, cy), []).append(p)
        return p


def nest(pieces, tol):
    snap = Snapper(tol)
    lines = []
    for pts in pieces:
        pts = [snap(pts[0])] + pts[1:-1] + [snap(pts[-1])]
        if len(set(pts)) >= 2:
            lines.append(LineString(pts))
    # Contours as drawn: lines merged end to end where exactly two meet. Contours that cross or
    # share a corner are kept apart, as a cutting machine runs them.
    merged = linemerge(lines)
    merged = list(merged.geoms) if hasattr(merged, "geoms") else [merged]
    rings = [Polygon(m.coords) for m in merged if m.is_ring]
    rings.sort(key=lambda r: -r.area)
    depth, parent = [0] * len(rings), [-1] * len(rings)
    for i, r in enumerate(rings):
        # Most of the contour inside, by length: a contour that crosses another a little is in it.
        pts = [r.exterior.interpolate((k + 0.5) / 16, normalized=True) for k in range(16)]
        for j in range(i - 1, -1, -1):
            if rings[j].area > r.area and 2 * sum(rings[j].contains(p) for p in pts) > len(pts):
                parent[i], depth[i] = j, depth[j] + 1
                break
    parts = {i: rings[i].area for i in range(len(rings)) if depth[i] % 2 == 0}
    holes = 0
    for i in range(len(rings)):
        if depth[i] % 2 == 1:
            parts[parent[i]] -= rings[i].area
            holes += 1
    return sorted(parts.values(), reverse=True), holes, [r.exterior for r in rings]


def far(points, rings):
    """Largest distance from the points (at most some 20000 of them) to the nearest ring."""
    if not rings:
        return math.inf if points else 0.0
    tree = STRtree(rings)
    points = points[:: max(1, len(points) // 20000)]
    return max((tree.nearest(Point(p)).distance(Point(p)) for p in points), default=0.0)


def areas_only(drawing):
    """The peer pipeline alone (for the benchmark): parts, holes and net areas as JSON."""
    doc = ezdxf.readfile(drawing)
    paths = [ezpath.make_path(e) for e in entities(doc.modelspace())]
    xs, ys = zip(*[(v.x, v.y) for p in paths for v in p.control_vertices()])
    diag = math.hypot(max(xs) - min(xs), max(ys) - min(ys)) or 1.0
    areas, holes, _ = nest(flat_pieces(doc, 1e-5 * diag), 1e-6 * diag)
    print(json.dumps({"parts": len(areas), "holes": holes, "areas": areas}))
    return 0


def main():
    if sys.argv[1] == "--areas":
        return areas_only(sys.argv[2])
    drawing, report_path, out_path = sys.argv[1:4]
    report = json.load(open(report_path))
    problems = []
    doc = ezdxf.readfile(drawing)
    try:
        paths = [ezpath.make_path(e) for e in entities(doc.modelspace())]
    except (ezdxf.DXFError, ValueError) as e:  # ezdxf refuses some valid splines (periodic knot vectors)
        print(f"oracle cannot read {drawing}: {e}; skipped")
        return 0
    xs, ys = zip(*[(v.x, v.y) for p in paths for v in p.control_vertices()])
    diag = math.hypot(max(xs) - min(xs), max(ys) - min(ys)) or 1.0
    dist = 1e-5 * diag
    pieces = flat_pieces(doc, dist)
    join = report["tolerances"]["join"]
    areas, holes, rings = nest(pieces, join)
    ours = [p["area"] for p in report["parts"]]
    our_holes = sum(p["holes"] for p in report["parts"])
    if len(ours) != len(areas) or our_holes != holes:
        problems.append(f"parts/holes: ours {len(ours)}/{our_holes}, oracle {len(areas)}/{holes}")
    for k, (a, b) in enumerate(zip(ours, areas)):
        length = report["parts"][k]["outline_length"]
        if abs(a - b) > 4 * dist * length + 1e-6 * abs(b) + 1e-12:
            problems.append(f"part {k}: net area ours {a!r}, oracle {b!r}")

    # Our output read back.
    out = ezdxf.readfile(out_path)
    auditor = out.audit()
    if auditor.has_errors:
        problems.append(f"audit of our DXF: {len(auditor.errors)} errors")
    kinds = {e.dxftype() for e in out.modelspace()}
    if kinds - {"LWPOLYLINE"}:
        problems.append(f"our DXF holds {kinds}")
    out_pieces = flat_pieces(out, dist)
    out_areas, out_holes, out_rings = nest(out_pieces, join)
    if len(out_areas) != len(areas) or out_holes != holes:
        problems.append(f"our DXF: parts/holes {len(out_areas)}/{out_holes}, drawing {len(areas)}/{holes}")
    arc_tol = report["tolerances"]["arcs"]
    allowed = arc_tol + 3 * dist + 1e-9 * diag
    there = far([p for ring in out_pieces for p in ring], rings)
    back = far([c for r in rings for c in r.coords], out_rings)
    if max(there, back) > allowed:
        problems.append(f"our DXF strays {there:g} / {back:g} from the drawing, allowed {allowed:g}")
    print(f"{drawing}: parts {len(areas)}, holes {holes}, output deviation {max(there, back):g} (allowed {allowed:g})")
    for p in problems:
        print("  " + p)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
