// Real Prometheus and Alertmanager over simulated boxes: the demo of vela-health answers for all of
// them, and a web hook takes what Alertmanager sends. All on loopback, in a folder of its own. For
// the benchmark beside this file and for the test of what the shipped rules tell.
import {spawn} from "node:child_process";
import {once} from "node:events";
import {cpSync, mkdtempSync, openSync, readFileSync, readdirSync, rmSync, writeFileSync}
  from "node:fs";
import {createServer} from "node:http";
import {tmpdir} from "node:os";
import {join} from "node:path";
import {setTimeout as sleep} from "node:timers/promises";

// A busy machine takes its time: what is awaited comes about by itself.
const kPatience = Number(process.env.VELA_TIMEOUT_FACTOR ?? 1);

// Until `look` gives something, at most so many seconds; what it gave.
export async function eventually(what, seconds, look) {
  const end = performance.now() + seconds * 1000 * kPatience;
  for (;;) {
    const seen = await look();
    if (seen) return seen;
    if (performance.now() > end) throw new Error(`in ${seconds} s there came no ${what}`);
    await sleep(200);
  }
}

// An address of the loopback that nobody else listens on: neither server takes port 0.
function ownAddress(port) {
  const byte = () => 2 + Math.floor(Math.random() * 250);
  return `127.${byte()}.${byte()}.${byte()}:${port}`;
}

// Of a top-level block of YAML, its lines; the rest of the text stays as it is.
const replaceBlock = (text, name, block) =>
  text.replace(new RegExp(`^${name}:.*\\n(?:(?:[ #-].*)?\\n)*`, "m"), () => block);

// How long the rules and the routing that ship hold back that something is over, and how long a
// first message waits for others.
function shortenHolding(folder, seconds) {
  for (const name of readdirSync(folder).filter(each => each.endsWith(".yml"))) {
    const text = readFileSync(join(folder, name), "utf8");
    writeFileSync(join(folder, name),
      text.replace(/(keep_firing_for|group_interval): \w+/g, (_, key) => `${key}: ${seconds}s`)
        .replace(/group_wait: \d\ds/g, "group_wait: 5s"));
  }
}

