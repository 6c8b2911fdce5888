// The map of a vector geography: shapes and objects follow the step, colours the layer's view.
import {classOf} from "./classes.js";
import {freshId} from "./format.js";
import {createPainting} from "./painting.js";
import {toggled, touches} from "./store.js";
import {hideTip, showTip} from "./tooltip.js";

/** More objects than this are painted, and have no elements of their own. */
const kMostElements = 800;

/** What a tooltip says of an object at the present step. */
export function tipLines(geography, state) {
    const {layer, view, step, hover} = state;
    const lines = [];
    if (layer) {
        const row = layer.rowAt(step);
        const plain = row < 0 ? NaN : layer.rows[row][hover];
        lines.push(`${layer.name}: ${layer.textOf(plain)}`);
        if (view.relative && !Number.isNaN(plain)) lines.push(`${layer.textOf(layer.valuesOf(row, view)[hover], view)} of the mean`);
    }
    const links = state.links && state.links.at(step);
    if (links) lines.push(`${links.neighbors[hover].length} neighbours`);
    return lines;
}

/** Hovering, choosing by click, and choosing by dragging a rectangle, for shapes and cells alike. */
export function addPointer(svg, geography, store, objectUnder, setBrush) {
    let start = null;
    const here = (event) => {
        const box = svg.getScreenCTM().inverse();
        const point = new DOMPoint(event.clientX, event.clientY).matrixTransform(box);
        return [point.x, point.y];
    };
    svg.addEventListener("pointermove", (event) => {
        if (start && Math.hypot(event.clientX - start.x, event.clientY - start.y) > 4) {
            start.dragged = true;
            setBrush(start.place, here(event));
            hideTip();
            return;
        }
        const object = objectUnder(event, here(event));
        store.set(object < 0 ? {hover: -1} : {hover: object, focus: object});
        if (object < 0) hideTip();
        else showTip(event, geography.label(object), ...tipLines(geography, {...store.state, hover: object}));
    });
    svg.addEventListener("pointerleave", () => {
        store.set({hover: -1});
        hideTip();
    });
    svg.addEventListener("pointerdown", (event) => {
        if (event.button !== 0 || event.pointerType === "touch") return;
        start = {x: event.clientX, y: event.clientY, place: here(event), dragged: false};
        svg.setPointerCapture(event.pointerId);
    });
    svg.addEventListener("pointercancel", () => (start = null));
    svg.addEventListener("pointerup", (event) => {
        const drag = start;
        start = null;
        setBrush(null);
        if (drag && drag.dragged) {
            const [a, b] = [drag.place, here(event)];
            const inside = ([x, y]) => (x - a[0]) * (x - b[0]) <= 0 && (y - a[1]) * (y - b[1]) <= 0;
            const chosen = new Set();
            for (let i = 0; i < geography.count; ++i) {
                const shape = geography.shapeAt(i, store.state.step);
                if (shape >= 0 && inside(geography.anchorOf(shape))) chosen.add(i);
            }
            store.set({selection: chosen, brushedBy: "map"});
            return;
        }
        const object = objectUnder(event, here(event));
        store.set({selection: object < 0 ? new Set() : toggled(store.state.selection, object), brushedBy: "map"});
    });
}

/** The rectangle of a drag. */
export function brushIn(parent) {
    const rect = parent.append("rect").attr("class", "drag").attr("display", "none");
    return (from, to) => {
        rect.attr("display", from && to ? null : "none");
        if (from && to)
            rect.attr("x", Math.min(from[0], to[0])).attr("y", Math.min(from[1], to[1]))
                .attr("width", Math.abs(to[0] - from[0])).attr("height", Math.abs(to[1] - from[1]));
    };
}

/** Lines to the neighbours of the object that is looked at, and rings around islands. */
export function drawLinks(group, geography, state, unit) {
    const links = state.links && state.links.at(state.step);
    const anchor = (object) => {
        const shape = geography.shapeAt(object, state.step);
        return shape < 0 ? null : geography.anchorOf(shape);
    };
    const object = state.hover;
    const from = links && object >= 0 ? anchor(object) : null;
    const ends = from ? links.neighbors[object].map(anchor).filter(Boolean) : [];
    group.selectAll("line").data(ends).join("line").attr("stroke-width", 2 * unit)
        .attr("x1", from && from[0]).attr("y1", from && from[1]).attr("x2", (end) => end[0]).attr("y2", (end) => end[1]);
    group.selectAll("circle.end").data(ends).join("circle").attr("class", "end").attr("r", 4 * unit)
        .attr("cx", (end) => end[0]).attr("cy", (end) => end[1]);
    const islands = links ? links.islands.map(anchor).filter(Boolean) : [];
    group.selectAll("circle.island").data(islands).join("circle").attr("class", "island").attr("r", 9 * unit)
        .attr("stroke-width", 2 * unit).attr("cx", (end) => end[0]).attr("cy", (end) => end[1]);
}

