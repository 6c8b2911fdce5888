// The map of a grid: a picture of its cells, with the pointer's layer of a map above it.
import {classOf} from "./classes.js";
import {element} from "./format.js";
import {addPointer, brushIn} from "./map.js";
import {touches} from "./store.js";

export function createGrid(geography, store) {
    const {rows, columns} = geography.grid;
    const {width, height} = geography;
    const unit = Math.max(width, height) / 800;
    const canvas = element("canvas", {width: columns, height: rows, "aria-hidden": "true"});
    canvas.style.aspectRatio = `${width} / ${height}`;
    const context = canvas.getContext("2d");
    const svg = d3.create("svg").attr("class", "map over").attr("role", "img").attr("viewBox", `0 0 ${width} ${height}`)
        .attr("preserveAspectRatio", "none");
    const cell = svg.append("rect").attr("class", "hovered").attr("stroke-width", 2 * unit)
        .attr("width", width / columns).attr("height", height / rows).attr("display", "none");
    const setBrush = brushIn(svg);
    const image = context.createImageData(columns, rows);

    addPointer(svg.node(), geography, store, (event, [x, y]) => {
        const [column, row] = [Math.floor((x / width) * columns), Math.floor((y / height) * rows)];
        return column >= 0 && column < columns && row >= 0 && row < rows ? row * columns + column : -1;
    }, setBrush);

    store.listen((state, changed) => {
        if (state.layer && touches(changed, "layer", "view", "step", "selection")) {
            const row = state.layer.rowAt(state.step);
            const values = row >= 0 ? state.layer.valuesOf(row, state.view) : [];
            const colors = state.view.colors.map((color) => d3.rgb(color));
            const some = state.selection.size > 0;
            for (let i = 0; i < geography.count; ++i) {
                const known = classOf(state.layer, state.view, values[i]);
                const color = known < 0 ? {r: 0, g: 0, b: 0} : colors[known];
                const strength = known < 0 ? 0 : some && !state.selection.has(i) ? 70 : 255;
                image.data.set([color.r, color.g, color.b, strength], 4 * i);
            }
            context.putImageData(image, 0, 0);
        }
        if (touches(changed, "hover"))
            cell.attr("display", state.hover < 0 ? "none" : null)
                .attr("x", ((state.hover % columns) * width) / columns)
                .attr("y", (Math.floor(state.hover / columns) * height) / rows);
    });
    return {
        node: element("div", {class: "grid"}, canvas, svg.node()),
        describe: (text) => svg.attr("aria-label", text),
    };
}
