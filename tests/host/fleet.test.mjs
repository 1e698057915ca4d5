// A thousand simulated boxes under the rules and the routing that ship, with real Prometheus and
// Alertmanager: who is told of what.
import assert from "node:assert/strict";
import {join} from "node:path";
import test from "node:test";
import {isDeepStrictEqual} from "node:util";
import {Fleet, eventually} from "../../benchmarks/fleet/fleet.mjs";
import {program, source} from "./support/program.mjs";

// In seconds, for a machine ten times as busy. How soon it is on a quiet one, the benchmark tells.
const kLongest = 400;
const mixin = join(source, "packaging/mixin");
const name = ({instance, id}) => `${instance} ${id}`;
const json = async url => (await fetch(url)).json();

// What is to be told: each finding of each faulty box, as its complete answer has them. A notice
// waits for an hour.
async function listFindings({hub}) {
  const names = new Set();
  for (const {labels} of await json(`${hub.url}/fleet`)) {
    const scenario = labels.__param_scenario;
    if (scenario === "healthy-four-bays") continue;
    const {findings} = await json(`${hub.demo}v1/health?scenario=${scenario}`);
    assert.ok(findings.some(({verdict}) => verdict !== "notice"), scenario);
    for (const {id, verdict} of findings)
      if (verdict !== "notice") names.add(name({...labels, id}));
  }
  return names;
}

// Names of what the web hook got, by status: "firing" or "resolved".
const told = ({hub}, status) => new Set(hub.messages.flatMap(({alerts}) =>
  alerts.filter(alert => alert.status === status).map(({labels}) => name(labels))));

// What Prometheus is about to tell, or tells; once every rule was evaluated from now on. A box that
// once did not answer in time is none: that may be this machine's fault.
async function listAlerts(fleet) {
  const now = Date.now();
  await eventually("evaluation of every rule", kLongest, async () =>
    (await fleet.ask("rules")).groups.every(group => Date.parse(group.lastEvaluation) > now));
  return (await fleet.ask("alerts")).alerts.map(({labels}) => labels)
    .filter(({alertname, severity}) =>
      alertname !== "VelaHealthDown" && !["info", "none"].includes(severity));
}

// Soon these names and no others: what is wrong stays wrong.
async function expectSoon(expected, list) {
  let names;
  await eventually("such alerts", kLongest, async () =>
    isDeepStrictEqual(names = new Set(await list()), expected))
    .catch(() => assert.deepEqual(names, expected));
}

test("of a thousand boxes those with a fault are told, no others, until they are mended",
  async t => {
    const fleet = await Fleet.start(
      {program, mixin, boxes: 1000, scrape: 8, stretch: true, over: 15});
    t.after(() => fleet.stop());
    await fleet.scraped(kLongest);
    assert.deepEqual(await listAlerts(fleet), []);
    assert.deepEqual(told(fleet, "firing"), new Set());

    fleet.plant(37);
    const expected = await listFindings(fleet);
    await expectSoon(expected, () => told(fleet, "firing"));
    await expectSoon(expected, async () => (await listAlerts(fleet)).map(name));

    fleet.plant(0);
    await expectSoon(expected, () => told(fleet, "resolved"));
    assert.deepEqual(await listAlerts(fleet), []);
    assert.deepEqual(told(fleet, "firing"), expected);
  });
