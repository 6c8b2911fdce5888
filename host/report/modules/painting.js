// Many shapes as a painting beneath the map's lines, where elements of their own would be too many to move with a
// slider: one canvas of fills, of which a step repaints what changed its colour, and one of borders above it.
import {element} from "./format.js";

const kMostPixels = 2400; // along the longer side
const kRepaint = 200; // milliseconds without a step, after which everything is painted afresh

export function createPainting(geography, pad, outline) {
    const {width, height, kind} = geography;
    const [wide, high] = [width + 2 * pad, height + 2 * pad];
    const layers = ["fills", "borders"].map((name) => element("canvas", {class: name, "aria-hidden": "true"}));
    const [fills, borders] = layers.map((canvas) => canvas.getContext("2d"));
    const probe = element("canvas", {width: 1, height: 1}).getContext("2d");
    const node = element("div", {class: "grid painted"}, ...layers);
    node.style.aspectRatio = `${wide} / ${high}`;
    node.style.maxWidth = `calc(72vh * ${wide / high})`;
    const paths = new Map();
    const arcs = new Map();
    const boxes = new Map();
    let scale = 0;
    let shown = null; // {shapes, colors, dimmed} as they were asked for last
    let inks = null;
    let waiting = 0;

    const kept = (map, key, make) => {
        if (!map.has(key)) map.set(key, make());
        return map.get(key);
    };
    const pathOf = (shape) => kept(paths, shape, () => new Path2D(outline(shape)));
    const boxOf = (shape) => kept(boxes, shape, () => {
        const places = geography.shapes.places.length ? [geography.shapes.places[shape]] : geography.ringsOf(shape).flat();
        return [...d3.extent(places, (place) => place[0]), ...d3.extent(places, (place) => place[1])];
    });

    /** Colours of the page's style; a canvas does not follow them by itself. */
    function mixInks() {
        const style = getComputedStyle(document.documentElement);
        const stripes = element("canvas", {width: 8, height: 8});
        const pen = stripes.getContext("2d");
        pen.fillStyle = style.getPropertyValue("--hatch");
        pen.fillRect(0, 0, 8, 8);
        pen.fillStyle = style.getPropertyValue("--hatch-line");
        for (let i = 0; i < 8; ++i) pen.fillRect(i, i, 2, 2);
        const missing = fills.createPattern(stripes, "repeat");
        missing.setTransform(new DOMMatrix().scale(1 / scale));
        return {missing, plain: style.getPropertyValue("--plain"), border: style.getPropertyValue("--border")};
    }

    function clear(context) {
        context.setTransform(1, 0, 0, 1, 0, 0);
        context.clearRect(0, 0, context.canvas.width, context.canvas.height);
        context.setTransform(scale, 0, 0, scale, pad * scale, pad * scale);
    }

    function fill(objects) {
        const {shapes, colors, dimmed} = shown;
        inks = inks || mixInks();
        fills.lineWidth = pad / 2;
        let ink;
        for (const i of objects) {
            const color = colors[i];
            if (color !== ink) {
                ink = color;
                fills.fillStyle = fills.strokeStyle = !color ? inks.missing : color === "plain" ? inks.plain : color;
            }
            fills.globalAlpha = dimmed && dimmed(i) ? 0.28 : 1;
            if (kind === "lines") fills.stroke(pathOf(shapes[i]));
            else fills.fill(pathOf(shapes[i]), "evenodd");
        }
    }

    /** Each line once, also where it is the border of two. */
    function drawBorders() {
        clear(borders);
        if (kind !== "polygons") return;
        borders.strokeStyle = inks.border;
        borders.lineWidth = pad / 16;
        borders.lineJoin = "round";
        const numbers = new Set();
        for (const shape of shown.shapes)
            if (shape >= 0) for (const ring of geography.shapes.shapes[shape]) for (const arc of ring) numbers.add(arc < 0 ? ~arc : arc);
        for (const number of numbers)
            borders.stroke(kept(arcs, number, () => new Path2D(`M${geography.arcs[number].join("L")}`)));
    }

    const present = () => d3.range(shown.shapes.length).filter((i) => shown.shapes[i] >= 0);

    function drawAll(withBorders) {
        if (!shown || !scale) return;
        clear(fills);
        fill(present());
        if (withBorders) drawBorders();
    }

    /** As many pixels as the screen shows. */
    function resize(pixels) {
        const next = Math.min(kMostPixels / Math.max(wide, high), pixels / wide);
        if (!(next > 0) || Math.abs(next - scale) < 1e-9) return;
        scale = next;
        inks = null;
        for (const canvas of layers) [canvas.width, canvas.height] = [Math.ceil(wide * scale), Math.ceil(high * scale)];
        drawAll(true);
    }
    new ResizeObserver(() => resize(node.clientWidth * devicePixelRatio)).observe(node);
    addEventListener("beforeprint", () => resize(kMostPixels));
    addEventListener("afterprint", () => resize(node.clientWidth * devicePixelRatio));
    matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => {
        inks = null;
        drawAll(true);
    });

    return {
        node,
        /** Of each object its shape (-1: none), its colour ("plain", or null without a value), and whether it is dimmed. */
        draw(next) {
            const before = shown;
            shown = next;
            if (!scale) return;
            const moved = !before || next.shapes.some((shape, i) => shape !== before.shapes[i]);
            clearTimeout(waiting);
            if (moved || before.dimmed || next.dimmed) return drawAll(moved);
            fill(present().filter((i) => next.colors[i] !== before.colors[i]));
            // The smoothed edges of a shape leave a trace of its colours before.
            waiting = setTimeout(drawAll, kRepaint);
        },
        /** The topmost object at a place of the map, or -1. */
        objectAt([x, y], slack) {
            probe.lineWidth = pad / 2 + 2 * slack;
            for (let i = shown.shapes.length - 1; i >= 0; --i) {
                if (shown.shapes[i] < 0) continue;
                const [left, right, top, bottom] = boxOf(shown.shapes[i]);
                if (x < left - pad || x > right + pad || y < top - pad || y > bottom + pad) continue;
                const path = pathOf(shown.shapes[i]);
                if (kind === "lines" ? probe.isPointInStroke(path, x, y) : probe.isPointInPath(path, x, y, "evenodd")) return i;
            }
            return -1;
        },
    };
}
