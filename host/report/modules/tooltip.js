// One tooltip for the page, beside the pointer.
import {element} from "./format.js";

const tip = element("div", {class: "tooltip", "aria-hidden": "true", hidden: ""});
document.body.append(tip);

export function showTip(event, title, ...lines) {
    tip.replaceChildren(element("strong", {}, title), ...lines.map((line) => element("div", {}, line)));
    tip.hidden = false;
    const {offsetWidth: width, offsetHeight: height} = tip;
    const right = event.clientX + 16 + width < window.innerWidth;
    tip.style.left = `${Math.max(4, right ? event.clientX + 16 : event.clientX - width - 12)}px`;
    tip.style.top = `${Math.max(4, Math.min(event.clientY + 14, window.innerHeight - height - 4))}px`;
}

export function hideTip() {
    tip.hidden = true;
}
