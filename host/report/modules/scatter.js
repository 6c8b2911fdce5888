// Two values of each object against each other, with their line and correlation. A brush chooses objects.
import {classOf} from "./classes.js";
import {clearBrush, createFrame, valueScale} from "./frame.js";
import {element, labelledSelect, readable} from "./format.js";
import {touches} from "./store.js";
import {hideTip, showTip} from "./tooltip.js";

const kMostRims = 1000; // points; more are painted without rims

/** What can stand on the upright axis: the mean of the neighbours, other layers, the same at the first time. */
function partners(geography, layer) {
    const found = [];
    geography.links.forEach((set, i) => found.push([`lag${i}`, `mean of its neighbours (${set.name})`]));
    geography.layers.forEach((other, i) => {
        if (other !== layer && !other.isText) found.push([`layer${i}`, other.name]);
    });
    if (!layer.always && layer.rows.length > 1) found.push(["first", `${layer.name} at the first time`]);
    return found;
}

function lagOf(values, neighbors) {
    return Float64Array.from(values, (_, i) => {
        let sum = 0;
        let count = 0;
        for (const other of neighbors[i])
            if (!Number.isNaN(values[other])) {
                sum += values[other];
                ++count;
            }
        return count ? sum / count : NaN;
    });
}

function partnerValues(geography, state, values) {
    const {layer, view, step, partner} = state;
    if (!partner) return [];
    if (partner.startsWith("lag")) {
        const links = geography.links[Number(partner.slice(3))].at(step);
        return links ? lagOf(values, links.neighbors) : [];
    }
    if (partner === "first") return layer.valuesOf(0, view);
    const other = geography.layers[Number(partner.slice(5))];
    const row = other.rowAt(step);
    return row < 0 ? [] : other.rows[row];
}

/** Least squares and Pearson's r; null where either has no spread. */
export function lineThrough(points) {
    const mx = d3.mean(points, (point) => point.x);
    const my = d3.mean(points, (point) => point.y);
    let [xx, xy, yy] = [0, 0, 0];
    for (const {x, y} of points) {
        xx += (x - mx) ** 2;
        xy += (x - mx) * (y - my);
        yy += (y - my) ** 2;
    }
    return xx > 0 && yy > 0 ? {slope: xy / xx, at: (x) => my + (xy / xx) * (x - mx), r: xy / Math.sqrt(xx * yy)} : null;
}

/** Where the line enters and leaves the frame. */
function endsWithin(fit, [left, right], [bottom, top]) {
    const crossings = [bottom, top].map((value) => (value - fit.at(0)) / fit.slope).sort((a, b) => a - b);
    return fit.slope === 0 ? [left, right] : [Math.max(left, crossings[0]), Math.min(right, crossings[1])];
}

/** `dots` are places within the frame with their colours; the canvas has twice as many pixels as the frame has units. */
function paintDots(canvas, dots, size) {
    const context = canvas.getContext("2d");
    context.setTransform(1, 0, 0, 1, 0, 0);
    context.clearRect(0, 0, canvas.width, canvas.height);
    context.setTransform(2, 0, 0, 2, 0, 0);
    const paths = new Map();
    for (const [x, y, color] of dots) {
        if (!paths.has(color)) paths.set(color, new Path2D());
        const path = paths.get(color);
        path.moveTo(x + size / 2, y);
        path.arc(x, y, size / 2, 0, 2 * Math.PI);
    }
    for (const [color, path] of paths) {
        context.fillStyle = color;
        context.fill(path);
    }
}

