// What is known of an open entry, beside its picture: findings, size, ink, what a page places.
"use strict";

function section(title, ...children) {
    return make("section", {}, make("h3", {}, title), ...children);
}

// ---- findings

function findingItem(finding, isFirst) {
    return make(
        "li",
        { "data-severity": finding.severity },
        make(
            "p",
            { class: "rule" },
            make("b", {}, finding.severity === "error" ? "Error" : "Remark"),
            make("code", {}, finding.id),
            make("span", {}, placeText(finding)),
        ),
        make("p", {}, finding.found),
        isFirst ? make("p", { class: "remedy" }, finding.remedy) : null,
    );
}

function untoldItems(entry) {
    return Object.entries(entry.counts).flatMap(([id, count]) => {
        const told = entry.findings.filter((one) => one.id === id).length;
        return count > told
            ? [make("li", {}, `and ${number.format(count - told)} more of `, make("code", {}, id))]
            : [];
    });
}

// What kept the file from being shown or measured, unless a finding says as much.
function problemItem(problem) {
    return make(
        "li",
        { "data-severity": "error" },
        make(
            "p",
            { class: "rule" },
            make("b", {}, "Can’t be shown whole"),
            problem.code ? make("code", {}, `code ${problem.code}`) : null,
        ),
        make("p", {}, problem.error),
        problem.advice ? make("p", { class: "remedy" }, problem.advice) : null,
    );
}

function findingsSection(entry) {
    const told = new Set();
    const items = entry.findings.map((one) => {
        const isFirst = !told.has(one.id);
        told.add(one.id);
        return findingItem(one, isFirst);
    });
    items.push(...untoldItems(entry));
    if (entry.problem) items.push(problemItem(entry.problem));
    return section(
        "Findings",
        make("p", { class: "verdict" }, badge(verdictOf(entry))),
        items.length > 0
            ? make("ul", { class: "findings" }, ...items)
            : make("p", { class: "calm" }, "Nothing was found that is wrong with it."),
    );
}

// ---- geometry

const kMillimetresPerInch = 25.4;

const kSideFiles = {
    ok: "goes with it",
    none: "none",
    stale: "of another version of the file",
    bad: "doesn’t go with it",
};

function geometryRows(entry) {
    const rows = [["Format", entry.kind ? `${formatOf(entry)}, ${entry.kind}` : formatOf(entry)]];
    if (entry.width > 0) rows.push(["Pixels", pixelsOf(entry)]);
    if (entry.width_in > 0)
        rows.push(
            ["Size", sizeText(entry, kMillimetresPerInch, 1, "mm")],
            ["", sizeText(entry, 1, 3, "inches")],
        );
    if (resolutionOf(entry)) rows.push(["Resolution", resolutionOf(entry)]);
    if (entry.separations?.length > 0) rows.push(["Separations", entry.separations.join(", ")]);
    if (typeof entry.colors === "number") rows.push(["Colours", number.format(entry.colors)]);
    if (entry.index) rows.push(["Side file", kSideFiles[entry.index]]);
    rows.push(["File", bytesText(entry.bytes)]);
    return rows;
}

function geometrySection(entry) {
    const rows = geometryRows(entry).map(([name, value]) =>
        make("tr", {}, make("th", { scope: "row" }, name), make("td", {}, value)),
    );
    return section("Geometry", make("table", { class: "geometry" }, make("tbody", {}, ...rows)));
}

// ---- ink

function inkBar(coverage, ink) {
    const bar = make("i", { "data-ink": ink });
    bar.style.width = `${Math.min(coverage, 100)}%`;
    return make("span", { class: "track", "aria-hidden": "true" }, bar);
}

function inkRow(ink) {
    return make(
        "tr",
        {},
        make("th", { scope: "row" }, ink.name),
        make("td", { class: "bar" }, inkBar(ink.coverage, ink.name.toLowerCase())),
        make("td", {}, percent(ink.coverage, 2)),
        ...[ink.least, ink.greatest].map((value) => make("td", {}, percent(value, 1))),
    );
}

function totalInk(total) {
    const over =
        total.over > 0
            ? `${percent(total.over, 2)} of the picture has more than ${total.limit} %, ${plural(total.pixels_over, "pixel", "pixels")}.`
            : `No pixel has more than ${total.limit} %.`;
    return [
        make(
            "p",
            { class: "total" },
            make("b", {}, percent(total.greatest, 1)),
            " total ink at most, ",
            make("b", {}, percent(total.percentile_99_9, 1)),
            " for 99.9 % of the pixels.",
        ),
        make("p", { class: total.over > 0 ? "total over" : "total" }, over),
    ];
}

function inkSection(entry) {
    if (!entry.ink) return null;
    const heads = ["", "", "Coverage", "Least", "Greatest"].map((name) =>
        name ? make("th", { scope: "col" }, name) : make("td", {}),
    );
    return section(
        "Ink",
        make(
            "table",
            { class: "ink" },
            make("thead", {}, make("tr", {}, ...heads)),
            make("tbody", {}, ...entry.ink.separations.map(inkRow)),
        ),
        ...totalInk(entry.ink.total),
    );
}

// ---- what a page places

function placementText(placed) {
    if (placed.width === undefined) return "";
    const text = `${decimals(placed.width, 3)} × ${decimals(placed.height, 3)} in at ${decimals(placed.x, 3)}, ${decimals(placed.y, 3)}`;
    return placed.rotation ? `${text}, turned by ${decimals(placed.rotation, 2)}°` : text;
}

function windowText(placed) {
    if (typeof placed.container !== "number") return "";
    return `seen through ${plural(placed.colors?.length ?? 0, "colour", "colours")} of entry ${placed.container}`;
}

function placedItem(placed, index, onOpen) {
    const target = reportData.pictures.find((one) => one.id === placed.entry);
    const name = placed.path ?? "an entry that can’t be read";
    const opening = (event) => {
        event.preventDefault();
        onOpen(target);
    };
    const naming = target
        ? make("a", { href: addressOf({ open: keyOf(target) }), onclick: opening }, name)
        : make("span", { tabindex: "0" }, name);
    const lines = [placed.type, placementText(placed), windowText(placed)].filter(Boolean);
    return make(
        "li",
        {
            "data-placed": index,
            onpointerenter: () => highlight(index),
            onpointerleave: () => highlight(null),
            onfocusin: () => highlight(index),
            onfocusout: () => highlight(null),
        },
        make("span", { class: "number" }, String(index)),
        make(
            "div",
            {},
            make("p", {}, naming),
            make("p", { class: "calm" }, lines.join(" · ")),
            placed.error ? make("p", { class: "complaint" }, placed.error) : null,
        ),
    );
}

function placementsSection(entry, onOpen) {
    if (!entry.entries) return null;
    return section(
        `Placed on it: ${plural(entry.entries.length, "entry", "entries")}`,
        make(
            "ol",
            { class: "placed" },
            ...entry.entries.map((one, index) => placedItem(one, index, onOpen)),
        ),
    );
}

function showPanel(entry, onOpen) {
    const sections = [
        findingsSection(entry),
        placementsSection(entry, onOpen),
        geometrySection(entry),
        inkSection(entry),
    ];
    byId("facts").replaceChildren(...sections.filter(Boolean));
    byId("facts").scrollTop = 0;
}
