// What the page and the gallery share: words, elements, the headline and what is said about a
// finding; and the machine as a picture.

const kSvg = "http://www.w3.org/2000/svg";
const kDrawn = ["svg", "path", "rect", "circle", "line", "use"];

export const fill = (text, values) =>
  text.replace(/\{(\d)\}/g, (whole, number) => values[Number(number)] ?? whole);

// Names are anybody's: without what would turn the text around them.
export const sanitize = (text) =>
  text.replace(/[\0-\x1f\x7f-\x9f\u202a-\u202e\u2066-\u2069]/g, "\ufffd");

// An element; attributes that are undefined or false are left out, and a text is never markup.
export function make(tag, attributes = {}, ...children) {
  const made = kDrawn.includes(tag) ? document.createElementNS(kSvg, tag)
    : document.createElement(tag);
  for (const [name, value] of Object.entries(attributes))
    if (value !== undefined && value !== false) made.setAttribute(name, value);
  made.append(...children.map((child) => typeof child === "string" ? sanitize(child) : child));
  return made;
}

// Each look has a shape of its own: its outline, then the mark on it, then its colour in a tab.
export const kIcons = {
  danger: ["M15 2h18l13 13v18L33 46H15L2 33V15z", "M16 16l16 16M32 16L16 32", "#cf1f29"],
  warning: ["M24 4L45 43H3z", "M24 19v11M24 36.5v.1", "#b86e00"],
  notice: ["M24 2l22 22-22 22L2 24z", "M24 23v11M24 14.5v.1", "#1478c0"],
  well: ["M24 2a22 22 0 1 1 0 44a22 22 0 1 1 0-44z", "M14 25l7 7 13-15", "#1c8a4b"],
  unknown: ["M4 4h40v40H4z", "M17 19a7 7 0 1 1 11 5.5c-2.6 2-4 3-4 6.5M24 37v.1", "#6b7783"],
  accepted: ["M24 2a22 22 0 1 1 0 44a22 22 0 1 1 0-44z", "M14 24h20", "#6b7783"],
  gone: ["M13 4h22l11 20-11 20H13L2 24z", "M15 24h18", "#6b7783"],
  loading: ["M24 2a22 22 0 1 1 0 44a22 22 0 1 1 0-44z", "M14 24h.1M24 24h.1M34 24h.1", "#6b7783"],
};

export const icon = (look) =>
  make("svg", {class: "icon", viewBox: "0 0 48 48", "aria-hidden": "true"},
    make("path", {class: "shape", d: kIcons[look][0]}),
    make("path", {class: "mark", d: kIcons[look][1]}));

export function showHeadline(widget, look, severity, sentence) {
  widget.dataset.verdict = look;
  widget.querySelector(".icon").replaceWith(icon(look));
  // What is said once is not said again.
  for (const [place, text] of [[".severity", severity], [".sentence", sanitize(sentence)]]) {
    const said = widget.querySelector(place);
    if (said.textContent !== text) said.textContent = text;
  }
}

const command = (text) => make("code", {}, text);

// Why it is so and what to do about it, under headings of that level.
export function tellFinding({why, commands, advice}, ui, level, key) {
  const head = (key) => make(`h${level}`, {}, ui[key]);
  const causes = why.map(({text, show}) => make("div", {class: "cause"},
    ...text.map((line) => make("p", {dir: "auto"}, line)), ...show ? [command(show)] : []));
  return [
    ...causes.length > 0 ? [make("div", {class: "why"}, head("why"), ...causes)] : [],
    make("div", {}, head("do"), make("p", {class: "do"}, advice.do),
      ...commands.map(command)),
    ...advice.meaning ? [make("details", {"data-key": `${key} advice`},
      make("summary", {}, ui.meaning), make("p", {}, advice.meaning),
      ...["ignored", "where"].flatMap((key) => [head(key), make("p", {}, advice[key])]))] : [],
  ];
}

// The first of the wanted languages that can be chosen, else the first.
export function languageFor(wanted, select) {
  const primary = (tag) => (tag ?? "").toLowerCase().split(/[-_]/)[0];
  const codes = [...select.options].map(({value}) => value);
  const known = (tag) => codes.find((code) => primary(code) === primary(tag));
  return known(wanted.find(known)) ?? codes[0];
}

export async function fetchJson(path) {
  const answer = await fetch(path, {signal: AbortSignal.timeout(30000)});
  if (!answer.ok) throw new Error(`${path}: ${answer.status}`);
  return answer.json();
}

// --- The machine as a picture. `told` is {ui, language, answer, lit: the names that matter}.

