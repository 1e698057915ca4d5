// Every finding as the page tells it, by look, in any language, wide or narrow, light or dark.
import {fetchJson, languageFor, make, showHeadline, tellFinding} from "./render.js";

const kLooks = ["danger", "warning", "notice", "well"];
const part = (id) => document.getElementById(id);
const choices = new URLSearchParams(location.search);

function copyOf(template) {
  return part(template).content.firstElementChild.cloneNode(true);
}

// The page's own headline, so that a card cannot look different from it; two steps lower.
async function cardOfPage() {
  const page = new DOMParser().parseFromString(await (await fetch("/")).text(), "text/html");
  const card = make("article", {class: "widget"}, page.querySelector(".headline"));
  card.querySelector("[role]").removeAttribute("role");
  card.querySelector(".asked").remove();
  card.querySelector("h1").replaceWith(make("h3", {class: "sentence"}));
  return card;
}

function pageOf(scenario, language) {
  return `/?${new URLSearchParams({scenario, lang: language})}`;
}

function cardFor(card, {scenario, answer}, ui, language) {
  const {verdict, sentence, findings: [finding], document: {rule}} = answer;
  const made = card.cloneNode(true);
  showHeadline(made, verdict, ui[verdict], sentence);
  if (finding) made.append(make("div", {class: "advice"}, ...tellFinding(finding, ui, 4, scenario)));
  const below = copyOf("below");
  const name = [rule.id, finding?.text_key].filter(Boolean).join(" / ");
  below.querySelector(".which").textContent = `${name}, priority\u00a0${rule.priority}`;
  const link = below.querySelector(".open");
  link.href = pageOf(scenario, language);
  link.textContent = scenario;
  made.append(below);
  return made;
}

// What the page of that machine asks for.
const answerOf = (scenario, lang) => fetchJson(`v1/health?${new URLSearchParams({scenario, lang})}`);

function lookFor(verdict, cards, ui) {
  const look = copyOf("look");
  look.id = verdict;
  look.querySelector(".name").textContent = ui[verdict];
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
  const language = languageFor([choices.get("lang"), ...navigator.languages], part("language"));
  const [ui, ...shown] = await Promise.all([fetchJson(`texts/${language}.json`),
    ...findings.map(async ({scenario}) => ({scenario, answer: await answerOf(scenario, language)}))]);
  part("language").value = language;
  part("scheme").value = choices.get("scheme") ?? "";
  part("width").value = choices.get("width") ?? "";
  useScheme(part("scheme").value);
  const looks = part("looks");
  looks.lang = language;
  looks.classList.toggle("narrow", part("width").value === "280");
  looks.replaceChildren(...kLooks.map((verdict) => lookFor(verdict, shown
    .filter(({answer}) => answer.verdict === verdict)
    .map((each) => cardFor(card, each, ui, language)), ui)));
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
