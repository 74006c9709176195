// Generates the stroke files res/zh/<level>/<code point>.svg of every level file
// res/zh/level_<level>.txt and the compiled-in basic table src/app/BasicTableData.inc (level 1)
// from hanzi-writer-data.
//
//   node tools/resgen/strokes.mjs          write the files
//   node tools/resgen/strokes.mjs --check  compare with the committed files, exit 1 on a difference
//
// The package data is in a 1024 box with y pointing up; y' = 900 - y maps it into the SVG frame.
import fs from 'node:fs';
import path from 'node:path';
import { createRequire } from 'node:module';
import { fileURLToPath } from 'node:url';

const here = path.dirname(fileURLToPath(import.meta.url));
const root = path.resolve(here, '..', '..');
const require = createRequire(import.meta.url);
const dataDir = path.dirname(require.resolve('hanzi-writer-data/package.json'));

const zhDir = path.join(root, 'res', 'zh');
const tableFile = path.join(root, 'src', 'app', 'BasicTableData.inc');
const licenceSrc = path.join(dataDir, 'ARPHICPL.TXT');

// Level numbers in ascending order, from the level files present.
function levelNumbers() {
  return fs.readdirSync(zhDir)
    .map((name) => name.match(/^level_(\d+)\.txt$/))
    .filter(Boolean)
    .map((m) => Number(m[1]))
    .sort((a, b) => a - b);
}

function fail(msg) {
  console.error(`strokes: ${msg}`);
  process.exit(2);
}

// Rows "20013 = { 中 | zhōng | middle; center | Mitte; Zentrum | середина; центр }".
function readLevel(levelFile) {
  const rows = [];
  const text = fs.readFileSync(levelFile, 'utf8');
  for (const line of text.split('\n')) {
    if (line.trim() === '') continue;
    const m = line.match(/^\s*(\d+)\s*=\s*\{(.*)\}\s*$/);
    if (!m) fail(`bad level line '${line}'`);
    const fields = m[2].split('|').map((f) => f.trim());
    if (fields.length !== 5) fail(`level line needs five fields: '${line}'`);
    const code = Number(m[1]);
    if (String.fromCodePoint(code) !== fields[0]) fail(`code ${code} is not '${fields[0]}'`);
    rows.push({ code, char: fields[0], pinyin: fields[1], english: fields[2], german: fields[3], russian: fields[4] });
  }
  for (let i = 1; i < rows.length; i++) {
    if (rows[i].code <= rows[i - 1].code) fail(`level rows not in ascending order at ${rows[i].char}`);
  }
  return rows;
}

function fmt(n) {
  // Integers stay integers; fractions keep at most three decimals.
  const r = Math.round(n * 1000) / 1000;
  return Object.is(r, -0) ? '0' : String(r);
}

// Path data in the short SVG form: no blank beside a command letter, and a command that
// repeats the one before it (other than M) written once ("M1 2Q3 4 5 6 7 8 9 10Z"). Some
// thousand stroke files then stay within one 4 KiB disk block instead of two.
function compactPath(groups) {
  let text = '';
  let previous = null;
  for (const [cmd, pts] of groups) {
    if (cmd === 'Z') text += 'Z';
    else if (cmd === previous && cmd !== 'M') text += ` ${pts.join(' ')}`;
    else text += `${cmd}${pts.join(' ')}`;
    previous = cmd;
  }
  return text;
}

