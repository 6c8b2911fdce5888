// Time: a slider over the layer's own steps, with play, forward and back.
import {element, freshId} from "./format.js";
import {shortStep} from "./frame.js";
import {touches} from "./store.js";

const kPlayMilliseconds = 20000; // of all steps, within the limits below
const kShortestStep = 60;
const kLongestStep = 700;

export function createSlider(geography, store) {
    const id = freshId("time");
    const button = (label, text, press) => {
        const made = element("button", {type: "button", "aria-label": label, title: label}, text);
        made.addEventListener("click", press);
        return made;
    };
    const range = element("input", {type: "range", id, min: 0, step: 1});
    const output = element("output", {for: id, class: "now"});
    let playing = null;
    const steps = () => geography.stepsOf(store.state.layer);
    const go = (position) => store.set({step: steps()[Math.max(0, Math.min(position, steps().length - 1))]});
    const stop = () => {
        clearInterval(playing);
        playing = null;
        play.textContent = "▶";
        play.setAttribute("aria-label", "Play");
        play.title = "Play";
    };
    const play = button("Play", "▶", () => {
        if (playing) return stop();
        if (Number(range.value) >= steps().length - 1) go(0);
        play.textContent = "❚❚";
        play.setAttribute("aria-label", "Pause");
        play.title = "Pause";
        playing = setInterval(() => {
            const next = steps().indexOf(store.state.step) + 1;
            if (next >= steps().length) stop();
            else go(next);
        }, Math.max(kShortestStep, Math.min(kPlayMilliseconds / steps().length, kLongestStep)));
    });
    const back = button("Earlier", "‹", () => go(Number(range.value) - 1));
    const forward = button("Later", "›", () => go(Number(range.value) + 1));
    range.addEventListener("input", () => go(Number(range.value)));

    const node = element("div", {class: "time"}, play, back,
        element("div", {class: "track"}, element("label", {for: id, class: "hidden"}, "Time"), range), forward, output);
    store.listen((state, changed) => {
        if (!touches(changed, "layer", "step")) return;
        const own = steps();
        const position = own.indexOf(state.step);
        node.hidden = own.length < 2;
        range.max = own.length - 1;
        range.value = position;
        const text = geography.steps[state.step].text;
        range.setAttribute("aria-valuetext", text);
        output.textContent = shortStep(text);
        output.title = text;
    });
    return node;
}
