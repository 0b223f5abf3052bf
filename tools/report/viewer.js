// The picture of an open entry: composite or separations, and the outlines of what a page places.
"use strict";

// Plates are stored in grey. Screened over its ink each is that ink on paper, and plates multiplied
// with each other are some inks together; all of them are the composite, which the library has drawn.
function plateLayer(plate) {
    return make(
        "div",
        { class: "plate", "data-ink": plate.tint ?? "none" },
        image(plate.picture, { alt: "" }),
    );
}

// None stands for the composite.
function shownPlates(entry, show) {
    const plates = show.filter((index) => index >= 0 && index < entry.plates.length);
    return plates.length === entry.plates.length && plates.length > 1 ? [] : plates;
}

function stageText(entry, plates) {
    const names = plates.map((index) => entry.plates[index].name).join(", ");
    return names === "" ? `${nameOf(entry)}, all separations` : `${nameOf(entry)}, ${names}`;
}

function pictureLayers(entry, plates) {
    const label = { role: "img", "aria-label": stageText(entry, plates) };
    if (plates.length === 0)
        return make(
            "div",
            { class: "layers", ...label },
            image(entry.shown, { alt: "" }),
            outlinesOf(entry),
        );
    return make(
        "div",
        { class: "layers", ...label },
        ...plates.map((index) => plateLayer(entry.plates[index])),
    );
}

// ---- the placements of a page

function middleOf(outline) {
    const mean = (side) => outline.reduce((sum, corner) => sum + corner[side], 0) / outline.length;
    return [mean(0), mean(1)];
}

function outlineOf(placed, index, size) {
    const [x, y] = middleOf(placed.outline);
    const points = placed.outline.map((corner) => corner.join(",")).join(" ");
    return draw(
        "g",
        {
            "data-placed": index,
            onpointerenter: () => highlight(index),
            onpointerleave: () => highlight(null),
            onclick: () =>
                document
                    .querySelector(`.placed [data-placed="${index}"] :is(a, summary, [tabindex])`)
                    ?.focus(),
        },
        draw("polygon", { points, class: "halo" }),
        draw("polygon", { points }),
        draw("circle", { cx: x, cy: y, r: size * 0.8 }),
        draw("text", { x, y, "font-size": size, dy: "0.35em" }, String(index)),
    );
}

// In inches of the page, as the placements are.
function outlinesOf(entry) {
    const placed = (entry.entries ?? [])
        .map((one, index) => ({ one, index }))
        .filter(({ one }) => one.outline);
    if (placed.length === 0 || !(entry.width_in > 0)) return null;
    const size = Math.max(entry.width_in, entry.height_in) / 48;
    return draw(
        "svg",
        {
            class: "outlines",
            viewBox: `0 0 ${entry.width_in} ${entry.height_in}`,
            preserveAspectRatio: "none",
        },
        ...placed.map(({ one, index }) => outlineOf(one, index, size)),
    );
}

// Shows an entry of a page both on the page and in the list.
function highlight(index) {
    for (const element of document.querySelectorAll("[data-placed]"))
        element.classList.toggle("lit", element.dataset.placed === String(index));
}

// ---- the strip of separations

function stripButton(label, key, isOn, picture, ink, onclick) {
    return make(
        "button",
        { type: "button", "aria-pressed": String(isOn), "aria-keyshortcuts": key, onclick },
        make("span", { class: "plate", "data-ink": ink }, image(picture, { alt: "" })),
        make("span", { class: "label" }, label),
        make("kbd", { "aria-hidden": "true" }, key),
    );
}

// A click shows one plate; with Shift it comes to the others or leaves them.
function showAfter(show, index, isAdding) {
    if (index < 0) return [];
    return isAdding ? withToggled(show, index).sort((a, b) => a - b) : [index];
}

// Of a page the strip has the switch of its outlines.
function outlineSwitch(stage) {
    const isOn = !stage.classList.contains("bare");
    const onclick = (event) => {
        stage.classList.toggle("bare");
        event.currentTarget.setAttribute("aria-pressed", String(!stage.classList.contains("bare")));
    };
    return make(
        "button",
        {
            type: "button",
            id: "outlines",
            class: "quiet",
            "aria-pressed": String(isOn),
            "aria-keyshortcuts": "o",
            onclick,
        },
        "Outlines ",
        make("kbd", { "aria-hidden": "true" }, "O"),
    );
}

function stripOf(entry, plates, onShow) {
    if (entry.entries && entry.shown) return [outlineSwitch(byId("stage"))];
    if (entry.plates.length === 0) return [];
    const all = stripButton("Composite", "0", plates.length === 0, entry.thumb, "composite", () =>
        onShow([]),
    );
    return [
        all,
        ...entry.plates.map((plate, index) =>
            stripButton(
                plate.name,
                index < 9 ? String(index + 1) : "",
                plates.includes(index),
                plate.picture,
                plate.tint ?? "none",
                (event) => onShow(showAfter(plates, index, event.shiftKey)),
            ),
        ),
    ];
}

function showViewer(entry, show, onShow) {
    const plates = shownPlates(entry, show);
    const stage = byId("stage");
    if (entry.shown) {
        stage.replaceChildren(pictureLayers(entry, plates));
        stage.style.setProperty("--shape", entry.shown.width / entry.shown.height);
    } else {
        stage.replaceChildren(
            make(
                "p",
                { class: "blank" },
                "It can’t be shown. What is wrong with it stands beside.",
            ),
        );
    }
    const strip = byId("plates");
    replaceKeepingFocus(strip, stripOf(entry, plates, onShow));
    strip.hidden = strip.children.length === 0;
}
