// The page and the gallery in a real Chromium, served by the real program over simulated machines.
//   VELA_BUILD=FOLDER browser_test.mjs NODE_MODULES_FOLDER CHROMIUM [SCREENSHOT_FOLDER]
import assert from "node:assert/strict";
import test, {after, afterEach} from "node:test";
import {languages, serve} from "../host/support/program.mjs";
import {answered, browser, findings, misfits, open, problemsSoFar, report, tab, text, violations}
  from "./support.mjs";

const shots = process.argv[4];
// Each look, with long names, notes, and a source that failed.
const kPages = {
  "healthy-with-notes": "well",
  "unwatched-disks-and-ups": "unknown",
  "usb-volume-name-fills-its-field": "notice",
  "two-units-supplies-failed": "warning",
  "everything-at-once": "danger",
};

const demo = await serve("--demo");
const machine = scenario => `${demo.url}?scenario=${scenario}`;
afterEach(() => assert.deepEqual(problemsSoFar(), [], "a clean console, and nobody else is asked"));
after(() => Promise.all([browser.close(), demo.stop()]));

// Nothing reaches out of the window, narrow or wide. One of the four frames, in turn, is
// accessible, too.
let turn = 0;
async function fitsAndIsAccessible(page, where, audited = true) {
  for (const width of [280, 1280]) {
    await page.setViewportSize({width, height: 800});
    if (shots) await page.screenshot({path: `${shots}/${where}-${width}.png`, fullPage: true});
    assert.deepEqual(await misfits(page), [], `${where} ${width}`);
  }
  if (!audited) return;
  await page.setViewportSize({width: turn % 2 ? 280 : 1280, height: 800});
  await page.emulateMedia({colorScheme: turn & 2 ? "dark" : "light"});
  turn += 1;
  assert.deepEqual(await violations(page), [], where);
}

test("every look in every language fits and is accessible", async () => {
  for (const [scenario, verdict] of Object.entries(kPages)) {
    const sentences = new Set();
    for (const locale of languages) {
      const page = await open(machine(scenario), {locale});
      await page.locator(`html[lang="${locale}"] #widget[data-verdict="${verdict}"]`).waitFor();
      const advised = verdict !== "well" && verdict !== "unknown";
      assert.equal(await page.locator(".do").isVisible(), advised, scenario);
      for (const fold of await page.locator("details:visible > summary").all()) await fold.click();
      await fitsAndIsAccessible(page, `${scenario}-${locale}`);
      const empty = page.locator(":is(p, h1, h2, h3, li, summary, label):visible:empty");
      assert.equal(await empty.count(), 0);
      sentences.add(await text(page, ".sentence"));
    }
    turn += 1;  // the next page begins in another frame
    assert.equal(sentences.size, languages.length, `${scenario}: one sentence a language`);
  }
});

test("the gallery shows every finding in every language, and all of it fits", async () => {
  for (const [index, language] of languages.entries()) {
    const page = await open(`${demo.url}gallery?lang=${language}`);
    const sentences = await page.locator("article .sentence").allTextContents();
    assert.equal(sentences.length, findings().length);
    assert.deepEqual(sentences.filter(each => /^$|^\w+:\w+|undefined/.test(each)), []);
    await page.locator("#width").selectOption(index % 2 ? "280" : "");
    await page.locator("#scheme").selectOption(index % 2 ? "dark" : "light");
    await fitsAndIsAccessible(page, `gallery-${language}`, index < 2);
    await page.locator("#danger article a").first().click();
    await page.locator('#widget[data-verdict="danger"]').waitFor();
  }
});

test("the report is a page that stands by itself, fits and is accessible", async () => {
  for (const [scenario, language] of [["everything-at-once", "de"], ["unwatched-disks-and-ups", "ja"],
    ["healthy", "es"], ["array-degraded-and-volume-low", "fr"], ["healthy-eight-bays", "de"]]) {
    const page = await tab();
    await page.setContent(report(scenario, language));
    assert.ok(await page.locator(".sentence").isVisible());
    for (const fold of await page.locator("details > summary").all()) await fold.click();
    await fitsAndIsAccessible(page, `report-${scenario}`);
    assert.deepEqual(page.asked.filter(request => !request.startsWith("data:")), []);
  }
});

test("at most six requests and 60 KB in any language, a third of it on the wire", async () => {
  for (const locale of languages) {
    const page = await open(machine("everything-at-once"), {locale});
    const fetched = page.asked.filter(request => request.startsWith("http"));
    let bytes = 0, packed = 0;
    for (const request of fetched) {
      const answer = await page.request.get(request);
      bytes += (await answer.body()).length;
      packed += Number(answer.headers()["content-length"]);
    }
    const told = `${locale}: ${fetched.length} requests, ${bytes} bytes, ${packed} as sent`;
    assert.ok(fetched.length <= 6 && bytes < 60000 && packed < 20480, told);
    console.log(told);
  }
});

