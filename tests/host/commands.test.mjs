// What each command prints and its exit status: the real program over the real module and
// simulator.
import assert from "node:assert/strict";
import {spawn, spawnSync} from "node:child_process";
import {once} from "node:events";
import {chmodSync, existsSync, mkdirSync, readFileSync, readdirSync, readlinkSync} from "node:fs";
import {join} from "node:path";
import test from "node:test";
import {setTimeout as sleep} from "node:timers/promises";
import {ask, build, folder, languages, program, run, scenario, serve, source, write}
  from "./support/program.mjs";

const read = file => readFileSync(file, "utf8");
const place = text => text.replaceAll("{folder}", folder).replaceAll("{build}", build)
  .replaceAll("{long}", "x".repeat(300)).replaceAll("{program}", program)
  .replaceAll("{plainly}", process.getuid() === 0 ? tables.plainly : "");
const tables = JSON.parse(read(join(source, "tests/host/commands.json")));
for (const [name, state] of Object.entries(tables.machines)) scenario(name, state);
const hostile = join(folder, "hostile");

// Each row: the command line, the exit status, what the output must hold and what it must not.
function expectAll(rows) {
  for (const [command, status, holds, never = []] of rows) {
    const {status: ended, out, err} = run(place(command).split(" "));
    const said = `${command}\n${out}${err}`;
    assert.equal(ended, status, said);
    assert.equal(status < 64 ? err : out, "", said);
    const has = part => (out + err).includes(place(part));
    for (const part of [holds].flat()) assert.ok(has(part), `${said}\nhas no ${part}`);
    for (const part of [never].flat()) assert.ok(!has(part), `${said}\nhas ${part}`);
  }
}
const expectTable = ({name}) => expectAll(tables[name]);

const scenarios = readdirSync(join(source, "scenarios")).filter(name => !name.includes("."));
const json = (...words) => JSON.parse(run([...words, "--json"]).out);

// The same on a terminal of that many columns, which shows the system log's lines, too.
const onTerminal = (columns, words, environment = "TERM=xterm") => spawnSync("script",
  ["-qec", `stty cols ${columns}; ${environment} ${program} ${place(words)}`, "/dev/null"],
  {encoding: "utf8"}).stdout.replaceAll("\r\n", "\n");

test("the exit status tells the verdict", expectTable);
test("explain shows every check and what decided", expectTable);
test("check is one line for monitoring systems whatever happens", expectTable);
test("an option that a command has no use for is refused", expectTable);
test("status names the part and what shows and mends it", expectTable);
test("no name reaches the terminal with its control characters", expectTable);
test("report holds findings and checks and sources and the document", expectTable);

// By the Monitoring Plugins' guidelines: 'label'=value[unit];[warn];[crit];[min];[max] ...
const figure = /^('(?:[^'=]|'')+'|[^ '=]+)=-?[\d.]+(?:%|B)?(?:;(?:@?(?:~|-?[\d.]+)?:?(?:-?[\d.]+)?)?){0,2}(?:;-?[\d.]*){0,2}(?: |$)/;

test("the performance data of every machine follows the guidelines", () => {
  const states = ["OK", "WARNING", "CRITICAL", "UNKNOWN"];
  for (const [turn, name] of [...scenarios, ...["hostile", "measured"].map(each => join(folder, each))].entries()) {
    const {status, out} = run(["check", "--scenario", name, "--lang", languages[turn % languages.length]]);
    const [, state, rest] = out.match(/^(\w+) - [^|\p{Cc}]+ \| ([^|\p{Cc}]+)\n$/u) ?? [];
    assert.equal(state, states[status], `${name} ${out}`);
    const labels = [];
    for (let left = rest; left; left = left.slice(labels.at(-1)[0].length)) {
      labels.push(left.match(figure));
      assert.ok(labels.at(-1), `${name} ${left}`);
    }
    assert.equal(new Set(labels.map(([, label]) => label)).size, labels.length, out);
    const findings = Number(rest.match(/^findings=(\d+)/)[1]);
    assert.equal(findings > 0, status === 1 || status === 2, out);
  }
});

