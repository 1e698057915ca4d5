// What each command prints and its exit status: the real program over the real module and
// simulator.
import assert from "node:assert/strict";
import {spawnSync} from "node:child_process";
import {existsSync, mkdirSync, readFileSync, readdirSync} from "node:fs";
import {join} from "node:path";
import test from "node:test";
import {build, folder, languages, program, run, scenario, source, write} from "./support/program.mjs";

const read = file => readFileSync(file, "utf8");
const failing = readdirSync(join(source, "scenarios")).filter(name => name.startsWith("failing-"));

// Each row: words of the command line, exit status, what the output must hold and what it must not.
function expectAll(rows) {
  for (const [words, status, holds, never = []] of rows) {
    const {status: ended, out, err} = run(words);
    const said = `${words.join(" ")}\n${out}${err}`;
    assert.equal(ended, status, said);
    if (status < 64) assert.equal(err, "", said);
    else assert.equal(out, "", said);
    for (const part of [holds].flat()) assert.ok((out + err).includes(part), `${said}\nhas no ${part}`);
    for (const part of [never].flat()) assert.ok(!(out + err).includes(part), `${said}\nhas ${part}`);
  }
}

// The same on a terminal of that many columns, which shows the system log's lines, too.
const onTerminal = (columns, words, environment = "") =>
  spawnSync("script", ["-qec", `stty cols ${columns}; ${environment} ${program} ${words}`, "/dev/null"],
    {encoding: "utf8", env: {...process.env, TERM: "xterm"}}).stdout.replaceAll("\r\n", "\n");

test("the exit status tells the verdict", () => expectAll([
  [["--scenario", scenario("well", {}), "--lang", "en"], 0,
    "Healthy: Everything is working well.\n  9 of 9 sources read, 2 not on this machine · vela · up 26 h 3 min\n"],
  [["--scenario", "volume-low", "--lang", "en"], 1, "Notice: Volume 1: almost full\n  What to do: Empty"],
  [["--scenario", scenario("fan", {hardware: {fanFailed: true}}), "--lang", "en"], 1,
    "Warning: A system fan has failed.\n  What to do: "],
  [["--scenario", scenario("scan", {securityScan: {sysStatus: "danger"}}), "--lang", "en"], 2,
    "Danger: The security scan found a serious problem.\n  What to do: "],
  [["status", "--scenario", scenario("ups", {ups: {fails: true}}), "--lang", "en"], 3,
    "Healthy as far as could be read.\n  Could not read UPS: asking for the UPS failed, as the scenario says\n  8 of 9"],
  [["--scenario", scenario("both", {hardware: {fanFailed: true}, ups: {fails: true}}), "--lang", "en"], 1,
    ["Warning: A system fan", "Could not read UPS: "]],
]));

test("a finding is judged by id and type together and an answer by what it lacks", () => {
  const rule = (type, id, more) => ({type, id, priority: 30,
    description: {description_format: "{0}", description_params: ["widget:fan_fail"], description_use_formatted: false}, ...more});
  const saved = rule => write("saved.json", typeof rule === "string" ? rule
    : JSON.stringify({rule, hostname: "nas", uptime: "1:2:3", interfaces: [{id: "eth0", ip: "10.0.0.2", type: "lan"}]}));
  for (const [answer, status, words] of [
    [rule(0, "san_status_warning"), 2, ": Danger: A system fan"], [rule(1, "system_health"), 1, ": Warning: "],
    [rule(2, "volume_usage"), 1, ": Notice: "], [rule(2, "system_health"), 0, ": Healthy: "],
    ["{", 66, "not JSON"], ["[]", 66, '"type"'], ["{}", 66, '"type"'], [7, 66, '"type"'],
    [rule(3, "x"), 66, '"type" is not 0, 1 or 2'], [rule(-1, "x"), 66, '"type"'], [rule("1", "x"), 66, '"type"'],
    [rule(1, "x", {priority: "2"}), 66, '"priority" is not a number'], [rule(1, 5), 66, '"id" is not a text'],
    [rule(1, "x", {description: {}}), 66, '"description_format"'],
    [rule(1, "x", {description: {description_format: "{0}", description_params: [5]}}), 66, '"description_params"'],
    [rule(1, "x", {description: {description_format: "{0}", description_params: []}}), 66, '"description_use_formatted"'],
  ]) expectAll([[["diff", "healthy", saved(answer), "--lang", "en"], status, words]]);
});

