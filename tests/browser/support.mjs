// A real Chromium on pages of the real program.
import {createRequire} from "node:module";
import {readFileSync} from "node:fs";
import {run} from "../host/support/program.mjs";

const [, , modules, executablePath] = process.argv;
const require = createRequire(`${modules}/`);
const axe = readFileSync(require.resolve("axe-core/axe.min.js"), "utf8");

const timeout = 120000;  // milliseconds: a busy machine is no broken one

// What a console said, and requests to anybody but a server of ours, since the last look.
const problems = [];
export const problemsSoFar = () => problems.splice(0);

export const browser = await require("playwright-core").chromium
  .launch({executablePath, args: ["--no-sandbox"], timeout});

export const findings = () => JSON.parse(run(["findings", "--json"]).out);
export const report = (scenario, language) =>
  run(["report", "-", "--scenario", scenario, "--lang", language]).out;

// The page of a new browser profile, in place of the one before. Its `asked` grows with the
// address of each request.
export async function tab(options = {}) {
  for (const earlier of browser.contexts()) await earlier.close();
  const context = await browser.newContext({locale: "en", bypassCSP: true, ...options});
  context.setDefaultTimeout(timeout);
  const page = Object.assign(await context.newPage(), {asked: []});
  page.on("console", message => message.type() === "error" && problems.push(message.text()));
  page.on("pageerror", error => problems.push(String(error)));
  return page.on("request", request => {
    page.asked.push(request.url());
    if (!/^(data:|http:\/\/127\.0\.0\.\d+:)/.test(request.url()))
      problems.push(`outside: ${request.url()}`);
  });
}

export async function open(url, options) {
  const page = await tab(options);
  await page.goto(url);
  await answered(page);
  return page;
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
