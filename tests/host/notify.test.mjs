// vela-health notify, round by round: the real program over simulated machines, with hooks that
// write down what they are told.
import assert from "node:assert/strict";
import {spawn, spawnSync} from "node:child_process";
import {chmodSync, chownSync, existsSync, mkdirSync, readFileSync, readdirSync, rmSync, statSync,
  writeFileSync} from "node:fs";
import {join} from "node:path";
import test from "node:test";
import {folder, program, run, scenario, write} from "./support/program.mjs";

const danger = {storage: {overview: "danger"}};
const fan = {hardware: {fanFailed: true}};
const web = {webServer: {defaultConfiguration: 1, configurationApplies: false}};
const silentUps = {ups: {fails: true}};
const onBattery = {ups: {state: 2}};
const evidence = (check, ...causes) => ({evidence: causes.map(([key, part, related = [], words = ""]) =>
  ({check, key, part, figure: Math.floor(Math.random() * 9) + 1, mark: 9, related, words}))});
const unit = (...fans) => ({
  expansionUnits: {units: [{name: "VE500", slot: 0, number: 1, power: {result: 1, word: 0}}]},
  ...evidence("expansion units", ...fans.map(fan => ["unit_fan_failed", "VE500-1", [], fan]))});
const machines = {
  well: {}, danger, fan, fanAndWeb: {...fan, ...web}, silentUps, onBattery,
  both: {...danger, ...fan}, unit: unit("left"), unitTwice: unit("left", "right"),
  acceptedUps: {sources: {UPS: {state: "accepted", reason: "it is a loan", remedy: ""}}},
  lowAndSilent: {...silentUps, configuration: {settings: {sdcard_partition_warning_percent: "0.5"}},
    externalVolumes: {usb: [{name: "holiday", total: 64e9, free: 30e9, cardReader: true}]}},
  worn: {notes: [{key: "nvme_worn", part: "Disk 1", figure: 91, mark: 90}]},
  wornTwo: {notes: [1, 2].map(disk => ({key: "nvme_worn", part: `Disk ${disk}`, figure: 90, mark: 90}))},
  wornMore: {notes: [{key: "nvme_worn", part: "Disk 1", figure: 92, mark: 90}]},
  fan1: {...fan, ...evidence("system status", ["fan_slow", "Fan 1"])},
  fan1Again: {...fan, ...evidence("system status", ["fan_slow", "Fan 1"])},
  fans: {...fan, ...evidence("system status", ["fan_slow", "Fan 1"], ["fan_stopped", "Fan 2"])},
  fan1Stands: {...fan, ...evidence("system status", ["fan_stopped", "Fan 1"])},
  gone1: {...danger, ...evidence("storage overview", ["array_down", "md0", [{relation: "missing", part: "bay 1"}]])},
  gone2: {...danger, ...evidence("storage overview", ["array_down", "md0",
    [{relation: "missing", part: "bay 1"}, {relation: "missing", part: "bay 2"}]])},
  filling: {...danger, ...evidence("storage overview", ["array_down", "md0",
    [{relation: "missing", part: "bay 1"}, {relation: "rebuilding", part: "bay 2"}]])},
  hostile: {...fan, hostName: "nas\r\nBcc: thief@example.com", ...evidence("system status",
    ["fan_stopped", "Fan\r\nBcc: thief@example.com\n\n\u001b[31m"])},
};
for (const [name, state] of Object.entries(machines)) scenario(name, state);

