// A finding's description in the words of one language; the same as the tool's render.cpp,
// held to it by one table of cases.

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

function renderPieces(head, values) {
  let turn = 0, line = "";
  head.split(", ").forEach((piece, index) => {
    if (index > 0) line += ", ";
    const found = placeholderOf(piece, head, turn, values.length - 2);
    if (!found) {
      line += piece;
      return;
    }
    line = append(line + piece.slice(0, found.begin), values[found.number]) + piece.slice(found.end);
    turn = found.number + 1;
  });
  return line;
}

export function render(description, texts) {
  const {description_format: format, description_params: params} = description;
  if (description.description_use_formatted) return fill(textOf(texts, format), params);
  const values = params.map((reference) => textOf(texts, reference));
  const tail = `{${values.length - 2}} {${values.length - 1}}`;
  if (values.length < 2 || !format.endsWith(tail)) return fill(format, values);
  return renderPieces(format.slice(0, format.length - tail.length), values) + fill(tail, values);
}

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
