// Making elements. Everything that comes from a file goes in as text or as an attribute that is no
// markup.
"use strict";

const byId = (id) => document.getElementById(id);

const kMostDots = 8;
const kSvg = "http://www.w3.org/2000/svg";

// `attributes` whose value is null or false are left out; `on...` ones are listeners.
function fill(element, attributes, children) {
    for (const [name, value] of Object.entries(attributes)) {
        if (name.startsWith("on")) element.addEventListener(name.slice(2), value);
        else if (value !== null && value !== false)
            element.setAttribute(name, value === true ? "" : value);
    }
    element.append(...children.filter((child) => child !== null && child !== ""));
    return element;
}

function make(tag, attributes = {}, ...children) {
    return fill(document.createElement(tag), attributes, children);
}

function draw(tag, attributes = {}, ...children) {
    return fill(document.createElementNS(kSvg, tag), attributes, children);
}

// A picture of the report, with the room that it takes before it is there.
function image(picture, attributes) {
    return make("img", {
        src: picture.file,
        width: picture.width,
        height: picture.height,
        decoding: "async",
        ...attributes,
    });
}

// The sign of a verdict; `spoken` when no word stands beside it.
function badge(verdict, spoken = false) {
    return make(
        "span",
        { class: "badge", "data-verdict": verdict.name },
        make("span", { class: "sign", "aria-hidden": "true" }, verdict.sign),
        spoken ? make("span", { class: "unseen" }, verdict.label) : verdict.label,
    );
}

// Small circles in the colours of the inks; null for a file without separations.
function inkDots(entry) {
    const inks = inksOf(entry);
    if (inks === "") return null;
    const dots = entry.separations
        .slice(0, kMostDots)
        .map((name) => make("i", { "data-ink": name.toLowerCase() }));
    return make("span", { class: "dots", role: "img", "aria-label": inks, title: inks }, ...dots);
}

function toggle(label, count, isOn, onclick, attributes = {}) {
    return make(
        "button",
        { type: "button", "aria-pressed": String(isOn), onclick, ...attributes },
        make("span", {}, label),
        make("span", { class: "number" }, number.format(count)),
    );
}
