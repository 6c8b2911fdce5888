// The frame of a chart: an SVG with margins, its axes, and a scale for the steps of a geography.
import {element, tickText} from "./format.js";

export function createFrame(title, height, note, width = 460) {
    const figure = element("figure", {class: "panel chart"});
    const caption = element("figcaption", {}, element("span", {class: "title"}, title));
    const extra = element("span", {class: "note"}, note || "");
    caption.append(extra);
    figure.append(caption);
    const size = {width, height, left: 52, right: 14, top: 10, bottom: 26};
    const svg = d3.select(figure).append("svg").attr("viewBox", `0 0 ${size.width} ${size.height}`).attr("role", "img");
    const under = svg.append("g");
    const xAxis = svg.append("g").attr("class", "axis").attr("transform", `translate(0,${size.height - size.bottom})`);
    const yAxis = svg.append("g").attr("class", "axis").attr("transform", `translate(${size.left},0)`);
    const layer = svg.append("g");
    const drawnAs = new Map();
    /** Whether an axis has other limits than when it was drawn last. */
    const isNew = (axis, scale) => {
        const limits = [...scale.domain(), ...scale.range()].join();
        if (drawnAs.get(axis) === limits) return false;
        drawnAs.set(axis, limits);
        return true;
    };
    return {
        figure, caption, extra, size, svg, under, layer, xAxis, yAxis,
        xRange: [size.left, size.width - size.right],
        yRange: [size.height - size.bottom, size.top],
        describe: (text) => svg.attr("aria-label", text),
        drawX(scale) {
            if (isNew(xAxis, scale)) xAxis.call(d3.axisBottom(scale).ticks(6).tickFormat(tickText));
        },
        drawY(scale) {
            if (isNew(yAxis, scale)) yAxis.call(d3.axisLeft(scale).ticks(5).tickFormat(tickText).tickSize(-(size.width - size.left - size.right)).tickPadding(6));
        },
    };
}

/** A scale over all values; around a single one there is room on both sides. */
export function valueScale(values, range) {
    const [low, high] = values.length ? d3.extent(values) : [0, 1];
    const room = low < high ? 0 : Math.abs(low) / 10 || 1;
    return d3.scaleLinear().domain([low - room, high + room]).nice().range(range);
}

/** Places of steps along the time axis, by their instants. */
export function stepScale(geography, steps, range) {
    const times = steps.map((step) => geography.steps[step].at);
    const scale = d3.scaleLinear().domain([d3.min(times), d3.max(times)]).range(range);
    return (step) => scale(geography.steps[step].at);
}

/** Up to `most` ticks, told by the steps' own texts: the first, the last, and those between that do not cover others. */
export function drawSteps(axis, geography, steps, place, most = 5) {
    const [left, right] = d3.extent(steps, place);
    const anchorOf = (step) => (place(step) - left < 10 ? "start" : right - place(step) < 10 ? "end" : "middle");
    const covers = (step) => {
        const width = tickStep(geography, step).length * 6.4;
        const from = place(step) - width * {start: 0, middle: 0.5, end: 1}[anchorOf(step)];
        return [from, from + width];
    };
    const ticks = [];
    for (const part of [0, most - 1, ...d3.range(1, most - 1)]) {
        const step = nearestStep(steps, place, left + ((right - left) * part) / (most - 1));
        const [from, to] = covers(step);
        if (ticks.every((other) => from > covers(other)[1] + 8 || to < covers(other)[0] - 8)) ticks.push(step);
    }
    const joined = axis.selectAll("g.tick").data(ticks).join((enter) => {
        const tick = enter.append("g").attr("class", "tick");
        tick.append("line").attr("y2", 5);
        tick.append("text").attr("y", 8).attr("dy", "0.71em");
        return tick;
    });
    joined.attr("transform", (step) => `translate(${place(step)},0)`);
    joined.select("text").text((step) => tickStep(geography, step)).attr("text-anchor", anchorOf);
}

/** A span by its start. */
export function shortStep(text) {
    return text.split("/")[0];
}

/** The same below an axis, where a midnight is its day. */
function tickStep(geography, step) {
    return shortStep(geography.steps[step].text).replace(/T00:00(:00)?$/, "");
}

/** The step whose place is nearest. */
export function nearestStep(steps, place, x) {
    return steps[d3.scan(steps, (a, b) => Math.abs(place(a) - x) - Math.abs(place(b) - x))];
}

/** Takes a brush away, if there is one. */
export function clearBrush(group, brush) {
    if (d3.brushSelection(group.node())) group.call(brush.move, null);
}

/** A line at the present step, and time that follows a click. */
export function addClock(frame, store, stepsNow, placeNow) {
    const line = frame.under.append("line").attr("class", "clock")
        .attr("y1", frame.size.top).attr("y2", frame.size.height - frame.size.bottom);
    frame.svg.on("click", function () {
        const steps = stepsNow();
        if (steps.length > 1) store.set({step: nearestStep(steps, placeNow(), d3.mouse(this)[0])});
    });
    return (step) => line.attr("x1", placeNow()(step)).attr("x2", placeNow()(step));
}