// The outlines use absolute M, L, Q, C and Z only; anything else would need a real transform.
function flipPathData(d, ch) {
  const tokens = d.match(/[A-Za-z]|-?\d*\.?\d+(?:e[-+]?\d+)?/g) || [];
  const out = [];
  let cmd = null;
  let args = [];
  const flush = () => {
    if (cmd === null) return;
    if (cmd === 'Z') {
      if (args.length) fail(`${ch}: arguments after Z`);
      out.push(['Z', []]);
    } else {
      if (args.length === 0 || args.length % 2) fail(`${ch}: odd argument count for ${cmd}`);
      const pts = [];
      for (let i = 0; i < args.length; i += 2) pts.push(`${fmt(args[i])} ${fmt(900 - args[i + 1])}`);
      out.push([cmd, pts]);
    }
    args = [];
  };
  for (const t of tokens) {
    if (/[A-Za-z]/.test(t)) {
      if (!'MLQCZ'.includes(t)) fail(`${ch}: unsupported path command '${t}'`);
      flush();
      cmd = t;
    } else {
      if (cmd === null) fail(`${ch}: path data must start with a command`);
      args.push(Number(t));
    }
  }
  flush();
  return compactPath(out);
}

// The outline as closed polygons in the package frame, every curve cut into 16 chords.
function outlinePolygons(d) {
  const tokens = d.match(/[A-Za-z]|-?\d*\.?\d+(?:e[-+]?\d+)?/g) || [];
  const polygons = [];
  let poly = null;
  let i = 0;
  const num = () => Number(tokens[i++]);
  while (i < tokens.length) {
    const cmd = tokens[i++];
    const last = poly && poly.length ? poly[poly.length - 1] : [0, 0];
    if (cmd === 'M') {
      poly = [[num(), num()]];
      polygons.push(poly);
    } else if (cmd === 'L') {
      poly.push([num(), num()]);
    } else if (cmd === 'Q' || cmd === 'C') {
      const pts = [last];
      for (let k = 0; k < (cmd === 'Q' ? 2 : 3); k++) pts.push([num(), num()]);
      for (let k = 1; k <= 16; k++) {
        // de Casteljau
        let q = pts;
        while (q.length > 1) q = q.slice(1).map((p, j) => [q[j][0] + (p[0] - q[j][0]) * k / 16, q[j][1] + (p[1] - q[j][1]) * k / 16]);
        poly.push(q[0]);
      }
    }
  }
  return polygons;
}

// Non-zero winding, the rule the program fills outlines with.
function inside(polygons, [x, y]) {
  let winding = 0;
  for (const poly of polygons) {
    for (let k = 0; k < poly.length; k++) {
      const [x1, y1] = poly[k];
      const [x2, y2] = poly[(k + 1) % poly.length];
      if ((y1 <= y) !== (y2 <= y)) {
        const cross = (x2 - x1) * (y - y1) - (x - x1) * (y2 - y1);
        if (y2 > y1 && cross > 0) winding++;
        else if (y2 <= y1 && cross < 0) winding--;
      }
    }
  }
  return winding !== 0;
}

// A few centre lines of the package start or end just outside their outline; tracing needs
// both ends inside. Such an end moves along its centre line to a whole-numbered point a few
// units inside the outline.
function pullEndsInside(median, polygons, ch) {
  // Inside with a unit to spare on every side: a renderer's own curve flattening must agree.
  const wellInside = ([x, y]) => [[0, 0], [1, 0], [-1, 0], [0, 1], [0, -1]].every(([dx, dy]) => inside(polygons, [x + dx, y + dy]));
  const pull = (pts) => {
    if (wellInside(pts[0])) return pts;
    const [a, b] = pts;
    const length = Math.hypot(b[0] - a[0], b[1] - a[1]);
    for (let along = 1; along <= length; along++) {
      const t = Math.min(1, (along + 4) / length);
      const p = [Math.round(a[0] + (b[0] - a[0]) * t), Math.round(a[1] + (b[1] - a[1]) * t)];
      if (inside(polygons, [a[0] + (b[0] - a[0]) * along / length, a[1] + (b[1] - a[1]) * along / length]) && wellInside(p)) {
        return [p, ...pts.slice(1)];
      }
    }
    if (pts.length > 2) return pull(pts.slice(1));
    fail(`${ch}: a centre line lies wholly outside its outline`);
  };
  return pull(pull(median).reverse()).reverse();
}

