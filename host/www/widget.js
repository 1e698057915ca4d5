// The page: asks the machine, tells its answer, and asks again while somebody looks.
import {drawMachine, fetchJson, fill, icon, kIcons, languageFor, make, showHeadline, tellFinding} from "./render.js";

const kPollSeconds = 60, kRetrySeconds = 10;
const kTellSeconds = 10;  // how old the answer is, is told in such steps

const query = new URLSearchParams(location.search);
const scenario = query.get("scenario");  // of a demo
const state = {ui: null, language: "en", answer: null, askedAt: 0, answeredAt: 0, gone: false, asking: false};
const part = (id) => document.getElementById(id);
const widget = part("widget");

function remembered() {
  try {
    return localStorage.getItem("language");
  } catch {
    return null;  // storage is switched off
  }
}

async function useLanguage(language) {
  state.ui = await fetchJson(`texts/${language}.json`);
  state.language = language;
  document.documentElement.lang = language;
}

const ui = (key, ...values) => fill(state.ui[key], values.map(String));

function show(id, text) {
  if (part(id).textContent !== text) part(id).textContent = text;
}

function duration(seconds) {
  const minutes = Math.floor(seconds / 60), hours = Math.floor(minutes / 60);
  if (seconds < 60) return ui("seconds", Math.floor(seconds));
  if (hours >= 48) return ui("days", Math.floor(hours / 24), hours % 24);
  return hours > 0 ? ui("hours", hours, minutes % 60) : ui("minutes", minutes);
}

// Draws what stands in an element anew if it has changed; what is open stays open, and the focus
// where it is.
const drawn = new Map();
function redraw(id, shown, draw) {
  const key = JSON.stringify([state.language, shown]);
  if (drawn.get(id) === key) return;
  drawn.set(id, key);
  const box = part(id), keyOf = (each) => each?.closest("[data-key]")?.dataset.key;
  const open = [...box.querySelectorAll("details[open]")].map(keyOf);
  const focus = box.contains(document.activeElement) && keyOf(document.activeElement);
  box.replaceChildren(...draw());
  box.hidden = box.childElementCount === 0;
  for (const each of box.querySelectorAll("[data-key]")) {
    if (open.includes(each.dataset.key)) each.open = true;
    if (focus === each.dataset.key) (each.querySelector("summary") ?? each).focus();
  }
}

const item = (text, command) => make("li", {}, make("div", {dir: "auto"}, text), ...command ? [make("code", {}, command)] : []);

const kTold = ["source_failed", "source_unwatched", "source_accepted", "source_read"];

// What a source has to tell, and what to do about it. One that was read well tells only remarks.
function linesOf({title, state: how, reasons = []}) {
  const key = `source_${how}`;
  if (!kTold.includes(key) || how === "read" && !reasons[0]?.remedy) return [];
  return reasons.map(({text, remedy}) => item(ui(key, title, text), remedy));
}

function drawFurther(findings) {
  if (findings.length === 0) return [];
  return [make("h2", {}, ui("further")), ...findings.map((finding) => {
    const {check, verdict, sentence} = finding;
    return make("article", {class: "advice", "data-verdict": verdict, "data-key": check},
      make("h3", {}, icon(verdict), make("b", {class: "severity"}, ui(verdict)),
        make("span", {dir: "auto"}, sentence)),
      ...tellFinding(finding, state.ui, 4, check));
  })];
}

// The ten, each with its outcome, and what it saw.
function drawChecks({checks, findings}) {
  if (checks.length === 0) return [];  // the module that explains is not there
  const kLooks = {nothing: "well", not_made: "unknown", accepted: "accepted"};
  const lookOf = ({name, outcome}) =>
    kLooks[outcome] ?? findings.find(({check}) => check === name)?.verdict ?? "notice";
  return [make("h2", {}, ui("checks")), make("div", {class: "strip"}, ...checks.map((check) =>
    make("details", {"data-key": check.name, "data-outcome": check.outcome, "data-verdict": lookOf(check)},
      make("summary", {}, icon(lookOf(check)), make("b", {}, check.title),
        make("span", {class: "outcome", dir: "auto"}, check.text)),
      make("ul", {}, ...check.seen.map((line) => make("li", {dir: "auto"}, line))))))];
}

function showFooter({hostname, uptime, coverage, document: {interfaces}}) {
  show("host", scenario ? `${hostname} (${scenario})` : hostname);
  show("uptime", uptime === null ? "" : ui("up", duration(uptime)));
  show("coverage", coverage);
  redraw("network", interfaces, () => interfaces.map(({id, ip, type}) =>
    make("li", {}, make("bdi", {title: type}, id), " ", make("bdi", {}, ip))));
}