const order = new Intl.Collator("en", {numeric: true}).compare;
const isBad = ({state}) => ["attention", "failed", "missing"].includes(state);

// Counts of bytes in the unit of the greatest, and that unit.
function inUnit(language, ...counts) {
  let unit = 0, scale = 1;
  for (; Math.max(...counts) / scale >= 1000 && unit < 6; unit += 1) scale *= 1024;
  const digits = (count) => ({maximumFractionDigits: unit > 0 && count < 100 ? 1 : 0});
  return [...counts.map((count) => (count / scale).toLocaleString(language, digits(count / scale))),
    ["B", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"][unit]];
}

function readingOf({unit, reading, used, total, size}, {ui, language}) {
  if (total) {
    const share = Math.floor((used ?? 0) / total * 100);
    return fill(ui.used, [...inUnit(language, used ?? 0, total), String(share)]);
  }
  const figure = ((reading ?? 0) / (unit === "mV" ? 1000 : 1)).toLocaleString(language);
  if (unit) return `${figure}\u00a0${{C: "°C", rpm: ui.rpm, mV: "V"}[unit] ?? unit}`;
  return size ? inUnit(language, size).join("\u00a0") : "";
}

// Of a part: its name, its state where that is worth a word, and what a person needs to find it.
function words(part, told) {
  const rest = [part.details, readingOf(part, told)].filter(Boolean).join(told.ui.list_comma);
  return [make("b", {dir: "auto"}, part.title), ...stateOf(part, told),
    ...rest ? [make("span", {dir: "auto"}, rest)] : []];
}

const looksOf = ({state, name}, {lit}) => ({"data-state": state, "data-lit": lit.has(name)});

const stateOf = (part, told) => part.state === "well" ? []
  : [make("em", looksOf(part, told), told.ui[`state_${part.state}`])];

const kSigns = {
  attention: "M16 20v13M16 40v.1", missing: "M16 20v13M16 40v.1",
  failed: "M10 24l12 12M22 24L10 36", well: "M9 12h14M9 19h14M9 26h14",
  unknown: "M12 25a4 4 0 1 1 6.3 3.2c-1.5 1.2-2.3 2-2.3 4M16 39v.1",
};

function bay(disk, told) {
  return make("div", {class: "bay", role: "option", "data-key": disk.name, ...looksOf(disk, told),
    "aria-label": words(disk, told).map((word) => word.textContent).join(told.ui.list_comma)},
  make("svg", {viewBox: "0 0 32 60", "aria-hidden": "true"},
    make("rect", {class: "tray", x: 1.5, y: 1.5, width: 29, height: 57, rx: 4}),
    make("path", {class: "sign", d: kSigns[disk.state] ?? ""}),
    make("circle", {class: "led", cx: 16, cy: 50, r: 3})),
  make("span", {}, disk.place[1]));
}

// Disks in a frame. One of them is chosen: with the pointer, by touch, with arrow keys.
function rack(label, disks, told, first, tell) {
  const bays = disks.map((disk) => bay(disk, told));
  const choose = (chosen) => bays.forEach((each, index) => {
    each.tabIndex = index === Math.max(chosen, 0) ? 0 : -1;
    each.setAttribute("aria-selected", index === chosen);
  });
  bays.forEach((each, index) => {
    for (const way of ["focus", "pointerenter"])
      each.addEventListener(way, () => {
        choose(index);
        tell(disks[index]);
      });
    each.addEventListener("keydown", (event) => {
      const next = {ArrowRight: index + 1, ArrowDown: index + 1, ArrowLeft: index - 1,
        ArrowUp: index - 1, Home: 0, End: bays.length - 1}[event.key];
      if (next === undefined) return;
      event.preventDefault();
      bays[next]?.focus();
    });
  });
  choose(disks.indexOf(first));
  return make("div", {}, make("h3", {dir: "auto"}, label), make("div", {class: "rack",
    role: "listbox", "aria-label": label, "aria-orientation": "horizontal"}, ...bays));
}

// Which frame a disk stands in, and what is written below it there. A slot is "shelf 1, 4".
function placeOf({bay: number, slot, name, device}, ui) {
  if (number) return [ui.bays, number];
  const [, shelf, place] = /^(?:(.*), )?(.*)$/.exec(slot ?? "");
  if (place) return [shelf ?? ui.bays, place];
  return [ui.loose_disks, /\d+$/.exec(name)?.[0] ?? device ?? ""];
}

function racks(all, told) {
  const frames = new Map(), {bays, loose_disks: loose} = told.ui;
  const disks = all.map((disk) => ({...disk, place: placeOf(disk, told.ui)}))
    .sort((a, b) => order(a.place[1], b.place[1]));
  for (const disk of disks)
    frames.set(disk.place[0], [...frames.get(disk.place[0]) ?? [], disk]);
  const rank = (frame) => (frame !== bays) + (frame === loose);
  const first = disks.find(({name}) => told.lit.has(name)) ?? disks.find(isBad);
  const caption = make("p", {class: "caption"});
  const tell = (disk) => caption.replaceChildren(...words(disk, told));
  if (first) tell(first); else caption.append(make("span", {class: "hint"}, told.ui.disk_hint));
  return disks.length === 0 ? [] : [make("div", {class: "racks"},
    ...[...frames.keys()].sort((a, b) => rank(a) - rank(b) || order(a, b)).map((frame) =>
      rack(frame, frames.get(frame), told, first, tell)), caption)];
}

// A bar of 100, with a mark where it warns.
function bar(share, mark, over) {
  const percent = (value) => Math.min(Math.max(value * 100, 0), 100);
  return make("svg", {class: "bar", viewBox: "0 0 100 10", preserveAspectRatio: "none",
    "aria-hidden": "true"},
  make("rect", {class: "track", y: 2, width: 100, height: 6}),
  make("rect", {class: over ? "level over" : "level", y: 2, width: percent(share), height: 6}),
  ...mark === undefined ? [] : [make("line", {x1: percent(mark), x2: percent(mark), y2: 10})]);
}

// The share used from which a volume is told to be nearly full: the evidence's, else what the
// check held it against; a check calls "USB 1" "usbshare1", and "volume_1" "1".
function markOf({name}, {evidence, checks}) {
  const record = evidence.find(({key, part}) => key === "volume_low" && part === name);
  if (record?.mark) return 1 - record.mark / 100;
  const plain = (text) => text.toLowerCase().replace(/^volume_|share| /g, "");
  const seen = checks.flatMap(({saw}) => saw?.volumes ?? [])
    .find(({volume}) => volume && plain(volume) === plain(name));
  const held = seen?.compared?.find(({unit, mark, total}) => unit === "bytes" && mark && total);
  return held && 1 - held.mark / held.total;
}

function volume(part, told) {
  const mark = markOf(part, told.answer), share = part.total && (part.used ?? 0) / part.total;
  return make("li", {class: "volume", ...looksOf(part, told)},
    make("p", {}, make("b", {dir: "auto"}, part.title), ...stateOf(part, told),
      make("span", {dir: "auto"}, part.mount_point ?? "")),
    ...part.total ? [bar(share, mark, share >= mark), make("p", {class: "figures"},
      make("span", {}, readingOf(part, told)), ...mark === undefined ? []
        : [make("span", {}, fill(told.ui.warns_at, [String(Math.round(mark * 100))]))])] : []);
}

// What has a reading: it, held against its mark.
function gauge(part, told) {
  const {unit, reading = 0, mark, kind, title} = part;
  const scale = unit === "%" ? 100 : Math.max(reading, mark ?? 0, 1) * 1.25;
  return make("li", {class: "gauge", ...looksOf(part, told)},
    make("svg", {class: "glyph", viewBox: "0 0 24 24", "aria-hidden": "true"},
      make("use", {href: `#${document.getElementById(kind) ? kind : "unit"}`})),
    make("b", {dir: "auto"}, title), ...stateOf(part, told),
    ...unit ? [make("span", {class: "reading"}, readingOf(part, told)),
      bar(reading / scale, mark && mark / scale, true)] : []);
}

const list = (className, title, items) => items.length === 0 ? []
  : [make("div", {class: className}, make("h3", {}, title), make("ul", {}, ...items))];

// A healthy machine shows the same, calm. What no picture shows stands in the words below it.
export function drawMachine(told) {
  const {ui, answer: {parts}} = told;
  const of = (...kinds) => parts.filter(({kind}) => kinds.includes(kind));
  const gauges = (title, these) => list("gauges", title, these.map((part) => gauge(part, told)));
  return [make("h2", {}, ui.machine), ...racks(of("disk"), told),
    ...list("volumes", ui.volumes, of("volume").map((part) => volume(part, told))),
    ...gauges(ui.power, [...of("supply"), ...of("UPS")]),
    ...gauges(ui.cooling, [...of("fan"), ...of("sensor")]),
    ...gauges(ui.others, [...of("unit", "node"),
      ...of("array", "mapping", "LUN", "interface").filter(isBad)]),
    make("details", {class: "words", "data-key": "words"}, make("summary", {}, ui.in_words),
      make("ul", {}, ...parts.map((part) => make("li", {}, ...words(part, told)))))];
}
