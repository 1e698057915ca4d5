// The page: asks the machine, tells its answer, and asks again while somebody looks.
import {fill, render, textKey, verdictOf} from "./render.js";

const kLanguages = {en: "English", de: "Deutsch", fr: "Français", es: "Español", ja: "日本語", "zh-CN": "简体中文"};
const kPollSeconds = 60;
const kIcons = {
  danger: ["M15 2h18l13 13v18L33 46H15L2 33V15z", "M16 16l16 16M32 16L16 32"],
  warning: ["M24 3L47 44H1z", "M24 18v12M24 37v.1"],
  notice: ["M24 1l23 23-23 23L1 24z", "M24 22v12M24 14v.1"],
  well: ["M24 2a22 22 0 1 1 0 44a22 22 0 1 1 0-44z", "M14 25l7 7 13-15"],
  loading: ["M24 2a22 22 0 1 1 0 44a22 22 0 1 1 0-44z", "M14 24h.1M24 24h.1M34 24h.1"],
};

const query = new URLSearchParams(location.search);
const state = {texts: null, language: "en", reply: null, askedAt: 0, answeredAt: 0, unreachable: false};
const part = (id) => document.getElementById(id);

function remembered() {
  try {
    return localStorage.getItem("language");
  } catch {
    return null;  // storage is switched off
  }
}

function chooseLanguage() {
  const wanted = [query.get("lang"), remembered(), ...navigator.languages];
  for (const tag of wanted) {
    const primary = (tag ?? "").toLowerCase().split(/[-_]/)[0];
    const known = Object.keys(kLanguages).find((code) => code.toLowerCase().split("-")[0] === primary);
    if (known) return known;
  }
  return "en";
}

async function fetchJson(path) {
  const answer = await fetch(path, {signal: AbortSignal.timeout(30000)});
  if (!answer.ok) throw new Error(`${path}: ${answer.status}`);
  return answer.json();
}

async function useLanguage(language) {
  state.texts = await fetchJson(`texts/${language}.json`);
  state.language = language;
  document.documentElement.lang = language;
}

const ui = (key, ...values) => fill(state.texts.ui[key], values);

function show(id, text) {
  const element = part(id);
  element.textContent = text ?? "";
  return element;
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

function fillList(id, summary, items) {
  const box = part(id);
  box.hidden = items.length === 0;
  if (summary) box.querySelector("summary").textContent = summary;
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

function showHeadline(verdict, severity, sentence) {
  const widget = part("widget");
  widget.dataset.verdict = verdict;
  widget.setAttribute("aria-busy", "false");
  const [shape, mark] = kIcons[verdict];
  widget.querySelector(".shape").setAttribute("d", shape);
  widget.querySelector(".mark").setAttribute("d", mark);
  show("severity", severity);
  show("sentence", sentence);
  document.title = severity ? `${severity} – ${ui("page_title")}` : ui("page_title");
}

function showAdvice(rule, verdict) {
  const advice = state.texts[`${rule.id}/${textKey(rule.description)}`];
  part("advice").hidden = verdict === "well";
  for (const key of ["meaning", "ignored", "do", "where"]) {
    show(`${key}-label`, ui(key));
    show(key, advice?.[key] ?? (key === "do" ? ui("unknown_finding") : ""));
  }
}

function showMore(findings) {
  const summary = findings.length === 1 ? ui("more_one") : ui("more", findings.length);
  fillList("more", summary, findings.map((rule) => {
    const verdict = verdictOf(rule);
    return [element("b", ui(verdict), verdict), element("bdi", render(rule.description, state.texts))];
  }));
}

function showSources(sources) {
  const count = (wanted) => sources.filter((source) => source.state === wanted).length;
  const failed = sources.filter((source) => source.state === "failed");
  fillList("failed", null, failed.map((source) => [ui("source_failed", source.name, source.reason)]));
  if (sources.length === 0) return show("sources", ui("no_voice"));
  const absent = count("absent") > 0 ? `, ${ui("sources_absent", count("absent"))}` : "";
  return show("sources", ui("sources", count("read"), count("read") + failed.length) + absent);
}

function showFooter({answer, sources}) {
  show("host", answer.hostname);
  show("uptime", uptime(answer.uptime));
  const time = new Date(state.answeredAt).toLocaleTimeString(state.language, {hour: "2-digit", minute: "2-digit"});
  show("checked", ui("checked", time));
  showSources(sources);
  fillList("network", ui("network"), answer.interfaces.map((entry) =>
    [element("bdi", entry.id), ` (${entry.type}) `, element("bdi", entry.ip)]));
}

function showStale() {
  const stale = part("stale");
  stale.hidden = !state.unreachable || !state.reply;
  if (!stale.hidden) {
    const age = duration((Date.now() - state.answeredAt) / 1000);
    if (stale.textContent !== ui("unreachable", age)) stale.textContent = ui("unreachable", age);
  }
}

function paint() {
  show("language-label", ui("language"));
  part("language").value = state.language;
  showStale();
  if (!state.reply) {
    const key = state.unreachable ? "never_reached" : "loading";
    showHeadline("loading", "", ui(key));
    return;
  }
  const {answer, sources, findings} = state.reply;
  const verdict = verdictOf(answer.rule);
  const partly = verdict === "well" && sources.some((source) => source.state === "failed");
  showHeadline(partly ? "notice" : verdict, ui(partly ? "notice" : verdict),
    partly ? ui("incomplete") : render(answer.rule.description, state.texts));
  showAdvice(answer.rule, verdict);
  showMore(findings ?? []);
  showFooter(state.reply);
}

async function ask() {
  const scenario = query.get("scenario");
  try {
    state.reply = await fetchJson("answer" + (scenario ? `?scenario=${encodeURIComponent(scenario)}` : ""));
    state.answeredAt = Date.now();
    state.unreachable = false;
  } catch {
    state.unreachable = true;
  }
  state.askedAt = Date.now();
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
  select.append(...Object.entries(kLanguages).map(([code, name]) => new Option(name, code)));
  for (const option of select.options) option.lang = option.value;
  select.addEventListener("change", async () => {
    try {
      localStorage.setItem("language", select.value);
    } catch { /* storage is switched off: the choice lasts as long as the page */ }
    await useLanguage(select.value).catch(() => {});
    paint();
  });
  document.addEventListener("visibilitychange", schedule);
  await useLanguage(chooseLanguage());
  paint();
  await ask();
  schedule();
}

start();
