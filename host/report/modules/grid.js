// The map of a grid: a picture of its cells, with the pointer's layer of a map above it.
import {classOf} from "./classes.js";
import {element} from "./format.js";
import {addPointer, brushIn} from "./map.js";
import {touches} from "./store.js";

/** A canvas with a pixel for each cell. `paint` colours it; cells without a value are left out. */
export function createCells(geography) {
    const {rows, columns} = geography.grid;
    const node = element("canvas", {width: columns, height: rows, "aria-hidden": "true"});
    node.style.aspectRatio = `${geography.width} / ${geography.height}`;
    const context = node.getContext("2d");
    const image = context.createImageData(columns, rows);
    const paint = (layer, view, values, isDimmed) => {
        const colors = view.colors.map((color) => d3.rgb(color));
        for (let i = 0; i < geography.count; ++i) {
            const known = classOf(layer, view, values[i]);
            const color = known < 0 ? {r: 0, g: 0, b: 0} : colors[known];
            image.data.set([color.r, color.g, color.b, known < 0 ? 0 : isDimmed && isDimmed(i) ? 70 : 255], 4 * i);
        }
        context.putImageData(image, 0, 0);
    };
    return {node, paint};
}

/** A rectangle around the cell that is looked at. */
export function frameCell(svg, geography, unit) {
    const {rows, columns} = geography.grid;
    const {width, height} = geography;
    const rect = svg.append("rect").attr("class", "hovered").attr("stroke-width", 2 * unit)
        .attr("width", width / columns).attr("height", height / rows).attr("display", "none");
    return (cell) => rect.attr("display", cell < 0 ? "none" : null)
        .attr("x", ((cell % columns) * width) / columns).attr("y", (Math.floor(cell / columns) * height) / rows);
}

/** The cell at a place, as parts of the width and the height; -1 outside. */
export function cellAt(geography, x, y) {
    const {rows, columns} = geography.grid;
    const [column, row] = [Math.floor(x * columns), Math.floor(y * rows)];
    return column >= 0 && column < columns && row >= 0 && row < rows ? row * columns + column : -1;
}

export function createGrid(geography, store) {
    const {width, height} = geography;
    const cells = createCells(geography);
    const svg = d3.create("svg").attr("class", "map over").attr("role", "img").attr("viewBox", `0 0 ${width} ${height}`)
        .attr("preserveAspectRatio", "none");
    const frame = frameCell(svg, geography, Math.max(width, height) / 800);
    const setBrush = brushIn(svg);

    addPointer(svg.node(), geography, store, (event, [x, y]) => cellAt(geography, x / width, y / height), setBrush);

    store.listen((state, changed) => {
        const {layer, view, step, selection, hover} = state;
        if (layer && touches(changed, "layer", "view", "step", "selection")) {
            const row = layer.rowAt(step);
            cells.paint(layer, view, row >= 0 ? layer.valuesOf(row, view) : [], selection.size ? (i) => !selection.has(i) : null);
        }
        if (touches(changed, "hover")) frame(hover);
    });
    return {
        node: element("div", {class: "grid"}, cells.node, svg.node()),
        describe: (text) => svg.attr("aria-label", text),
    };
}
