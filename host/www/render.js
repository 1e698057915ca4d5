// How the pages tell a finding: in the words of one language, with an icon and advice. The words
// are the same as those of the tool's render.cpp, held to it by one table of cases.

const kPlaceholder = /\{(\d{1,19})\}/g;

// The text that "section:key" names, else the reference itself.
export function textOf(texts, reference) {
  const colon = reference.indexOf(":");
  const section = texts[reference.slice(0, colon)];
  const key = reference.slice(colon + 1);
  return section && Object.hasOwn(section, key) ? section[key] : reference;
}

// What was put in is never looked at again.
export function fill(text, values) {
  return text.replace(kPlaceholder, (whole, number) => values[Number(number)] ?? whole);
}

// The one placeholder of a piece "{0} NAME", "NAME{0}2", "USB {0} 1-2" or "{0}": names are
// not escaped, so it is found by its place.
function placeholderOf(piece, head, turn, count) {
  let last, next;
  for (const found of piece.matchAll(kPlaceholder)) {
    const number = Number(found[1]);
    const begin = found.index, end = begin + found[0].length;
    const rest = piece.slice(end);
    if (number >= count) continue;
    if (begin === 0 && rest.startsWith(" ")) return {begin, end, number};
    if (/^\d+$/.test(rest)) last = {begin, end, number};
    const alone = begin === 0 && rest === "" && head.indexOf(piece) === head.lastIndexOf(piece);
    if (!next && number === turn && (alone || /^ \d/.test(rest))) next = {begin, end, number};
  }
  return last ?? next;
}

// A text that follows a name brings the blank between both, where its language has one.
function append(line, text) {
  return line + (text.startsWith(" ") && (line === "" || line.endsWith(" ")) ? text.slice(1) : text);
}

// "USB {0} 1" and "eSATA {0} 1" are one name: its start is a text of its own, "Disque USB".
function deviceOf(piece, found, texts) {
  const kind = piece.slice(0, found.begin);
  if (/^ \d/.test(piece.slice(found.end)) && Object.hasOwn(texts.device ?? {}, kind))
    return texts.device[kind];
}

function renderPieces(head, values, texts) {
  let turn = 0, line = "";
  head.split(", ").forEach((piece, index) => {
    if (index > 0) line += texts.ui["list_comma"];
    const found = placeholderOf(piece, head, turn, values.length - 2);
    if (!found) {
      line += piece;
      return;
    }
    const device = deviceOf(piece, found, texts);
    if (device === undefined) line += piece.slice(0, found.begin);
    line = append(line, device ?? values[found.number]) + piece.slice(found.end);
    turn = found.number + 1;
  });
  return line;
}

// Full-width marks bring their own blank.
const endLabel = (colon) => colon + (colon.endsWith("\uff1a") ? "" : " ");

export function render(description, texts) {
  const {description_format: format, description_params: params} = description;
  if (description.description_use_formatted) return fill(textOf(texts, format), params);
  const values = params.map((reference) => textOf(texts, reference));
  const tail = `{${values.length - 2}} {${values.length - 1}}`;
  if (values.length < 2 || !format.endsWith(tail)) return fill(format, values);
  return renderPieces(format.slice(0, format.length - tail.length), values, texts) +
    endLabel(values.at(-2)) + values.at(-1);
}

// A note in its text, in the plural form of its figure; one that has no text, with its figures.
export function noteOf(note, texts, language) {
  const {key, part, figure, mark} = note;
  const told = {part: part ?? "", figure: group(figure), mark: group(mark ?? 0)};
  if (!texts.notes || !Object.hasOwn(texts.notes, key))
    return `${key} (${[part, told.figure, mark && told.mark].filter(Boolean).join(", ")})`;
  const text = texts.notes[key];
  const form = text[new Intl.PluralRules(language).select(figure)] ?? text.other ?? text;
  return form.replace(/\{(part|figure|mark)\}/g, (whole, name) => told[name]);
}

const group = (figure) => String(figure).replace(/\B(?=(\d{3})+$)/g, "\u202f");