let count = 0;
// A box with hooks: bash scripts by name. `told()`: what each hook wrote down since the last time.
function box(hooks) {
  const home = join(folder, `box${++count}`), state = join(home, "state");
  const hook = (name, script, mode = 0o755) => {
    mkdirSync(join(home, "hooks/every-round"), {recursive: true});
    writeFileSync(join(home, "hooks", name), `#!/bin/bash\ncd ${home}\n${script}\n`);
    chmodSync(join(home, "hooks", name), mode);
  };
  mkdirSync(join(home, "hooks/every-round"), {recursive: true});
  for (const [name, script] of Object.entries(hooks)) hook(name, script);
  const words = ["--hooks", join(home, "hooks"), "--state", state];
  const round = (machine, ...more) =>
    run(["notify", "--lang", "en", ...words, "--scenario", join(folder, machine), ...more]);
  const told = (file = "told") => {
    const path = join(home, file), text = existsSync(path) ? readFileSync(path, "utf8") : "";
    rmSync(path, {force: true});
    return text.split("\n").filter(line => line);
  };
  return {home, state, hook, words, round, told, file: join(state, "state.json")};
}
// "danger New: ...", a line a change.
const noting = (file = "told") =>
  `while IFS= read -r change; do echo "$VELA_EVENT $change" >> ${file}; done <<< "$VELA_CHANGES"`;
const short = lines => lines.map(line => line.replace(/^(\S+) (New|Cleared): (\w+).*/, "$1 $2"));

// Each row: the machines of the rounds, and what is told in each, "" where nothing is.
const stories = {
  "danger is told at once and anything else once it has held for two rounds": [
    ["well danger danger well well well", ",danger New,,,cleared Cleared,"],
    ["fan well fan fan fan well fan well well", ",,,warning New,,,,,cleared Cleared"],
    ["both both both danger danger", "danger New,warning New,,,cleared Cleared"],
    ["worn wornMore wornTwo wornTwo well well", ",note New,,note New,,cleared Cleared cleared Cleared"],
    ["lowAndSilent lowAndSilent", ",unread New unread New"],
    ["silentUps silentUps well well", ",unread New,,cleared Cleared"]],
  "parts make the difference and figures make none": [
    ["fan1 fan1Again fan1 fan1Again", ",warning New,,"],
    ["unit unit unitTwice unitTwice unitTwice", ",warning New,,warning New,"],
    ["fan1 fan1 fans fans fan1 fan1", ",warning New,,warning New,,cleared Cleared"],
    ["fan fan fan1 fan1 fan1 fan fan fan well well", ",warning New,,warning New,,,,,,cleared Cleared"],
    ["fan1 fan1 fan1Stands fan1Stands fan1Stands", ",warning New,,warning New,"],
    ["gone1 filling gone2 gone2 gone2", "danger New,,danger New,,"]],
  "what cannot be seen has not cleared": [
    ["onBattery onBattery silentUps silentUps silentUps well well",
      ",warning New,,unread New,,,cleared Cleared cleared Cleared"],
    ["onBattery onBattery acceptedUps acceptedUps", ",warning New,,cleared Cleared"],
    ["silentUps silentUps onBattery onBattery silentUps silentUps onBattery",
      ",unread New,,warning New warning Cleared,,unread New,"]],
};
for (const [name, rows] of Object.entries(stories)) stories[name] = () => {
  for (const [machines, expected] of rows) {
    const {round, told} = box({a: noting()});
    const said = machines.split(" ").map(machine => {
      assert.equal(round(machine).status, 0);
      return short(told()).join(" ");
    });
    assert.equal(said.join(), expected, machines);
  }
};
test("danger is told at once and anything else once it has held for two rounds", each => stories[each.name]());
test("parts make the difference and figures make none", each => stories[each.name]());
test("what cannot be seen has not cleared", each => stories[each.name]());

test("what comes and goes is soon told no more", () => {
  const {round, told} = box({a: noting()});
  const said = [];
  for (let i = 0; i < 12; ++i) said.push((round(i % 3 === 0 ? "danger" : "well"), short(told())));
  assert.deepEqual(said.flat(), ["danger New", "cleared Cleared", "danger New"]);
  for (let i = 0; i < 40; ++i) assert.equal(round("well").err, "");
  told();
  for (const machine of ["danger", "well", "well"]) round(machine);
  assert.deepEqual(short(told()), ["danger New", "cleared Cleared"]);
});

