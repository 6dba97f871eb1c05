#!/usr/bin/env node
// Compares the computed style that `htcore style` prints with what headless
// Chromium answers through getComputedStyle, element by element, on the
// documents of tests/style/chromium and a few real pages of /usr/share/doc.
// Prints values compared, values equal, the expected differences (each rule
// with its reason) and the unexpected ones. Run through scripts/style_check.sh.
//
//   node scripts/style_check.js --htcore build-dev/tools/htcore [--pages N] [--show N]
//        [--keep DIR] [--verbose] [FILE.html ...]
'use strict';

const fs = require('fs');
const os = require('os');
const path = require('path');
const { execFileSync, spawnSync } = require('child_process');

const PROPS = [
  'display', 'position', 'float', 'color', 'background-color', 'font-family', 'font-size', 'font-weight',
  'line-height', 'margin-top', 'margin-right', 'margin-bottom', 'margin-left', 'padding-top', 'padding-right',
  'padding-bottom', 'padding-left', 'border-top-width', 'border-right-width', 'border-bottom-width',
  'border-left-width', 'width', 'height', 'text-align',
];
const WIDTH = 1024;
const HEIGHT = 768;
const MARK = '__htcore_check';

// ---------------------------------------------------------------- options

function parseArgs(argv) {
  const o = { htcore: process.env.HTCORE || '', pages: 4, show: 40, keep: '', verbose: false, files: [] };
  for (let i = 0; i < argv.length; ++i) {
    const a = argv[i];
    if (a === '--htcore') o.htcore = argv[++i];
    else if (a === '--pages') o.pages = Number(argv[++i]);
    else if (a === '--show') o.show = Number(argv[++i]);
    else if (a === '--keep') o.keep = argv[++i];
    else if (a === '--verbose') o.verbose = true;
    else if (a === '--help' || a === '-h') {
      console.log(fs.readFileSync(__filename, 'utf8').split('\n').slice(1, 9).map((l) => l.replace(/^\/\/ ?/, '')).join('\n'));
      process.exit(0);
    } else o.files.push(a);
  }
  return o;
}

// ---------------------------------------------------------------- documents

const root = path.resolve(__dirname, '..');

function corpusFiles() {
  const dir = path.join(root, 'tests/style/chromium');
  return fs.readdirSync(dir).filter((f) => f.endsWith('.html')).sort().map((f) => path.join(dir, f));
}

// Real pages, the same ones on one machine: one per package, 4–120 KB, with
// a style sheet of their own, no <base> and no frames.
function realPages(count) {
  if (count <= 0) return [];
  const out = spawnSync('find', ['/usr/share/doc', '-name', '*.html', '-size', '+4k', '-size', '-120k'], {
    encoding: 'utf8', maxBuffer: 64 << 20,
  }).stdout.split('\n').filter(Boolean).sort();
  const hash = (s) => { let h = 2166136261; for (const c of s) h = Math.imul(h ^ c.charCodeAt(0), 16777619) >>> 0; return h; };
  out.sort((a, b) => hash(a) - hash(b) || (a < b ? -1 : 1));
  const seen = new Set();
  const picked = [];
  for (const f of out) {
    const pkg = f.split('/')[4];
    if (seen.has(pkg)) continue;
    let text;
    try { text = fs.readFileSync(f, 'latin1'); } catch { continue; }
    if (/<base\b|<frameset\b/i.test(text) || !/<link[^>]+stylesheet|<style\b/i.test(text)) continue;
    seen.add(pkg);
    picked.push(f);
    if (picked.length >= count) break;
  }
  return picked;
}

// Both sides read the same prepared copy: scripts made inert (a first
// attribute wins, so the page's own type is ignored), so that no page script
// changes the tree; Chromium's copy also gets the collector at the end.
function prepare(text) {
  return text.replace(/<script\b/gi, '<script type="text/x-inert"');
}

