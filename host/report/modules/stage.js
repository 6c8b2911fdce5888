// The stage of one geography: map, time, charts and table around one store.
import {legendEntries} from "./classes.js";
import {element, labelledSelect, plural} from "./format.js";
import {createGrid} from "./grid.js";
import {createHistogram} from "./histogram.js";
import {createLinks} from "./links.js";
import {createMap} from "./map.js";
import {createMoran} from "./moran.js";
import {createScatter} from "./scatter.js";
import {createSeries} from "./series.js";
import {createSideMaps} from "./sideMaps.js";
import {createSlider} from "./slider.js";
import {createStore, touches} from "./store.js";
import {createTable} from "./table.js";

function createControls(geography, store) {
    const node = element("div", {class: "controls"});
    const options = geography.layers.map((layer, i) => [i, layer.name]);
    if (!geography.isGrid) options.push([-1, "objects that exist"]);
    const {state} = store;
    const map = labelledSelect("Map", options, geography.layers.indexOf(state.layer), (value) => {
        const layer = geography.layers[value] || null;
        store.set({layer, view: layer ? layer.views[layer.view] : null, step: geography.stepNear(layer, store.state.step), selection: store.state.selection});
    });
    node.append(map.node);
    const views = element("div", {class: "views"});
    node.append(views);
    if (geography.links.length)
        node.append(labelledSelect("Neighbours", [[-1, "not shown"], ...geography.links.map((set, i) => [i, set.name])], 0,
            (value) => store.set({links: geography.links[value] || null})).node);
    store.listen((now, changed) => {
        if (!changed.has("layer")) return;
        const {layer} = now;
        map.select.value = geography.layers.indexOf(layer);
        views.replaceChildren();
        if (layer && layer.views.length > 1)
            views.append(labelledSelect("Values", [[0, "as they are"], [1, "compared with the mean"]], layer.views.indexOf(now.view),
                (value) => store.set({view: layer.views[value]})).node);
    });
    return node;
}

function createFinder(geography, store) {
    const {node, select} = labelledSelect("Object", [[-1, "point at one, or choose"], ...d3.range(geography.count)
        .sort((a, b) => geography.label(a).localeCompare(geography.label(b))).map((object) => [object, geography.label(object)])], -1,
    (value) => store.set({focus: Number(value), hover: Number(value)}));
    store.listen((state, changed) => {
        if (changed.has("focus")) select.value = state.focus;
    });
    return node;
}

function createLegend(geography, store) {
    const title = element("p", {class: "title"});
    const list = element("ul", {class: "legend"});
    const method = element("p", {class: "note"});
    store.listen((state, changed) => {
        if (!touches(changed, "layer", "view", "step")) return;
        const {layer, view, step} = state;
        title.textContent = layer ? layer.name : "Objects";
        method.textContent = layer ? `${layer.isText ? "The commonest names" : view.relative ? "100 % is the mean of each time" : view.name}.` : "";
        list.hidden = !layer;
        if (!layer) return;
        const row = layer.rowAt(step);
        const values = row >= 0 ? layer.valuesOf(row, view) : new Float64Array(geography.count).fill(NaN);
        const {entries, missing} = legendEntries(layer, view, values, (object) => geography.exists(object, step));
        const rows = [...entries, {text: "no value", count: missing, isMissing: true}];
        if (touches(changed, "layer", "view"))
            list.replaceChildren(...rows.map((entry) => element("li", {},
                element("span", {class: entry.isMissing ? "swatch missing" : "swatch", style: entry.isMissing ? null : `background:${entry.color}`}),
                element("span", {class: "limits"}, entry.text), element("span", {class: "count"}))));
        rows.forEach((entry, i) => {
            const text = String(entry.count);
            const {lastChild} = list.children[i];
            if (lastChild.textContent !== text) lastChild.textContent = text;
        });
        list.lastChild.hidden = missing === 0;
    });
    return element("figcaption", {}, title, list, method);
}

/** One sentence that follows the step and the object that is looked at, for those who do not see the map. */
function createStatus(geography, store, map) {
    const status = element("p", {class: "status", "aria-live": "polite"});
    let waiting = 0;
    store.listen((state, changed) => {
        if (!touches(changed, "layer", "step", "focus", "selection")) return;
        clearTimeout(waiting);
        waiting = setTimeout(() => {
            const {layer, step, focus, selection} = store.state;
            const there = d3.range(geography.count).filter((object) => geography.exists(object, step)).length;
            const parts = [`${geography.steps[step].text}: ${plural(there, geography.isGrid ? "cell" : "object")}`];
            const row = layer ? layer.rowAt(step) : -1;
            if (focus >= 0 && geography.exists(focus, step))
                parts.push(`${geography.label(focus)} ${row >= 0 ? layer.textOf(layer.rows[row][focus]) : "exists"}`);
            if (selection.size) parts.push(`${selection.size} chosen`);
            status.textContent = parts.join(" · ");
            map.describe(`Map of ${layer ? layer.name : geography.name}. ${status.textContent}`);
        }, 120);
    });
    return status;
}

/** The object with the highest value: the one that the charts open on. */
function highest(layer, step) {
    const row = layer && !layer.isText ? layer.rowAt(step) : -1;
    return row < 0 ? -1 : d3.scan(layer.rows[row], (a, b) => (Number.isNaN(a) ? 1 : Number.isNaN(b) ? -1 : b - a));
}

export function createStage(geography, place) {
    const layer = geography.layers[geography.first] || null;
    const steps = geography.stepsOf(layer);
    const store = createStore({
        layer, view: layer ? layer.views[layer.view] : null, step: steps[steps.length - 1],
        hover: -1, focus: highest(layer, steps[steps.length - 1]), selection: new Set(), brushedBy: null, links: geography.links[0] || null, partner: null,
    });
    const map = geography.isGrid ? createGrid(geography, store) : createMap(geography, store);
    const controls = createControls(geography, store);
    if (!geography.isGrid && geography.count <= 5000) controls.append(createFinder(geography, store));
    const beside = [createSeries, createHistogram].map((create) => create(geography, store));
    const below = geography.links.length ? [createMoran(geography, store), createLinks(geography, store)] : [];
    // Texts have neither a line nor a histogram, so the links take their place.
    if (below.length && layer && layer.isText) beside.push(below.pop());
    const scatter = createScatter(geography, store, !below.length);
    if (below.length) below.unshift(scatter);
    const figure = element("figure", {class: "panel picture"}, element("div", {class: "canvas"}, map.node), createLegend(geography, store));
    const sideMaps = geography.sideMaps.length ? [createSideMaps(geography, store)] : [];
    place.replaceChildren(
        ...sideMaps,
        element("div", {class: "bar"}, controls, createSlider(geography, store)),
        element("div", {class: "board"}, element("div", {class: "main"}, figure, createStatus(geography, store, map), ...(below.length ? [] : [scatter])), element("div", {class: "side"}, ...beside)),
        element("div", {class: "below"}, ...below), createTable(geography, store));
    place.classList.add("live");
    return store;
}
