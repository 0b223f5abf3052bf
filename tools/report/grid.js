// The cards. They are made in portions, so that the first of thousands are there at once; browsers
// lay out and paint those only that are near the screen.
"use strict";

const kFirstCards = 48;
const kCardsAtOnce = 150;

const cards = new Map(); // by entry; made once
let gridRun = 0; // tells a filling of the grid that a newer one has begun

function thumbnail(entry) {
    if (entry.thumb) return image(entry.thumb, { alt: "", loading: "lazy" });
    return make("span", { class: "blank" }, "No picture");
}

function cardOf(entry, onOpen) {
    if (!cards.has(entry)) cards.set(entry, makeCard(entry, onOpen));
    return cards.get(entry);
}

function makeCard(entry, onOpen) {
    const verdict = verdictOf(entry);
    const open = (event) => {
        if (event.ctrlKey || event.metaKey || event.shiftKey) return; // a new tab or window, as for any link
        event.preventDefault();
        onOpen(entry);
    };
    const complaint = mainComplaint(entry);
    return make(
        "article",
        { class: "card", "data-verdict": verdict.name },
        make("div", { class: "picture" }, thumbnail(entry)),
        make(
            "div",
            { class: "head" },
            make(
                "h3",
                {},
                make(
                    "a",
                    { href: addressOf({ open: keyOf(entry) }), title: entry.file, onclick: open },
                    nameOf(entry),
                ),
            ),
            inkDots(entry),
        ),
        make("p", { class: "folder" }, folderOf(entry) || "."),
        make(
            "p",
            { class: "line" },
            make("b", {}, formatOf(entry)),
            make("span", {}, pixelsOf(entry)),
            make("span", {}, resolutionOf(entry)),
        ),
        badge(verdict, true),
        complaint ? make("p", { class: "complaint" }, complaint) : null,
    );
}

// The cards, with a heading in front of each verdict where these stand together.
function withHeadings(entries, state, onOpen, from, to) {
    const items = [];
    for (let i = from; i < Math.min(to, entries.length); ++i) {
        const verdict = verdictOf(entries[i]);
        if (state.sort === "findings" && (i === 0 || verdictOf(entries[i - 1]) !== verdict))
            items.push(
                make(
                    "h2",
                    { class: "group", "data-verdict": verdict.name },
                    verdict.heading,
                    make(
                        "span",
                        { class: "number" },
                        number.format(entries.filter((one) => verdictOf(one) === verdict).length),
                    ),
                ),
            );
        items.push(cardOf(entries[i], onOpen));
    }
    return items;
}

function fillGrid(entries, state, onOpen) {
    const grid = byId("grid");
    const run = ++gridRun;
    grid.replaceChildren(...withHeadings(entries, state, onOpen, 0, kFirstCards));
    const addMore = (from) => {
        if (run !== gridRun || from >= entries.length) return;
        grid.append(...withHeadings(entries, state, onOpen, from, from + kCardsAtOnce));
        requestAnimationFrame(() => addMore(from + kCardsAtOnce));
    };
    requestAnimationFrame(() => addMore(kFirstCards));
}