test("a monitoring system's own plug-in reads what check says", () => {
  for (const [options, name, status, text] of tables.negated) {
    const words = [...options.split(" "), program, "check", "--scenario", name, "--lang", "en"];
    const negated = spawnSync("/usr/lib/nagios/plugins/negate", words, {encoding: "utf8"});
    assert.equal(negated.status, status, negated.stdout);
    assert.ok(negated.stdout.startsWith(text), negated.stdout);
  }
});

test("a finding is judged by id and type together and an answer by what it lacks", () => {
  for (const [answer, status, words] of tables.answers) {
    const rule = {...tables.usualRule, ...answer};
    write("judged.json", typeof answer === "string" ? answer : JSON.stringify(
      {rule, hostname: "nas", uptime: "1:2:3", interfaces: [{id: "e", ip: "", type: "lan"}]}));
    expectAll([["diff healthy {folder}/judged.json --lang en", status, words]]);
  }
});

test("the option for the language comes before the environment and English last", () => {
  for (const [locale, healthy, option] of tables.locales) {
    const environment = {LC_ALL: locale, LC_MESSAGES: "es_ES.UTF-8", LANG: "de_DE.UTF-8"};
    const words = ["--scenario", "healthy", ...(option ? ["--lang", option] : [])];
    const {out} = run(words, environment);
    assert.ok(out.startsWith(healthy), `${locale} ${option}: ${out}`);
  }
});

test("what could not be read is named and never called healthy", () => {
  const failing = scenarios.filter(name => /^(failing|unwatched)-/.test(name));
  assert.ok(failing.length > 5);
  for (const name of failing) {
    const {status, out} = run(["--scenario", name, "--lang", "en"]);
    assert.equal(status === 3, /^Not known: .+ checks found nothing\.\n/.test(out), name + out);
    assert.match(out, /\n {2}(Could not read|Nobody watches) /, name);
  }
});

test("what cannot be asked is said with what to do", each => {
  write("text.so", "no library");
  write("bad/state.json", '{"why": ".",\n "fanFailed": true}');
  expectTable(each);
  const platform = {VELA_HEALTH_PLATFORM: "simulator"};  // libraries by the environment
  assert.equal(run([], platform).status, 0);
  assert.equal(run([], {...platform, VELA_HEALTH_MODULE: "/nowhere"}).status, 69);
});

test("an answer that does not arrive is an error and a reader who has gone is none", () => {
  for (const [to, expected, commands] of tables.lost) {
    for (const words of commands) {
      const line = place(to.replace("{}", `${program} ${words}`));
      const {status, stderr} = spawnSync("bash", ["-c", line], {encoding: "utf8"});
      assert.match(`${status} ${stderr}`, new RegExp(`^${expected}$`, "s"), line);
    }
  }
  assert.deepEqual(readdirSync(folder).filter(name => name.includes("large")), []);
});

test("a signal ends every command at once with all that it started", async each => {
  chmodSync(write("root/usr/local/bin/velaiscsiep", tables.hangingTool), 0o755);
  const started = write("root/usr/local/bin/velaiscsiep.started", "0");
  const stat = pid => { try { return read(`/proc/${pid}/stat`); } catch { return ") X"; } };
  const left = () => read(started).trim().split(" ").filter(pid => !/\) [ZX]/.test(stat(pid)));
  for (const [line, ...signals] of tables.stopped) {
    const child = spawn("bash", ["-c", place(line)], {stdio: "ignore"});
    const ended = once(child, "exit");
    each.after(() => child.kill("SIGKILL"));
    while (left().length < 4 && child.exitCode === null) await sleep(10);
    for (const signal of signals) child.kill(signal);
    assert.deepEqual(await ended, [null, signals.at(-1)], line);
    for (let i = 0; i < 6000 && left().length > 0; i += 1) await sleep(10);
    assert.deepEqual(left(), [], line);
  }
  assert.deepEqual(readdirSync(folder).filter(name => name.includes("stopped")), []);
});

