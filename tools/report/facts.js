// What the entries of the report mean in words and numbers.
"use strict";

// In the order in which a person wants to see them: what needs attention first.
const kVerdicts = [
    { name: "invalid", label: "Invalid", sign: "✕", heading: "Invalid: an error was found" },
    {
        name: "undetermined",
        label: "Undetermined",
        sign: "?",
        heading: "Undetermined: couldn’t be read",
    },
    {
        name: "valid with remarks",
        label: "With remarks",
        sign: "!",
        heading: "Valid, with remarks",
    },
    { name: "valid", label: "Valid", sign: "✓", heading: "Valid" },
];

const verdictOf = (entry) => kVerdicts.find((one) => one.name === entry.verdict);

const number = new Intl.NumberFormat("en", { maximumFractionDigits: 0 });
const decimals = (value, digits) => value.toFixed(digits).replace(/\.?0+$/, "");
const percent = (value, digits) => `${value.toFixed(digits)} %`;
const plural = (count, one, many) => `${number.format(count)} ${count === 1 ? one : many}`;

function nameOf(entry) {
    return entry.file.slice(entry.file.lastIndexOf("/") + 1);
}

function folderOf(entry) {
    return entry.file.slice(0, Math.max(entry.file.lastIndexOf("/"), 0));
}

// What stands for a file in the address of the page. A name that is no UTF-8 has a form that is.
function keyOf(entry) {
    return entry.file_raw ?? entry.file;
}

function formatOf(entry) {
    return entry.format ?? "Unknown";
}

const kInitials = {
    cyan: "C",
    magenta: "M",
    yellow: "Y",
    black: "K",
    red: "R",
    green: "G",
    blue: "B",
};

// Initials where everybody knows them, else the names.
function inksOf(entry) {
    const names = (entry.separations ?? []).map((name) => name.toLowerCase());
    return names.every((name) => name in kInitials)
        ? names.map((name) => kInitials[name]).join("")
        : names.join(", ");
}

function pixelsOf(entry) {
    return entry.width > 0 ? `${number.format(entry.width)} × ${number.format(entry.height)}` : "";
}

function resolutionOf(entry) {
    if (entry.resolution) return `${decimals(entry.resolution, 2)} ppi`;
    if (entry.resolution_x && entry.resolution_y)
        return `${decimals(entry.resolution_x, 2)} × ${decimals(entry.resolution_y, 2)} ppi`;
    return "";
}

function sizeText(entry, perInch, digits, unit) {
    const sides = [entry.width_in, entry.height_in].map((side) => decimals(side * perInch, digits));
    return `${sides.join(" × ")} ${unit}`;
}

function bytesText(bytes) {
    const units = ["bytes", "KB", "MB", "GB", "TB"];
    const step =
        bytes === 0 ? 0 : Math.min(Math.floor(Math.log(bytes) / Math.log(1000)), units.length - 1);
    return step === 0
        ? plural(bytes, "byte", "bytes")
        : `${(bytes / 1000 ** step).toFixed(1)} ${units[step]}`;
}

function dateText(day) {
    return new Date(`${day}T00:00`).toLocaleDateString("en-GB", {
        day: "numeric",
        month: "long",
        year: "numeric",
    });
}

function placeText(finding) {
    const parts = [];
    if (finding.row !== null) parts.push(`row ${number.format(finding.row)}`);
    if (finding.offset !== null) parts.push(`byte ${number.format(finding.offset)}`);
    return parts.join(", ");
}

// The one thing that a card says about a file that isn't simply valid.
function mainComplaint(entry) {
    if (entry.findings.length > 0) return entry.findings[0].found;
    return entry.problem?.error ?? "";
}
