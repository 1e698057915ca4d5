// The page and the gallery in a real Chromium, served by the real program over simulated machines.
//   VELA_BUILD=FOLDER browser_test.mjs NODE_MODULES_FOLDER CHROMIUM [SCREENSHOT_FOLDER]
import assert from "node:assert/strict";
import test, {after, afterEach} from "node:test";
import {languages, scenario as playing, serve} from "../host/support/program.mjs";
import {answered, browser, findings, misfits, open, problemsSoFar, report, tab, text, violations}
  from "./support.mjs";

const shots = process.argv[4];
// Each look, with long names, notes, and a source that failed.
const kPages = {
  "healthy-with-notes": "well",
  "unwatched-disks-and-ups": "unknown",
  "usb-volume-name-fills-its-field": "notice",
  "array-degraded-and-volume-low": "warning",
  "everything-at-once": "danger",
};

const demo = await serve("--demo");
const machine = scenario => `${demo.url}?scenario=${scenario}`;
afterEach(() => assert.deepEqual(problemsSoFar(), [], "a clean console, and nobody else is asked"));
after(() => Promise.all([browser.close(), demo.stop()]));

// Nothing reaches out of the window, narrow or wide. One of the four frames is accessible, too.
async function fitsAndIsAccessible(page, where, frame = 0) {
  for (const width of [280, 1280]) {
    await page.setViewportSize({width, height: 800});
    if (shots) await page.screenshot({path: `${shots}/${where}-${width}.png`, fullPage: true});
    assert.deepEqual(await misfits(page), [], `${where} ${width}`);
  }
  if (frame > 3) return;
  await page.setViewportSize({width: frame % 2 ? 280 : 1280, height: 800});
  await page.emulateMedia({colorScheme: frame & 2 ? "dark" : "light"});
  assert.deepEqual(await violations(page), [], where);
}