test("the server answers or says why it cannot", async () => {
  for (const [limit, words, expected] of tables.limits) {
    const line = place(`exec 2>{folder}/said; ${limit}; exec {program} serve --port 0 ${words}`);
    const outcome = await serve("-c", line).then(async ({port, pid, stop}) => {
      for (const [, closed] of words.matchAll(/(\d)[<>]&-/g))
        assert.doesNotMatch(readlinkSync(`/proc/${pid}/fd/${closed}`), /:/, line);
      const {status} = await ask(port, "/healthz", {signal: AbortSignal.timeout(60_000)});
      return stop() && status;
    }, error => error.message);
    assert.match(`${outcome} ${read(join(folder, "said"))}`, new RegExp(`^${expected}$`, "s"), line);
  }
});

test("diff tells what is new", each => {
  const save = (name, ...words) => write(name, run(["--scenario", ...words]).out);
  save("saved.json", "volume-low", "--json");
  const full = save("full.json", "healthy-eight-bays", "--json=full");
  save("other-language.json", "healthy-eight-bays", "--json=full", "--lang", "ja");
  write("odd-full.json", read(full).replace(/"state":"well"/, '"state":"odd"'));
  write("odd-saw.json", read(full).replace(/"free":\d+/, '"free":[]'));
  write("text.json", "{}");
  expectTable(each);
  assert.deepEqual(json("diff", "--lang", "en", join(folder, "saved.json"),
    "volume-low"), {a: "Volume 1: almost full", b: "Volume 1: almost full", changes: false, checks: [],
    sources: [], parts: []});
  assert.deepEqual(json("diff", "--lang", "en", "failing-ups", "unwatched-disks-and-ups").sources,
    [{about: "UPS", a: "could not be read", b: "nobody watches it"},
      {about: "disk health (SMART)", a: "read", b: "nobody watches it"}]);
});

