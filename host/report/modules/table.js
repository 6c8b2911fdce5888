// The objects of the present step as a table: sorted by any column, chosen by row, copied as text.
import {classOf} from "./classes.js";
import {element, exact, plural} from "./format.js";
import {toggled, touches} from "./store.js";

const kMostRows = 200;
const kMostOthers = 6;

/** Whether the layer repeats what the objects are called. */
function namesObjects(geography, layer) {
    return layer.isText && !geography.isGrid && geography.labels.every((label, object) => layer.words[layer.rows[0][object]] === label);
}

function columnsOf(geography, state) {
    const {layer, view, step} = state;
    const columns = [];
    const others = geography.layers.filter((one) => one !== layer && !namesObjects(geography, one)).slice(0, kMostOthers);
    for (const one of layer ? [layer, ...others] : others) {
        const row = one.rowAt(step);
        columns.push({
            head: one.name,
            isText: one.isText,
            value: (object) => (row < 0 ? NaN : one.rows[row][object]),
            text: (value) => one.textOf(value),
            plain: (value) => (Number.isNaN(value) ? "" : one.isText ? one.words[value] : exact(value)),
        });
        if (one !== layer) continue;
        columns[columns.length - 1].main = true;
        if (view.relative)
            columns.push({
                head: "of the mean",
                value: (object) => (row < 0 ? NaN : one.valuesOf(row, view)[object]),
                text: (value) => one.textOf(value, view),
                plain: exact,
            });
        if (!one.isText)
            columns.push({
                head: "class",
                value: (object) => (row < 0 ? NaN : classOf(one, view, one.valuesOf(row, view)[object]) + 1 || NaN),
                text: (value) => (Number.isNaN(value) ? "–" : `${value} of ${view.colors.length}`),
                plain: exact,
            });
    }
    const links = state.links && state.links.at(step);
    if (links)
        columns.push({head: "neighbours", value: (object) => links.neighbors[object].length, text: String, plain: exact});
    return columns;
}

/** Times and objects of the layer, one row each: what a spreadsheet takes. */
function everything(geography, {layer}) {
    const lines = [["time", "object", layer.name].join("\t")];
    layer.rows.forEach((row, i) => {
        const step = layer.always ? geography.existence[geography.existence.length - 1] : layer.steps[i];
        const time = layer.always ? "always" : geography.steps[step].text;
        for (let object = 0; object < geography.count; ++object) {
            const value = row[object];
            if (!Number.isNaN(value)) lines.push([time, geography.label(object), layer.isText ? layer.words[value] : value].map(cell).join("\t"));
        }
    });
    return lines.join("\n");
}

function cell(value) {
    return String(value).replace(/[\t\r\n]+/g, " ");
}

async function copy(text, button) {
    try {
        await navigator.clipboard.writeText(text);
    } catch {
        const area = element("textarea", {class: "hidden"});
        area.value = text;
        document.body.append(area);
        area.select();
        document.execCommand("copy");
        area.remove();
    }
    const before = button.textContent;
    button.textContent = "Copied";
    setTimeout(() => (button.textContent = before), 1200);
}