function strokeSvg(row) {
  const file = path.join(dataDir, `${row.char}.json`);
  if (!fs.existsSync(file)) fail(`no package data for ${row.char}`);
  const data = JSON.parse(fs.readFileSync(file, 'utf8'));
  if (!Array.isArray(data.strokes) || data.strokes.length === 0 || data.strokes.length !== data.medians.length) {
    fail(`${row.char}: strokes and medians do not match`);
  }
  const lines = ['<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 1024 1024">'];
  data.strokes.forEach((outline, i) => {
    const median = data.medians[i];
    if (!Array.isArray(median) || median.length < 2) fail(`${row.char}: stroke ${i} has no centre line`);
    const centre = pullEndsInside(median, outlinePolygons(outline), row.char);
    const anim = compactPath(centre.map(([x, y], k) => [k === 0 ? 'M' : 'L', [`${fmt(x)} ${fmt(900 - y)}`]]));
    lines.push(`  <path id="stroke-${i}" d="${flipPathData(outline, row.char)}"/>`);
    lines.push(`  <clipPath id="clip-${i}"><use href="#stroke-${i}"/></clipPath>`);
    lines.push(`  <path clip-path="url(#clip-${i})" d="${anim}"/>`);
  });
  lines.push('</svg>', '');
  return lines.join('\n');
}

function cString(s) {
  return '"' + s.replace(/\\/g, '\\\\').replace(/"/g, '\\"') + '"';
}

function tableInc(rows) {
  const out = ['// Generated by tools/resgen/strokes.mjs from res/zh/level_1.txt; do not edit.',
    '// One row per character: code point, pinyin, English, German, Russian.'];
  for (const r of rows) {
    out.push(`{${r.code}, u${cString(r.pinyin)}, u${cString(r.english)}, u${cString(r.german)}, u${cString(r.russian)}},`);
  }
  out.push('');
  return out.join('\n');
}

const check = process.argv.includes('--check');
const levels = levelNumbers();
if (levels[0] !== 1) fail('res/zh/level_1.txt is missing');
const wanted = new Map();
const strokeDirs = levels.map((n) => path.join(zhDir, String(n)));
const licence = fs.readFileSync(licenceSrc, 'utf8');
const seen = new Map();
levels.forEach((n, i) => {
  const rows = readLevel(path.join(zhDir, `level_${n}.txt`));
  for (const row of rows) {
    if (seen.has(row.code)) fail(`${row.char} is in level ${seen.get(row.code)} and level ${n}`);
    seen.set(row.code, n);
    wanted.set(path.join(strokeDirs[i], `${row.code}.svg`), strokeSvg(row));
  }
  if (n === 1) wanted.set(tableFile, tableInc(rows));
  wanted.set(path.join(strokeDirs[i], 'ARPHICPL.TXT'), licence);
});

let differences = 0;
if (check) {
  for (const [file, content] of wanted) {
    if (!fs.existsSync(file) || fs.readFileSync(file, 'utf8') !== content) {
      console.error(`differs: ${path.relative(root, file)}`);
      differences++;
    }
  }
  for (const dir of strokeDirs) {
    for (const name of fs.existsSync(dir) ? fs.readdirSync(dir) : []) {
      if (!wanted.has(path.join(dir, name))) {
        console.error(`unexpected: ${path.relative(root, path.join(dir, name))}`);
        differences++;
      }
    }
  }
  console.log(differences === 0 ? `strokes: ${wanted.size} files match` : `strokes: ${differences} differences`);
  process.exit(differences === 0 ? 0 : 1);
}

for (const dir of strokeDirs) {
  fs.mkdirSync(dir, { recursive: true });
  for (const name of fs.readdirSync(dir)) {
    if (!wanted.has(path.join(dir, name))) fs.unlinkSync(path.join(dir, name));
  }
}
for (const [file, content] of wanted) fs.writeFileSync(file, content);
console.log(`strokes: wrote ${wanted.size} files`);
