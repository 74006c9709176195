// Generates the level files res/zh/level_<n>.txt of the levels after the first from the
// reviewed tables tools/resgen/levels/level_<n>.txt, checked against chinese-lexicon:
//   - level n holds exactly the characters of the HSK (2.0) words of level n - 1 that no earlier
//     level holds (level 1 is written by hand and stays as it is);
//   - every pinyin is one of the character's readings in the CC-CEDICT copy of the package.
//
//   node tools/resgen/levels.mjs          write the files
//   node tools/resgen/levels.mjs --check  compare with the committed files, exit 1 on a difference
//
// Table rows: character | pinyin | English | German | Russian, in any order.
import fs from 'node:fs';
import path from 'node:path';
import { createRequire } from 'node:module';
import { fileURLToPath } from 'node:url';

const here = path.dirname(fileURLToPath(import.meta.url));
const root = path.resolve(here, '..', '..');
const require = createRequire(import.meta.url);
const lexiconDir = path.dirname(require.resolve('chinese-lexicon/package.json'));
const formatPinyin = require(path.join(lexiconDir, 'dictionary', 'formatPinyin.js'));

const LEVELS = [2, 3, 4, 5, 6, 7];
const levelFile = (n) => path.join(root, 'res', 'zh', `level_${n}.txt`);
const tableFile = (n) => path.join(here, 'levels', `level_${n}.txt`);

function fail(msg) {
  console.error(`levels: ${msg}`);
  process.exit(2);
}

// statistics/hsk.js opens with "let hsk = [ [words of HSK 1], [HSK 2], ... ];".
function hskWordLists() {
  const text = fs.readFileSync(path.join(lexiconDir, 'statistics', 'hsk.js'), 'utf8');
  const m = text.match(/^let hsk = (\[[\s\S]*?\n\]);/);
  if (!m) fail('statistics/hsk.js no longer starts with the word lists');
  return JSON.parse(m[1]);
}

// Every reading of every simplified character in CC-CEDICT, tone-marked ("zhōng", "le").
function cedictReadings() {
  const readings = new Map();
  const text = String(require(path.join(lexiconDir, 'dictionary', 'cedict.js')));
  for (const line of text.split('\n')) {
    const m = line.match(/^\S+ (\S) \[([A-Za-z:]+[1-5])\] /u);
    if (!m) continue;
    const py = formatPinyin(m[2].toLowerCase());
    if (!readings.has(m[1])) readings.set(m[1], new Set());
    readings.get(m[1]).add(py);
  }
  return readings;
}

const levelOneChars = () =>
  [...fs.readFileSync(levelFile(1), 'utf8').matchAll(/^\d+ = \{ (\S) \|/gmu)].map((m) => m[1]);

// The characters of each level, in the order of the package's word lists.
function levelCharacters() {
  const lists = hskWordLists();
  const taken = new Set(levelOneChars());
  const levels = new Map();
  for (const n of LEVELS) {
    const chars = [];
    for (const word of lists[n - 2]) {
      for (const c of word) {
        if (!/\p{Script=Han}/u.test(c) || taken.has(c)) continue;
        taken.add(c);
        chars.push(c);
      }
    }
    levels.set(n, chars);
  }
  return levels;
}

function readTable(n, readings) {
  const rows = [];
  const lines = fs.readFileSync(tableFile(n), 'utf8').split('\n');
  lines.forEach((line, i) => {
    if (line.trim() === '') return;
    const where = `${path.relative(root, tableFile(n))}:${i + 1}`;
    const f = line.split('|').map((s) => s.trim());
    if (f.length !== 5 || f.some((s) => s === '' || s.includes('{') || s.includes('}'))) {
      fail(`${where}: needs five non-empty fields without braces`);
    }
    const [char, pinyin, english, german, russian] = f;
    // Short meanings: a learner reads them at a glance beside the character.
    if ([english, german, russian].some((m) => m.split(';').length > 3)) fail(`${where}: more than three senses`);
    if ([...char].length !== 1) fail(`${where}: '${char}' is not one character`);
    if (!(readings.get(char) || new Set()).has(pinyin)) {
      fail(`${where}: '${pinyin}' is not a reading of ${char} (${[...(readings.get(char) || [])].join(', ')})`);
    }
    rows.push({ code: char.codePointAt(0), char, pinyin, english, german, russian });
  });
  return rows;
}

function levelText(rows) {
  const sorted = [...rows].sort((a, b) => a.code - b.code);
  return sorted.map((r) => `${r.code} = { ${r.char} | ${r.pinyin} | ${r.english} | ${r.german} | ${r.russian} }\n`).join('');
}

const check = process.argv.includes('--check');
const readings = cedictReadings();
const wantedChars = levelCharacters();
let differences = 0;
for (const n of LEVELS) {
  const rows = readTable(n, readings);
  const want = new Set(wantedChars.get(n));
  const have = new Set(rows.map((r) => r.char));
  const missing = [...want].filter((c) => !have.has(c));
  const extra = [...have].filter((c) => !want.has(c));
  if (have.size !== rows.length) fail(`level ${n}: a character is listed twice`);
  if (missing.length || extra.length) {
    fail(`level ${n}: missing '${missing.join('')}', not in the level '${extra.join('')}'`);
  }
  const text = levelText(rows);
  const file = levelFile(n);
  if (check) {
    if (!fs.existsSync(file) || fs.readFileSync(file, 'utf8') !== text) {
      console.error(`differs: ${path.relative(root, file)}`);
      differences++;
    }
  } else {
    fs.writeFileSync(file, text);
  }
}
if (check) {
  console.log(differences === 0 ? `levels: ${LEVELS.length} level files match` : `levels: ${differences} differences`);
  process.exit(differences === 0 ? 0 : 1);
}
console.log(`levels: wrote ${LEVELS.length} level files`);