test("the option for the language comes before the environment and English last", () => {
  const healthy = {en: "Healthy", de: "Gesund", fr: "En bonne santé", es: "Sano", ja: "正常", "zh-CN": "健康"};
  for (const [locale, language, option] of [["de", "de"], ["de_AT.UTF-8", "de"], ["FR-ca", "fr"], ["ja_JP@x", "ja"],
    ["zh_TW", "zh-CN"], ["C", "en"], ["den", "en"], ["de", "es", "ES"], ["", "es"], ["POSIX", "en"]]) {
    const environment = {LC_ALL: locale, LC_MESSAGES: "es_ES.UTF-8", LANG: "de_DE.UTF-8"};
    const {out} = run(["--scenario", "healthy", ...(option ? ["--lang", option] : [])], environment);
    assert.ok(out.startsWith(healthy[language]), `${locale} ${option}: ${out}`);
  }
});

test("what could not be read is named and never called healthy", () => {
  assert.ok(failing.length > 5);
  for (const name of failing) {
    const {status, out} = run(["--scenario", name, "--lang", "en"]);
    assert.equal(status === 3, out.startsWith("Healthy as far as could be read.\n"), `${name}\n${out}`);
    assert.match(out, /\n {2}Could not read /, name);
  }
});

test("json is the document on one line and nothing else", () => {
  const {status, out, err} = run(["status", "--json", "--scenario", "healthy"]);
  assert.deepEqual([status, err, out.indexOf("\n")], [0, "", out.length - 1]);
  assert.ok(out.startsWith('{"hostname":"vela","interfaces":[{') && out.includes('"priority":40.0,'), out);
  assert.equal(run(["--json", "--scenario", "system-fan-failed"]).status, 1);
});

test("what cannot be asked is said with what to do", () => expectAll([
  [["--platform", "/nowhere/x.so"], 69, ["the platform /nowhere/x.so", "no such file"]],
  [["--platform", write("text.so", "no library")], 69, ["/text.so", "not a shared library"]],
  [["--platform", "simulator", "--module", "/nowhere/m.so"], 69, ["the module /nowhere/m.so", "--module"]],
  [["--platform", "simulator", "--module", join(build, "platform/simulator/libvela-platform-simulator.so")], 69,
    ["GetAPITable", "--module"]],
  [["--platform", "simulator", "--module", join(build, "tests/host/libhalf_module.so")], 69,
    ["the function VELANobodyHasThis, which it needs"]],
  [["--platform", join(build, "tests/host/libhalf_platform.so")], 69, ["the module", "which it needs"]],
  [["--platform", "linux", "--scenario", "healthy"], 64, ["real machine's", "Leave --platform out"]],
  [["--scenario", ""], 64, ["--scenario", "no name"]],
  [["--scenario", "no-such-machine"], 66, ["no-such-machine", "All names: ls ", "scenarios"]],
  [["--scenario", "cpu-fan"], 66, "There is: cpu-fan-"],
  [["--scenario", write("bad/state.json", '{"why": ".",\n "fanFailed": true}')], 66, ["state.json:2", "fanFailed"]],
  [["--lang", "tlh"], 64, ["tlh", "--lang"]],
  [["--wrong"], 64, ["--wrong", "Usage: vela-health [", "Subcommands: status ", "--help"]],
  [["diff", "healthy"], 64, ["B is required", "Usage: vela-health diff [OPTIONS] A B"]],
  [["status", "--markdown"], 64, ["--markdown", "Usage: vela-health status [OPTIONS]"]],
  [["serve", "--listen", "0.0.0.0:0"], 64, ["0.0.0.0", "--allow-remote"]],
]));

test("libraries may be named in the environment", () => {
  const platform = {VELA_HEALTH_PLATFORM: "simulator"};
  assert.equal(run([], platform).status, 0);
  assert.equal(run([], {...platform, VELA_HEALTH_MODULE: "/nowhere"}).status, 69);
});