export function createTable(geography, store) {
    let order = {column: -1, up: true};
    let shown = {columns: [], objects: []};
    const caption = element("caption", {});
    const head = element("tr", {});
    const body = element("tbody", {});
    const table = element("table", {class: "numbers objects"}, caption, element("thead", {}, head), body);
    const copyNow = element("button", {type: "button"}, "Copy this table");
    const copyAll = element("button", {type: "button"}, "Copy all times");
    const clear = element("button", {type: "button", class: "clear"}, "Clear the choice");
    const note = element("p", {class: "note"});
    const node = element("div", {class: "panel table"}, element("div", {class: "tools"}, clear, copyNow, copyAll), element("div", {class: "scroll", tabindex: "0"}, table), note);

    copyNow.addEventListener("click", () => {
        const {columns, objects} = shown;
        const lines = [["object", ...columns.map((column) => column.head)]];
        for (const object of objects) lines.push([geography.label(object), ...columns.map((column) => column.plain(column.value(object)))]);
        copy(lines.map((line) => line.map(cell).join("\t")).join("\n"), copyNow);
    });
    copyAll.addEventListener("click", () => copy(everything(geography, store.state), copyAll));
    clear.addEventListener("click", () => store.set({selection: new Set(), brushedBy: "table"}));
    const rowUnder = (event) => {
        const row = event.target.closest("tbody tr");
        return row ? Number(row.dataset.object) : -1;
    };
    body.addEventListener("click", (event) => {
        const object = rowUnder(event);
        if (object >= 0) store.set({selection: toggled(store.state.selection, object), focus: object, brushedBy: "table"});
    });
    body.addEventListener("mouseover", (event) => {
        const object = rowUnder(event);
        store.set(object >= 0 ? {hover: object, focus: object} : {hover: -1});
    });
    body.addEventListener("focusin", (event) => store.set({hover: rowUnder(event), focus: rowUnder(event)}));
    body.addEventListener("mouseleave", () => store.set({hover: -1}));

    const sort = (column) => {
        order = {column, up: order.column === column ? !order.up : column < 0};
        draw(store.state);
    };

    function drawHead(columns) {
        head.replaceChildren(...[{head: "object"}, ...columns].map((column, i) => {
            const button = element("button", {type: "button"}, column.head);
            button.addEventListener("click", () => sort(i - 1));
            const sorted = order.column === i - 1 ? (order.up ? "ascending" : "descending") : null;
            return element("th", {scope: "col", "aria-sort": sorted, class: i && !column.isText ? "number" : null}, button);
        }));
    }

    function draw(state) {
        const columns = columnsOf(geography, state);
        const main = columns.findIndex((column) => column.main);
        let objects = [];
        for (let i = 0; i < geography.count; ++i) if (geography.exists(i, state.step)) objects.push(i);
        const total = objects.length;
        if (state.selection.size) objects = objects.filter((object) => state.selection.has(object));
        const by = columns[order.column] || null;
        const keys = new Map(objects.map((object) => [object, by ? by.value(object) : geography.isGrid ? object : geography.label(object)]));
        const last = (value) => (typeof value === "number" && Number.isNaN(value) ? 1 : 0);
        objects.sort((a, b) => {
            const [u, v] = [keys.get(a), keys.get(b)];
            return last(u) - last(v) || (order.up ? 1 : -1) * (typeof u === "string" ? u.localeCompare(v) : u - v);
        });
        shown = {columns, objects};
        drawHead(columns);
        body.replaceChildren(...objects.slice(0, kMostRows).map((object) => {
            const name = element("button", {type: "button", class: "name", "aria-pressed": String(state.selection.has(object))}, geography.label(object));
            const cells = columns.map((column, i) => {
                const value = column.value(object);
                const made = element("td", {class: column.isText ? null : "number"}, column.text(value));
                if (i === main) {
                    const row = state.layer.rowAt(state.step);
                    const known = row < 0 ? -1 : classOf(state.layer, state.view, state.layer.valuesOf(row, state.view)[object]);
                    made.prepend(element("span", {class: known < 0 ? "swatch missing" : "swatch", style: known < 0 ? null : `background:${state.view.colors[known]}`}));
                }
                return made;
            });
            return element("tr", {"data-object": object, class: state.selection.has(object) ? "chosen" : null}, element("th", {scope: "row"}, name), ...cells);
        }));
        caption.textContent = `${geography.name}, ${geography.steps[state.step].text}`;
        note.textContent = (state.selection.size ? `${objects.length} of ${plural(total, "object")} chosen. ` : `${plural(total, "object")}. `)
            + (objects.length > kMostRows ? `The first ${kMostRows} are shown; all are copied.` : "");
        clear.hidden = state.selection.size === 0;
        copyAll.hidden = !state.layer;
    }

    // A table is long: it follows the slider when it rests.
    let waiting = 0;
    store.listen((state, changed) => {
        if (touches(changed, "layer")) order = {column: -1, up: true};
        if (touches(changed, "layer", "view", "step", "selection", "links")) {
            clearTimeout(waiting);
            waiting = setTimeout(() => draw(store.state), changed.has("step") ? 90 : 0);
        }
        if (changed.has("hover")) {
            for (const row of body.querySelectorAll("tr.hovered")) row.classList.remove("hovered");
            const row = state.hover >= 0 && body.querySelector(`tr[data-object="${state.hover}"]`);
            if (row) row.classList.add("hovered");
        }
    });
    draw(store.state);
    return node;
}
