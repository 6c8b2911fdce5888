// Values over time: of the object that is looked at or of those that are chosen, over the mean of all.
import {createFrame, stepScale, drawSteps, addClock} from "./frame.js";
import {touches} from "./store.js";

const kMostLines = 12;

export function createSeries(geography, store) {
    const frame = createFrame("Over time", 190);
    let place = () => 0;
    const moveClock = addClock(frame, store, () => store.state.layer ? geography.stepsOf(store.state.layer) : [], () => place);
    const band = frame.layer.append("path").attr("class", "band");
    const mean = frame.layer.append("path").attr("class", "mean");
    const lines = frame.layer.append("g");
    const dot = frame.layer.append("circle").attr("class", "dot").attr("r", 4);
    let y = d3.scaleLinear();
    let summary = [];

    const summarize = ({layer, view}) =>
        layer.rows.map((_, row) => {
            const sorted = Float64Array.from(layer.valuesOf(row, view)).filter((value) => !Number.isNaN(value)).sort();
            return {mean: d3.mean(sorted), low: d3.quantile(sorted, 0.1), high: d3.quantile(sorted, 0.9), least: sorted[0], most: sorted[sorted.length - 1]};
        });

    store.listen((state, changed) => {
        const {layer, view} = state;
        const useful = layer && !layer.always && !layer.isText && layer.rows.length > 1;
        frame.figure.hidden = !useful;
        if (!useful) return;
        if (touches(changed, "layer", "view")) {
            summary = summarize(state);
            place = stepScale(geography, layer.steps, frame.xRange);
            y = d3.scaleLinear().domain([d3.min(summary, (s) => s.least), d3.max(summary, (s) => s.most)]).nice().range(frame.yRange);
            drawSteps(frame.xAxis, geography, layer.steps, place);
            frame.drawY(y);
            const there = layer.steps.map((step, i) => ({step, ...summary[i]})).filter((s) => s.mean !== undefined);
            band.attr("d", d3.area().x((s) => place(s.step)).y0((s) => y(s.low)).y1((s) => y(s.high))(there));
            mean.attr("d", d3.line().x((s) => place(s.step)).y((s) => y(s.mean))(there));
        }
        if (touches(changed, "layer", "view", "hover", "focus", "selection", "step")) {
            const object = state.hover >= 0 ? state.hover : state.focus;
            const chosen = [...state.selection].slice(0, kMostLines).filter((other) => other !== object);
            const line = d3.line().defined((_, row) => !Number.isNaN(layer.valuesOf(row, view)[line.object]))
                .x((step) => place(step)).y((_, row) => y(layer.valuesOf(row, view)[line.object]));
            const drawn = object >= 0 ? [...chosen, object] : chosen;
            lines.selectAll("path").data(drawn).join("path")
                .attr("class", (other) => (other === object ? "line focus" : "line"))
                .attr("d", (other) => {
                    line.object = other;
                    return line(layer.steps);
                });
            const row = layer.rowAt(state.step);
            const value = object >= 0 && row >= 0 ? layer.valuesOf(row, view)[object] : NaN;
            dot.attr("display", Number.isNaN(value) ? "none" : null);
            if (!Number.isNaN(value)) dot.attr("cx", place(state.step)).attr("cy", y(value));
            frame.extra.textContent = object >= 0 ? geography.label(object) : "mean, and where 80 of 100 objects lie";
            frame.describe(`${layer.name} over time` + (object >= 0 ? ` of ${geography.label(object)}, now ${layer.textOf(value, view)}` : ""));
            moveClock(state.step);
        }
    }, frame.figure);
    return frame.figure;
}