test("every look in every language fits and is accessible", async () => {
  for (const [scenario, verdict] of Object.entries(kPages)) {
    const sentences = new Set();
    for (const [index, locale] of languages.entries()) {
      const page = await open(machine(scenario), {locale});
      await page.locator(`html[lang="${locale}"] #widget[data-verdict="${verdict}"]`).waitFor();
      const advised = verdict !== "well" && verdict !== "unknown";
      for (const place of ["#winner .do", "#winner .do + code"])
        assert.equal(await page.locator(place).isVisible(), advised, scenario);
      await page.evaluate(() => document.querySelectorAll("details").forEach(each => each.open = true));
      await fitsAndIsAccessible(page, `${scenario}-${locale}`, index);
      const empty = page.locator(":is(p, h1, h2, h3, li, summary, label):visible:empty");
      assert.equal(await empty.count(), 0);
      sentences.add(await text(page, ".sentence"));
    }
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
    await fitsAndIsAccessible(page, `gallery-${language}`, index < 2 ? index : 4);
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
  const name = "<b>\u202e{1}</b>";
  await page.route("**/v1/health*", async route => {
    const reply = await (await route.fetch()).json();
    reply.hostname = "<img src=x onerror=alert(1)>";
    reply.notes = [{text: name, command: "<i>"}];
    Object.assign(reply.findings[0], {why: [{text: [name], show: name}], commands: [name]});
    reply.sentence = reply.checks[0].title = reply.checks[0].seen[0] = reply.sources[0].title = name;
    Object.assign(reply.sources[0], {state: "failed", reasons: [{text: name, remedy: name}]});
    reply.parts = ["disk", "volume", "fan", "LUN"].map(kind => ({kind, name, title: name, bay: name,
      state: "failed", details: name, mount_point: name, device: name, total: 9, unit: name}));
    await route.fulfill({json: reply});
  });
  await page.reload();
  await answered(page);
  assert.equal(await text(page, "#host"),
    "<img src=x onerror=alert(1)> (volume-named-like-a-placeholder)");
  const told = "<b>\ufffd{1}</b>";
  for (const place of [".sentence", ".cause p", ".cause code", "#winner .do + code", ".bay span",
    ".caption b", ".volume b", ".gauge b", ".words b", ".strip b", ".strip li"])
    assert.equal(await page.locator(place).first().textContent(), told, place);
  assert.match(await text(page, "#unread"), /: <b>\ufffd\{1\}<\/b><b>\ufffd/);
  assert.equal(await page.locator("#notes b, #notes i, #answer b b, #answer img").count(), 0);
  const direction = await page.evaluate(() =>
    getComputedStyle(document.querySelector(".sentence")).direction);
  assert.equal(direction, "ltr", "a name does not turn the sentence around it");
});

test("by keyboard alone: unfold, read, choose a language that is remembered", async () => {
  const page = await open(machine("array-degraded-and-volume-low")), {keyboard} = page;
  const told = [];
  for (let reached = ""; told.length < 40 && reached !== "language"; told.push(reached)) {
    await keyboard.press(reached === "option" ? "ArrowLeft" : "Enter");
    if (reached === "option") told.push(await text(page, ".caption"));
    await keyboard.press("Tab");
    const focus = await page.evaluate(() => {
      const {tagName, role, id} = document.activeElement;
      const ring = getComputedStyle(document.activeElement).outlineStyle;
      return {name: id || role || tagName, ring};
    });
    reached = focus.name;
    assert.equal(focus.ring, "solid", `${reached} shows its focus`);
  }
  assert.deepEqual(told.slice(0, 4), ["again", "SUMMARY", "option",
    "Disk 2bay 2, WDC WD80EFPX, serial WD-CA1K90HP, 7.3\u00a0TiB"]);
  assert.equal(told.at(-1), "language");
  assert.equal(await page.locator("details:not([open])").count(), 0);
  await keyboard.press("ArrowDown");
  await keyboard.press("ArrowDown");  // while the first language is still asked for
  await page.locator('html[lang="fr"]').waitFor();
  await page.getByText(/fonctionne avec|stockage/).first().waitFor();
  assert.equal(await text(page, "#winner .why h2"), "Pourquoi");
  assert.equal(await page.locator("details[open]").count(), 13, "what is open stays open");
  await page.reload();
  await page.locator('html[lang="fr"]').waitFor();
});

test("the machine is a picture: the part that matters is lit, and told", async () => {
  const page = await open(machine("array-degraded-and-volume-low"));
  const bays = page.getByRole("listbox").first().getByRole("option");
  assert.deepEqual(await bays.allTextContents(), ["1", "2", "3", "4", "5", "6", "7", "8"]);
  const lit = page.locator(".bay[data-lit]");
  assert.deepEqual([await lit.count(), await lit.getAttribute("aria-label")],
    [1, "Disk 3, missing, bay 3, WDC WD80EFPX, serial WD-CA1L04TT, was sdc, 7.3\u00a0TiB"]);
  assert.match(await text(page, ".caption"), /^Disk 3missing/);
  await bays.nth(6).hover();
  assert.match(await text(page, ".caption"), /^Disk 7bay 7, TOSHIBA HDWG480, serial 52K0A20LFAEH/);
  assert.equal(await page.locator(".bay").last().textContent(), "9", "in a row of its own");
  const volumes = await page.locator(".volume").evaluateAll(all => all.map(each =>
    [".level", "line"].map(part => each.querySelector(part).getAttribute("width")
      ?? each.querySelector(part).getAttribute("x1")).concat(!!each.querySelector(".over"))));
  assert.deepEqual(volumes.map(([used, mark, over]) => [Math.round(used), Math.round(mark), over]),
    [[68, 95, false], [97, 95, true], [26, 95, false]]);
  assert.match(await text(page, ".volume:nth-child(2)"), /7 of 7.3\sTiB used \(96\s%\)warns at 95\s%/);
  assert.match(await text(page, ".gauges >> nth=0"), /UPS cellar100/);
  assert.equal(await page.locator(".strip details").count(), 10);
  assert.match(await text(page, '[data-outcome="finding"] >> nth=0'), /^Volume usageVolume 2: almost full/);
  assert.match(await text(page, "#more article"), /Volume 2: almost full.*df -h.*lvextend/);
  assert.match(await text(page, "footer"), /up 42 d 6 h10 of 10 checks made/);
  await page.emulateMedia({media: "print"});
  await page.locator(".words li:visible").first().waitFor();
  assert.equal(await page.locator("details:not([open])").count(), 0, "on paper all is open");
  await page.emulateMedia({media: "screen"});
  await page.locator(".words li").first().waitFor({state: "hidden"});
  assert.equal(await page.locator("details[open]").count(), 0);
  for (const [name, look, count] of [["unwatched-disks-and-ups", "unknown", 3],
    ["accepted-disk-health", "accepted", 2]]) {
    await page.goto(machine(name));
    await answered(page);
    assert.equal(await page.locator(`.strip [data-verdict="${look}"]`).count(), count);
  }
});

test("any number of disks, of shelves and of letters fits and is accessible", async () => {
  const long = "ANAMEWITHOUTANYBLANK".repeat(3);
  for (const [frame, count] of [0, 1, 60].entries()) {
    const disks = [...Array(count).keys()].map(i => ({kind: "disk", name: `Disk ${i}`, model: long,
      state: ["well", "attention", "failed", "missing", "empty", "unknown"][i % 6],
      ...i < 30 ? {slot: `shelf ${i % 2}, ${i}`} : {device: `nvme${i}n1`}}));
    const others = ["volume", "fan", "sensor", "supply", "UPS", "node", "array"].map(kind => ({kind,
      name: long, state: "failed", reading: -3, unit: "C", mark: 5, used: 5, total: 4}));
    const parts = [...disks.reverse(), ...others];
    const shown = await serve("--scenario", playing(`disks-${count}`, {parts}));
    const page = await open(shown.url);
    const places = disks.reverse().map((_, i) => String(i));
    assert.deepEqual(await page.locator(".bay").allTextContents(), count < 60 ? places
      : [0, 1].flatMap(odd => places.filter(i => i < 30 && i % 2 === odd)).concat(places.slice(30)));
    assert.equal(await page.getByRole("listbox").count(), Math.min(count, 3));
    await fitsAndIsAccessible(page, `disks-${count}`, frame + 1);
    await shown.stop();
  }
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
  await page.route("**/v1/health*", route => route.abort());
  assert.equal(await asked(60, 1), 1);
  assert.equal(await asked(8), 0);
  assert.equal(await asked(2, 1), 1, "who does not answer is asked again ten seconds later");
  assert.ok(problemsSoFar().every(problem => problem.includes("ERR_FAILED")));
});

test("who asks again is answered at once, and what is looked at stays", async () => {
  const page = await tab();
  await page.clock.install({time: 0});
  await page.clock.pauseAt(1000);
  await page.goto(machine("healthy-eight-bays"));
  await answered(page);
  const icon = () => page.locator("#tab").getAttribute("href");
  assert.match(await icon(), /^data:image\/svg.*1c8a4b/);
  assert.match(await page.title(), /^Healthy – archive/);
  await page.locator(".bay").nth(1).focus();
  await page.clock.runFor(25000);
  assert.equal(await text(page, "#checked"), "Checked 20 s ago");
  await page.route("**/v1/health*", async route => {
    const reply = await (await route.fetch()).json();
    reply.parts[0].used += 1e12;
    await route.fulfill({json: reply});
  });
  await page.locator("#again").dispatchEvent("click");
  await page.getByText("Checked just now").waitFor();
  await page.getByText(/11.1 of 21.8\sTiB/).first().waitFor();
  assert.equal(await page.locator(".bay:focus").textContent(), "2");
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
  await page.locator('#widget[data-verdict="gone"]').waitFor();
  assert.match(await text(page, "#stale"), /last answer, \d min old: A system fan has failed\./);
  assert.equal(await text(page, ".sentence"), "The machine does not answer.");
  assert.match(await page.title(), /^No answer – vela/);
  assert.match(await page.locator("#tab").getAttribute("href"), /6b7783/);
  assert.equal(await page.locator("#checked").isVisible(), false);
  assert.deepEqual(await violations(page), []);
  if (shots) await page.screenshot({path: `${shots}/gone.png`, fullPage: true});
  assert.ok(problemsSoFar().every(problem => problem.includes("ERR_CONNECTION_REFUSED")));
  const second = await serve("--scenario", "healthy", "--listen", new URL(first.url).host);
  await page.clock.runFor(11000);
  await page.locator('#widget[data-verdict="well"]').waitFor();
  assert.equal(await page.locator("#stale").isVisible(), false);
  await second.stop();
});
