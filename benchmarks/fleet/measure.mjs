// node measure.mjs BOXES...: prints a table with a column for each number; benchmarks/fleet/run
// starts it.
import {setTimeout as sleep} from "node:timers/promises";
import {gzipSync} from "node:zlib";
import {Fleet, eventually} from "./fleet.mjs";

const kEvaluation = 10, kFaults = 37;
// As the mixin has it; so many boxes on two cores are scraped half as often.
const scrapeInterval = boxes => Number(process.env.SCRAPE ?? (boxes > 5000 ? 30 : 15));
const kServers = ["prometheus", "alertmanager", "demo"];
const count = number => Math.round(number).toLocaleString("en");
const tell = text => process.stderr.write(`${new Date().toTimeString().slice(0, 8)} ${text}\n`);

// What the servers spend within so many seconds, and what a rule evaluation took at most.
async function watch(fleet, seconds) {
  const samples = () => fleet.own("prometheus", "prometheus_tsdb_head_samples_appended_total");
  const start = performance.now(), before = kServers.map(name => fleet.usage(name));
  const first = await samples();
  let rules = 0;
  while (performance.now() < start + seconds * 1000) {
    const now = await fleet.own("prometheus", "prometheus_rule_group_last_duration_seconds");
    rules = Math.max(rules, now);
    await sleep(5000);
  }
  const took = (performance.now() - start) / 1000;
  const seen = {rules, samples: (await samples() - first) / took};
  kServers.forEach((name, i) => {
    const {seconds: spent, mebibytes} = fleet.usage(name);
    seen[name] = {share: (spent - before[i].seconds) / took, mebibytes};
  });
  return seen;
}

const firing = ({hub}) => hub.messages.flatMap(({at, alerts}) =>
  alerts.filter(({status}) => status === "firing").map(({labels}) => ({at, labels})));

// Seconds from each fault to the first message about its box, sorted.
async function timeFaults(fleet, scrape) {
  const start = fleet.plant(kFaults);
  const boxes = await (await fetch(`${fleet.hub.url}/fleet`)).json();
  const faulty = new Set(boxes.filter(({labels}) => labels.__param_scenario !== boxes[0].labels
    .__param_scenario).map(({labels}) => labels.instance));
  const first = new Map();
  await eventually("message about every fault", 2 * scrape + 90, () => {
    for (const {at, labels} of firing(fleet))
      if (!first.has(labels.instance)) first.set(labels.instance, (at - start) / 1000);
    return [...faulty].every(instance => first.has(instance));
  });
  const wrong = [...first.keys()].filter(instance => !faulty.has(instance));
  return {wrong, seconds: [...first.values()].sort((a, b) => a - b)};
}

async function scrapeSizes(fleet) {
  const sizes = {};
  for (const scenario of ["healthy-four-bays", "everything-at-once"]) {
    const text = await (await fetch(`${fleet.hub.demo}metrics?scenario=${scenario}`)).text();
    const lines = text.split("\n").filter(line => line && !line.startsWith("#"));
    sizes[scenario] = {series: lines.length, bytes: text.length, packed: gzipSync(text).length};
  }
  return sizes;
}

async function measure(boxes) {
  const program = process.env.VELA_HEALTH, mixin = process.env.MIXIN;
  const scrape = scrapeInterval(boxes);
  const fleet = await Fleet.start(
    {program, mixin, boxes, scrape, evaluation: kEvaluation, refresh: 10});
  try {
    tell(`${boxes} boxes: wait for every box's first answer`);
    await fleet.scraped(2 * scrape + 60);
    tell("calm");
    const seen = {boxes, scrape, sizes: await scrapeSizes(fleet), calm: await watch(fleet, scrape)};
    seen.series = await fleet.own("prometheus", "prometheus_tsdb_head_series");
    seen.failed = boxes - await fleet.number('count(up == 1)');
    seen.slowest = await fleet.number("max(scrape_duration_seconds)");
    seen.falseAlarms = fleet.hub.messages.length;
    tell(`${kFaults} faults`);
    seen.faults = await timeFaults(fleet, scrape);
    tell("every box on fire");
    fleet.hub.messages.length = 0;
    fleet.plant(boxes);
    await sleep((scrape + 20) * 1000);  // all are known and scraped; warnings take 30 s more
    seen.fire = await watch(fleet, Math.max(scrape, 75));
    seen.fire.messages = fleet.hub.messages.length;
    seen.fire.told = new Set(firing(fleet).map(({labels}) => JSON.stringify(labels))).size;
    seen.fire.active = await fleet.number('count(ALERTS{alertstate="firing"})');
    seen.fire.dropped = await fleet.own("prometheus", "prometheus_notifications_dropped_total");
    return seen;
  } finally {
    await fleet.stop();
  }
}

const percent = ({share}) => `${(share * 100).toFixed(share < 0.1 ? 1 : 0)} %`;
const memory = ({mebibytes}) => `${count(mebibytes)} MiB`;
const milliseconds = seconds => `${count(seconds * 1000)} ms`;
const ofScrape = name => ({sizes: {[name]: {series, bytes, packed}}}) =>
  `${series} series, ${count(bytes)} bytes, packed ${count(packed)}`;
const kRows = [
  ["a scrape of a well box", ofScrape("healthy-four-bays")],
  ["of the worst box", ofScrape("everything-at-once")],
  ["scrape interval", ({scrape}) => `${scrape} s`],
  ["series in Prometheus", ({series}) => count(series)],
  ["samples a second", ({calm}) => count(calm.samples)],
  ["calm: Prometheus", ({calm}) => `${percent(calm.prometheus)}, ${memory(calm.prometheus)}`],
  ["Alertmanager", ({calm}) => `${percent(calm.alertmanager)}, ${memory(calm.alertmanager)}`],
  ["all boxes together", ({calm}) => `${percent(calm.demo)}, ${memory(calm.demo)}`],
  ["rule evaluation, all groups", ({calm}) => milliseconds(calm.rules)],
  ["slowest scrape, boxes without an answer",
    ({slowest, failed}) => `${milliseconds(slowest)}, ${failed}`],
  ["messages without a fault", ({falseAlarms}) => count(falseAlarms)],
  [`${kFaults} faults: fault to message, least, median, most`, ({faults: {seconds}}) =>
    [0, seconds.length >> 1, seconds.length - 1].map(i => `${seconds[i].toFixed(0)} s`).join(", ")],
  ["messages about other boxes", ({faults}) => count(faults.wrong.length)],
  ["every box faulty: alerts that fire", ({fire}) => count(fire.active)],
  ["alerts told, in messages", ({fire}) => `${count(fire.told)}, ${count(fire.messages)}`],
  ["notifications that Prometheus dropped", ({fire}) => count(fire.dropped)],
  ["rule evaluation, all groups", ({fire}) => milliseconds(fire.rules)],
  ["Prometheus", ({fire}) => `${percent(fire.prometheus)}, ${memory(fire.prometheus)}`],
  ["Alertmanager", ({fire}) => `${percent(fire.alertmanager)}, ${memory(fire.alertmanager)}`],
  ["all boxes together", ({fire}) => `${percent(fire.demo)}, ${memory(fire.demo)}`],
];

const columns = [];
for (const boxes of process.argv.slice(2)) columns.push(await measure(Number(boxes)));
const line = cells => console.log(`| ${cells.join(" | ")} |`);
line(["", ...columns.map(({boxes}) => `${count(boxes)} boxes`)]);
line(["---", ...columns.map(() => "---")]);
for (const [name, show] of kRows) line([name, ...columns.map(show)]);
