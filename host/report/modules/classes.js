// Classes and colours of a layer's view: one legend for all times.
import {readable} from "./format.js";

/** The class of a value: the first takes its lower limit too, each its upper one; -1 without a value. */
export function classOf(layer, view, value) {
    if (value === undefined || Number.isNaN(value) || !view.colors.length) return -1;
    if (layer.isText) return Math.min(value, view.colors.length - 1);
    return Math.max(0, Math.min(d3.bisectLeft(view.breaks, value, 1) - 1, view.colors.length - 1));
}

/** Rows of the legend, the highest class first, with the number of objects in each. */
export function legendEntries(layer, view, values, isThere) {
    const counts = new Array(view.colors.length).fill(0);
    let missing = 0;
    for (let i = 0; i < values.length; ++i) {
        if (!isThere(i)) continue;
        const known = classOf(layer, view, values[i]);
        if (known < 0) ++missing;
        else ++counts[known];
    }
    const unit = view.relative ? "\u2009%" : "";
    const entries = view.colors.map((color, i) => ({
        color,
        count: counts[i],
        text: layer.isText
            ? layer.words.length > view.colors.length && i === view.colors.length - 1 ? "others" : layer.words[i]
            : limitsText(view.breaks, i) + unit,
    }));
    return {entries: layer.isText ? entries : entries.reverse(), missing};
}

function limitsText(breaks, i) {
    const [low, high] = [breaks[i], breaks[i + 1]];
    if (low === high) return readable(low, 5);
    const span = breaks[breaks.length - 1] - breaks[0];
    const decimals = Math.max(0, Math.min(6, 3 - Math.floor(Math.log10(span || 1))));
    const shown = (limit) => readable(Number(limit.toFixed(decimals)));
    return `${shown(low)} – ${shown(high)}`;
}
