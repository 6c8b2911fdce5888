// What the parts of a stage share: one record, and those who want to know when it changes. Changes of one frame are
// told together, so that a slider never waits for the drawing of steps that it has left already.

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
        /** Calls `listener` once now with every key, then with those that changed. */
        listen(listener) {
            listeners.push(listener);
            listener(state, new Set(Object.keys(state)));
        },
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
