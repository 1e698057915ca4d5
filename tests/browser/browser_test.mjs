// The page and the gallery in a real Chromium, served by the real program over simulated machines.
//   browser_test.mjs VELA_HEALTH NODE_MODULES_FOLDER CHROMIUM [SCREENSHOT_FOLDER]
import assert from "node:assert/strict";
import test, {after, afterEach} from "node:test";
import {answered, browser, findings, kLanguages, misfits, open, problemsSoFar, report, serve, tab,
  text, violations} from "./support.mjs";

const shots = process.argv[5];
// Each look, with long and foreign names, and with a source that failed.
const kPages = {
  "healthy-host-name-in-another-script": "well",
  "failing-ups": "notice",
  "usb-volume-name-fills-its-field": "notice",
  "two-units-supplies-failed": "warning",
  "everything-at-once": "danger",
};

const demo = await serve("--demo");
const page = (scenario, query = "") => `${demo.url}?scenario=${scenario}${query}`;
afterEach(() => assert.deepEqual(problemsSoFar(), [], "a clean console, and nobody else is asked"));
after(() => Promise.all([browser.close(), demo.stop()]));

// Nothing reaches out of the window, narrow or wide. One of the four frames, in turn, is
// accessible, too.
let turn = 0;
async function fitsAndIsAccessible({page}, where, audited = true) {
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
    for (const locale of kLanguages) {
      const visit = await open(page(scenario), {locale}), shown = visit.page;
      await shown.locator(`html[lang="${locale}"] #widget[data-verdict="${verdict}"]`).waitFor();
      const advised = verdict !== "well" && scenario !== "failing-ups";
      assert.equal(await shown.locator(".do").isVisible(), advised, scenario);
      for (const fold of await shown.locator("details:visible > summary").all()) await fold.click();
      await fitsAndIsAccessible(visit, `${scenario}-${locale}`);
      const empty = shown.locator(":is(p, h1, h2, h3, li, summary, label):visible:empty");
      assert.equal(await empty.count(), 0);
      sentences.add(await text(shown, ".sentence"));
      await visit.close();
    }
    turn += 1;  // the next page begins in another frame
    assert.equal(sentences.size, kLanguages.length, `${scenario}: one sentence a language`);
  }
});

test("the gallery shows every finding in every language, and all of it fits", async () => {
  for (const [index, language] of kLanguages.entries()) {
    const visit = await open(`${demo.url}gallery?lang=${language}`);
    const sentences = await visit.page.locator("article .sentence").allTextContents();
    assert.equal(sentences.length, findings().length);
    assert.deepEqual(sentences.filter(each => /^$|^\w+:\w+|undefined/.test(each)), []);
    await visit.page.locator("#width").selectOption(index % 2 ? "280" : "");
    await visit.page.locator("#scheme").selectOption(index % 2 ? "dark" : "light");
    await fitsAndIsAccessible(visit, `gallery-${language}`, index < 2);
    await visit.page.locator("#danger article a").first().click();
    await visit.page.locator('#widget[data-verdict="danger"]').waitFor();
    await visit.close();
  }
});

test("the report is a page that stands by itself, fits and is accessible", async () => {
  for (const [scenario, language] of [["everything-at-once", "de"], ["failing-ups", "ja"],
    ["healthy", "es"]]) {
    const visit = await tab();
    await visit.page.setContent(report(scenario, language));
    assert.ok(await visit.page.locator(".sentence").isVisible());
    for (const fold of await visit.page.locator("details > summary").all()) await fold.click();
    await fitsAndIsAccessible(visit, `report-${scenario}`);
    assert.deepEqual(visit.requests.filter(request => !request.startsWith("data:")), []);
    await visit.close();
  }
});

test("at most six requests and 40 KB in any language, half of it on the wire", async () => {
  for (const locale of kLanguages) {
    const visit = await open(page("everything-at-once"), {locale});
    const fetched = visit.requests.filter(request => request.startsWith("http"));
    let bytes = 0, packed = 0;
    for (const request of fetched) {
      const answer = await visit.page.request.get(request);
      bytes += (await answer.body()).length;
      packed += Number(answer.headers()["content-length"]);
    }
    const told = `${locale}: ${fetched.length} requests, ${bytes} bytes, ${packed} as sent`;
    assert.ok(fetched.length <= 6 && bytes < 40000 && packed < 20480, told);
    console.log(told);
    await visit.close();
  }
});

