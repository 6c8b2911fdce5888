// How the values of the present step are spread. A brush chooses the objects within its limits.
import {classOf} from "./classes.js";
import {clearBrush, createFrame, valueScale} from "./frame.js";
import {touches} from "./store.js";

const kBins = 24;

export function createHistogram(geography, store) {
    const frame = createFrame("How values are spread", 190, "drag to choose");
    const bars = frame.layer.append("g");
    const inner = frame.layer.append("g");
    const brushed = frame.layer.append("g").attr("class", "brush");
    let x = d3.scaleLinear();
    let values = [];
    const brush = d3.brushX().extent([[frame.xRange[0], frame.yRange[1]], [frame.xRange[1], frame.yRange[0]]]);
    brush.on("brush end", () => {
        const event = d3.event;
        if (!event.sourceEvent) return;
        if (!event.selection) {
            if (event.type === "end") store.set({selection: new Set(), brushedBy: "histogram"});
            return;
        }
        const [low, high] = event.selection.map(x.invert);
        const chosen = new Set();
        for (let i = 0; i < values.length; ++i)
            if (values[i] >= low && values[i] <= high && geography.exists(i, store.state.step)) chosen.add(i);
        store.set({selection: chosen, brushedBy: "histogram"});
    });
    brushed.call(brush);

    store.listen((state, changed) => {
        const {layer, view, step} = state;
        frame.figure.hidden = !layer || layer.isText;
        if (frame.figure.hidden || !touches(changed, "layer", "view", "step", "selection")) return;
        if (touches(changed, "layer", "view", "step") || state.brushedBy !== "histogram") clearBrush(brushed, brush);
        const row = layer.rowAt(step);
        values = row >= 0 ? layer.valuesOf(row, view) : [];
        const there = [];
        for (let i = 0; i < values.length; ++i) if (!Number.isNaN(values[i]) && geography.exists(i, step)) there.push(i);
        x = valueScale(view.relative ? view.breaks : there.map((i) => values[i]), frame.xRange);
        const bins = d3.histogram().value((i) => values[i]).domain(x.domain()).thresholds(x.ticks(kBins))(there);
        const y = d3.scaleLinear().domain([0, d3.max(bins, (bin) => bin.length) || 1]).nice().range(frame.yRange);
        frame.drawX(x);
        frame.drawY(y);
        const draw = (group, count, name) =>
            group.selectAll("rect").data(bins).join("rect").attr("class", name)
                .attr("x", (bin) => x(bin.x0) + 0.5).attr("width", (bin) => Math.max(0, x(bin.x1) - x(bin.x0) - 1))
                .attr("y", (bin) => y(count(bin))).attr("height", (bin) => y(0) - y(count(bin)));
        const some = state.selection.size > 0;
        draw(bars, (bin) => bin.length, some ? "bar out" : "bar")
            .style("fill", (bin) => view.colors[classOf(layer, view, (bin.x0 + bin.x1) / 2)] || null);
        draw(inner, (bin) => (some ? bin.filter((i) => state.selection.has(i)).length : 0), "bar chosen");
        frame.describe(`Histogram of ${layer.name}, ${there.length} values` + (there.length ? ` from ${layer.textOf(d3.min(there, (i) => values[i]), view)} to ${layer.textOf(d3.max(there, (i) => values[i]), view)}` : ""));
    }, frame.figure);
    return frame.figure;
}
