// What the parts of a stage share: one record, and those who want to know when it changes. Changes of one frame are
// told together, so that a slider never waits for the drawing of steps that it has left already. What is outside the
// window is told when the slider rests.

const kRest = 120; // milliseconds without a change

export function createStore(initial) {
    const state = {...initial};
    const listeners = [];
    let changed = null;
    const tell = () => {
        const keys = changed;
        changed = null;
        for (const listener of listeners) listener(state, keys);
    };
    return {
        state,
        set(patch) {
            const keys = Object.keys(patch).filter((key) => patch[key] !== state[key]);
            if (!keys.length) return;
            Object.assign(state, patch);
            if (!changed) {
                changed = new Set();
                requestAnimationFrame(tell);
            }
            keys.forEach((key) => changed.add(key));
        },
        /** Calls `listener` once now with every key, then with those that changed; later while `node` is not in view. */
        listen(listener, node) {
            listeners.push(node ? whenInView(listener, node, state) : listener);
            listener(state, new Set(Object.keys(state)));
        },
    };
}

function whenInView(listener, node, state) {
    let missed = new Set();
    let inView = true;
    let waiting = 0;
    const catchUp = () => {
        clearTimeout(waiting);
        if (!missed.size) return;
        const keys = missed;
        missed = new Set();
        listener(state, keys);
    };
    new IntersectionObserver((entries) => {
        inView = entries[entries.length - 1].isIntersecting;
        if (inView) catchUp();
    }).observe(node);
    addEventListener("beforeprint", catchUp);
    return (_, changed) => {
        changed.forEach((key) => missed.add(key));
        if (inView) return catchUp();
        clearTimeout(waiting);
        waiting = setTimeout(catchUp, kRest);
    };
}

/** Whether any of the keys changed. */
export function touches(changed, ...keys) {
    return keys.some((key) => changed.has(key));
}

/** The selection with one object more or less. */
export function toggled(selection, object) {
    const next = new Set(selection);
    if (!next.delete(object)) next.add(object);
    return next;
}