test("diff tells what is new", () => {
  const saved = write("saved.json", run(["--json", "--scenario", "volume-low"]).out);
  const cluster = {highAvailability: {running: true, status: "danger"}}, fan = {hardware: {fanFailed: true}};
  const scan = {securityScan: {sysStatus: "danger"}}, battery = {ups: {status: "battery"}};
  const one = scenario("one", {...fan, ...cluster}), more = scenario("more", {...fan, ...cluster, ...scan});
  const diff = ["diff", "--lang", "en"];
  expectAll([
    [[...diff, "healthy", "volume-low"], 1,
      "The verdict changes\n  healthy: Healthy: Everything is working well.\n  volume-low: Notice: Volume 1: almost full\n"],
    [[...diff, "volume-low", "healthy"], 0, "The verdict changes", "+"],
    [[...diff, saved, "volume-low"], 1, "Nothing changes: Notice: Volume 1: almost full\n", "+"],
    [[...diff, "system-fan-failed", one], 1,
      "Nothing changes: Warning: A system fan has failed.\n+ Warning: The high-availability cluster is not protected. (less urgent)\n"],
    [[...diff, one, more], 2, "Danger: The security scan", "+"],
    [[...diff, "healthy", scenario("unread", {ups: {fails: true}})], 3, "Nothing changes: Healthy"],
    [[...diff, write("text.json", "{}"), "healthy"], 66, ["text.json: ", "not an answer"]],
    [[...diff, "healthy", "no-such"], 66, "no-such"],
  ]);
  assert.equal(run([...diff, "--json", "healthy", "volume-low"]).out,
    '{"a":"Everything is working well.","b":"Volume 1: almost full","changes":true}\n');
});