// The routing that ships, with each of its receivers at the web hook.
function pointReceivers(configuration, hook) {
  const receivers = /^receivers:.*\n(?:(?:[ #-].*)?\n)*/m.exec(configuration)[0];
  const names = [...receivers.matchAll(/^ *-.*\bname: *["']?([\w-]+)/gm)].map(([, name]) => name);
  const hooks = names.map(name =>
    `  - {name: ${name}, webhook_configs: [{url: "${hook}/${name}", send_resolved: true}]}\n`);
  return replaceBlock(configuration, "receivers", `receivers:\n${hooks.join("")}`);
}

async function readBody(request) {
  const parts = [];
  for await (const part of request) parts.push(part);
  return Buffer.concat(parts).toString();
}

// `serve --demo` as Prometheus finds it, and what Alertmanager sends. The list of boxes changes by
// `plant`, as the inventory of a fleet does.
class Hub {
  messages = [];  // {at: ms, receiver, status, alerts}
  faults = 0;

  async start(boxes) {
    this.boxes = boxes;
    this.server = createServer((request, response) => this.answer(request, response));
    this.server.listen(0, "127.0.0.1");
    await once(this.server, "listening");
    this.url = `http://127.0.0.1:${this.server.address().port}`;
  }

  async answer(request, response) {
    if (request.method === "POST") {
      const {status, alerts} = JSON.parse(await readBody(request));
      const receiver = request.url.slice("/alerts/".length);
      // What always comes is no news.
      if (receiver !== "deadman")
        this.messages.push({at: performance.now(), receiver, status, alerts});
      response.end();
      return;
    }
    const list = await fetch(`${this.demo}fleet?boxes=${this.boxes}&faults=${this.faults}`);
    response.writeHead(list.status, {"Content-Type": "application/json"});
    response.end(await list.text());
  }
}

const kScrape = ({hub, alertmanager, scrape, evaluation, refresh, rules}) => `
global:
  scrape_interval: ${scrape}s
  scrape_timeout: ${scrape}s
  evaluation_interval: ${evaluation}s
rule_files: [${rules.join(", ")}]
alerting: {alertmanagers: [{static_configs: [{targets: ["${alertmanager}"]}]}]}
scrape_configs:
  - job_name: vela-health
    http_sd_configs: [{url: "${hub.url}/fleet", refresh_interval: ${refresh}s}]
`;

export class Fleet {
  processes = {};
  hub = new Hub();
  folder = mkdtempSync(join(tmpdir(), "vela-fleet-"));

  // `mixin`: the folder of the rules and the routing that ship. Intervals in seconds. With
  // `stretch` that of the scrapes is longer where the machine is too busy for it. `over`: what is
  // over is held back no longer than this.
  static async start({program, mixin, boxes, scrape, stretch, over, evaluation = 5, refresh = 5}) {
    const fleet = new Fleet();
    process.once("exit", () => fleet.kill());
    for (const signal of ["SIGHUP", "SIGINT", "SIGTERM"])
      process.once(signal, () => process.exit(1));
    await fleet.hub.start(boxes);
    await fleet.startDemo(program);
    if (stretch) scrape = Math.min(60, Math.max(scrape, Math.ceil(3 * await fleet.timeRound())));
    fleet.alertmanager = ownAddress(19093);
    fleet.prometheus = ownAddress(19090);
    cpSync(mixin, fleet.folder, {recursive: true});
    if (over) shortenHolding(fleet.folder, over);
    fleet.startAlertmanager();
    const rules = readdirSync(mixin).filter(name => name.endsWith(".rules.yml"));
    fleet.startPrometheus(kScrape({...fleet, scrape, evaluation, refresh, rules}));
    await eventually("Prometheus", 60, async () =>
      (await fetch(`http://${fleet.prometheus}/-/ready`).catch(() => ({}))).ok);
    return fleet;
  }

  spawn(name, program, words, stdout) {
    const log = openSync(join(this.folder, `${name}.log`), "w");
    const child = spawn(program, words, {stdio: ["ignore", stdout ?? log, log]});
    child.ended = once(child, "exit").catch(error => {
      throw new Error(`Cannot start ${program}: ${error.message}. Debian has it as a package.`);
    });
    this.processes[name] = child;
    return child;
  }

  async startDemo(program) {
    const demo = this.spawn("demo", program, ["serve", "--demo", "--port", "0"], "pipe");
    const [line] = await Promise.race([once(demo.stdout, "data"),
      demo.ended.then(() => { throw new Error(this.log("demo")); })]);
    this.hub.demo = /http:\S+/.exec(line)[0];
  }

  // Seconds that it takes to scrape all boxes one after another.
  async timeRound() {
    const start = performance.now(), some = 50;
    for (let i = 0; i < some; ++i)
      await (await fetch(`${this.hub.demo}metrics?scenario=healthy-four-bays`)).text();
    return (performance.now() - start) / 1000 * this.hub.boxes / some;
  }

  startAlertmanager() {
    const file = join(this.folder, "alertmanager.yml");
    writeFileSync(file, pointReceivers(readFileSync(file, "utf8"), `${this.hub.url}/alerts`));
    this.spawn("alertmanager", "prometheus-alertmanager", [`--config.file=${file}`,
      `--storage.path=${join(this.folder, "alerts")}`, "--cluster.listen-address=",
      `--web.listen-address=${this.alertmanager}`, "--log.level=warn"]);
  }

  startPrometheus(configuration) {
    const file = join(this.folder, "prometheus.yml");
    writeFileSync(file, configuration);
    this.spawn("prometheus", "prometheus", [`--config.file=${file}`, "--log.level=warn",
      `--storage.tsdb.path=${join(this.folder, "data")}`, `--web.listen-address=${this.prometheus}`]);
  }

  log(name) { return readFileSync(join(this.folder, `${name}.log`), "utf8"); }

  // From now on so many boxes have a fault; when that is.
  plant(faults) {
    this.hub.faults = faults;
    return performance.now();
  }

  async ask(api, parameters = {}) {
    const query = new URLSearchParams(parameters);
    const answer = await (await fetch(`http://${this.prometheus}/api/v1/${api}?${query}`)).json();
    if (answer.status !== "success") throw new Error(`${api}?${query}: ${answer.error}`);
    return answer.data;
  }
  // Of a query with one result; 0 when it has none.
  async number(query) {
    const {result} = await this.ask("query", {query});
    return Number(result[0]?.value[1] ?? 0);
  }
  // The sum of what a server tells of itself, "prometheus" or "alertmanager"; by the metric's name.
  async own(server, metric) {
    const text = await (await fetch(`http://${this[server]}/metrics`)).text();
    const values = text.matchAll(new RegExp(`^${metric}(?:{.*})? (.*)$`, "gm"));
    return [...values].reduce((sum, [, value]) => sum + Number(value), 0);
  }
  // Once every box answers, as it is now.
  scraped(seconds) {
    return eventually("answer of every box", seconds, async () =>
      await this.number('count(up{job="vela-health"} == 1)') === this.hub.boxes);
  }

  // Of a process: seconds of processor time so far, MiB that are resident.
  usage(name) {
    const {pid} = this.processes[name];
    const fields = readFileSync(`/proc/${pid}/stat`, "latin1").split(") ").at(-1).split(" ");
    const kibibytes = /^VmRSS:\s+(\d+)/m.exec(readFileSync(`/proc/${pid}/status`, "latin1"))[1];
    return {seconds: (Number(fields[11]) + Number(fields[12])) / 100, mebibytes: kibibytes / 1024};
  }

  async stop() {
    this.hub.server.close();
    this.hub.server.closeAllConnections();
    for (const child of Object.values(this.processes)) child.kill();
    await Promise.all(Object.values(this.processes).map(child => child.ended));
    this.kill();
  }
  kill() {
    for (const child of Object.values(this.processes)) child.kill("SIGKILL");
    rmSync(this.folder, {recursive: true, force: true});
  }
}
