// Numbers and small pieces of markup, the same everywhere on the page.

/** For the eye: at most `digits` that count, thousands parted by a thin space. */
export function readable(value, digits = 7) {
    if (value === null || Number.isNaN(value)) return "–";
    const rounded = Number(value.toPrecision(digits));
    if (Math.abs(rounded) >= 1e15 || (rounded !== 0 && Math.abs(rounded) < 1e-6)) return String(rounded);
    const [whole, part] = String(rounded).split(".");
    const grouped = Math.abs(rounded) >= 10000 ? whole.replace(/\B(?=(\d{3})+$)/g, "\u2009") : whole;
    return (part ? `${grouped}.${part}` : grouped).replace("-", "\u2212");
}

/** Of an axis: short, with k and M for thousands and millions, with an exponent beyond those. */
export function tickText(value) {
    if (Math.abs(value) >= 1e15) return d3.format(".3~e")(value);
    return Math.abs(value) >= 10000 ? d3.format("~s")(value) : readable(value, 5);
}

/** Exact, as a spreadsheet reads it. */
export function exact(value) {
    return value === null || Number.isNaN(value) ? "" : String(value);
}

export function plural(count, noun) {
    return `${readable(count)} ${noun}${count === 1 ? "" : "s"}`;
}

/** An element with attributes and children; texts become text nodes, never markup. */
export function element(name, attributes = {}, ...children) {
    const made = document.createElement(name);
    for (const [key, value] of Object.entries(attributes))
        if (value !== null && value !== false) made.setAttribute(key, value);
    made.append(...children);
    return made;
}

let lastId = 0;
export function freshId(prefix) {
    return `${prefix}-${++lastId}`;
}

/** A select under a label; `options` are [value, text]. */
export function labelledSelect(label, options, chosen, onChange) {
    const select = element("select", {id: freshId("choice")});
    for (const [value, text] of options) {
        const option = element("option", {value}, text);
        option.selected = String(value) === String(chosen);
        select.append(option);
    }
    select.addEventListener("change", () => onChange(select.value));
    return {node: element("label", {class: "field", for: select.id}, element("span", {}, label), select), select};
}