// A title for the tab, too, and an icon: they are all that is seen of a page that is not looked at.
function showLook(look, severity, sentence) {
  showHeadline(widget, look, severity, sentence);
  const names = [severity, state.answer?.hostname, ui("page_title")];
  document.title = names.filter(Boolean).join(" – ");
  const [shape, mark, colour] = kIcons[look];
  part("tab").href = `data:image/svg+xml,${encodeURIComponent(
    `<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 48 48"><path d="${shape}" fill="${colour}"/>` +
    `<path d="${mark}" fill="none" stroke="#fff" stroke-width="6" stroke-linecap="round"/></svg>`)}`;
}

// How old the answer is.
function showAge() {
  if (!state.ui) return;
  const seconds = Math.floor((Date.now() - state.answeredAt) / 1000);
  const age = seconds - (seconds > kTellSeconds && seconds % kTellSeconds);
  show("again", ui(state.asking ? "asking" : "again"));
  part("again").setAttribute("aria-disabled", state.asking);
  if (!state.answer) return;
  part("checked").hidden = state.gone;
  show("checked", age >= kTellSeconds ? ui("ago", duration(age)) : ui("now"));
  part("stale").hidden = !state.gone;
  if (state.gone) show("stale", ui("last_answer", duration(age), state.answer.sentence));
}

function showAnswer(answer) {
  const {findings, sources, notes, verdict} = answer;
  const lit = new Set(findings[0]?.why.flatMap((cause) => cause.parts ?? []));
  const told = {ui: state.ui, language: state.language, answer, lit};
  redraw("winner", findings[0], () => findings[0] ? tellFinding(findings[0], state.ui, 2, "winner") : []);
  redraw("unread", sources, () => sources.flatMap(linesOf));
  redraw("machine", [answer.parts, verdict, [...lit]], () => answer.parts.length > 0 ? drawMachine(told) : []);
  redraw("more", findings.slice(1), () => drawFurther(findings.slice(1)));
  redraw("checks", answer.checks, () => drawChecks(answer));
  redraw("notes", notes, () => notes.map(({text, command}) => item(ui("note", text), command)));
  showFooter(answer);
}

function paint() {
  for (const label of document.querySelectorAll("[data-ui]")) label.textContent = ui(label.dataset.ui);
  part("language").value = state.language;
  const {answer, gone} = state;
  if (answer) showAnswer(answer);
  if (gone) showLook("gone", ui("gone_word"), ui(answer ? "gone" : "never_reached"));
  else if (answer) showLook(answer.verdict, ui(answer.verdict), answer.sentence);
  else showLook("loading", "", ui("loading"));
  showAge();
  part("asked").hidden = !answer && !gone;
  widget.setAttribute("aria-busy", String(!answer && !gone || state.asking));
}

// In the language of the page.
async function ask() {
  state.askedAt = Date.now();
  state.asking = true;
  if (state.answer || state.gone) paint();
  const wanted = new URLSearchParams({lang: state.language, ...scenario ? {scenario} : {}});
  try {
    const answer = await fetchJson(`v1/health?${wanted}`);
    Object.assign(state, {answer, answeredAt: Date.now(), gone: false});
  } catch {
    state.gone = true;
  }
  state.asking = false;
  paint();
}

let timer = 0;
function schedule() {
  clearTimeout(timer);
  if (document.hidden) return;
  const seconds = state.gone ? kRetrySeconds : kPollSeconds;
  timer = setTimeout(askNow, Math.max(0, state.askedAt + seconds * 1000 - Date.now()));
}

async function askNow() {
  clearTimeout(timer);
  if (state.asking) return;
  do await ask(); while (!state.gone && state.answer.language !== state.language);  // chosen meanwhile
  schedule();
}

async function choose(language) {
  try {
    localStorage.setItem("language", language);
  } catch { /* storage is switched off: the choice lasts as long as the page */ }
  await useLanguage(language).catch(() => {});
  paint();
  await askNow();
}

// On paper everything is open.
function openForPrint({matches}) {
  for (const fold of document.querySelectorAll("details")) {
    if (matches && !fold.open) fold.dataset.folded = "";
    if (matches || "folded" in fold.dataset) fold.open = matches;
    if (!matches) delete fold.dataset.folded;
  }
}

async function start() {
  const select = part("language");
  select.addEventListener("change", () => choose(select.value));
  part("again").addEventListener("click", askNow);
  document.addEventListener("visibilitychange", schedule);
  matchMedia("print").addEventListener("change", openForPrint);
  setInterval(showAge, 1000);
  await useLanguage(languageFor([query.get("lang"), remembered(), ...navigator.languages], select));
  paint();
  await askNow();
}

start().catch(() => {  // without texts there are no words but these
  widget.querySelector(".sentence").textContent = "The machine does not answer. Load this page again in a minute.";
});