export function createMap(geography, store) {
    const {width, height} = geography;
    const unit = Math.max(width, height) / 800;
    const pad = 8 * unit;
    // A single place has no extent, and stands in the middle of a small map.
    const isPlace = !geography.shapes.width && !geography.shapes.height;
    const svg = d3.create("svg").attr("class", `map ${geography.kind}`).attr("role", "img")
        .attr("viewBox", isPlace ? "-0.5 -0.2 1 0.4" : `${-pad} ${-pad} ${width + 2 * pad} ${height + 2 * pad}`);
    const hatch = freshId("hatch");
    const pattern = svg.append("defs").append("pattern").attr("id", hatch).attr("patternUnits", "userSpaceOnUse")
        .attr("width", 6 * unit).attr("height", 6 * unit).attr("patternTransform", "rotate(45)");
    pattern.append("rect").attr("class", "hatch-ground").attr("width", 6 * unit).attr("height", 6 * unit);
    pattern.append("line").attr("class", "hatch-line").attr("y2", 6 * unit).attr("stroke-width", 2 * unit);
    const shapes = svg.append("g").attr("class", "shapes").attr("stroke-width", (geography.kind === "lines" ? 2.4 : 0.8) * unit);
    const chosen = svg.append("path").attr("class", "chosen").attr("stroke-width", 2.2 * unit);
    const linksGroup = svg.append("g").attr("class", "links");
    const hovered = svg.append("path").attr("class", "hovered").attr("stroke-width", 2.6 * unit);
    const setBrush = brushIn(svg);
    const nodes = [];
    const drawn = new Array(geography.count).fill(-2);
    const filled = new Array(geography.count).fill(null);
    const radius = (geography.count > 500 ? 3 : 5) * unit;
    const outline = (shape) => {
        if (!geography.shapes.places.length) return geography.pathOf(shape);
        const [x, y] = geography.shapes.places[shape];
        return `M${x - radius} ${y}a${radius} ${radius} 0 1 0 ${2 * radius} 0a${radius} ${radius} 0 1 0 ${-2 * radius} 0`;
    };
    const paint = geography.kind === "lines" ? "stroke" : "fill";
    const outlines = (objects, step) =>
        objects.map((object) => geography.shapeAt(object, step)).filter((shape) => shape >= 0).map(outline).join("") || null;

    const painting = geography.count > kMostElements ? createPainting(geography, pad, outline) : null;
    svg.classed("over", Boolean(painting));
    for (let i = 0; !painting && i < geography.count; ++i) {
        const node = document.createElementNS("http://www.w3.org/2000/svg", "path");
        node.objectNumber = i;
        nodes.push(node);
    }
    shapes.node().append(...nodes);
    const paintAll = (state, values) => {
        const {layer, view, step, selection} = state;
        const colors = d3.range(geography.count).map((i) => {
            const known = values ? classOf(layer, view, values[i]) : -1;
            return !layer ? "plain" : known < 0 ? null : view.colors[known];
        });
        const shapesNow = colors.map((_, i) => geography.shapeAt(i, step));
        painting.draw({shapes: shapesNow, colors, dimmed: selection.size > 0 ? (i) => !selection.has(i) : null});
    };

    addPointer(svg.node(), geography, store, (event, place) => {
        if (painting) return painting.objectAt(place, 2 * unit);
        const under = document.elementFromPoint(event.clientX, event.clientY);
        return under && under.objectNumber !== undefined && nodes[under.objectNumber] === under ? under.objectNumber : -1;
    }, setBrush);

    store.listen((state, changed) => {
        if (touches(changed, "layer", "view", "step") || (painting && changed.has("selection"))) {
            const row = state.layer ? state.layer.rowAt(state.step) : -1;
            const values = row >= 0 ? state.layer.valuesOf(row, state.view) : null;
            if (painting) paintAll(state, values);
            for (let i = 0; i < nodes.length; ++i) {
                const shape = geography.shapeAt(i, state.step);
                if (shape !== drawn[i]) {
                    if (shape < 0) nodes[i].removeAttribute("d");
                    else nodes[i].setAttribute("d", outline(shape));
                    drawn[i] = shape;
                }
                if (shape < 0) continue;
                const known = values ? classOf(state.layer, state.view, values[i]) : -1;
                const color = !state.layer ? "var(--plain)" : known < 0 ? `url(#${hatch})` : state.view.colors[known];
                if (color === filled[i]) continue;
                nodes[i].style[paint] = color;
                filled[i] = color;
            }
        }
        if (touches(changed, "selection", "step")) {
            const some = state.selection.size > 0;
            svg.classed("selecting", some);
            if (changed.has("selection")) nodes.forEach((node, i) => node.classList.toggle("out", some && !state.selection.has(i)));
            chosen.attr("d", outlines([...state.selection], state.step));
        }
        if (touches(changed, "hover", "step")) hovered.attr("d", state.hover < 0 ? null : outlines([state.hover], state.step));
        if (touches(changed, "hover", "step", "links")) drawLinks(linksGroup, geography, state, unit);
    });
    if (painting) painting.node.append(svg.node());
    return {node: painting ? painting.node : svg.node(), describe: (text) => svg.attr("aria-label", text)};
}
