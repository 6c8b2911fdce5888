// The page's data, unpacked: shapes out of arcs, rows of numbers, and what an object is at a step.
import {readable} from "./format.js";

/** Positions of the document's geographies, ready to draw. */
export function readReport(text) {
    const report = JSON.parse(text);
    return {title: report.title, geographies: report.geographies.map((given) => new Geography(given))};
}

function unpackCells(text) {
    const bytes = Uint8Array.from(atob(text), (letter) => letter.charCodeAt(0));
    const view = new DataView(bytes.buffer);
    return Float32Array.from({length: bytes.length / 4}, (_, i) => view.getFloat32(4 * i, true));
}

function unpackRow(row, count) {
    if (typeof row === "string") return unpackCells(row);
    if (Array.isArray(row)) return Float64Array.from(row, (value) => (value === null ? NaN : value));
    const values = new Float64Array(count).fill(NaN);
    row.objects.forEach((object, i) => (values[object] = row.values[i]));
    return values;
}

/** Of flat pairs of step and what holds from it on: what holds at `step`, or `otherwise`. */
function holdingAt(changes, step, otherwise) {
    let low = 0;
    let high = changes.length / 2;
    while (low < high) {
        const middle = (low + high) >> 1;
        if (changes[2 * middle] <= step) low = middle + 1;
        else high = middle;
    }
    return low > 0 ? changes[2 * low - 1] : otherwise;
}

class Geography {
    constructor(given) {
        Object.assign(this, given);
        this.isGrid = Boolean(given.grid);
        this.count = this.isGrid ? this.grid.rows * this.grid.columns : this.labels.length;
        this.layers = given.layers.map((layer) => new Layer(layer, this));
        this.links = given.links.map((set) => ({
            ...set,
            at: (step) => [...set.states].reverse().find((state) => state.step <= step) || null,
        }));
        this.paths = new Map();
        this.anchors = new Map();
        if (this.isGrid) {
            const {rows, columns, ratio} = this.grid;
            const scale = 10000 / Math.max(columns * ratio, rows);
            this.width = columns * ratio * scale;
            this.height = rows * scale;
        } else {
            this.width = Math.max(1, this.shapes.width);
            this.height = Math.max(1, this.shapes.height);
            this.arcs = this.shapes.arcs.map((steps) => {
                const places = [];
                for (let i = 0, x = 0, y = 0; i < steps.length; i += 2) places.push([(x += steps[i]), (y += steps[i + 1])]);
                return places;
            });
        }
    }

    label(object) {
        if (!this.isGrid) return this.labels[object];
        const {columns, every} = this.grid;
        return `column ${(object % columns) * every}, row ${Math.floor(object / columns) * every}`;
    }

    /** The number of the shape that an object has, -1 when it does not exist. */
    shapeAt(object, step) {
        return this.isGrid ? object : holdingAt(this.shapes.objects[object], step, -1);
    }

    exists(object, step) {
        return this.isGrid || this.shapeAt(object, step) >= 0;
    }

    ringsOf(shape) {
        return this.shapes.shapes[shape].map((ring) =>
            ring.flatMap((number, i) => {
                const arc = number < 0 ? [...this.arcs[~number]].reverse() : this.arcs[number];
                return i ? arc.slice(1) : arc;
            })
        );
    }

    /** As the attribute `d` of a path. */
    pathOf(shape) {
        if (!this.paths.has(shape)) {
            const end = this.kind === "polygons" ? "Z" : "";
            this.paths.set(shape, this.ringsOf(shape).map((ring) => `M${ring.join("L")}${end}`).join(""));
        }
        return this.paths.get(shape);
    }

    /** Where links meet: the centre of gravity of the largest ring, or the middle of a line. */
    anchorOf(shape) {
        if (this.isGrid) {
            const {columns, rows} = this.grid;
            return [((shape % columns) + 0.5) * (this.width / columns), (Math.floor(shape / columns) + 0.5) * (this.height / rows)];
        }
        if (this.shapes.places.length) return this.shapes.places[shape];
        if (!this.anchors.has(shape)) {
            const rings = this.ringsOf(shape);
            let anchor = [0, 0];
            let largest = -1;
            for (const ring of rings) {
                const area = this.kind === "polygons" && ring.length > 3 ? Math.abs(d3.polygonArea(ring)) : 0;
                if (area <= largest) continue;
                largest = area;
                anchor = area > 0 ? d3.polygonCentroid(ring) : ring[ring.length >> 1];
            }
            this.anchors.set(shape, anchor);
        }
        return this.anchors.get(shape);
    }

    /** The steps that a slider of the layer has; without a layer those at which objects change. */
    stepsOf(layer) {
        return layer && !layer.always ? layer.steps : this.existence;
    }

    /** The step of the layer's slider that contains another step, else the nearest one; of two that meet there the later
        one, since the end of a step is the start of the next. */
    stepNear(layer, step) {
        const {at} = this.steps[step];
        const distance = (own) => {
            const {start, end} = this.steps[own];
            return start <= at && at <= end ? 0 : Math.abs(this.steps[own].at - at);
        };
        return this.stepsOf(layer).reduce((best, own) => (distance(own) <= distance(best) ? own : best));
    }
}

class Layer {
    constructor(given, geography) {
        Object.assign(this, given);
        this.geography = geography;
        this.rows = given.rows.map((row) => unpackRow(row, geography.count));
        this.rowOf = new Map(this.steps.map((step, i) => [step, i]));
        this.relative = [];
    }

    /** The row that holds at a step of the geography, or -1. */
    rowAt(step) {
        if (this.always) return 0;
        if (this.rowOf.has(step)) return this.rowOf.get(step);
        const {at} = this.geography.steps[step];
        const holds = (own) => this.geography.steps[own].start <= at && at <= this.geography.steps[own].end;
        return this.steps.map(holds).lastIndexOf(true);
    }

    /** Values as they are, or in parts of 100 of the mean of their time. */
    valuesOf(row, view) {
        if (!view || !view.relative) return this.rows[row];
        if (!this.relative[row]) {
            const mean = d3.mean(this.rows[row], (value) => (Number.isNaN(value) ? undefined : value));
            this.relative[row] = this.rows[row].map((value) => (100 * value) / mean);
        }
        return this.relative[row];
    }

    /** As a reader reads it, with its unit where the view has one. */
    textOf(value, view) {
        if (value === undefined || Number.isNaN(value)) return "no value";
        if (this.isText) return this.words[value];
        return readable(value) + (view && view.relative ? "\u2009%" : "");
    }
}
