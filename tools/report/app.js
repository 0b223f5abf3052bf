// The page: what the reader does becomes a state, the state becomes what is shown and the address.
"use strict";

const entries = reportData.pictures.sort(byName);
const detail = byId("detail");

let state = stateInAddress();
let shownEntries = [];
let openEntry = null;

// ---- state

// An opening is a step that Back takes away again; anything else replaces the address.
function change(part) {
    const before = state;
    state = { ...state, ...part };
    const isOpening = before.open === null && state.open !== null;
    history[isOpening ? "pushState" : "replaceState"](null, "", addressOf(state));
    show(before);
}

// `before` is the state that is shown, or null when everything is to be shown anew.
function show(before) {
    if (
        before === null ||
        kChoices.some(({ name }) => before[name] !== state[name]) ||
        before.q !== state.q ||
        before.sort !== state.sort
    )
        showList();
    showDetail();
}

function followAddress() {
    state = stateInAddress();
    show(null);
}

// ---- the list

function showList() {
    const found = new Set(entries.filter((entry) => matchesQuery(entry, state.q)));
    shownEntries = filtered(found, state);
    showControls(entries, found, state, change);
    fillGrid(shownEntries, state, openPicture);
    const all = entries.length;
    byId("count").textContent =
        shownEntries.length === all
            ? plural(all, "file", "files")
            : `${number.format(shownEntries.length)} of ${plural(all, "file", "files")}`;
    const isNarrowed = state.q !== "" || kChoices.some(({ name }) => state[name].length > 0);
    byId("reset").hidden = !isNarrowed;
    byId("nothing").hidden = shownEntries.length > 0;
    byId("nothing").textContent =
        all === 0 ? "There is no picture in these folders." : "No file is like that.";
}

function reset() {
    const { q, verdict, format, inks } = kFirstState;
    change({ q, verdict, format, inks });
    byId("query").focus();
}

// ---- the open picture

function openPicture(entry) {
    change({ open: keyOf(entry), show: [] });
}

function closePicture() {
    change({ open: null, show: [] });
}

function showDetail() {
    const entry = entries.find((one) => keyOf(one) === state.open) ?? null;
    if (entry === null) {
        closeDetail();
        return;
    }
    if (entry !== openEntry) showEntry(entry);
    showViewer(entry, state.show, (plates) => change({ show: plates }));
    if (!detail.open) detail.showModal();
}

function showEntry(entry) {
    openEntry = entry;
    byId("name").textContent = nameOf(entry);
    byId("folder").textContent = folderOf(entry);
    const place = shownEntries.indexOf(entry);
    byId("position").textContent =
        place < 0 ? "" : `${number.format(place + 1)} of ${number.format(shownEntries.length)}`;
    byId("previous").disabled = place <= 0;
    byId("next").disabled = place < 0 || place === shownEntries.length - 1;
    showPanel(entry, openPicture);
    document.title = `${nameOf(entry)} – ${reportData.title}`;
}

// The focus goes to the card of what was shown last.
function closeDetail() {
    document.title = reportData.title;
    if (detail.open) detail.close();
    if (openEntry !== null) cards.get(openEntry)?.querySelector("a").focus();
    openEntry = null;
}

function step(by) {
    const next = shownEntries[shownEntries.indexOf(openEntry) + by];
    if (next && shownEntries.includes(openEntry)) openPicture(next);
}

// ---- what the reader does

function pressInDetail(event) {
    if (event.ctrlKey || event.metaKey || event.altKey) return;
    const digit = /^Digit([0-9])$/.exec(event.code); // whatever Shift makes of the key
    if (event.key === "ArrowLeft" || event.key === "ArrowRight")
        step(event.key === "ArrowLeft" ? -1 : 1);
    else if (digit && Number(digit[1]) <= openEntry.plates.length)
        change({ show: showAfter(state.show, Number(digit[1]) - 1, event.shiftKey) });
    else if (event.key === "o") byId("outlines")?.click();
    else return;
    event.preventDefault();
}

function press(event) {
    if (detail.open) {
        pressInDetail(event);
        return;
    }
    if (event.key === "/" && document.activeElement !== byId("query")) {
        event.preventDefault();
        byId("query").select();
    }
}

function showTheme() {
    byId("theme").setAttribute("aria-pressed", String(theme.isDark()));
}

function listen() {
    addEventListener("popstate", followAddress);
    addEventListener("keydown", press);
    byId("query").addEventListener("input", () => change({ q: byId("query").value.trim() }));
    byId("sort").addEventListener("change", () => change({ sort: byId("sort").value }));
    byId("reset").addEventListener("click", reset);
    byId("skip").addEventListener("click", (event) => {
        event.preventDefault(); // the address is the state's
        byId("grid").focus();
    });
    byId("previous").addEventListener("click", () => step(-1));
    byId("next").addEventListener("click", () => step(1));
    byId("close").addEventListener("click", closePicture);
    detail.addEventListener("cancel", (event) => {
        event.preventDefault();
        closePicture();
    });
    detail.addEventListener("click", (event) => event.target === detail && closePicture());
    byId("theme").addEventListener("click", () => {
        theme.choose(theme.isDark() ? "light" : "dark");
        showTheme();
    });
}

function begin() {
    document.title = reportData.title;
    byId("title").textContent = reportData.title;
    byId("made").textContent =
        `${plural(entries.length, "file", "files")}, checked on ${dateText(reportData.made)}`;
    byId("foot").textContent =
        `Made by tympan ${reportData.version}.` +
        (reportData.left_out > 0
            ? ` ${plural(reportData.left_out, "file is", "files are")} no pictures and left out.`
            : "");
    byId("sort").append(...kSorts.map(({ name, label }) => make("option", { value: name }, label)));
    showTheme();
    listen();
    show(null);
}

begin();
