// Writes reference review histories made with ts-fsrs (pinned in package-lock.json), which
// tests/test_review_parity.cpp replays through our scheduler.
//
//   cd tools/fsrs && npm ci && node vectors.mjs ../../tests/data/fsrs_vectors.csv
//
// The histories are drawn from a fixed seed, so a rerun writes the same file byte for byte.
// One row per review: the history, its desired retention, the review day (whole days, the
// review's time of day varies but never counts), the rating, and what ts-fsrs made of it.

import { writeFileSync } from "node:fs";
import { createEmptyCard, fsrs, FSRSVersion, generatorParameters } from "ts-fsrs";

const HISTORIES = 600;
const SEED = 20261125;
const FIRST_DAY = 20000; // days since 1970-01-01
const DAY_MS = 86400000;

// mulberry32: small, seedable, the same in every Node version.
function rng(seed) {
    let a = seed >>> 0;
    return () => {
        a = (a + 0x6d2b79f5) >>> 0;
        let t = a;
        t = Math.imul(t ^ (t >>> 15), t | 1);
        t ^= t + Math.imul(t ^ (t >>> 7), t | 61);
        return ((t ^ (t >>> 14)) >>> 0) / 4294967296;
    };
}
const random = rng(SEED);
const pick = (list) => list[Math.floor(random() * list.length)];
const between = (lo, hi) => lo + Math.floor(random() * (hi - lo + 1));

function rating() {
    const x = random();
    return x < 0.17 ? 1 : x < 0.32 ? 2 : x < 0.82 ? 3 : 4;
}

// The gap before the next review: same day, next day, weeks, early, on time or overdue.
function gap(scheduled) {
    switch (pick(["same", "next", "weeks", "early", "due", "overdue", "years"])) {
        case "same": return 0;
        case "next": return 1;
        case "weeks": return between(7, 42);
        case "early": return Math.floor(scheduled * (0.1 + 0.8 * random()));
        case "due": return scheduled;
        case "overdue": return Math.ceil(scheduled * (1.1 + 4 * random())) + between(0, 3);
        default: return between(365, 3000);
    }
}

const fmt = (x) => String(x); // the shortest text that reads back as the same double
const rows = [
    `# ts-fsrs ${FSRSVersion}, enable_short_term false, enable_fuzz false, seed ${SEED}`,
    "history,retention,day,rating,elapsed,retrievability,stability,difficulty,interval,due,reps,lapses,state",
];
const schedulers = new Map();
for (const retention of [0.8, 0.85, 0.9, 0.95]) {
    schedulers.set(retention, fsrs(generatorParameters({
        enable_short_term: false, enable_fuzz: false, request_retention: retention,
    })));
}

for (let h = 0; h < HISTORIES; h++) {
    const retention = pick([0.8, 0.85, 0.9, 0.95]);
    const f = schedulers.get(retention);
    let day = FIRST_DAY + between(0, 3000);
    let card = createEmptyCard(new Date(day * DAY_MS));
    const reviews = between(1, 20);
    for (let i = 0; i < reviews; i++) {
        if (i > 0) day += gap(card.scheduled_days);
        const now = new Date(day * DAY_MS + between(0, DAY_MS - 1));
        const g = rating();
        const elapsed = card.last_review ? day - Math.floor(card.last_review.getTime() / DAY_MS) : 0;
        const r = card.state === 0 ? 0 : f.forgetting_curve(elapsed, card.stability);
        card = f.next(card, now, g).card;
        const due = Math.floor(card.due.getTime() / DAY_MS);
        rows.push([h, retention, day, g, elapsed, fmt(r), fmt(card.stability), fmt(card.difficulty),
            card.scheduled_days, due, card.reps, card.lapses, card.state].join(","));
    }
}
writeFileSync(process.argv[2] ?? "fsrs_vectors.csv", rows.join("\n") + "\n");
console.log(`${HISTORIES} histories, ${rows.length - 2} reviews`);
