// The page and the gallery in a real Chromium, served by the real program over simulated machines.
//   browser_test.mjs VELA_HEALTH NODE_MODULES_FOLDER CHROMIUM [SCREENSHOT_FOLDER]
import assert from "node:assert/strict";
import {answered, browser, findings, kLanguages, misfits, open, problemsSoFar, report, serve, tab, text, violations} from "./support.mjs";

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

// Nothing reaches out of the window, narrow or wide. One of the four frames, in turn, is
// accessible, too.
let turn = 0;
async function fitsAndIsAccessible(visit, where, audited = true) {
  for (const width of [280, 1280]) {
    await visit.page.setViewportSize({width, height: 800});
    if (shots) await visit.page.screenshot({path: `${shots}/${where}-${width}.png`, fullPage: true});
    assert.deepEqual(await misfits(visit.page), [], `${where} ${width}`);
  }
  if (!audited) return;
  await visit.page.setViewportSize({width: turn % 2 ? 280 : 1280, height: 800});
  await visit.page.emulateMedia({colorScheme: turn & 2 ? "dark" : "light"});
  turn += 1;
  assert.deepEqual(await violations(visit.page), [], where);
}

const tests = {
  async "every look in every language fits and is accessible"() {
    for (const [scenario, verdict] of Object.entries(kPages)) {
      const sentences = new Set();
      for (const locale of kLanguages) {
        const visit = await open(page(scenario), {locale});
        assert.equal(await visit.page.locator("#widget").getAttribute("data-verdict"), verdict, scenario);
        assert.equal(await visit.page.locator("html").getAttribute("lang"), locale);
        const advised = verdict !== "well" && scenario !== "failing-ups";
        assert.equal(await visit.page.locator(".do").isVisible(), advised, scenario);
        for (const details of await visit.page.locator("details:visible").all()) await details.locator("> summary").click();
        await fitsAndIsAccessible(visit, `${scenario}-${locale}`);
        assert.equal(await visit.page.locator(":is(p, h1, h2, h3, li, summary, label):visible:empty").count(), 0);
        sentences.add(await text(visit.page, ".sentence"));
        await visit.close();
      }
      turn += 1;  // the next page begins in another frame
      assert.equal(sentences.size, kLanguages.length, `${scenario}: one sentence a language`);
    }
  },

  async "the gallery shows every finding in every language, and all of it fits"() {
    for (const [index, language] of kLanguages.entries()) {
      const visit = await open(`${demo.url}gallery?lang=${language}`);
      const sentences = await visit.page.locator("article .sentence").allTextContents();
      assert.equal(sentences.length, findings().length);
      assert.ok(sentences.every((sentence) => sentence !== "" && !/^\w+:\w+|undefined/.test(sentence)), String(sentences));
      await visit.page.locator("#width").selectOption(index % 2 ? "280" : "");
      await visit.page.locator("#scheme").selectOption(index % 2 ? "dark" : "light");
      await fitsAndIsAccessible(visit, `gallery-${language}`, index < 2);
      await visit.close();
    }
    const visit = await open(`${demo.url}gallery`);
    await visit.page.locator("#danger article a").first().click();
    await visit.page.locator('#widget[data-verdict="danger"]').waitFor();
    await visit.close();
  },

  async "the report is a page that stands by itself, fits and is accessible"() {
    for (const [scenario, language] of [["everything-at-once", "de"], ["failing-ups", "ja"], ["healthy", "es"]]) {
      const visit = await tab();
      await visit.page.setContent(report(scenario, language));
      assert.ok(await visit.page.locator(".sentence").isVisible());
      for (const details of await visit.page.locator("details").all()) await details.locator("> summary").click();
      await fitsAndIsAccessible(visit, `report-${scenario}`);
      assert.deepEqual(visit.requests.filter((request) => !request.startsWith("data:")), []);
      await visit.close();
    }
  },

  async "at most six requests and 40 KB in any language, half of it on the wire"() {
    for (const locale of kLanguages) {
      const visit = await open(page("everything-at-once"), {locale});
      const fetched = visit.requests.filter((request) => request.startsWith("http"));
      assert.ok(fetched.length <= 6, String(fetched));
      let bytes = 0, packed = 0;
      for (const request of fetched) {
        const answer = await visit.page.request.get(request);
        bytes += (await answer.body()).length;
        packed += Number(answer.headers()["content-length"]);
      }
      assert.ok(bytes < 40000 && packed < 20480, `${locale}: ${bytes} bytes, ${packed} sent`);
      console.log(`  ${locale}: ${fetched.length} requests, ${bytes} bytes, ${packed} as sent`);
      await visit.close();
    }
  },

  async "names are shown as they are, never as markup"() {
    const visit = await open(page("volume-named-like-a-placeholder"));
    assert.equal(await text(visit.page, ".sentence"), "Volume {1}: almost full");
    await visit.page.route("**/answer*", async (route) => {
      const reply = await (await route.fetch()).json();
      reply.answer.hostname = "<img src=x onerror=alert(1)>";
      reply.answer.rule.description.description_params[0] = "<b>\u202eגיבוי\u2069\u2066</b>";
      await route.fulfill({json: reply});
    });
    await visit.page.reload();
    await answered(visit.page);
    assert.equal(await text(visit.page, "#host"), "<img src=x onerror=alert(1)> (volume-named-like-a-placeholder)");
    assert.equal(await visit.page.locator(".sentence *, #host *").count(), 0);
    assert.match(await text(visit.page, ".sentence"), /<b>\ufffdגיבוי\ufffd\ufffd<\/b>/);
    const direction = await visit.page.locator(".sentence").evaluate((sentence) => getComputedStyle(sentence).direction);
    assert.equal(direction, "ltr", "a name does not turn the sentence around it");
    await visit.close();
  },

  async "by keyboard alone: unfold, read, choose a language that is remembered"() {
    const visit = await open(page("everything-at-once"));
    const reached = [];
    for (let i = 0; i < 10; i += 1) {
      await visit.page.keyboard.press("Tab");
      const focus = await visit.page.evaluate(() => {
        const {tagName, parentElement, id} = document.activeElement;
        return {name: id || parentElement?.id || tagName, ring: getComputedStyle(document.activeElement).outlineStyle};
      });
      if (focus.name === "HTML" || focus.name === "BODY") break;
      assert.equal(focus.ring, "solid", `${focus.name} shows its focus`);
      reached.push(focus.name);
      if (focus.name === "language") break;
      await visit.page.keyboard.press("Enter");
    }
    assert.ok(await visit.page.locator('[data-advice="meaning"]').isVisible());
    assert.equal(await visit.page.locator("#more li:visible").count(), 8);
    assert.equal(reached.at(-1), "language");
    await visit.page.keyboard.press("ArrowDown");
    await visit.page.locator('html[lang="de"]').waitFor();
    assert.equal(await text(visit.page, ".advice h2"), "Was zu tun ist");
    await visit.page.reload();
    await visit.page.locator('html[lang="de"]').waitFor();
    await visit.close();
  },

  async "the language is the first preferred one that there are texts in"() {
    const cases = [[["pt-BR", "fr-CA", "de"], "fr"], [["zh-TW"], "zh-CN"], [["tlh"], "en"], [[], "en"]];
    for (const [preferred, expected] of cases) {
      const visit = await tab();
      await visit.page.addInitScript((languages) =>
        Object.defineProperty(navigator, "languages", {get: () => languages}), preferred);
      await visit.page.goto(page("healthy"));
      await answered(visit.page);
      assert.equal(await visit.page.locator("html").getAttribute("lang"), expected, String(preferred));
      await visit.page.goto(page("healthy", "&lang=es"));
      await visit.page.locator('html[lang="es"]').waitFor();
      await visit.close();
    }
  },

  async "it asks only while visible, and never twice within a minute"() {
    const visit = await tab();
    await visit.page.clock.install();
    await visit.page.goto(page("healthy"));
    await answered(visit.page);
    // How many requests these seconds bring; one that is expected gets the time that it needs.
    const asked = async (seconds, expected = 0) => {
      const before = visit.requests.length;
      await visit.page.clock.runFor(seconds * 1000);
      for (let i = 0; i < 600 && visit.requests.length < before + expected; i += 1) await visit.page.waitForTimeout(50);
      await visit.page.waitForTimeout(50);
      return visit.requests.length - before;
    };
    const become = (hidden) => visit.page.evaluate((value) => {
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
  },

  async "a server that is gone leaves the last answer with its age, and is found again"() {
    const address = "127.0.0.8";  // of its own: nobody else takes the port in between
    const first = await serve("--scenario", "system-fan-failed", "--listen", `${address}:0`);
    const visit = await tab();
    await visit.page.clock.install();
    await visit.page.goto(first.url);
    await answered(visit.page);
    await first.stop();
    await visit.page.clock.runFor(130000);
    await visit.page.locator("#stale:visible").waitFor();
    assert.match(await text(visit.page, "#stale"), /does not answer.*\d min old/);
    assert.equal(await text(visit.page, ".sentence"), "A system fan has failed.");
    assert.deepEqual(await violations(visit.page), []);
    if (shots) await visit.page.screenshot({path: `${shots}/gone.png`, fullPage: true});
    assert.ok(problemsSoFar().every((problem) => problem.includes("ERR_CONNECTION_REFUSED")));
    const second = await serve("--scenario", "healthy", "--listen", new URL(first.url).host);
    await visit.page.clock.runFor(61000);
    await visit.page.locator('#widget[data-verdict="well"]').waitFor();
    assert.equal(await visit.page.locator("#stale").isVisible(), false);
    await visit.close();
    await second.stop();
  },
};

let failed = 0;
for (const [name, run] of Object.entries(tests)) {
  const started = Date.now();
  try {
    await run();
    assert.deepEqual(problemsSoFar(), [], "the console stays clean, and nobody else is asked");
    console.log(`ok: ${name} (${((Date.now() - started) / 1000).toFixed(1)} s)`);
  } catch (error) {
    failed += 1;
    problemsSoFar();
    console.log(`FAILED: ${name}\n${error.stack}`);
  }
}
await browser.close();
await demo.stop();
process.exit(failed === 0 ? 0 : 1);