// The key of the text that says what is wrong; with the id it names the finding.
export function textKey(description) {
  const {description_format: format, description_params: params} = description;
  const reference = description.description_use_formatted ? format : params.at(-1) ?? "";
  return reference.slice(reference.indexOf(":") + 1);
}

// Type 2 is "all well" only for the healthy default, otherwise a notice.
export function verdictOf(rule) {
  if (rule.type === 0) return "danger";
  if (rule.type === 1) return "warning";
  return rule.id === "system_health" ? "well" : "notice";
}

// Each look has a shape of its own: its outline, then the mark on it.
const kIcons = {
  danger: ["M15 2h18l13 13v18L33 46H15L2 33V15z", "M16 16l16 16M32 16L16 32"],
  warning: ["M24 4L45 43H3z", "M24 19v11M24 36.5v.1"],
  notice: ["M24 2l22 22-22 22L2 24z", "M24 23v11M24 14.5v.1"],
  well: ["M24 2a22 22 0 1 1 0 44a22 22 0 1 1 0-44z", "M14 25l7 7 13-15"],
  unknown: ["M4 4h40v40H4z", "M17 19a7 7 0 1 1 11 5.5c-2.6 2-4 3-4 6.5M24 37v.1"],
  loading: ["M24 2a22 22 0 1 1 0 44a22 22 0 1 1 0-44z", "M14 24h.1M24 24h.1M34 24h.1"],
};

// Names are anybody's: without what would turn the text around them.
export const sanitize = (text) => text.replace(/[\0-\x1f\x7f-\x9f\u202a-\u202e\u2066-\u2069]/g, "\ufffd");

export function showHeadline(widget, verdict, sentence, texts) {
  widget.dataset.verdict = verdict;
  const [shape, mark] = kIcons[verdict];
  widget.querySelector(".shape").setAttribute("d", shape);
  widget.querySelector(".mark").setAttribute("d", mark);
  widget.querySelector(".severity").textContent = verdict === "loading" ? "" : texts.ui[verdict];
  widget.querySelector(".sentence").textContent = sentence;
}

// The order in which the server lists what is said about a finding.
const kAdvice = ["do", "meaning", "ignored", "where", "sentence"];

// The program's own words, and what the texts say about the finding.
export function showAdvice(widget, rule, texts) {
  const advice = texts[`${rule.id}/${textKey(rule.description)}`] ?? [texts.ui["unknown_finding"]];
  for (const part of widget.querySelectorAll("[data-advice]"))
    part.textContent = advice[kAdvice.indexOf(part.dataset.advice)] ?? "";
  const details = widget.querySelector(".advice details");
  if (details) details.hidden = advice.length < 2;
}

export function showLabels(root, texts) {
  for (const label of root.querySelectorAll("[data-ui]")) label.textContent = texts.ui[label.dataset.ui];
}

export function sentenceOf(rule, texts) {
  const advice = texts[`${rule.id}/${textKey(rule.description)}`];
  return advice?.[kAdvice.indexOf("sentence")] ?? sanitize(render(rule.description, texts));
}

export const kLanguages = {en: "English", de: "Deutsch", fr: "Français", es: "Español", ja: "日本語", "zh-CN": "简体中文"};

// The first of the wanted languages that there are texts in, else English.
export function languageFor(wanted) {
  const primary = (tag) => (tag ?? "").toLowerCase().split(/[-_]/)[0];
  const known = (tag) => Object.keys(kLanguages).find((code) => primary(code) === primary(tag));
  return known(wanted.find(known)) ?? "en";
}

export function offerLanguages(select) {
  for (const [code, name] of Object.entries(kLanguages)) {
    const option = new Option(name, code);
    option.lang = code;
    select.append(option);
  }
}

export async function fetchJson(path) {
  const answer = await fetch(path, {signal: AbortSignal.timeout(30000)});
  if (!answer.ok) throw new Error(`${path}: ${answer.status}`);
  return answer.json();
}
