// Which files are shown and in which order: the state, the address that keeps it, and the controls.
"use strict";

// Entries stand in the order of their names, which an order that finds two alike leaves.
const kSorts = [
    { name: "findings", label: "Findings first", compare: byVerdict },
    { name: "name", label: "Name", compare: () => 0 },
    { name: "pixels", label: "Largest picture", compare: (a, b) => pixelCount(b) - pixelCount(a) },
    { name: "bytes", label: "Largest file", compare: (a, b) => b.bytes - a.bytes },
    { name: "ink", label: "Most ink", compare: (a, b) => mostInk(b) - mostInk(a) },
];

// What can be chosen from, each with what of an entry it looks at.
const kChoices = [
    { name: "verdict", of: (entry) => entry.verdict },
    { name: "format", of: formatOf },
    { name: "inks", of: inksOf },
];

const collator = new Intl.Collator("en", { numeric: true });

function byName(a, b) {
    return collator.compare(a.file, b.file);
}

function pixelCount(entry) {
    return (entry.width ?? 0) * (entry.height ?? 0);
}

function mostInk(entry) {
    return entry.ink?.total.greatest ?? -1;
}

function byVerdict(a, b) {
    const rank = (entry) => kVerdicts.indexOf(verdictOf(entry));
    return rank(a) - rank(b);
}

// ---- state and address

const kFirstState = {
    q: "",
    verdict: [],
    format: [],
    inks: [],
    sort: "findings",
    open: null,
    show: [],
};

function stateInAddress() {
    const told = new URLSearchParams(location.hash.slice(1));
    const list = (name) => (told.get(name) ?? "").split("|").filter(Boolean);
    const sort = kSorts.find((one) => one.name === told.get("sort"));
    return {
        q: told.get("q") ?? "",
        verdict: list("verdict"),
        format: list("format"),
        inks: list("inks"),
        sort: sort?.name ?? kFirstState.sort,
        open: told.get("open"),
        show: list("show").map(Number),
    };
}

// Only what differs from the first state is told.
function addressOf(state) {
    const told = new URLSearchParams();
    for (const [name, value] of Object.entries(state)) {
        const text = Array.isArray(value) ? value.join("|") : value;
        if (text && text !== kFirstState[name]) told.set(name, text);
    }
    return `#${told}`;
}

// ---- filtering

// What a search looks through, made once for each entry.
const searchTexts = new Map();

function searchTextOf(entry) {
    if (!searchTexts.has(entry)) {
        const findings = entry.findings.map((one) => `${one.id} ${one.found}`);
        const parts = [
            entry.file,
            formatOf(entry),
            entry.kind,
            inksOf(entry),
            entry.problem?.error,
            ...findings,
        ];
        searchTexts.set(entry, parts.filter(Boolean).join("\n").toLowerCase());
    }
    return searchTexts.get(entry);
}

// Every word has to be there.
function matchesQuery(entry, query) {
    return query
        .toLowerCase()
        .split(/\s+/)
        .every((word) => searchTextOf(entry).includes(word));
}

function chosenBy(entry, state, choices) {
    return choices.every(
        ({ name, of }) => state[name].length === 0 || state[name].includes(of(entry)),
    );
}

function filtered(found, state) {
    const { compare } = kSorts.find((one) => one.name === state.sort);
    return [...found].filter((entry) => chosenBy(entry, state, kChoices)).sort(compare);
}

// How many of the files found each value of a choice would show, the other choices being as they
// are.
function countsFor(entries, found, state, choice) {
    const others = kChoices.filter((one) => one !== choice);
    const counts = new Map();
    for (const entry of entries) {
        const isCounted = found.has(entry) && chosenBy(entry, state, others);
        counts.set(choice.of(entry), (counts.get(choice.of(entry)) ?? 0) + (isCounted ? 1 : 0));
    }
    return counts;
}

// ---- controls

const kMostInkChips = 6;

function withToggled(values, value) {
    return values.includes(value) ? values.filter((one) => one !== value) : [...values, value];
}

// Buttons are made anew with each state; the one in use keeps the focus.
function replaceKeepingFocus(box, buttons) {
    const focused = [...box.children].indexOf(document.activeElement);
    box.replaceChildren(...buttons);
    if (focused >= 0) box.children[focused]?.focus();
}

function choiceButton(choice, value, label, count, state, onChange, attributes) {
    const change = () => onChange({ [choice.name]: withToggled(state[choice.name], value) });
    return toggle(label, count, state[choice.name].includes(value), change, attributes);
}

function showVerdicts(entries, found, state, onChange) {
    const choice = kChoices[0];
    const counts = countsFor(entries, found, state, choice);
    const shown = kVerdicts.map((verdict) => ({ verdict, count: counts.get(verdict.name) ?? 0 }));
    replaceKeepingFocus(
        byId("verdicts"),
        shown.map(({ verdict, count }) =>
            choiceButton(choice, verdict.name, badge(verdict), count, state, onChange, {
                "data-verdict": verdict.name,
            }),
        ),
    );
    byId("shares").replaceChildren(
        ...shown.map(({ verdict, count }) => {
            const share = make("i", { "data-verdict": verdict.name });
            share.style.flexGrow = count;
            return share;
        }),
    );
}

function showChips(id, choice, entries, found, state, onChange, most) {
    const chips = [...countsFor(entries, found, state, choice)]
        .filter(([value]) => value !== "")
        .sort(([a], [b]) => collator.compare(a, b))
        .slice(0, most)
        .map(([value, count]) => choiceButton(choice, value, value, count, state, onChange));
    const box = byId(id);
    box.hidden = chips.length < 2;
    replaceKeepingFocus(box, chips);
}

function showControls(entries, found, state, onChange) {
    showVerdicts(entries, found, state, onChange);
    showChips("formats", kChoices[1], entries, found, state, onChange);
    showChips("inks", kChoices[2], entries, found, state, onChange, kMostInkChips);
    const query = byId("query");
    if (query.value !== state.q) query.value = state.q;
    byId("sort").value = state.sort;
}
