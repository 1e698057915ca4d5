// The page: asks the machine, tells its answer, and asks again while somebody looks.
import {fetchJson, fill, languageFor, noteOf, offerLanguages, sanitize, sentenceOf, showAdvice, showHeadline, showLabels, verdictOf} from "./render.js";

const kPollSeconds = 60;

const query = new URLSearchParams(location.search);
const scenario = query.get("scenario");  // of a demo
const state = {texts: null, language: "en", reply: null, askedAt: 0, answeredAt: 0, unreachable: false};
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
  state.texts = await fetchJson(`texts/${language}.json`);
  state.language = language;
  document.documentElement.lang = language;
}

const ui = (key, ...values) => fill(state.texts.ui[key], values);

function show(id, text) {
  part(id).textContent = text;
}

function duration(seconds) {
  const minutes = Math.floor(seconds / 60), hours = Math.floor(minutes / 60);
  if (hours >= 48) return ui("days", Math.floor(hours / 24), hours % 24);
  return hours > 0 ? ui("hours", hours, minutes % 60) : ui("minutes", minutes);
}

function uptime(text) {
  const [hours, minutes, seconds] = text.split(":").map(Number);
  return text === "" ? "" : ui("up", duration((hours * 60 + minutes) * 60 + seconds));
}

function fillList(id, items) {
  const box = part(id);
  box.hidden = items.length === 0;
  const list = box.tagName === "UL" ? box : box.querySelector("ul");
  list.replaceChildren(...items.map((nodes) => {
    const item = document.createElement("li");
    item.append(...nodes);
    return item;
  }));
}

function element(tag, text, className = "") {
  const made = document.createElement(tag);
  made.textContent = text;
  made.className = className;
  return made;
}

function showMore(findings) {
  part("more").querySelector("summary").textContent =
    findings.length === 1 ? ui("more_one") : ui("more", findings.length);
  fillList("more", findings.map((rule) => {
    const verdict = verdictOf(rule);
    return [element("b", ui(verdict), verdict), element("span", sentenceOf(rule, state.texts))];
  }));
}

const sourceName = ({name}) => state.texts.source[name] ?? name;
const isUnread = (source) => /failed|unwatched/.test(source.state);

// A line, and below it what mends it or shows it.
const told = (text, command) => [text, ...(command ? [element("code", sanitize(command))] : [])];

const lineOf = (note) => told(ui("note", sanitize(noteOf(note, state.texts, state.language))), note.command);

const kTold = ["source_failed", "source_unwatched", "source_accepted", "source_read"];

// What a source has to tell, and what to do about it. One that was read well tells only remarks.
function linesOf(source) {
  const key = `source_${source.state}`, reasons = source.reasons ?? [];
  if (!kTold.includes(key) || source.state === "read" && !reasons[0]?.remedy) return [];
  return reasons.map(({text, remedy}) => told(ui(key, sourceName(source), sanitize(text)), remedy));
}

function showSources(sources) {
  if (sources.length === 0) return show("sources", ui("sources_unknown"));
  const count = (wanted) => sources.filter((source) => source.state === wanted).length;
  const absent = count("absent"), notAsked = count("not asked");
  return show("sources", [ui("sources", count("read"), sources.length - absent - notAsked),
    ...(absent > 0 ? [ui("sources_absent", absent)] : []),
    ...(notAsked > 0 ? [ui("sources_not_asked", notAsked)] : [])].join(ui("clause_comma")));
}

function showFooter({answer, sources}) {
  show("host", scenario ? `${answer.hostname} (${scenario})` : answer.hostname);
  show("uptime", uptime(answer.uptime));
  const time = new Date(state.answeredAt).toLocaleTimeString(state.language, {hour: "2-digit", minute: "2-digit"});
  show("checked", ui("checked", time));
  showSources(sources);
  fillList("network", answer.interfaces.map(({id, ip, type}) => {
    const name = element("bdi", id);
    name.title = type;
    return [name, " ", element("bdi", ip)];
  }));
}

function showStale() {
  const stale = part("stale");
  stale.hidden = !state.unreachable || !state.reply;
  if (!stale.hidden) {
    const age = duration((Date.now() - state.answeredAt) / 1000);
    if (stale.textContent !== ui("unreachable", age)) stale.textContent = ui("unreachable", age);
  }
}

// What is not known, and how much.
function unknown(sources, checks) {
  const outcomes = Object.values(checks), names = sources.filter(isUnread).map(sourceName);
  return ui("not_known", names.join(ui("list_comma")), outcomes.filter((outcome) => outcome === "nothing").length, outcomes.length);
}

function paintReply({answer, sources, findings, checks, notes}) {
  const verdict = verdictOf(answer.rule);
  const look = verdict === "well" && sources.some(isUnread) ? "unknown" : verdict;
  showHeadline(widget, look, look === "unknown" ? unknown(sources, checks) : sentenceOf(answer.rule, state.texts), state.texts);
  document.title = `${ui(look)} – ${ui("page_title")}`;
  showAdvice(widget, answer.rule, state.texts);
  widget.querySelector(".advice").hidden = verdict === "well";
  fillList("unread", sources.flatMap(linesOf));
  showMore(findings ?? []);
  fillList("notes", notes.map(lineOf));
  showFooter(state.reply);
}

// Their texts are fetched where there are some. Without texts a note still tells its figures.
async function readNotes() {
  if (state.reply?.notes.length > 0 && !state.texts.notes)
    state.texts.notes = await fetchJson(`notes/${state.language}.json`).catch(() => undefined);
}

function paint() {
  showLabels(widget, state.texts);
  part("language").value = state.language;
  showStale();
  if (state.reply) {
    paintReply(state.reply);
  } else {
    showHeadline(widget, "loading", ui(state.unreachable ? "never_reached" : "loading"), state.texts);
    document.title = ui("page_title");
  }
  widget.setAttribute("aria-busy", String(!state.reply && !state.unreachable));
}

async function ask() {
  state.askedAt = Date.now();
  try {
    state.reply = await fetchJson("answer" + (scenario ? `?scenario=${encodeURIComponent(scenario)}` : ""));
    state.answeredAt = Date.now();
    state.unreachable = false;
    await readNotes();
  } catch {
    state.unreachable = true;
  }
  paint();
}

let timer = 0;
function schedule() {
  clearTimeout(timer);
  if (document.hidden) return;
  const wait = Math.max(0, state.askedAt + kPollSeconds * 1000 - Date.now());
  timer = setTimeout(async () => {
    await ask();
    schedule();
  }, wait);
}

async function start() {
  const select = part("language");
  offerLanguages(select);
  select.addEventListener("change", async () => {
    try {
      localStorage.setItem("language", select.value);
    } catch { /* storage is switched off: the choice lasts as long as the page */ }
    await useLanguage(select.value).then(readNotes).catch(() => {});
    paint();
  });
  document.addEventListener("visibilitychange", schedule);
  await useLanguage(languageFor([query.get("lang"), remembered(), ...navigator.languages]));
  paint();
  await ask();
  schedule();
}

start().catch(() => {  // without texts there are no words but these
  widget.querySelector(".sentence").textContent = "The machine does not answer. Load this page again in a minute.";
});