test("a hook that fails or hangs is tried again in order and holds up no other", () => {
  const {home, state, words, round, told, file} = box({
    "05-leaves": "sleep 986 >/dev/null 2>&1 & echo $! >> left",
    "10-fails": "[ -e works ] || exit 3\n" + noting("late"),
    "20-hangs": `[ -e works ] && { ${noting("hung")}; exit; }\n[ ! -e before ] || exit 1; touch before\n` +
      "(setsid sleep 987 & echo $! >> sleepers; sleep 987 & echo $! >> sleepers) >/dev/null 2>&1; sleep 987",
    "30-works": noting(), "40.off": noting(), "50~": noting(), "60-reads": "cat > answer"});
  writeFileSync(join(home, "hooks/70-data"), "#!/bin/sh\ntouch " + join(home, "data"));
  const first = round("danger", "--timeout", "3");
  assert.deepEqual([first.status, short(told())], [1, ["danger New"]]);
  assert.match(first.err, /10-fails .*status 3.*\n.*20-hangs .*3 seconds.*killed/);
  const sleepers = told("sleepers");
  assert.equal(sleepers.length, 2);
  for (const pid of told("left")) process.kill(pid);  // throws where another hook's end took it along
  for (const pid of sleepers) assert.ok(!existsSync(`/proc/${pid}`), `${pid} lives`);
  assert.ok(!existsSync(join(home, "data")));
  assert.equal(JSON.parse(readFileSync(join(home, "answer"))).verdict, "danger");
  round("well", "--timeout", "3");
  round("well", "--timeout", "3");
  assert.deepEqual(short(told()), ["cleared Cleared"]);
  const elsewhere = run(["notify", "--hooks", join(home, "typo"), ...words.slice(2),
    "--scenario", join(folder, "danger")]);  // says so, and forgets nothing
  write(`box${count}/works`, "");
  assert.equal(round("well").status, 0);
  for (const late of ["late", "hung"])
    assert.deepEqual(short(told(late)), ["danger New", "cleared Cleared"]);
  assert.match(`${elsewhere.status} ${elsewhere.err}`, /^66 .*Cannot read the hooks in .*typo.*--hooks/);
  assert.deepEqual(JSON.parse(readFileSync(file)).messages, {});
  assert.deepEqual(readdirSync(state), ["state.json"]);
});

test("of too many messages the oldest are left out and counted", () => {
  const {home, round, told, file} = box({
    a: '[ -e works ] || exit 1\necho "$VELA_ID $VELA_LEFT_OUT ${VELA_MESSAGE%%[.$\'\\n\']*}" >> told'});
  for (let i = 0; i < 18; ++i) {
    scenario("many", {...danger, ...evidence("storage overview", ["array_down", `md${i}`])});
    round("many");
    // In one step, that it is told and what is told: a power failure in between loses nothing.
    assert.equal(JSON.parse(readFileSync(file)).saved, i + 1);
  }
  writeFileSync(join(home, "works"), "");
  round("many");
  const lines = told().map(line => line.split(".")[1]);
  assert.equal(lines[0], "4 3 Earlier messages that could not be delivered and were left out: 3");
  assert.equal(lines.length, 16);
  assert.match(lines[15], /^19 {2}Danger/);
});

test("without an answer and without an end it tells that nobody knows", () => {
  const {state, words, round, told} = box({a: noting(), "every-round/b": 'echo "$VELA_ANSWERED $VELA_WAITING" >> pings'});
  round("danger");
  const blind = () => run(["notify", "--lang", "en", ...words, "--module", "/nowhere.so"]);
  assert.deepEqual([blind().status, blind().status], [69, 69]);
  assert.deepEqual(short(told()), ["danger New", "unknown New"]);
  assert.deepEqual(told("pings"), ["1 0", "0 0", "0 0"]);
  round("well"), round("well");
  assert.deepEqual(short(told()), ["cleared Cleared", "cleared Cleared"]);
  for (let i = 0; i < 2; ++i) writeFileSync(join(state, "asking"), ""), round("well");
  assert.deepEqual(short(told()), []);  // the next look was whole
  writeFileSync(join(state, "asking"), ""), blind();  // a round without an end, one without an answer
  assert.deepEqual(short(told()), ["unknown New"]);
  assert.equal(round("nowhere").status, 66);
  assert.deepEqual(readdirSync(state), ["state.json"]);
});

