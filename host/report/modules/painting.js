// Many shapes as a painting beneath the map's lines: filled together by colour, where elements of their own would be
// too many to move with a slider.
import {element} from "./format.js";

const kPixels = 1200; // along the longer side

export function createPainting(geography, pad, outline) {
    const {width, height} = geography;
    const scale = kPixels / (Math.max(width, height) + 2 * pad);
    const canvas = element("canvas", {width: Math.ceil((width + 2 * pad) * scale), height: Math.ceil((height + 2 * pad) * scale), "aria-hidden": "true"});
    const context = canvas.getContext("2d");
    const shapes = new Map();
    const pathOf = (shape) => {
        if (!shapes.has(shape)) shapes.set(shape, new Path2D(outline(shape)));
        return shapes.get(shape);
    };
    const stripes = element("canvas", {width: 8, height: 8});
    const pen = stripes.getContext("2d");

    /** `marks` are {shape, color, out}; without a colour an object has no value. */
    return {canvas, draw(marks) {
        const style = getComputedStyle(document.documentElement);
        pen.fillStyle = style.getPropertyValue("--hatch");
        pen.fillRect(0, 0, 8, 8);
        pen.fillStyle = style.getPropertyValue("--hatch-line");
        for (let i = 0; i < 8; ++i) pen.fillRect(i, i, 2, 2);
        const groups = new Map();
        for (const {shape, color, out} of marks) {
            const key = `${color || ""} ${out ? "out" : ""}`;
            if (!groups.has(key)) groups.set(key, {path: new Path2D(), color, out});
            groups.get(key).path.addPath(pathOf(shape));
        }
        context.setTransform(1, 0, 0, 1, 0, 0);
        context.clearRect(0, 0, canvas.width, canvas.height);
        context.setTransform(scale, 0, 0, scale, pad * scale, pad * scale);
        context.lineWidth = pad / 2;
        for (const {path, color, out} of groups.values()) {
            context.globalAlpha = out ? 0.28 : 1;
            const paint = !color ? context.createPattern(stripes, "repeat") : color.startsWith("var(") ? style.getPropertyValue(color.slice(4, -1)) : color;
            if (!color) paint.setTransform(new DOMMatrix().scale(1 / scale));
            context.fillStyle = context.strokeStyle = paint;
            if (geography.kind === "lines") context.stroke(path);
            else context.fill(path, "evenodd");
        }
    }};
}