test("findings is the page in the documentation", () => {
  const page = run(["findings", "--markdown", "--lang", "en"]).out;
  assert.equal(page, read(join(source, "docs/findings.md")),
    "run: vela-health findings --markdown --lang en > docs/findings.md");
  const rows = json("findings", "--lang", "de"), plain = run(["findings", "--lang", "de"]);
  assert.deepEqual([rows.length, plain.status], [page.match(/^## /gm).length, 0]);
  for (const {id, text, priority, title, meaning, ignored, do: remedy, how, where} of rows) {
    const name = `\n  Priorität ${String(priority).replace(".", ",")}, ${id}/${text}\n`;
    const typed = how.map(command => `\n       ${command}`).join("");
    for (const words of [`: ${title}\n`, meaning, ignored, `${remedy}${typed}\n`, where, name])
      assert.ok(plain.out.includes(words), words);
  }
});

test("the lab's names stand for the findings, each for one", () => {
  const known = json("findings").map(({type, id, text}) => `${type} ${id} ${text}`);
  const named = read(join(source, "tools/lab/guest/findings")).split("\n")
    .filter(line => /^\w/.test(line))
    .map(line => line.split(/ +/).slice(1).join(" ").replace(/ \w+:/, " "));
  assert.deepEqual(named.sort(), known.sort());
});

test("explain marks the comparisons that decided, of their own unit alone", () => {
  for (const [scenario, check, unit] of tables.decided) {
    const {checkers} = json("explain", "--scenario", scenario);
    const {saw} = checkers.find(({name}) => name === check);
    const compared = saw.volumes.flatMap(({compared}) => compared ?? []);
    const decided = compared.filter(({decides}) => decides);
    assert.ok(decided.length > 0, scenario);
    assert.deepEqual(decided, compared.filter(each => each.unit === unit && each.low), scenario);
  }
});

test("a command asks the machine once", () => {
  for (const [command, times] of tables.asked) {
    // Each look at the UPS fails, and is logged; so does each at the threshold.
    const looks = onTerminal(80, command).match(/SystemInfo\/(ups_status|vela_conf)_info/g);
    assert.equal(looks?.length, times, command);
  }
});

test("everything that explain names has a translation", () => {
  const texts = JSON.parse(read(join(source, "host/texts/explain/en.json")));
  const checkers = ["everything-at-once", "healthy"]
    .flatMap(name => json("explain", "--scenario", name).checkers);
  const inputs = checkers.flatMap(({saw}) => JSON.stringify(saw, (name, value) =>
    name === "compared" || name === "decides" ? undefined : value).match(/"[^"]+"(?=:)/g) ?? []);
  for (const {name} of checkers) assert.ok(texts.checker[name], name);
  for (const name of inputs.map(JSON.parse)) assert.ok(texts.input[name], name);
  assert.ok(checkers.length === 20 && new Set(inputs).size > 20);
});

// A code is what a machine's state or an answer calls something: not a name, not a message.
const isCode = key => /^(status|overview|overview_status|sysStatus|security scan|state)$/.test(key);
const strings = (value, keep, key = "") => typeof value !== "object" ? keep(key) ? [`${value}`] : []
  : Object.entries(value ?? {}).flatMap(([name, each]) =>
    strings(each, keep, Array.isArray(value) ? key : name));

test("no code of the module reaches a person in any language", () => {
  for (const [turn, name] of scenarios.entries()) {
    const {checkers} = json("explain", "--scenario", name), own = languages[turn % languages.length];
    const codes = strings(checkers.map(({saw}) => saw), isCode).filter(code => /^[\w ]+$/.test(code));
    const [state, {log}] = ["state", "expected"].map(file =>
      JSON.parse(read(join(source, "scenarios", name, `${file}.json`))));
    const names = strings([state, log], key => !isCode(key)).join();
    for (const language of process.env.VELA_SANITIZED ? [own] : languages) { // all take a minute there
      const texts = ["", "explain/"].map(folder =>
        JSON.parse(read(join(source, `host/texts/${folder}${language}.json`))));
      const {input} = texts[1], told = names + strings(texts, () => true).join();
      const labels = [input.status, input.overview, input["security scan"], input.state].join("|");
      const options = ["--scenario", name, "--lang", language];
      const shown = run(["explain", ...options]).out +
        (language === own ? run(["report", "-", ...options]).out : "")
          .replace(/<style>.*?<\/style>|<details.*?<\/details>|<code.*?<\/code>/gs, "");
      const coded = RegExp(`(${labels})\u00a0?[:：] ?(${["\\d+", ...codes].join("|")})( ·|\n|<)`);
      assert.doesNotMatch(shown, coded, `${name} ${language}`);
      const tokens = shown.match(/\p{L}+_[\p{L}_]+/gu) ?? [];
      assert.deepEqual(tokens.filter(token => !told.includes(token)), [], `${name} ${language}`);
    }
  }
});

test("the report has its checks behind its findings and what they rest on behind these", () => {
  const page = run(["report", "-", "--lang", "en", "--scenario", "array-degraded-and-volume-low"]).out;
  const parts = [">Why<", ">What to do<", ">The machine’s parts<", ">Disks<", ">Volumes<", ">Fans<",
    ">Further findings<", ">What was checked<", ">What was read<", "<details>"].map(each => page.indexOf(each));
  assert.deepEqual(parts, parts.toSorted((a, b) => a - b));
  assert.ok(parts[0] > 0);
});

test("report is one page in itself whatever names hold", () => expectAll(languages.map(language =>
  [`report - --scenario {folder}/hostile --lang ${language}`, 1,
    [`<html lang="${language}">`, ...tables.standsAlone.holds], tables.standsAlone.never])));

test("the report has the page's icons", () => {
  const page = read(join(source, "host/www/render.js"));
  for (const [look, name] of tables.icons) {
    const report = run(["report", "-", "--scenario", name]).out;
    const [shape, mark] =
      ["shape", "mark"].map(part => report.match(`class="${part}" d="([^"]+)"`)[1]);
    assert.ok(page.includes(`${look}: ["${shape}", "${mark}", `), look);
  }
});

test("report replaces a report and nothing else", each => {
  const precious = write("health.html.zip", "photos");
  expectTable(each);
  assert.equal(read(precious), "photos");
  assert.deepEqual(readdirSync(folder).filter(name => name.includes(".new-")), []);
});

test("capture makes a machine that answers the same or nothing", each => {
  mkdirSync(join(folder, "empty"));
  process.chdir(join(folder, "empty"));
  const [captured, here] = ["captured", "here"].map(name => join(folder, name));
  const full = write("full/precious", "here first");
  const saved = (of, name) => JSON.parse(read(join(of, name)));
  expectTable(each);
  assert.ok(!existsSync(join(folder, "new")) && read(full) === "here first");
  const answers = [hostile, captured].map(from => run(["--json", "--scenario", from]).out);
  assert.equal(answers[1], answers[0]);
  assert.deepEqual(saved(captured, "expected.json"), {...JSON.parse(answers[0]), log: null});
  assert.match(saved(captured, "state.json").why, /^Captured by .*Notice: /);
  assert.match(saved(join(folder, "blind"), "state.json").why, /: Not known: UPS\. 9 of 10 checks/);
  assert.equal(run(["capture", here, "--why", 'a "test"']).status, 0);
  assert.equal(saved(here, "state.json").why, 'a "test"');
  assert.deepEqual({...json("--scenario", here), log: null}, saved(here, "expected.json"));

  const aliased = saved(join(folder, "aliased"), "state.json");
  assert.deepEqual([aliased.hostName, aliased.sources.SMART.reason, aliased.notes, aliased.evidence],
    ["host-1", "nobody asks ata-serial-1 of host-1, nor WD-778",
      [{key: "a", part: "nasty", command: "upsc UPS-1@host-1"}],
      [{key: "k", check: "UPS", part: "UPS-1", words: "serial-3, node-1",
        mend: ["smartctl -x /dev/disk/by-id/ata-serial-1"]}]]);
  assert.deepEqual(aliased.parts.map(({name, serial}) => serial ?? name),
    ["serial-1", "serial-2", "serial-1", "UPS-1", "node-1", "serial-3", "LUN", "LUN 2", "LUN 3"]);
  assert.deepEqual(aliased.sources.SMART.also, [{remedy: "rm /x/serial-4", reason:
    "smartd has warned of disks that this machine does not have: serial-4 (Health), serial-5 (SelfTest), serial-6 (He"}]);
  assert.deepEqual(aliased.parts.flatMap(({path}) => path ?? []), ["wwn-id-1-part1", "scsi-SATA_WDC_X_id-2",
    "nvme-M_id-3_1"].map(name => `/dev/disk/by-id/${name}`));
  assert.equal(saved(join(folder, "aliased"), "expected.json").hostname, "host-1");
});

test("a terminal gets colours and lines that fit", () => {
  for (const [columns, words, environment, lines] of tables.terminals) {
    const shown = onTerminal(columns, `${words} --lang en`, environment);
    assert.ok(shown.includes(lines), shown);
    assert.equal(shown.includes("\x1b["), lines.includes("\x1b["), shown);
  }
  for (const language of languages) {
    const lines = onTerminal(80, `findings --lang ${language}`, "NO_COLOR=1").split("\n");
    const wide = lines.filter(line => line.replace(/[\u3000-\uffef]/g, "xx").length > 80);
    // East Asia's words need no blank between them, but some marks begin no line.
    assert.deepEqual(wide.concat(lines.filter(line => /^ *[、。，：；）」]|[（「]$/.test(line))),
      [], language);
    assert.ok(lines.some(line => line.replace(/[\u3000-\uffef]/g, "xx").length > 78), language);
  }
});

test("every command and option is in the manual and the completions", () => {
  const help = run(["--help"]).out;
  const commands = [...help.matchAll(/\n {2}([a-z]+) {2}/g)].map(([, name]) => name);
  const pages = [help, ...commands.map(name => run([name, "--help"]).out)];
  const words = new Set([...commands, ...pages.join().match(/--[a-z-]+/g)]);
  assert.ok(commands.length === 10 && words.has("--why") && words.has("--scenario"));
  const files = ["man/vela-health.1", "completion/vela-health.bash", "completion/_vela-health"];
  for (const file of files) {
    const text = read(join(source, "packaging", file)).replaceAll("\\", "");
    for (const word of words) assert.ok(text.includes(word), `${file} ${word}`);
  }
});