test("a state that is damaged or cannot be kept is said and costs no message", () => {
  const {home, state, words, round, told, file} = box({a: noting() + '\necho "$VELA_SUBJECT" >> subject'});
  for (const machine of ["fan", "fan"]) round(machine);
  const good = JSON.parse((told(), told("subject"), readFileSync(file)));
  for (const damage of ["", "{", "[]", JSON.stringify({...good, version: 2}),
    JSON.stringify({...good, items: [{kind: 9}]}), JSON.stringify({...good, hooks: {a: {waiting: [99]}}})]) {
    writeFileSync(file, damage);
    const {status, err} = round("fan");
    assert.deepEqual([status, short(told())], [0, ["warning New"]], damage);
    assert.match(err, /Cannot read .*state\.json: it is damaged/, damage);
  }
  if (process.getuid() === 0) {  // run once by hand, it leaves a file that the service can read
    chownSync(state, 65534, 65534), round("well");
    assert.equal(statSync(file).uid, 65534);
  }
  told("subject");
  writeFileSync(file, "{"), round("well");
  assert.match(told("subject").join(), /could not be read .*state\.json/);
  // Neither place takes it: told in each round, and at once, since no later one would know.
  const blocked = ["notify", "--lang", "en", ...words.slice(0, 2), "--state", join(file, "below")];
  told();
  assert.equal(run([...blocked, "--scenario", join(folder, "fan")]).status, 73);
  assert.deepEqual(short(told()), ["warning New"]);
  const units = {STATE_DIRECTORY: join(file, "below"), RUNTIME_DIRECTORY: home};
  for (const status of [0, 0, 0])
    assert.equal(run([...blocked.slice(0, -2), "--scenario", join(folder, "fan")], units).status, status);
  assert.deepEqual(short(told()), ["warning New"]);
});

test("two at the same time tell once", async () => {
  const {words, round, told} = box({a: "sleep 0.3\n" + noting()});
  round("well");
  const all = [1, 2, 3].map(() => new Promise(resolve =>
    spawn(program, ["notify", ...words, "--scenario", join(folder, "danger")]).on("exit", resolve)));
  assert.deepEqual(await Promise.all(all), [0, 0, 0]);
  assert.deepEqual(short(told()), ["danger New"]);
});

test("the test goes to every hook and says how each fared", () => {
  const {state, round, told} = box({a: 'echo "$VELA_EVENT $VELA_VERDICT" >> told', "b-off": "exit 77"});
  const sample = round("danger", "--test");
  assert.deepEqual([sample.status, sample.out, told()],
    [0, "a: told\nb-off: switched off, its settings name no target\n", ["test danger"]]);
  assert.ok(!existsSync(state));
  const broken = box({a: noting(), c: "kill -9 $$", "every-round/d": "exit 1"}).round("well", "--test");
  assert.equal(broken.status, 1);
  assert.match(broken.out, /^a: told\nc: failed, signal 9.*\nevery-round\/d: failed, .*status 1\n$/);
  assert.equal(box({b: "exit 77"}).round("well", "--test").status, 1);
  assert.equal(round("well", "--timeout", "0").status, 64);
});

test("no name reaches a hook with a line end of its own", () => {
  const {round, told} = box({a: "env | grep -cE $'^Bcc|\\e' >> told\n" +
    "[[ $VELA_SUBJECT$VELA_HOST$VELA_SENTENCE != *[[:cntrl:]]* ]] && echo clean >> told"});
  round("hostile"), round("hostile");
  assert.deepEqual(told(), ["0", "clean"]);
  for (const start of ["", "x"]) {  // a long one is cut between two characters
    scenario("long", {...danger, hostName: start + "ü".repeat(120)});
    const long = box({a: 'iconv -f utf-8 -t utf-8 <<< "$VELA_SUBJECT" >> told'});
    long.round("long");
    assert.match(long.told().join(), /^x?ü{99,100}…$/);
  }
});
