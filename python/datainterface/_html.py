# SPDX-License-Identifier: MIT
"""Nouns in notebooks: facts and a small map."""

import base64
import html
import struct
import zlib

import numpy as np

from . import _native

_WIDTH = 280
#: Five classes, light to dark; and objects without a value.
_COLORS = ("#eff3ff", "#bdd7e7", "#6baed6", "#3182bd", "#08519c")
_MISSING = "#d9d9d9"


def project_html(project):
    if project.closed:
        return f"<p>{html.escape(repr(project))}</p>"
    rows = [(geography.name, geography.shapes, geography.count, ", ".join(geography))
            for geography in project.geographies]
    return (f"<p><b>{html.escape(project.path or 'new project')}</b></p>"
            + _table(("geography", "shapes", "objects", "datasets"), rows))


def geography_html(geography, instant=None):
    if geography.shapes == "raster":
        facts = [("rows", geography.rows), ("columns", geography.columns)]
        return _page(geography.name, facts + [("datasets", ", ".join(geography))], "")
    if instant is None:
        instant = _native.geography_instant(geography._id, "")
    there = len(_native.objects_at(geography._id, instant))
    facts = [(geography.shapes, f"{there} of {geography.count}"),
             ("map of", _native.show_time(geography._id, instant)),
             ("datasets", ", ".join(geography))]
    return _page(geography.name, facts, _map(geography, instant, None))


def dataset_html(dataset):
    facts = [("of", dataset.geography.name), ("kind", dataset.kind)]
    spans = dataset._spans()
    if len(spans) == 0:
        return _page(dataset.name, facts + [("values", "none")], "")
    instant = int(spans[-1, 0])
    if not dataset.static:
        facts.append(("times", len(spans)))
        start, end, closed = spans[-1].tolist()
        facts.append(("map of", _native.show_span(dataset.geography._id, start, end, bool(closed))))
    if dataset.unit:
        facts.append(("unit", dataset.unit))
    values, _ = _native.values(dataset._id, instant, 0)
    if isinstance(values, list):
        return _page(dataset.name, facts, "")
    numbers = np.ma.filled(np.ma.asarray(dataset.values()).astype(float), np.nan).ravel()
    known = numbers[np.isfinite(numbers)]
    if len(known) == 0:
        return _page(dataset.name, facts + [("values", "none")], "")
    limits = np.quantile(known, np.linspace(0, 1, 6))
    facts.append(("values", f"{limits[0]:g} to {limits[-1]:g}, in five classes of equal numbers"))
    classes = np.where(np.isfinite(numbers), np.searchsorted(limits[1:-1], numbers), -1)
    if dataset.geography.shapes == "raster":
        picture = _picture(classes.reshape(dataset.geography.rows, dataset.geography.columns))
    else:
        picture = _map(dataset.geography, instant, classes)
    return _page(dataset.name, facts, picture)


def _page(title, facts, picture):
    return f"<p><b>{html.escape(title)}</b></p>{_table((), facts)}{picture}"


def _table(head, rows):
    cells = "".join(f"<th>{html.escape(name)}</th>" for name in head)
    lines = "".join("<tr>" + "".join(f"<td>{html.escape(str(cell))}</td>" for cell in row) + "</tr>"
                    for row in rows)
    return f"<table>{'<tr>' + cells + '</tr>' if cells else ''}{lines}</table>"


def _map(geography, instant, classes):
    """The outlines as SVG. Vertices that would fall on the pixel of the one before are left out."""
    objects, parts, sizes, places = _native.outlines(geography._id, instant)
    if len(places) == 0:
        return ""
    low, high = places.min(axis=0), places.max(axis=0)
    extent = np.maximum(high - low, 1e-300)
    scale = min(_WIDTH / extent[0], _WIDTH / extent[1])
    pixels = (places - low) * scale
    pixels[:, 1] = extent[1] * scale - pixels[:, 1]
    rounded = np.round(pixels, 1)
    ends = np.cumsum(sizes)
    shapes, part = [], 0
    for number, count in zip(objects, parts):
        path = []
        for index in range(part, part + count):
            points = rounded[ends[index] - sizes[index]:ends[index]]
            keep = np.ones(len(points), dtype=bool)
            keep[1:] = (np.abs(np.diff(np.round(points), axis=0)) > 0).any(axis=1)
            path.append(points[keep])
        part += count
        color = "#e8eef4" if classes is None else (
            _MISSING if classes[number] < 0 else _COLORS[classes[number]])
        if geography.shapes == "points":
            x, y = path[0][0]
            shapes.append(f'<circle cx="{x:g}" cy="{y:g}" r="2" fill="{color}"/>')
            continue
        closed = "Z" if geography.shapes == "polygons" else ""
        line = "".join("M" + " ".join(f"{x:g},{y:g}" for x, y in points) + closed
                       for points in path)
        fill = color if closed else "none"
        shapes.append(f'<path d="{line}" fill="{fill}" fill-rule="evenodd"/>')
    width, height = extent * scale
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{width + 4:.0f}" '
            f'height="{height + 4:.0f}" viewBox="-2 -2 {width + 4:.1f} {height + 4:.1f}" '
            f'stroke="#555" stroke-width="0.5">{"".join(shapes)}</svg>')


def _picture(classes):
    """A grid as an embedded image of at most _WIDTH columns."""
    step = max(1, -(-max(classes.shape) // _WIDTH))
    cells = classes[::step, ::step]
    colors = np.array([[int(color[i:i + 2], 16) for i in (1, 3, 5)]
                       for color in _COLORS + (_MISSING,)], dtype=np.uint8)
    rows, columns = cells.shape
    lines = b"".join(b"\0" + row.astype(np.uint8).tobytes()
                     for row in np.where(cells < 0, len(_COLORS), cells))

    def chunk(name, body):
        return (struct.pack(">I", len(body)) + name + body
                + struct.pack(">I", zlib.crc32(name + body)))

    image = (b"\x89PNG\r\n\x1a\n"
             + chunk(b"IHDR", struct.pack(">IIBBBBB", columns, rows, 8, 3, 0, 0, 0))
             + chunk(b"PLTE", colors.tobytes()) + chunk(b"IDAT", zlib.compress(lines))
             + chunk(b"IEND", b""))
    data = base64.b64encode(image).decode("ascii")
    size = f'width="{_WIDTH}"' if columns >= rows else f'height="{_WIDTH}"'
    return (f'<img {size} style="image-rendering:pixelated" alt="the grid" '
            f'src="data:image/png;base64,{data}"/>')
