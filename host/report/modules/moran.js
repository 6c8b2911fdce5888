// Moran's I over time, over the band in which 95 of 100 permutations lie.
import {addClock, createFrame, drawSteps, stepScale} from "./frame.js";
import {readable} from "./format.js";
import {touches} from "./store.js";

export function createMoran(geography, store) {
    const frame = createFrame("Moran's I", 210);
    let place = () => 0;
    let results = null;
    let y = d3.scaleLinear();
    const moveClock = addClock(frame, store, () => (results ? results.rows.map((row) => row.step) : []), () => place);
    const band = frame.layer.append("path").attr("class", "band");
    const expected = frame.layer.append("path").attr("class", "mean");
    const line = frame.layer.append("path").attr("class", "line focus");
    const dot = frame.layer.append("circle").attr("class", "dot").attr("r", 4);

    store.listen((state, changed) => {
        if (touches(changed, "layer", "links")) {
            const own = state.layer ? geography.moran.filter((moran) => moran.layer === state.layer.name) : [];
            results = own.find((moran) => state.links && moran.set === state.links.name) || own[0] || null;
            frame.figure.hidden = !results || results.rows.length < 2;
            if (!frame.figure.hidden) {
                const {rows} = results;
                place = stepScale(geography, rows.map((row) => row.step), frame.xRange);
                y = d3.scaleLinear().domain([Math.min(d3.min(rows, (r) => r.low ?? r.value), d3.min(rows, (r) => r.value), 0), d3.max(rows, (r) => Math.max(r.value, r.high ?? r.value))])
                    .nice().range(frame.yRange);
                drawSteps(frame.xAxis, geography, rows.map((row) => row.step), place);
                frame.drawY(y);
                const along = d3.line().x((row) => place(row.step));
                band.attr("d", d3.area().defined((row) => row.low !== null).x((row) => place(row.step)).y0((row) => y(row.low)).y1((row) => y(row.high))(rows));
                expected.attr("d", along.y((row) => y(row.expected))(rows));
                line.attr("d", along.y((row) => y(row.value))(rows));
            }
        }
        if (frame.figure.hidden) return;
        if (touches(changed, "layer", "links", "step")) {
            const row = results.rows.find((one) => one.step === state.step);
            dot.attr("display", row ? null : "none");
            if (row) dot.attr("cx", place(row.step)).attr("cy", y(row.value));
            frame.extra.textContent = row
                ? `I = ${readable(row.value, 4)}, p = ${readable(row.p, 3)} (${results.set}, ${results.permutations} permutations)`
                : `${results.set}, ${results.permutations} permutations`;
            frame.describe(`Moran's I of ${results.layer} over time. ${frame.extra.textContent}`);
            moveClock(state.step);
        }
    }, frame.figure);
    return frame.figure;
}