function collector() {
  const body = function (props, mark) {
    const me = document.currentScript;
    const out = [];
    for (const e of document.querySelectorAll('*')) {
      if (e === me) continue;
      const chain = [];
      for (let p = e; p; p = p.parentElement) chain.unshift(p.localName.toLowerCase());
      const cs = getComputedStyle(e);
      const o = { path: '/' + chain.join('/'), tag: e.localName.toLowerCase() };
      for (const p of props) o[p] = cs.getPropertyValue(p);
      o.__id = e.id || '';
      o.__class = typeof e.className === 'string' ? e.className : '';
      o.__direction = cs.direction;
      o.__rendered = e.getClientRects().length > 0;
      // Properties that a presentational attribute of the element or, for
      // inherited ones, of an ancestor sets.
      const pres = {};
      const inherited = { color: 1, 'font-family': 1, 'font-size': 1, 'text-align': 1 };
      const map = [['text', 'color', 'body'], ['color', 'color'], ['bgcolor', 'background-color'],
        ['align', 'text-align'], ['width', 'width'], ['height', 'height'], ['face', 'font-family', 'font'],
        ['size', 'font-size', 'font'], ['border', 'border-top-width', 'table']];
      for (let p = e, self = true; p; p = p.parentElement, self = false)
        for (const [attr, prop, tag] of map)
          if (p.hasAttribute(attr) && (!tag || p.localName === tag) && (self || inherited[prop]) &&
              !(attr === 'align' && p.localName === 'table'))
            pres[prop] = 1;
      o.__pres = Object.keys(pres);
      const table = e.closest('table');
      o.__cellpadding = !!(table && /^t[dh]$/.test(e.localName) && table.hasAttribute('cellpadding'));
      o.__tableborder = !!(/^(table|t[dh])$/.test(e.localName) && table && table.hasAttribute('border'));
      o.__inth = !!(e.parentElement && e.parentElement.closest('th'));
      o.__link = !!e.closest('a[href]');
      o.__quirks = document.compatMode === 'BackCompat';
      o.__cellp = !!(e.localName === 'p' && e.parentElement && /^t[dh]$/.test(e.parentElement.localName));
      out.push(o);
    }
    const pre = document.createElement('pre');
    pre.id = mark;
    pre.textContent = JSON.stringify(out);
    document.documentElement.appendChild(pre);
  };
  return `\n<script>(${body.toString()})(${JSON.stringify(PROPS)}, ${JSON.stringify(MARK)});</script>\n`;
}

