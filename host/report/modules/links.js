// Links and islands of a weight set over time.
import {addClock, createFrame, drawSteps, stepScale} from "./frame.js";
import {plural, readable} from "./format.js";
import {touches} from "./store.js";

export function createLinks(geography, store) {
    const frame = createFrame("Neighbours", 210);
    const steps = geography.existence;
    const place = stepScale(geography, steps, frame.xRange);
    const moveClock = addClock(frame, store, () => geography.stepsOf(store.state.layer), () => place);
    const line = frame.layer.append("path").attr("class", "line focus");
    const islands = frame.layer.append("g");

    store.listen((state, changed) => {
        if (!touches(changed, "links", "step", "layer")) return;
        const set = state.links;
        frame.figure.hidden = !set || set.states.length < 2 || steps.length < 2;
        if (frame.figure.hidden) return;
        if (changed.has("links")) {
            const all = steps.map((step) => ({step, state: set.at(step)})).filter((one) => one.state);
            const y = d3.scaleLinear().domain([0, d3.max(all, (one) => one.state.links) || 1]).nice().range(frame.yRange);
            drawSteps(frame.xAxis, geography, steps, place);
            frame.drawY(y);
            line.attr("d", d3.line().curve(d3.curveStepAfter).x((one) => place(one.step)).y((one) => y(one.state.links))(all));
            islands.selectAll("circle").data(all.filter((one) => one.state.islands.length)).join("circle").attr("class", "island")
                .attr("cx", (one) => place(one.step)).attr("cy", (one) => y(one.state.links)).attr("r", (one) => 3 + one.state.islands.length);
        }
        const now = set.at(state.step);
        frame.extra.textContent = now
            ? `${plural(now.links, "link")}, ${readable(now.objects ? now.links / now.objects : 0, 3)} each, ${plural(now.islands.length, "island")}`
            : "nothing at this time";
        frame.describe(`Links of ${set.name} over time. Now ${frame.extra.textContent}`);
        moveClock(state.step);
    }, frame.figure);
    return frame.figure;
}
