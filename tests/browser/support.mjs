// A real Chromium on pages of the real program.
import {spawn, spawnSync} from "node:child_process";
import {createRequire} from "node:module";
import {readFileSync} from "node:fs";

const [, , program, modules, executablePath] = process.argv;
const require = createRequire(`${modules}/`);
const axe = readFileSync(require.resolve("axe-core/axe.min.js"), "utf8");

const timeout = 120000;  // milliseconds: a busy machine is no broken one
export const kLanguages = ["en", "de", "fr", "es", "ja", "zh-CN"];

// What a console said, and requests to anybody but a server of ours, since the last look.
const problems = [];
export const problemsSoFar = () => problems.splice(0);

export const browser = await require("playwright-core").chromium
  .launch({executablePath, args: ["--no-sandbox"], timeout});

const asked = (...words) => spawnSync(program, words, {encoding: "utf8"}).stdout;
export const findings = () => JSON.parse(asked("findings", "--json"));
export const report = (scenario, language) =>
  asked("report", "-", "--scenario", scenario, "--lang", language);

export async function serve(...options) {
  const port = options.includes("--listen") ? [] : ["--port", "0"];
  const stdio = ["ignore", "pipe", "inherit"];
  const child = spawn(program, ["serve", ...options, ...port], {stdio});
  const line = await new Promise(resolve => child.stdout.once("data", resolve));
  const stop = () => new Promise(resolve => child.once("exit", resolve) && child.kill());
  return {url: /http\S+/.exec(line)[0], stop};
}

// A tab of a new browser profile. `requests` grows with the address of each request.
export async function tab(options = {}) {
  const context = await browser.newContext({locale: "en", bypassCSP: true, ...options});
  context.setDefaultTimeout(timeout);
  const page = await context.newPage();
  const requests = [];
  page.on("console", message => message.type() === "error" && problems.push(message.text()));
  page.on("pageerror", error => problems.push(String(error)));
  page.on("request", request => {
    requests.push(request.url());
    if (!/^(data:|http:\/\/127\.0\.0\.\d+:)/.test(request.url()))
      problems.push(`outside: ${request.url()}`);
  });
  return {page, requests, close: () => context.close()};
}

export async function open(url, options) {
  const opened = await tab(options);
  await opened.page.goto(url);
  await answered(opened.page);
  return opened;
}

export const answered = page => page.locator('#widget[aria-busy="false"]' +
  ':not([data-verdict="loading"]), #looks[aria-busy="false"]').waitFor();

export const text = (page, selector) => page.locator(selector).textContent();

export async function violations(page) {
  if (!(await page.evaluate(() => "axe" in globalThis))) await page.evaluate(axe);
  const found = await page.evaluate(() => globalThis.axe.run({resultTypes: ["violations"]}));
  return found.violations.map(({id, nodes}) => `${id}: ${nodes.map(node => node.html)}`);
}

// Visible elements that reach out of the window, or whose text does not fit into them.
export const misfits = page => page.evaluate(() => [...document.querySelectorAll("body *")]
  .filter(each => each.checkVisibility() && !each.closest("svg"))
  .filter(each => {
    const {left, right} = each.getBoundingClientRect();
    const hides = getComputedStyle(each).overflowX === "hidden";
    return left < 0 || right > innerWidth + 0.5 || (hides && each.scrollWidth > each.clientWidth);
  })
  .map(each => each.outerHTML.slice(0, 80)));