test("names are shown as they are, never as markup", async () => {
  const page = await open(machine("volume-named-like-a-placeholder"));
  assert.equal(await text(page, ".sentence"), "Volume {1}: almost full");
  await page.route("**/answer*", async route => {
    const reply = await (await route.fetch()).json();
    reply.answer.hostname = "<img src=x onerror=alert(1)>";
    reply.notes = [{key: "drive_worn", part: "<b>\u202e{mark}", figure: 1, mark: 2, command: "<i>"}];
    reply.answer.rule.description.description_params[0] = "<b>\u202eגיבוי\u2069\u2066</b>";
    await route.fulfill({json: reply});
  });
  await page.reload();
  await answered(page);
  assert.equal(await text(page, "#host"),
    "<img src=x onerror=alert(1)> (volume-named-like-a-placeholder)");
  assert.equal(await page.locator(".sentence *, #host *, #notes b, #notes i").count(), 0);
  assert.match(await text(page, "#notes"), /^Note: .*<b>\ufffd\{mark\}.*<i>$/);
  assert.match(await text(page, ".sentence"), /<b>\ufffdגיבוי\ufffd\ufffd<\/b>/);
  const direction = await page.evaluate(() =>
    getComputedStyle(document.querySelector(".sentence")).direction);
  assert.equal(direction, "ltr", "a name does not turn the sentence around it");
});

test("by keyboard alone: unfold, read, choose a language that is remembered", async () => {
  const page = await open(machine("everything-at-once")), {keyboard} = page;
  let reached = "";
  for (let i = 0; i < 10 && reached !== "language"; i += 1) {
    if (i > 0) await keyboard.press("Enter");
    await keyboard.press("Tab");
    const focus = await page.evaluate(() => {
      const {tagName, parentElement, id} = document.activeElement;
      const ring = getComputedStyle(document.activeElement).outlineStyle;
      return {name: id || parentElement?.id || tagName, ring};
    });
    reached = focus.name;
    assert.equal(focus.ring, "solid", `${reached} shows its focus`);
  }
  assert.equal(reached, "language");
  assert.ok(await page.locator('[data-advice="meaning"]').isVisible());
  assert.equal(await page.locator("#more li:visible").count(), 8);
  await keyboard.press("ArrowDown");
  await page.locator('html[lang="de"]').waitFor();
  assert.equal(await text(page, ".advice h2"), "Was zu tun ist");
  await page.reload();
  await page.locator('html[lang="de"]').waitFor();
});

test("the language is the first preferred one that there are texts in", async () => {
  for (const [preferred, expected] of [[["pt-BR", "fr-CA", "de"], "fr"], [["zh-TW"], "zh-CN"],
    [["tlh"], "en"], [[], "en"]]) {
    const page = await tab();
    await page.addInitScript(all =>
      Object.defineProperty(navigator, "languages", {get: () => all}), preferred);
    await page.goto(machine("healthy"));
    await answered(page);
    assert.equal(await page.locator("html").getAttribute("lang"), expected);
    await page.goto(`${machine("healthy")}&lang=es`);
    await page.locator('html[lang="es"]').waitFor();
  }
});

test("it asks only while visible, and never twice within a minute", async () => {
  const page = await tab();
  await page.clock.install({time: 0});
  await page.clock.pauseAt(1000);  // on a busy machine, too
  await page.goto(machine("healthy"));
  await answered(page);
  // How many requests these seconds bring; one that is expected gets the time that it needs.
  const asked = async (seconds, expected = 0) => {
    const before = page.asked.length;
    await page.clock.runFor(seconds * 1000);
    for (let i = 0; i === 0 || i < 600 && page.asked.length < before + expected; i += 1)
      await page.waitForTimeout(50);
    return page.asked.length - before;
  };
  const become = hidden => page.evaluate(value => {
    Object.defineProperty(document, "hidden", {configurable: true, get: () => value});
    document.dispatchEvent(new Event("visibilitychange"));
  }, hidden);
  assert.equal(await asked(59), 0);
  assert.equal(await asked(2, 1), 1);
  for (const hidden of [true, false, true, false]) await become(hidden);
  assert.equal(await asked(57), 0, "looking away and back does not hurry it");
  await become(true);
  assert.equal(await asked(3600), 0);
  await become(false);
  assert.equal(await asked(1, 1), 1, "old news are refreshed at once");
});

test("a server that is gone leaves the last answer with its age, and is found again", async () => {
  // An address of its own: nobody else takes the port in between.
  const first = await serve("--scenario", "system-fan-failed", "--listen", "127.0.0.8:0");
  const page = await tab();
  await page.clock.install();
  await page.goto(first.url);
  await answered(page);
  await first.stop();
  await page.clock.runFor(130000);
  await page.locator("#stale:visible").waitFor();
  assert.match(await text(page, "#stale"), /does not answer.*\d min old/);
  assert.equal(await text(page, ".sentence"), "A system fan has failed.");
  assert.deepEqual(await violations(page), []);
  if (shots) await page.screenshot({path: `${shots}/gone.png`, fullPage: true});
  assert.ok(problemsSoFar().every(problem => problem.includes("ERR_CONNECTION_REFUSED")));
  const second = await serve("--scenario", "healthy", "--listen", new URL(first.url).host);
  await page.clock.runFor(61000);
  await page.locator('#widget[data-verdict="well"]').waitFor();
  assert.equal(await page.locator("#stale").isVisible(), false);
  await second.stop();
});
