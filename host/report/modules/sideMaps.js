// Small maps side by side: a few times under the classes of the large map, or a few datasets, each under classes of its
// own. A click shows the same in the large map.
import {classOf} from "./classes.js";
import {element, plural, readable} from "./format.js";
import {cellAt, createCells, frameCell} from "./grid.js";
import {touches} from "./store.js";

/** Shapes of one step. */
function smallShapes(geography, step) {
    const {width, height} = geography;
    const svg = d3.create("svg").attr("class", "map small").attr("viewBox", `0 0 ${width} ${height}`).attr("aria-hidden", "true");
    const objects = d3.range(geography.count).filter((object) => geography.exists(object, step));
    const paths = svg.append("g").attr("class", "shapes").attr("stroke-width", (0.6 * Math.max(width, height)) / 260)
        .selectAll("path").data(objects).join("path").attr("d", (object) => geography.pathOf(geography.shapeAt(object, step)));
    const paint = (layer, view, values) => paths.style("fill", (object) => {
        const known = values ? classOf(layer, view, values[object]) : -1;
        return !layer ? "var(--plain)" : known < 0 ? "var(--hatch)" : view.colors[known];
    });
    return {node: svg.node(), paint, note: plural(objects.length, "object")};
}

/** Cells, with a frame around the one that is looked at in any of the maps. */
function smallCells(geography, store) {
    const {width, height} = geography;
    const cells = createCells(geography);
    const svg = d3.create("svg").attr("class", "map").attr("viewBox", `0 0 ${width} ${height}`).attr("preserveAspectRatio", "none");
    const frame = frameCell(svg, geography, Math.max(width, height) / 260);
    const node = element("span", {class: "grid"}, cells.node, svg.node());
    node.addEventListener("pointermove", (event) => {
        const box = node.getBoundingClientRect();
        const hover = cellAt(geography, (event.clientX - box.x) / box.width, (event.clientY - box.y) / box.height);
        store.set(hover < 0 ? {hover} : {hover, focus: hover});
    });
    node.addEventListener("pointerleave", () => store.set({hover: -1}));
    return {node, frame, note: "", paint: (layer, view, values) => layer && cells.paint(layer, view, values || [])};
}

/** The colours of a layer's classes between their ends. */
function ramp(view) {
    const {breaks, colors} = view;
    return element("span", {class: "ramp"}, readable(breaks[0], 4),
        element("span", {class: "colors"}, ...colors.map((color) => element("span", {style: `background:${color}`}))),
        readable(breaks[breaks.length - 1], 4));
}

export function createSideMaps(geography, store) {
    const maps = geography.sideMaps.map(({step, layer, text}) => {
        const own = geography.layers[layer] || null;
        const map = geography.isGrid ? smallCells(geography, store) : smallShapes(geography, step);
        const note = element("span", {class: "note"}, own ? "" : map.note);
        const node = element("button", {type: "button", class: "then"}, map.node, element("span", {class: "when"}, text), note);
        const ownView = own && own.views[own.view];
        if (own && !own.isText) node.append(ramp(ownView));
        node.addEventListener("click", () => {
            const shown = own || store.state.layer;
            store.set({layer: shown, view: own ? ownView : store.state.view, step: geography.stepNear(shown, step)});
        });
        return {...map, node, note, own, ownView, step};
    });
    store.listen((state, changed) => {
        for (const {node, paint, frame, note, own, ownView, step} of maps) {
            const layer = own || state.layer;
            const view = own ? ownView : state.view;
            const row = layer ? layer.rowAt(step) : -1;
            if (touches(changed, "layer", "step"))
                node.setAttribute("aria-pressed", layer === state.layer && geography.stepNear(layer, step) === state.step);
            if (touches(changed, "layer", "view")) paint(layer, view, row >= 0 ? layer.valuesOf(row, view) : null);
            if (frame && touches(changed, "hover")) {
                frame(state.hover);
                note.textContent = row >= 0 && state.hover >= 0 ? layer.textOf(layer.rows[row][state.hover]) : "";
            }
        }
    });
    return element("div", {class: "side-maps"}, ...maps.map((map) => map.node));
}