test("names are shown as they are, never as markup", async () => {
  const visit = await open(page("volume-named-like-a-placeholder")), shown = visit.page;
  assert.equal(await text(shown, ".sentence"), "Volume {1}: almost full");
  await shown.route("**/answer*", async route => {
    const reply = await (await route.fetch()).json();
    reply.answer.hostname = "<img src=x onerror=alert(1)>";
    reply.answer.rule.description.description_params[0] = "<b>\u202eגיבוי\u2069\u2066</b>";
    await route.fulfill({json: reply});
  });
  await shown.reload();
  await answered(shown);
  assert.equal(await text(shown, "#host"),
    "<img src=x onerror=alert(1)> (volume-named-like-a-placeholder)");
  assert.equal(await shown.locator(".sentence *, #host *").count(), 0);
  assert.match(await text(shown, ".sentence"), /<b>\ufffdגיבוי\ufffd\ufffd<\/b>/);
  const direction = await shown.evaluate(() =>
    getComputedStyle(document.querySelector(".sentence")).direction);
  assert.equal(direction, "ltr", "a name does not turn the sentence around it");
  await visit.close();
});

test("by keyboard alone: unfold, read, choose a language that is remembered", async () => {
  const visit = await open(page("everything-at-once")), {keyboard} = visit.page;
  let reached = "";
  for (let i = 0; i < 10 && reached !== "language"; i += 1) {
    if (i > 0) await keyboard.press("Enter");
    await keyboard.press("Tab");
    const focus = await visit.page.evaluate(() => {
      const {tagName, parentElement, id} = document.activeElement;
      const ring = getComputedStyle(document.activeElement).outlineStyle;
      return {name: id || parentElement?.id || tagName, ring};
    });
    reached = focus.name;
    assert.equal(focus.ring, "solid", `${reached} shows its focus`);
  }
  assert.equal(reached, "language");
  assert.ok(await visit.page.locator('[data-advice="meaning"]').isVisible());
  assert.equal(await visit.page.locator("#more li:visible").count(), 8);
  await keyboard.press("ArrowDown");
  await visit.page.locator('html[lang="de"]').waitFor();
  assert.equal(await text(visit.page, ".advice h2"), "Was zu tun ist");
  await visit.page.reload();
  await visit.page.locator('html[lang="de"]').waitFor();
  await visit.close();
});

test("the language is the first preferred one that there are texts in", async () => {
  for (const [preferred, expected] of [[["pt-BR", "fr-CA", "de"], "fr"], [["zh-TW"], "zh-CN"],
    [["tlh"], "en"], [[], "en"]]) {
    const visit = await tab();
    await visit.page.addInitScript(languages =>
      Object.defineProperty(navigator, "languages", {get: () => languages}), preferred);
    await visit.page.goto(page("healthy"));
    await answered(visit.page);
    assert.equal(await visit.page.locator("html").getAttribute("lang"), expected);
    await visit.page.goto(page("healthy", "&lang=es"));
    await visit.page.locator('html[lang="es"]').waitFor();
    await visit.close();
  }
});

test("it asks only while visible, and never twice within a minute", async () => {
  const visit = await tab();
  await visit.page.clock.install();
  await visit.page.goto(page("healthy"));
  await answered(visit.page);
  // How many requests these seconds bring; one that is expected gets the time that it needs.
  const asked = async (seconds, expected = 0) => {
    const before = visit.requests.length;
    await visit.page.clock.runFor(seconds * 1000);
    for (let i = 0; i === 0 || i < 600 && visit.requests.length < before + expected; i += 1)
      await visit.page.waitForTimeout(50);
    return visit.requests.length - before;
  };
  const become = hidden => visit.page.evaluate(value => {
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
  await visit.close();
});

test("a server that is gone leaves the last answer with its age, and is found again", async () => {
  // An address of its own: nobody else takes the port in between.
  const first = await serve("--scenario", "system-fan-failed", "--listen", "127.0.0.8:0");
  const visit = await tab(), shown = visit.page;
  await shown.clock.install();
  await shown.goto(first.url);
  await answered(shown);
  await first.stop();
  await shown.clock.runFor(130000);
  await shown.locator("#stale:visible").waitFor();
  assert.match(await text(shown, "#stale"), /does not answer.*\d min old/);
  assert.equal(await text(shown, ".sentence"), "A system fan has failed.");
  assert.deepEqual(await violations(shown), []);
  if (shots) await shown.screenshot({path: `${shots}/gone.png`, fullPage: true});
  assert.ok(problemsSoFar().every(problem => problem.includes("ERR_CONNECTION_REFUSED")));
  const second = await serve("--scenario", "healthy", "--listen", new URL(first.url).host);
  await shown.clock.runFor(61000);
  await shown.locator('#widget[data-verdict="well"]').waitFor();
  assert.equal(await shown.locator("#stale").isVisible(), false);
  await visit.close();
  await second.stop();
});
