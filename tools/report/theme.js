// Light or dark: as the system has it until the reader says otherwise. Runs before anything is
// painted, so that the page never changes its colours under the eyes.
"use strict";

const theme = {
    key: "tympan-report-theme",

    // Storage may be forbidden, as for files in some browsers; then the choice lasts as long as the page.
    stored() {
        try {
            return localStorage.getItem(this.key);
        } catch {
            return null;
        }
    },

    store(value) {
        try {
            localStorage.setItem(this.key, value);
        } catch {
            // nothing is lost but the memory of it
        }
    },

    isDark() {
        const chosen = document.documentElement.dataset.theme;
        return chosen ? chosen === "dark" : matchMedia("(prefers-color-scheme: dark)").matches;
    },

    choose(value) {
        document.documentElement.dataset.theme = value;
        this.store(value);
    },
};

if (["light", "dark"].includes(theme.stored()))
    document.documentElement.dataset.theme = theme.stored();
