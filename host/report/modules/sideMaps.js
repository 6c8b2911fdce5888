// Small maps side by side: shapes and values of a few times under the classes of the large map. A click moves the slider.
import {classOf} from "./classes.js";
import {element, plural} from "./format.js";
import {touches} from "./store.js";

export function createSideMaps(geography, store) {
    const {width, height} = geography;
    const unit = Math.max(width, height) / 260;
    const maps = geography.sideMaps.map(({step, text}) => {
        const svg = d3.create("svg").attr("class", "map small").attr("viewBox", `0 0 ${width} ${height}`).attr("aria-hidden", "true");
        const objects = d3.range(geography.count).filter((object) => geography.exists(object, step));
        const paths = svg.append("g").attr("class", "shapes").attr("stroke-width", 0.6 * unit).selectAll("path").data(objects).join("path")
            .attr("d", (object) => geography.pathOf(geography.shapeAt(object, step)));
        const node = element("button", {type: "button", class: "then"}, svg.node(), element("span", {class: "when"}, text),
            element("span", {class: "note"}, plural(objects.length, "object")));
        node.addEventListener("click", () => store.set({step: geography.stepNear(store.state.layer, step)}));
        return {node, paths, step};
    });
    store.listen((state, changed) => {
        const {layer, view} = state;
        for (const {node, paths, step} of maps) {
            if (touches(changed, "layer", "step")) node.setAttribute("aria-pressed", geography.stepNear(layer, step) === state.step);
            if (!touches(changed, "layer", "view")) continue;
            const row = layer ? layer.rowAt(step) : -1;
            const values = row >= 0 ? layer.valuesOf(row, view) : null;
            paths.style("fill", (object) => {
                const known = values ? classOf(layer, view, values[object]) : -1;
                return !layer ? "var(--plain)" : known < 0 ? "var(--hatch)" : view.colors[known];
            });
        }
    });
    return element("div", {class: "side-maps"}, ...maps.map((map) => map.node));
}