function unescapeHtml(s) {
  return s.replace(/&(lt|gt|quot|#39|nbsp|amp);/g, (m, e) =>
    ({ lt: '<', gt: '>', quot: '"', '#39': "'", nbsp: '\u00a0', amp: '&' })[e]);
}

function runChromium(file, work) {
  const profile = fs.mkdtempSync(path.join(work, 'profile-'));
  const r = spawnSync('chromium', [
    '--headless', '--no-sandbox', '--disable-gpu', '--no-first-run', `--user-data-dir=${profile}`,
    `--window-size=${WIDTH},${HEIGHT}`, '--allow-file-access-from-files', '--dump-dom', 'file://' + file,
  ], { encoding: 'utf8', maxBuffer: 256 << 20, timeout: 120000 });
  fs.rmSync(profile, { recursive: true, force: true });
  const m = /<pre id="__htcore_check">([\s\S]*?)<\/pre>/.exec(r.stdout || '');
  if (!m) throw new Error(`chromium gave no values for ${file}: ${(r.stderr || '').split('\n').slice(-3).join(' ')}`);
  return JSON.parse(unescapeHtml(m[1]));
}

function runHtcore(tool, file) {
  const r = spawnSync(tool, ['style', file, '--width', String(WIDTH)], {
    encoding: 'utf8', maxBuffer: 512 << 20, timeout: 120000,
  });
  if (r.status !== 0) throw new Error(`htcore style failed on ${file}: ${(r.stderr || '').trim()}`);
  return r.stdout.split('\n').filter(Boolean).map((l) => JSON.parse(l));
}

// ---------------------------------------------------------------- matching

// Segments that the two parsers add or rename differently: implied html,
// head, body and tbody, and the engine's xbody/xhtml for nested roots.
const LOOSE = new Set(['', 'html', 'head', 'body', 'tbody', 'xbody', 'xhtml']);
const normPath = (p) => p.split('/').filter((s) => !LOOSE.has(s)).join('/');

// Pairs the elements of one tag in document order by their normalised path;
// an element the other parser did not build is stepped over by looking a few
// elements ahead on either side.
function matchElements(ours, theirs) {
  const byTag = (list) => {
    const m = new Map();
    for (const e of list) {
      if (!m.has(e.tag)) m.set(e.tag, []);
      m.get(e.tag).push(e);
    }
    return m;
  };
  const a = byTag(ours);
  const b = byTag(theirs);
  const pairs = [];
  let unmatched = 0;
  for (const [tag, xs] of b) {
    const ys = a.get(tag) || [];
    let i = 0;
    let j = 0;
    while (i < xs.length && j < ys.length) {
      if (normPath(xs[i].path) === normPath(ys[j].path)) { pairs.push([ys[j], xs[i]]); ++i; ++j; continue; }
      let step = 0;
      for (let k = 1; k <= 8 && !step; ++k) {
        if (i + k < xs.length && normPath(xs[i + k].path) === normPath(ys[j].path)) step = 1;
        else if (j + k < ys.length && normPath(xs[i].path) === normPath(ys[j + k].path)) step = 2;
      }
      if (step === 2) { ++j; } else { ++i; ++unmatched; }
    }
    unmatched += xs.length - i;
  }
  return { pairs, unmatched };
}

// ---------------------------------------------------------------- values

const px = (v) => (typeof v === 'string' && /^-?[\d.]+(e-?\d+)?px$/.test(v) ? parseFloat(v) : null);
function colour(v) {
  const m = /^rgba?\(\s*([\d.]+),\s*([\d.]+),\s*([\d.]+)(?:,\s*([\d.]+))?\s*\)$/.exec(v || '');
  if (!m) return null;
  return [+m[1], +m[2], +m[3], m[4] === undefined ? 255 : Math.round(+m[4] * 255)];
}
const firstFamily = (v) => (v || '').split(',')[0].trim().replace(/^["']|["']$/g, '').toLowerCase();
const weight = (v) => ({ normal: '400', bold: '700' })[v] || String(v);
// A browser draws a border of a whole number of device pixels: thinner than
// one becomes one, wider ones are floored.
const snapBorder = (w) => (w > 0 && w < 1 ? 1 : Math.floor(w + 1e-6));

function sameValue(prop, ours, theirs, their) {
  if (ours === null || ours === undefined) return false;
  if (prop === 'font-family') return firstFamily(ours) === firstFamily(theirs);
  if (prop === 'font-weight') return weight(ours) === weight(theirs);
  if (prop === 'color' || prop === 'background-color') {
    const x = colour(ours);
    const y = colour(theirs);
    if (x && y && x[3] === 0 && y[3] === 0) return true; // transparent, whatever the channels
    return !!x && !!y && x[0] === y[0] && x[1] === y[1] && x[2] === y[2] && Math.abs(x[3] - y[3]) <= 1;
  }
  if (prop === 'text-align') {
    // The engine resolves start and end by the direction when asked.
    const rtl = their.__direction === 'rtl';
    const t = { start: rtl ? 'right' : 'left', end: rtl ? 'left' : 'right', '-webkit-center': 'xcenter',
      '-webkit-left': 'left', '-webkit-right': 'right' }[theirs] || theirs;
    return t === ours;
  }
  const x = px(ours);
  const y = px(theirs);
  if (x !== null && y !== null) return Math.abs(x - y) <= Math.max(0.02, Math.abs(y) * 0.001);
  return String(ours).toLowerCase() === String(theirs).toLowerCase();
}

// ---------------------------------------------------------------- expected differences

// Each rule: where the engine differs on purpose, and why. `t` sees the
// property, both values, both elements and the document's base name.
let defaultFamily = '';
const EXPECTED = [
  {
    id: 'line-height-normal',
    reason: 'a browser reports "normal" and sizes it by the font\'s metrics; the engine answers 1.2 x font size',
    t: (c) => c.prop === 'line-height' && c.theirs === 'normal' &&
      Math.abs(px(c.ours) - 1.2 * px(c.our['font-size'])) < 0.05,
  },
  {
    id: 'layout-size',
    reason: 'a browser answers width and height after layout; the engine answers the declared value, and auto or a percentage stays for the host\'s layout loop',
    t: (c) => (c.prop === 'width' || c.prop === 'height') && /^(auto|-?[\d.]+%|calc\(.*)$/.test(c.ours) && px(c.theirs) !== null,
  },
  {
    id: 'layout-box',
    reason: 'margins and paddings in percent, and auto margins, need the container\'s width: a browser reports the used pixels after layout, the engine the declared value',
    t: (c) => /^(margin|padding)-/.test(c.prop) && /^(auto|-?[\d.]+%|calc\(.*)$/.test(c.ours) && px(c.theirs) !== null,
  },
  {
    id: 'body-margin',
    reason: 'the default sheet gives body no margin, so that a host paints edge to edge (a browser: 8px)',
    t: (c) => c.our.tag === 'body' && /^margin-/.test(c.prop) && c.ours === '0px' && c.theirs === '8px',
  },
  {
    id: 'default-font-family',
    reason: 'with no family declared a browser answers its font preference, the engine its host\'s DefaultFontFamily',
    t: (c) => c.prop === 'font-family' && firstFamily(c.theirs) === 'times new roman' &&
      firstFamily(c.ours) === defaultFamily,
  },
  {
    id: 'border-snap',
    reason: 'a browser draws borders in whole device pixels and reports the snapped width; the engine keeps the exact width',
    t: (c) => /^border-.*-width$/.test(c.prop) && px(c.ours) !== null && px(c.theirs) !== null &&
      snapBorder(px(c.ours)) === px(c.theirs),
  },
  {
    id: 'blockified',
    reason: 'a browser turns the display of floats and absolutely positioned boxes into a block one; the engine keeps the declared display and its layout loop treats out-of-flow boxes as blocks',
    t: (c) => c.prop === 'display' && (c.their.float !== 'none' || /absolute|fixed/.test(c.their.position)) &&
      /^(inline|inline-block|inline-table|inline-flex|table-.*)$/.test(c.ours),
  },
  {
    id: 'header-cell-centre',
    reason: 'the default sheet centres header cells with xcenter, which unlike center does not pass into nested tables',
    t: (c) => c.prop === 'text-align' && ((c.ours === 'xcenter' && c.theirs === 'center') ||
      (c.their.__inth && c.theirs === 'center' && c.ours === 'left')),
  },
  {
    id: 'not-operand',
    reason: 'the engine\'s :not( takes a limited operand: a type selector in it (div:not(p) > span in selectors.html) matches nothing',
    t: (c) => c.doc === 'selectors.html' && c.prop === 'color' && c.theirs === 'rgb(255, 0, 0)' &&
      /\/div\/span$/.test(c.their.path),
  },
  {
    id: 'quirks-mode',
    reason: 'in quirks mode the engine\'s quirks sheet drops the outer margins of paragraphs at the edges of table cells (a browser collapses them away in layout), and an inline element takes its line height from its first block ancestor',
    t: (c) => c.their.__quirks && ((c.their.__cellp && /^margin-(top|bottom)$/.test(c.prop) && c.ours === '0px') ||
      (c.prop === 'line-height' && c.their.display === 'inline' &&
        Math.abs(px(c.ours) - 1.2 * px(c.our['font-size'])) < 0.05)),
  },
  {
    id: 'presentational-attribute',
    reason: 'the engine makes presentational attributes (text, color, bgcolor, align, width, face, size ...) part of the element\'s own style, which outranks author rules; a browser gives them the lowest author weight',
    // Only on real pages: on the corpus the attributes alone decide, and must agree.
    t: (c) => c.real && (c.their.__pres || []).includes(c.prop),
  },
  {
    id: 'table-attributes',
    reason: 'cellpadding and a table\'s border attribute are no presentational attributes of the engine (its default sheet gives cells of a bordered table an inset border)',
    t: (c) => (c.their.__cellpadding && /^padding-/.test(c.prop)) ||
      (c.their.__tableborder && /^border-.*-width$/.test(c.prop)),
  },
  {
    id: 'monospace-size',
    reason: 'a browser makes the medium size of a monospace family 13px instead of 16px, and em lengths follow; the engine has one medium size',
    t: (c) => firstFamily(c.their['font-family']) === 'monospace' && px(c.ours) !== null && px(c.theirs) !== null &&
      px(c.ours) > 0 && Math.abs(px(c.theirs) / px(c.ours) - 13 / 16) < 0.01,
  },
  {
    id: 'default-sheet',
    reason: 'the default sheets differ where the engine decides otherwise: img inline-block, form controls inline with the text size, center as center, links blue (a browser: #0000EE), no colour for hr, larger/smaller by a factor of 1.2',
    t: (c) => (c.prop === 'display' && ((c.our.tag === 'img' && c.ours === 'inline-block') ||
        (/^(input|select|textarea|button)$/.test(c.our.tag) && c.ours === 'inline'))) ||
      (/^(input|select|textarea|button)$/.test(c.our.tag) && c.prop === 'font-size') ||
      (c.prop === 'text-align' && c.ours === 'center' && c.theirs === '-webkit-center') ||
      (c.prop === 'color' && c.their.__link && c.theirs === 'rgb(0, 0, 238)' && c.ours === 'rgb(0, 0, 255)') ||
      (c.prop === 'color' && c.our.tag === 'hr' && c.theirs === 'rgb(128, 128, 128)') ||
      (c.prop === 'font-size' && /^(small|big|sub|sup)$/.test(c.our.tag) && Math.abs(px(c.ours) - px(c.theirs)) < 1.5),
  },
];

// ---------------------------------------------------------------- main

function main() {
  const o = parseArgs(process.argv.slice(2));
  if (!o.htcore || !fs.existsSync(o.htcore)) {
    console.error(`style_check: no htcore tool (--htcore PATH or HTCORE=...): "${o.htcore}"`);
    process.exit(1);
  }
  const work = o.keep ? path.resolve(o.keep) : fs.mkdtempSync(path.join(os.tmpdir(), 'style-check-'));
  fs.mkdirSync(work, { recursive: true });
  const docs = o.files.length ? o.files.map((f) => path.resolve(f)) : [...corpusFiles(), ...realPages(o.pages)];

  // The engine's own default family, from a document that declares none.
  const probe = path.join(work, 'probe.html');
  fs.writeFileSync(probe, '<!DOCTYPE html><html><body><p>x</p></body></html>');
  defaultFamily = firstFamily((runHtcore(o.htcore, probe).find((e) => e.tag === 'p') || {})['font-family']);

  const totals = { compared: 0, equal: 0, unmatched: 0, elements: 0 };
  const expected = new Map(EXPECTED.map((r) => [r.id, 0]));
  const unexpected = [];
  for (const doc of docs) {
    const name = path.relative(root, doc).startsWith('..') ? doc : path.relative(root, doc);
    let dir = work;
    let base = path.basename(doc, '.html');
    if (doc.startsWith('/usr/share/doc/')) {
      // Linked sheets and images resolve against a tree of links to the package.
      const pkg = doc.split('/')[4];
      const tree = path.join(work, 'doc', pkg);
      if (!fs.existsSync(tree)) {
        fs.mkdirSync(path.dirname(tree), { recursive: true });
        execFileSync('cp', ['-rs', `/usr/share/doc/${pkg}`, tree]);
      }
      dir = path.join(tree, path.dirname(path.relative(`/usr/share/doc/${pkg}`, doc)));
    }
    const text = prepare(fs.readFileSync(doc, 'latin1'));
    const oursFile = path.join(dir, `${base}.htcore-check.html`);
    const theirsFile = path.join(dir, `${base}.chromium-check.html`);
    fs.writeFileSync(oursFile, text, 'latin1');
    fs.writeFileSync(theirsFile, text + collector(), 'latin1');
    let ours;
    let theirs;
    try {
      theirs = runChromium(theirsFile, work);
      ours = runHtcore(o.htcore, oursFile);
    } catch (e) {
      console.log(`${name}: skipped: ${e.message}`);
      continue;
    }
    const { pairs, unmatched } = matchElements(ours, theirs);
    let compared = 0;
    let equal = 0;
    for (const [our, their] of pairs) {
      for (const prop of PROPS) {
        if (!(prop in their)) continue;
        ++compared;
        const c = { prop, ours: our[prop], theirs: their[prop], our, their, doc: path.basename(doc),
          real: doc.startsWith('/usr/share/doc/') };
        if (sameValue(prop, c.ours, c.theirs, their)) { ++equal; continue; }
        const rule = EXPECTED.find((r) => r.t(c));
        if (rule) { expected.set(rule.id, expected.get(rule.id) + 1); continue; }
        unexpected.push({ doc: name, path: our.path, n: our.n, prop, ours: c.ours, theirs: c.theirs,
          id: their.__id, cls: their.__class });
      }
    }
    totals.compared += compared;
    totals.equal += equal;
    totals.unmatched += unmatched;
    totals.elements += pairs.length;
    console.log(`${name}: ${pairs.length} elements matched, ${unmatched} unmatched; ` +
      `${compared} values compared, ${equal} equal`);
  }

  const diffs = [...expected.values()].reduce((a, b) => a + b, 0);
  console.log(`\nvalues compared: ${totals.compared}; equal: ${totals.equal} ` +
    `(${(100 * totals.equal / Math.max(1, totals.compared)).toFixed(1)} %); ` +
    `expected differences: ${diffs}; unexpected differences: ${unexpected.length}; ` +
    `elements matched: ${totals.elements}, unmatched: ${totals.unmatched}`);
  console.log('\nexpected differences:');
  for (const r of EXPECTED) console.log(`  ${String(expected.get(r.id)).padStart(6)}  ${r.id}: ${r.reason}`);

  // Unexpected differences, grouped by property and the pair of values.
  const groups = new Map();
  for (const u of unexpected) {
    const key = `${u.prop}: htcore ${JSON.stringify(u.ours)} / chromium ${JSON.stringify(u.theirs)}`;
    if (!groups.has(key)) groups.set(key, []);
    groups.get(key).push(u);
  }
  const sorted = [...groups.entries()].sort((a, b) => b[1].length - a[1].length);
  console.log(`\nunexpected differences (${unexpected.length}, ${groups.size} kinds; most frequent first):`);
  for (const [key, list] of sorted.slice(0, o.show)) {
    const u = list[0];
    const where = `${u.doc} ${u.path}${u.id ? '#' + u.id : ''}${u.cls ? '.' + u.cls.trim().split(/\s+/).join('.') : ''}`;
    console.log(`  ${String(list.length).padStart(5)}  ${key}   e.g. ${where}`);
    if (o.verbose)
      for (const v of list.slice(1, 6)) console.log(`           ${v.doc} ${v.path}${v.id ? '#' + v.id : ''}`);
  }
  if (sorted.length > o.show) console.log(`  ... ${sorted.length - o.show} more kinds (--show N)`);
  if (!o.keep) fs.rmSync(work, { recursive: true, force: true });
}

if (require.main === module) main();
module.exports = { prepare, collector, runChromium };
