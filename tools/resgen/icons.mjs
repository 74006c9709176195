// Tool icons of the resource tree: res/icons/<name>.svg for the normal theme and the same
// icons recoloured in res/icons/dark/ and res/icons/green/, taken from lucide-static and
// renamed to the names the program looks up ("^icons/wheel.svg"). The application icon
// quenlo.svg is drawn here and carries its own background, so it looks the same everywhere.
//
//   node icons.mjs          regenerate the icons and the icon set's licence beside this script
//   node icons.mjs --check  compare the tree with a fresh build, write nothing
import { readFileSync, writeFileSync, mkdirSync, existsSync } from "node:fs";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";

const here = dirname(fileURLToPath(import.meta.url));
const root = join(here, "..", "..");
const lucide = join(here, "node_modules", "lucide-static");
const check = process.argv.includes("--check");

// Our name -> lucide icon.
const ICONS = {
  wheel: "settings",
  expand: "expand",
  sound_on: "volume-2",
  sound_off: "volume-x",
  ar_left: "chevron-left",
  ar_right: "chevron-right",
  ar_up: "chevron-up",
  ar_down: "chevron-down",
  hide: "eye-off",
  show: "eye",
  stroke: "pen-line",
  "stroke-not": "pen-off",
  delete: "trash-2",
  copy: "copy",
  minus1: "minus",
  plus1: "plus",
  close: "x",
  info: "info",
  help: "circle-help",
  play: "play",
  pause: "pause",
  stop: "square",
  menu: "menu",
  open: "folder-open",
  save: "save",
  new: "file-plus",
  log: "scroll-text",
  language: "languages",
  theme: "sun-moon",
  search: "search",
  refresh: "rotate-cw",
};

// Line colour per theme folder, chosen for contrast with that theme's window colour:
// normal 239,239,239 / dark 53,53,53 / green 30,50,30.
const THEMES = {
  "": "#3c3c3c",
  dark: "#e6e6e6",
  green: "#c8ffc8",
};

// A red seal square with a practice grid and a stylised 中: visible on every theme's window.
const APP_ICON = `<svg xmlns="http://www.w3.org/2000/svg" width="64" height="64" viewBox="0 0 64 64">
  <rect x="2" y="2" width="60" height="60" rx="12" fill="#b3261e"/>
  <g stroke="#ffffff" stroke-opacity="0.35" stroke-width="1.5" stroke-dasharray="3 3" fill="none">
    <line x1="32" y1="6" x2="32" y2="58"/>
    <line x1="6" y1="32" x2="58" y2="32"/>
    <line x1="8" y1="8" x2="56" y2="56"/>
    <line x1="56" y1="8" x2="8" y2="56"/>
  </g>
  <g stroke="#ffffff" stroke-width="5" stroke-linecap="round" stroke-linejoin="round" fill="none">
    <path d="M15 21v19M15 21h34v19M15 40h34"/>
    <path d="M32 9v46"/>
  </g>
</svg>
`;

const version = JSON.parse(readFileSync(join(lucide, "package.json"), "utf8")).version;

// Lucide files are one <svg> with presentation attributes and a few shape children, drawn in
// currentColor; Qt's SVG renderer has no currentColor, so the colour is written out.
function recolour(name, source, colour) {
  const text = readFileSync(join(lucide, "icons", `${source}.svg`), "utf8");
  const open = text.match(/<svg\b([^>]*)>/);
  const close = text.lastIndexOf("</svg>");
  if (!open || close < 0) throw new Error(`icons.mjs: lucide icon '${source}' is not a plain <svg>`);
  const attrs = open[1].replace(/\s*class="[^"]*"/, "").replace(/\s+/g, " ").trim();
  const body = text
    .slice(open.index + open[0].length, close)
    .split("\n")
    .map((l) => l.trim())
    .filter((l) => l.length > 0)
    .map((l) => `  ${l}`)
    .join("\n");
  if (!/currentColor/.test(attrs + body)) throw new Error(`icons.mjs: lucide icon '${source}' has no currentColor`);
  return (
    `<!-- "${name}" from lucide-static ${version} "${source}", ISC licence -->\n` +
    `<svg ${attrs}>\n${body}\n</svg>\n`.replaceAll("currentColor", colour)
  );
}

function build() {
  const files = new Map();
  for (const [folder, colour] of Object.entries(THEMES)) {
    const dir = folder ? join("res", "icons", folder) : join("res", "icons");
    for (const [name, source] of Object.entries(ICONS)) files.set(join(dir, `${name}.svg`), recolour(name, source, colour));
    files.set(join(dir, "quenlo.svg"), APP_ICON);
  }
  files.set(join("tools", "resgen", "LICENSE.lucide-static.txt"), readFileSync(join(lucide, "LICENSE"), "utf8"));
  return files;
}

if (!existsSync(join(lucide, "icons"))) {
  console.error("icons.mjs: lucide-static is not installed; run 'npm ci' in tools/resgen");
  process.exit(2);
}

const files = build();
if (check) {
  const stale = [...files].filter(([rel, text]) => {
    const path = join(root, rel);
    return !existsSync(path) || readFileSync(path, "utf8") !== text;
  });
  for (const [rel] of stale) console.error(`icons.mjs --check: ${rel} differs from a fresh build`);
  if (stale.length > 0) process.exit(1);
  console.log(`icons.mjs --check: ${files.size} files up to date`);
} else {
  for (const [rel, text] of files) {
    mkdirSync(dirname(join(root, rel)), { recursive: true });
    writeFileSync(join(root, rel), text);
  }
  console.log(`icons.mjs: wrote ${files.size} files`);
}
