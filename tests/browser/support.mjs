// A real Chromium on pages of the real program.
import {spawn, spawnSync} from "node:child_process";
import {createRequire} from "node:module";
import {readFileSync} from "node:fs";

const [, , program, modules, chromium] = process.argv;
const require = createRequire(`${modules}/`);
const playwright = require("playwright-core");
const axe = readFileSync(require.resolve("axe-core/axe.min.js"), "utf8");

const kTimeoutMilliseconds = 120000;  // a busy machine is no broken one
export const kLanguages = ["en", "de", "fr", "es", "ja", "zh-CN"];

// What a console said, and requests to anybody but a server of ours, since the last look.
let problems = [];
export function problemsSoFar() {
  const found = problems;
  problems = [];
  return found;
}

export const browser = await playwright.chromium.launch({executablePath: chromium, args: ["--no-sandbox"], timeout: kTimeoutMilliseconds});

const asked = (...words) => spawnSync(program, words, {encoding: "utf8"}).stdout;
export const findings = () => JSON.parse(asked("findings", "--json"));
export const report = (scenario, language) => asked("report", "-", "--scenario", scenario, "--lang", language);

export async function serve(...options) {
  const port = options.includes("--listen") ? [] : ["--port", "0"];
  const child = spawn(program, ["serve", ...options, ...port], {stdio: ["ignore", "pipe", "inherit"]});
  const line = await new Promise((resolve) => child.stdout.once("data", (text) => resolve(String(text))));
  const stop = () => new Promise((resolve) => child.once("exit", resolve) && child.kill());
  return {url: /http\S+/.exec(line)[0], stop};
}

// A tab of a new browser profile. `requests` grows with each request: {url, at: the page's time}.
export async function tab(options = {}) {
  const context = await browser.newContext({locale: "en", bypassCSP: true, ...options});
  context.setDefaultTimeout(kTimeoutMilliseconds);
  const page = await context.newPage();
  const requests = [];
  page.on("console", (message) => message.type() === "error" && problems.push(message.text()));
  page.on("pageerror", (error) => problems.push(String(error)));
  page.on("request", (request) => {
    requests.push(request.url());
    if (!/^(data:|http:\/\/127\.0\.0\.\d+:)/.test(request.url())) problems.push(`outside: ${request.url()}`);
  });
  return {page, context, requests, close: () => context.close()};
}

export async function open(url, options) {
  const opened = await tab(options);
  await opened.page.goto(url);
  await answered(opened.page);
  return opened;
}

export const answered = (page) =>
  page.locator('#widget[aria-busy="false"]:not([data-verdict="loading"]), #looks[aria-busy="false"]').waitFor();

export const text = (page, selector) => page.locator(selector).textContent();

export async function violations(page) {
  if (!(await page.evaluate(() => "axe" in globalThis))) await page.evaluate(axe);
  const found = await page.evaluate(() => globalThis.axe.run({resultTypes: ["violations"]}));
  return found.violations.map(({id, nodes}) => `${id}: ${nodes.map((node) => node.html)}`);
}

// Visible elements that reach out of the window, or whose text does not fit into them.
export const misfits = (page) => page.evaluate(() => [...document.querySelectorAll("body *")]
  .filter((element) => element.checkVisibility() && !element.closest("svg"))
  .filter((element) => {
    const {left, right} = element.getBoundingClientRect();
    const cut = getComputedStyle(element).overflowX === "hidden" && element.scrollWidth > element.clientWidth;
    return left < 0 || right > innerWidth + 0.5 || cut;
  })
  .map((element) => element.outerHTML.slice(0, 80)));
