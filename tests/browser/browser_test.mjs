// The page in a real Chromium, served by the real program over simulated machines.
import assert from "node:assert/strict";
import {spawn} from "node:child_process";
import {createRequire} from "node:module";
import {readFileSync} from "node:fs";

const [, , program, modules, chromium, shots] = process.argv;
const require = createRequire(`${modules}/`);
const playwright = require("playwright-core");
const axe = readFileSync(require.resolve("axe-core/axe.min.js"), "utf8");

const kLooks = {healthy: "well", "volume-low": "notice", "two-units-supplies-failed": "warning", "everything-at-once": "danger"};
const kLanguages = ["en", "de", "fr", "es", "ja", "zh-CN"];
const kSizes = [[280, 653], [1280, 800]];

const browser = await playwright.chromium.launch({executablePath: chromium, args: ["--no-sandbox"]});
let problems = [];

async function serve(scenario, port = 0) {
  const child = spawn(program, ["serve", "--scenario", scenario, "--port", String(port)]);
  const url = await new Promise((resolve) => child.stdout.once("data", (text) => resolve(/http\S+/.exec(text)[0])));
  const stop = () => new Promise((resolve) => child.once("exit", resolve) && child.kill());
  return {url, stop};
}

async function open(url, options = {}) {
  const context = await browser.newContext({locale: "en", bypassCSP: true, ...options});
  const page = await context.newPage();
  const requests = [];
  page.on("console", (message) => message.type() === "error" && problems.push(message.text()));
  page.on("pageerror", (error) => problems.push(String(error)));
  page.on("request", (request) => requests.push(request.url()));
  await page.goto(url);
  await page.locator('#widget[aria-busy="false"]:not([data-verdict="loading"])').waitFor();
  return {page, context, requests};
}

const text = (page, id) => page.locator(`#${id}`).textContent();
const widerThanWindow = (page) => page.evaluate(() => document.documentElement.scrollWidth > innerWidth);

async function accessibility(page) {
  await page.evaluate(axe);
  const {violations} = await page.evaluate(() => globalThis.axe.run());
  return violations.map((violation) => `${violation.id}: ${violation.nodes.map((node) => node.html)}`);
}

const tests = {
  async "every look in every language, narrow or wide, light or dark, is accessible and fits"() {
    let looks = 0;
    for (const [scenario, verdict] of Object.entries(kLooks)) {
      const {url, stop} = await serve(scenario);
      const sentences = new Set();
      looks += 1;
      for (const [index, locale] of kLanguages.entries()) {
        const [width, height] = kSizes[(index + looks) % 2];
        const colorScheme = index % 3 === 0 ? "dark" : "light";
        const {page, context} = await open(url, {locale, colorScheme, viewport: {width, height}});
        const where = `${scenario} ${locale} ${width}`;
        assert.equal(await page.locator("#widget").getAttribute("data-verdict"), verdict, where);
        assert.equal(await page.locator("html").getAttribute("lang"), locale, where);
        assert.equal(await page.locator("#advice").isVisible(), verdict !== "well", where);
        assert.equal(await widerThanWindow(page), false, `${where} scrolls sideways`);
        if (shots) await page.screenshot({path: `${shots}/${scenario}-${locale}-${width}.png`, fullPage: true});
        for (const details of await page.locator("details:visible").all()) await details.locator("> summary").click();
        assert.deepEqual(await accessibility(page), [], where);
        sentences.add(await text(page, "sentence"));
        await context.close();
      }
      assert.equal(sentences.size, kLanguages.length, `${scenario}: one sentence a language`);
      await stop();
    }
  },

  async "six requests, all to this server, under 40 KB"() {
    const {url, stop} = await serve("everything-at-once");
    const {page, context, requests} = await open(url);
    assert.ok(requests.every((request) => request.startsWith(url) || request.startsWith("data:")), String(requests));
    const fetched = requests.filter((request) => request.startsWith(url));
    assert.ok(fetched.length <= 6, String(fetched));
    let bytes = 0;
    for (const request of fetched) bytes += (await (await page.request.get(request)).body()).length;
    assert.ok(bytes < 40000, `${bytes} bytes`);
    console.log(`  ${fetched.length} requests, ${bytes} bytes`);
    await context.close();
    await stop();
  },

  async "names are shown as they are, never as markup"() {
    const {url, stop} = await serve("volume-named-like-a-placeholder");
    const {page, context} = await open(url);
    assert.equal(await text(page, "sentence"), "Volume {1}: almost full");
    await context.close();
    await stop();
  },

  async "by keyboard alone: unfold what it means, choose a language"() {
    const {url, stop} = await serve("everything-at-once");
    const {page, context} = await open(url);
    await page.keyboard.press("Tab");
    await page.keyboard.press("Enter");
    assert.ok(await page.locator("#meaning").isVisible());
    for (let i = 0; i < 10 && !(await page.locator("#language:focus").count()); i += 1) await page.keyboard.press("Tab");
    await page.keyboard.press("ArrowDown");
    await page.locator('html[lang="de"]').waitFor();
    assert.equal(await text(page, "do-label"), "Was zu tun ist");
    await page.reload();
    await page.locator('html[lang="de"]').waitFor();  // the choice is remembered
    await context.close();
    await stop();
  },

  async "a server that is gone leaves the last answer with its age, and is found again"() {
    const first = await serve("system-fan-failed");
    const port = new URL(first.url).port;
    const visit = await browser.newContext({locale: "en"});
    const tab = await visit.newPage();
    await tab.clock.install();
    await tab.goto(first.url);
    await tab.locator('#widget[data-verdict="warning"]').waitFor();
    await first.stop();
    await tab.clock.runFor(130000);
    await tab.locator("#stale:visible").waitFor();
    assert.match(await text(tab, "stale"), /does not answer.*\d min old/);
    assert.equal(await text(tab, "sentence"), "A system fan has failed.");
    const second = await serve("healthy", port);
    await tab.clock.runFor(61000);
    await tab.locator('#widget[data-verdict="well"]').waitFor();
    assert.equal(await tab.locator("#stale").isVisible(), false);
    await visit.close();
    await second.stop();
  },
};

let failed = 0;
for (const [name, run] of Object.entries(tests)) {
  problems = [];
  try {
    await run();
    assert.deepEqual(problems, [], "the console stays clean");
    console.log(`ok: ${name}`);
  } catch (error) {
    failed += 1;
    console.log(`FAILED: ${name}\n${error.stack}`);
  }
}
await browser.close();
process.exit(failed === 0 ? 0 : 1);
