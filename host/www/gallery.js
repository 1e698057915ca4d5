// Every finding as the page tells it, by look, in any language, wide or narrow, light or dark.
import {fetchJson, languageFor, offerLanguages, sentenceOf, showAdvice, showHeadline, showLabels, textKey, verdictOf} from "./render.js";

const kLooks = ["danger", "warning", "notice", "well"];
const part = (id) => document.getElementById(id);
const choices = new URLSearchParams(location.search);

function copyOf(template) {
  return part(template).content.firstElementChild.cloneNode(true);
}

// The page's own markup, so that a card cannot look different from it. Its headings stand two
// steps lower here.
async function cardOfPage() {
  const page = new DOMParser().parseFromString(await (await fetch("/")).text(), "text/html");
  const card = document.createElement("article");
  card.className = "widget";
  card.append(page.querySelector(".headline"), page.querySelector(".advice"));
  card.querySelector(".headline").removeAttribute("role");
  for (const heading of card.querySelectorAll("h1, h2, h3")) {
    const lower = document.createElement(`h${Number(heading.tagName[1]) + 2}`);
    for (const {name, value} of heading.attributes) lower.setAttribute(name, value);
    heading.replaceWith(lower);
  }
  return card;
}

function pageOf(scenario, language) {
  return `/?${new URLSearchParams({scenario, lang: language})}`;
}

function cardFor(card, {scenario, rule}, texts, language) {
  const verdict = verdictOf(rule);
  const made = card.cloneNode(true);
  showHeadline(made, verdict, sentenceOf(rule, texts), texts);
  showLabels(made, texts);
  showAdvice(made, rule, texts);
  made.querySelector(".advice").hidden = verdict === "well";
  const below = copyOf("below");
  below.querySelector(".which").textContent = `${rule.id} / ${textKey(rule.description)}, priority\u00a0${rule.priority}`;
  const link = below.querySelector(".open");
  link.href = pageOf(scenario, language);
  link.textContent = scenario;
  made.append(below);
  return made;
}

function lookFor(verdict, cards, texts) {
  const look = copyOf("look");
  look.id = verdict;
  look.querySelector(".name").textContent = texts.ui[verdict];
  look.querySelector(".name").className += ` ${verdict}`;
  look.querySelector(".number").textContent = cards.length;
  look.querySelector(".cards").append(...cards);
  return look;
}

// Overrides what the system prefers, in every style sheet.
function useScheme(scheme) {
  document.documentElement.style.colorScheme = scheme;
  for (const sheet of document.styleSheets) {
    for (const rule of sheet.cssRules) {
      if (!rule.wasAboutDark && !rule.media?.mediaText.includes("prefers-color-scheme: dark")) continue;
      rule.wasAboutDark = true;
      rule.media.mediaText = {light: "not all", dark: "all"}[scheme] ?? "(prefers-color-scheme: dark)";
    }
  }
}

async function paint(card, {findings, scenarios}) {
  const language = languageFor([choices.get("lang"), ...navigator.languages]);
  const texts = await fetchJson(`texts/${language}.json`);
  part("language").value = language;
  part("scheme").value = choices.get("scheme") ?? "";
  part("width").value = choices.get("width") ?? "";
  useScheme(part("scheme").value);
  const looks = part("looks");
  looks.lang = language;
  looks.classList.toggle("narrow", part("width").value === "280");
  looks.replaceChildren(...kLooks.map((verdict) => lookFor(verdict, findings
    .filter(({rule}) => verdictOf(rule) === verdict)
    .map((finding) => cardFor(card, finding, texts, language)), texts)));
  looks.setAttribute("aria-busy", "false");
  part("count").textContent = `All ${findings.length}, the most urgent first, each with what to do about it.`;
  part("scenarios").replaceChildren(...scenarios.map((scenario) => {
    const item = document.createElement("li"), link = document.createElement("a");
    link.href = pageOf(scenario, language);
    link.textContent = scenario;
    item.append(link);
    return item;
  }));
}

async function start() {
  offerLanguages(part("language"));
  const [card, gallery] = await Promise.all([cardOfPage(), fetchJson("gallery.json")]);
  for (const [id, name] of [["language", "lang"], ["scheme", "scheme"], ["width", "width"]]) {
    part(id).addEventListener("change", ({target}) => {
      choices.set(name, target.value);
      history.replaceState(null, "", `?${choices}`);
      paint(card, gallery);
    });
  }
  await paint(card, gallery);
}

start();