test("findings is the page in the documentation", () => {
  const page = run(["findings", "--markdown", "--lang", "en"]).out;
  assert.equal(page, read(join(source, "docs/findings.md")),
    "run: vela-health findings --markdown --lang en > docs/findings.md");
  const rows = JSON.parse(run(["findings", "--json", "--lang", "de"]).out), plain = run(["findings", "--lang", "de"]);
  assert.deepEqual([rows.length, plain.status], [page.match(/^## /gm).length, 0]);
  for (const {id, text, priority, title, meaning, ignored, do: remedy, where} of rows) {
    assert.ok(plain.out.includes(`  ${title}  Priorität ${priority}, ${id}/${text}\n`), title);
    for (const words of [meaning, ignored, remedy, where]) assert.ok(plain.out.includes(words), words);
  }
});

test("the lab's names stand for the findings, each for one", () => {
  const known = JSON.parse(run(["findings", "--json"]).out).map(({type, id, text}) => `${type} ${id} ${text}`);
  const named = read(join(source, "tools/lab/guest/findings")).split("\n").filter((line) => /^\w/.test(line))
    .map((line) => line.split(/ +/).slice(1).join(" ").replace(/ \w+:/, " "));
  assert.deepEqual(named.sort(), known.sort());
});

test("explain marks the comparisons that decided, of their own unit alone", () => {
  for (const [scenario, check, unit] of [["two-volumes-inodes-low", "volume usage", "inodes"],
    ["volume-low", "volume usage", "bytes"], ["san-lun-soft-limit", "SAN", "bytes"]]) {
    const {checkers} = JSON.parse(run(["explain", "--json", "--scenario", scenario]).out);
    const compared = checkers.find(({name}) => name === check).saw.volumes.flatMap(({compared}) => compared ?? []);
    const decided = compared.filter(({decides}) => decides);
    assert.ok(decided.length > 0, scenario);
    assert.deepEqual(decided, compared.filter((each) => each.unit === unit && each.low), scenario);
  }
});

test("explain shows every check and what decided", () => expectAll([
  ["fan-failed-and-cluster-trouble", "en", 1, [
    "Volume usage: nothing to report\n    model without disk bays: no\n",
    "System status: A system fan has failed. (Warning, priority 0)\n  ▸ fan failed: yes\n", "  ▸ status: danger\n",
    "Why this one\n  1. A system fan has failed. (System status, priority 0)\n  2. The high-availability cluster",
    "  0 beats 0.5: "]],
  ["volume-low", "en", 1, [
    "  ▸ volume 1 – 93.1\u00a0GiB free of 3.3\u00a0TiB: below the mark of 168\u00a0GiB (5\u00a0%)\n",
    "\n    Disk 1, Disk 2, Disk 3, Disk 4, ", "It is the only finding."], "inodes"],  // which nobody looked at
  ["supply-failed-here-and-in-a-unit", "de", 1,
    ["Beide haben Priorität 3.9: ", "Zustand des Systems kommt vor Erweiterungseinheiten"]],
  ["san-lun-crashed", "fr", 2, ["  ▸ LUN-1 – état\u00a0: Unhealthy\n", "    LUN-2 – "]],
  ["two-volumes-inodes-low", "en", 1, [
    "  ▸ volume 1, 3 – 40 of 1\u202f000 inodes free: below the mark of 50 (5\u00a0%)\n",
    "    volume 2 – 230\u202f000\u202f000 of ", "inodes free: enough, the mark is 12\u202f000\u202f000 ("]],
  ["healthy", "es", 0, "Ninguna comprobación encontró nada."],
  ["failing-everything", "ja", 3, "UPS を読み取れませんでした"],
].map(([name, language, ...rest]) => [["explain", "--lang", language, "--scenario", name], ...rest])));

test("a command asks the machine once", () => {
  const one = "--scenario failing-everything", both = "failing-everything failing-everything";
  const captured = join(folder, "asked");
  const asked = [["status", one, 1], ["explain", one, 1], ["explain --json", one, 1], ["report -", one, 1],
    [`capture ${captured}`, one, 1], ["diff", both, 2]];
  for (const [command, machine, times] of asked) {
    const log = onTerminal(80, `${command} ${machine}`);  // each look at the UPS fails, and is logged
    assert.equal(log.match(/SystemInfo\/ups_status_info/g)?.length, times, `${command}\n${log}`);
  }
});

test("everything that explain names has a translation", () => {
  const names = new Map([["checker", new Set()], ["input", new Set()]]);
  const collect = saw => Object.entries(saw).forEach(([name, value]) => {
    if (["compared", "decides"].includes(name)) return;
    if (!Array.isArray(saw)) names.get("input").add(name);
    if (value !== null && typeof value === "object") collect(value);
  });
  for (const name of ["everything-at-once", "healthy"]) {
    for (const check of JSON.parse(run(["explain", "--json", "--scenario", name]).out).checkers) {
      names.get("checker").add(check.name);
      collect(check.saw);
    }
  }
  const texts = JSON.parse(read(join(source, "host/texts/explain/en.json")));
  for (const [section, found] of names)
    for (const name of found) assert.ok(texts[section][name], `${section} ${name}`);
  assert.equal(names.get("checker").size, 10);
  assert.ok(names.get("input").size > 20);
});

const hostile = scenario("hostile", {
  hostName: "</title><script>\"'&\u001b[2J",
  network: {interfaces: [{name: "<img src=x>", address: "\u202e\"onload=\"a"}]},
  externalVolumes: {usb: [{name: "<b>{1}'صور\u001b[2J", total: 100, free: 1}]},
});

test("no name reaches the terminal with its control characters", () => expectAll(
  [["status", "<script>"], ["explain"], ["diff", "healthy", hostile]].map(([command, ...rest]) =>
    [[command, "--lang", "en", ...(command === "diff" ? rest : ["--scenario", hostile])], 1,
      ["<b>{1}'صور\ufffd[2J", ...(command === "status" ? rest : [])], ["\u001b", "\u202e"]])));

test("report is one page in itself whatever names hold", () => expectAll(languages.map(language =>
  [["report", "-", "--scenario", hostile, "--lang", language], 1,
    [`<html lang="${language}">`, "&lt;/title&gt;&lt;script&gt;&quot;&#39;&amp;", "1\u00a0B",
      '<h1 class="sentence">&lt;b&gt;{1}&#39;صور'],
    ["<script", "<img", "<b>{1}", "\u001b", '"onload', "http:", "https:", 'src="', "url(", "@import", "ui:"]])));

test("report holds findings and checks and sources and the document", () => expectAll([
  [["report", "-", "--scenario", "everything-at-once", "--lang", "en"], 2, [
    "Your data is in danger", "What it means", "If ignored", "What to do", "Further findings", "1 LUN has crashed.",
    "-2.2 beats -2.1", 'class="decides">volume 1', "11 of 11 sources", "<td>high availability</td>", '<tr class="is-read">',
    "<bdi>vela</bdi>", "Checked on 2", "192.168.1.20", "&quot;hostname&quot;: &quot;vela&quot;"]],
  [["report", "-", "--scenario", "failing-ups", "--lang", "en"], 3,
    [">Could not read UPS: asking for the UPS failed", '<tr class="is-failed">', '<tr class="is-absent">']],
]));

test("the report has the page's icons", () => {
  const page = read(join(source, "host/www/render.js"));
  for (const [look, name] of [["danger", "storage-danger"], ["warning", "one-supply-failed"],
    ["notice", "volume-low"], ["well", "healthy"], ["notice", "failing-everything"]]) {
    const report = run(["report", "-", "--scenario", name]).out;
    const [shape, mark] = ["shape", "mark"].map(part => report.match(`class="${part}" d="([^"]+)"`)[1]);
    assert.ok(page.includes(`${look}: ["${shape}", "${mark}"]`), look);
  }
});

test("report replaces a report and nothing else", () => {
  const file = join(folder, "health.html"), precious = write("health.html.zip", "photos");
  const report = to => ["report", to, "--lang", "en", "--scenario", "healthy"];
  expectAll([[report(file), 0, file], [report(file), 0, file], [report(precious), 73, "is no report"],
    ...[folder, "/nowhere/x"].map(to => [report(to), 73, ["Cannot write", to]])]);
  assert.equal(read(precious), "photos");
  assert.deepEqual(readdirSync(folder).filter(name => name.includes(".new-")), []);
});

test("what does not fit on the disk is said and leaves nothing", () => {
  for (const [command, to] of [["capture", join(folder, "large")], ["report", join(folder, "large.html")]]) {
    const words = `ulimit -f 0; exec ${program} ${command} ${to} --scenario volume-low`;
    const {status, stderr} = spawnSync("bash", ["-c", words], {encoding: "utf8", env: {...process.env, LC_ALL: "C"}});
    assert.deepEqual([status, /Cannot write .*: File too large/.test(stderr)], [73, true], stderr);
  }
  assert.deepEqual(readdirSync(folder).filter(name => name.includes("large")), []);
});

test("capture makes a machine that answers the same or nothing", () => {
  mkdirSync(join(folder, "empty"));
  process.chdir(join(folder, "empty"));
  const captured = join(folder, "captured"), full = write("full/precious", "here first");
  const capture = (to, ...more) => ["capture", to, "--lang", "en", ...more];
  expectAll([
    [capture(captured, "--scenario", hostile), 0, [`vela-health --scenario ${captured}\n`, "host name"]],
    [capture(captured), 73, "there already"], [capture(full), 73, "there already"],
    [capture("/nowhere/new"), 73, "No such file"], [capture("."), 73, "current folder"],
    [capture(join(folder, "new"), "--scenario", "no-such"), 66, "no-such"],
    [capture(join(folder, "new"), "--module", "/nowhere"), 69, "/nowhere"],
  ]);
  assert.ok(!existsSync(join(folder, "new")) && read(full) === "here first");
  const answers = [hostile, captured].map(from => run(["--json", "--scenario", from]).out);
  assert.equal(answers[1], answers[0]);
  assert.deepEqual(JSON.parse(read(join(captured, "expected.json"))), {...JSON.parse(answers[0]), log: null});
  assert.match(JSON.parse(read(join(captured, "state.json"))).why, /^Captured by .*Notice: /);
  const here = join(folder, "here");
  assert.equal(run(["capture", here, "--why", 'a "test"']).status, 0);
  assert.equal(JSON.parse(read(join(here, "state.json"))).why, 'a "test"');
  assert.deepEqual({...JSON.parse(run(["--json", "--scenario", here]).out), log: null},
    JSON.parse(read(join(here, "expected.json"))));
});

test("a terminal gets colours and lines that fit", () => {
  const shown = onTerminal(40, "--scenario volume-low --lang en");
  assert.ok(shown.startsWith("\x1b[1;36m◆ Notice\x1b[0m: \x1b[1mVolume 1: almost full\x1b[0m\n" +
    "  What to do: Empty the recycle bins,\n  delete old snapshots, or enlarge the\n  volume.\n\x1b[2m  9 of 9"), shown);
  for (const [name, start] of [["storage-danger", "1;31m✖ Danger"], ["one-supply-failed", "1;33m▲ Warning"],
    ["healthy", "1;32m● Healthy"]])
    assert.ok(onTerminal(80, `--lang en --scenario ${name}`).startsWith(`\x1b[${start}\x1b[0m: `), name);
  for (const plain of ["NO_COLOR=1", "TERM=dumb"]) {
    assert.ok(!onTerminal(80, "--scenario volume-low", plain).includes("\x1b["), plain);
  }
});

test("every command and option is in the manual and the completions", () => {
  const help = run(["--help"]).out;
  const commands = [...help.matchAll(/\n {2}([a-z]+) {2}/g)].map(([, name]) => name);
  const pages = [help, ...commands.map(name => run([name, "--help"]).out)];
  const words = new Set([...commands, ...pages.join().match(/--[a-z-]+/g)]);
  assert.equal(commands.length, 7);
  assert.ok(words.has("--why") && words.has("--scenario"));
  for (const file of ["man/vela-health.1", "completion/vela-health.bash", "completion/_vela-health"]) {
    const text = read(join(source, "packaging", file)).replaceAll("\\", "");
    for (const word of words) assert.ok(text.includes(word), `${file} ${word}`);
  }
});