export function createScatter(geography, store, wide) {
    const frame = wide ? createFrame("Against", 260, "", 780) : createFrame("Against", 210);
    let choice = null;
    const rims = frame.layer.append("g"); // one path a class: its points are dots of a round pen
    const dots = frame.layer.append("g");
    const line = frame.layer.append("line").attr("class", "fit");
    const brushed = frame.layer.append("g").attr("class", "brush");
    const mark = frame.layer.append("circle").attr("class", "dot").attr("r", 5);
    // Many points are painted between the axes and the lines.
    const canvas = element("canvas", {width: 2 * frame.size.width, height: 2 * frame.size.height, "aria-hidden": "true"});
    const axes = d3.create("svg").attr("viewBox", frame.svg.attr("viewBox")).attr("aria-hidden", "true");
    axes.append(() => frame.xAxis.node());
    axes.append(() => frame.yAxis.node());
    const plot = element("div", {class: "plot"}, axes.node(), canvas);
    frame.figure.append(plot);
    plot.append(frame.svg.node());
    let points = [];
    let x = d3.scaleLinear();
    let y = d3.scaleLinear();
    const brush = d3.brush().extent([[frame.xRange[0], frame.yRange[1]], [frame.xRange[1], frame.yRange[0]]]);
    brush.on("brush end", () => {
        const event = d3.event;
        if (!event.sourceEvent) return;
        if (!event.selection) {
            if (event.type === "end") store.set({selection: new Set(), brushedBy: "scatter"});
            return;
        }
        const [[left, top], [right, bottom]] = event.selection;
        const chosen = points.filter((p) => x(p.x) >= left && x(p.x) <= right && y(p.y) >= top && y(p.y) <= bottom);
        store.set({selection: new Set(chosen.map((p) => p.object)), brushedBy: "scatter"});
    });
    brushed.call(brush);
    brushed.on("mousemove", function () {
        const [px, py] = d3.mouse(this);
        const near = points.length ? points[d3.scan(points, (a, b) => far(a) - far(b))] : null;
        function far(p) {
            return (x(p.x) - px) ** 2 + (y(p.y) - py) ** 2;
        }
        if (!near || far(near) > 120) {
            hideTip();
            return store.set({hover: -1});
        }
        store.set({hover: near.object, focus: near.object});
        const {layer, view} = store.state;
        showTip(d3.event, geography.label(near.object), `${layer.name}: ${layer.textOf(near.x, view)}`, `against: ${readable(near.y)}`);
    }).on("mouseleave", () => {
        hideTip();
        store.set({hover: -1});
    });

    const rebuildChoice = (layer) => {
        const options = partners(geography, layer);
        const keep = options.some(([value]) => value === store.state.partner);
        const partner = keep ? store.state.partner : options.length ? options[0][0] : null;
        if (choice) choice.node.remove();
        choice = options.length ? labelledSelect("Against", options, partner, (value) => store.set({partner: value})) : null;
        if (choice) frame.caption.querySelector(".title").replaceChildren(choice.node);
        store.set({partner});
        return partner;
    };

    store.listen((state, changed) => {
        const {layer, view, step} = state;
        frame.figure.hidden = !layer || layer.isText;
        if (frame.figure.hidden) return;
        const partner = changed.has("layer") ? rebuildChoice(layer) : state.partner;
        frame.figure.hidden = !partner;
        if (!partner) return;
        if (touches(changed, "layer", "view", "step", "partner")) {
            const row = layer.rowAt(step);
            const values = row >= 0 ? layer.valuesOf(row, view) : [];
            const others = partnerValues(geography, {...state, partner}, values);
            points = [];
            for (let i = 0; i < values.length && i < others.length; ++i)
                if (!Number.isNaN(values[i]) && !Number.isNaN(others[i]) && geography.exists(i, step))
                    points.push({object: i, x: values[i], y: others[i]});
            x = valueScale(points.map((p) => p.x), frame.xRange);
            y = valueScale(points.map((p) => p.y), frame.yRange);
            frame.drawX(x);
            frame.drawY(y);
            const fit = lineThrough(points);
            const ends = fit ? endsWithin(fit, x.domain(), y.domain()) : [];
            line.attr("display", fit ? null : "none");
            if (fit) line.attr("x1", x(ends[0])).attr("y1", y(fit.at(ends[0]))).attr("x2", x(ends[1])).attr("y2", y(fit.at(ends[1])));
            frame.extra.textContent = fit ? `r = ${readable(fit.r, 3)}, slope ${readable(fit.slope, 3)}` : "";
            frame.describe(`${layer.name} against another value of ${points.length} objects` + (fit ? `, correlation ${readable(fit.r, 3)}` : ""));
        }
        if (touches(changed, "layer", "view", "step", "partner", "selection")) {
            if (state.brushedBy !== "scatter" || touches(changed, "layer", "view", "step", "partner")) clearBrush(brushed, brush);
            const some = state.selection.size > 0;
            const size = points.length > 400 ? 4 : 7;
            const isPainted = !some && points.length > kMostRims;
            canvas.hidden = !isPainted;
            if (isPainted) paintDots(canvas, points.map((p) => [x(p.x), y(p.y), view.colors[classOf(layer, view, p.x)]]), size);
            const groups = new Map();
            for (const p of isPainted ? [] : points) {
                const where = some && !state.selection.has(p.object) ? "out" : "in";
                const key = `${where} ${classOf(layer, view, p.x)}`;
                if (!groups.has(key)) groups.set(key, {where, color: view.colors[classOf(layer, view, p.x)], d: []});
                groups.get(key).d.push(`M${x(p.x).toFixed(1)} ${y(p.y).toFixed(1)}h0`);
            }
            const marks = [...groups.values()];
            const draw = (group, width, color) => group.selectAll("path").data(marks).join("path")
                .attr("class", (mark) => `point ${mark.where === "out" ? "out" : some ? "chosen" : ""}`)
                .attr("d", (mark) => mark.d.join("")).attr("stroke-width", width).style("stroke", color);
            draw(rims, size + 1.2, (mark) => (some && mark.where === "in" ? "var(--strong)" : "var(--soft)"));
            draw(dots, size, (mark) => mark.color);
        }
        const here = points.find((p) => p.object === state.hover);
        mark.attr("display", here ? null : "none");
        if (here) mark.attr("cx", x(here.x)).attr("cy", y(here.y));
    }, frame.figure);
    return frame.figure;
}
