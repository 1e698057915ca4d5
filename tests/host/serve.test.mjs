// `vela-health serve` on real sockets: what it answers, to whom, and what it refuses.
import assert from "node:assert/strict";
import {spawnSync} from "node:child_process";
import {readFileSync, readdirSync} from "node:fs";
import {connect} from "node:net";
import {hostname} from "node:os";
import {join} from "node:path";
import test from "node:test";
import {gunzipSync} from "node:zlib";
import {setTimeout as sleep} from "node:timers/promises";
import {ask, run, scenario, serve, source} from "./support/program.mjs";

const cases = JSON.parse(readFileSync(join(source, "tests/host/serve.json"), "utf8"));
const kGet = "/api/VELA.Core.System.SystemHealth/1/get";
const kProblem = "application/problem+json";
const statusOf = async (port, path, more) => (await ask(port, path, more)).status;
const healthy = (...more) => serve("--scenario", "healthy", ...more);

const client = (port, more) => connect({host: "127.0.0.1", port, ...more}).on("error", () => {});
// Sends the text as it is; the whole answer, once the server closes.
const exchange = (port, text) => new Promise(resolve => {
  let answer = "";
  client(port).setEncoding("latin1").on("data", data => { answer += data; })
    .on("close", () => resolve(answer)).write(text);
});

test("the document is the module's, and other paths name what exists", async () => {
  const {port} = await healthy();
  const {status, headers, body} = await ask(port, kGet);
  assert.deepEqual([status, headers["content-type"], headers["cache-control"]],
    [200, "application/json", "no-store"]);
  assert.equal(`${body}\n`, run(["--json", "--scenario", "healthy"]).out);
  for (const path of cases.unknown) {
    const wrong = await ask(port, `/api/VELA.Core.System.${path}`);
    assert.deepEqual([wrong.status, wrong.headers["content-type"]], [404, kProblem], path);
    assert.equal(JSON.parse(wrong.body).available[0], kGet);
  }
});

test("metrics count each request, and seconds", async () => {
  const machine = scenario("slow", {hardware: {delay: 300, fanFailed: true}});
  const {port} = await serve("--scenario", machine);
  const first = ask(port, kGet);
  await sleep(100);
  await Promise.all([first, ...[1, 2, 3].map(() => ask(port, kGet))]);  // these share a query
  const lines = (await ask(port, "/metrics")).body.split("\n");
  const metric = name => Number(lines.find(line => line.startsWith(`${name} `))?.split(" ").at(-1));
  assert.equal(metric("vela_health_answers_total"), 5);
  const seconds = metric("vela_health_answer_seconds_sum");
  assert.ok(seconds >= 0.3 && seconds < 100, String(seconds));
  assert.equal(metric("vela_health_answer_seconds_count"), 3);
});

test("the page and nothing else of the disk is served, guarded", async () => {
  const {port} = await healthy();
  for (const path of [...cases.served, ...cases.missing]) {
    const {status, headers, body} = await ask(port, path);
    assert.equal(status, cases.served.includes(path) ? 200 : 404, path);
    assert.match(headers["content-security-policy"], /^default-src 'none'; script-src 'self'/);
    assert.deepEqual(["x-content-type-options", "referrer-policy", "cross-origin-resource-policy"]
      .map(name => headers[name]), ["nosniff", "no-referrer", "same-origin"], path);
    assert.notEqual(body, "", path);
  }
});

test("the complete answer is in the language that was asked for", async () => {
  const machine = scenario("two", {hardware: {fanFailed: true}, ups: {fails: true}});
  const {port} = await serve("--scenario", machine);
  for (const [query, accepted, language] of cases.languages) {
    const {status, headers, body} = await ask(port, `/v1/health${query}`,
      {headers: accepted === null ? {} : {"accept-language": accepted}});
    const answer = JSON.parse(body), told = `${query} ${accepted} ${body}`;
    if (language === null) {
      assert.deepEqual([status, headers["content-type"], answer.available],
        [400, kProblem, ["en", "de", "fr", "es", "ja", "zh-CN"]], told);
      continue;
    }
    assert.deepEqual([status, headers["content-type"], headers["content-language"], headers.vary,
      headers["cache-control"]], [200, "application/json", language, "Accept-Language, Accept-Encoding", "no-store"]);
    const printed = run(["--json=full", "--scenario", machine, "--lang", language]);
    assert.deepEqual({...answer, time: ""}, {...JSON.parse(printed.out), time: ""}, told);
    assert.ok(Math.abs(Date.parse(answer.time) - Date.now()) < 100_000, answer.time);
    assert.deepEqual([answer.language, answer.exit_status], [language, printed.status]);
    assert.deepEqual(answer.document, JSON.parse((await ask(port, kGet)).body));
  }
});

test("the complete answer tells what the platform told and nothing that it did not", async () => {
  const {state, ...told} = cases.told;
  const {port} = await serve("--scenario", scenario("told", state));
  const answer = JSON.parse((await ask(port, "/v1/health?lang=en")).body);
  const own = list => list.map(({text, ...raw}) => raw);
  const {parts, evidence, notes, findings: [{id, check, why, commands, advice, sentence}, second]} = answer;
  const source = answer.sources.find(({name}) => name === "SAN");
  assert.deepEqual({source, parts, evidence: own(evidence), why: own(why), notes}, told);
  assert.deepEqual([check, second.check, second.why], ["system status", "high availability", []]);
  assert.equal(answer.checks.find(({name}) => name === check).text, sentence);
  const known = JSON.parse(run(["findings", "--json", "--lang", "en"]).out).find(each => each.id === id);
  for (const key of ["do", "how", "meaning", "ignored", "where"])
    assert.deepEqual(advice[key], known[key], key);
  assert.deepEqual([commands, second.commands],
    [why.flatMap(({mend}) => mend), second.advice.how], "copies nothing, names what mends");
  assert.deepEqual([why[0].text, why[1].text], [evidence[0].text, evidence[2].text]);
  assert.match(evidence[0].text.join(), /^k \(s \(bay b.*\), 6, 7\),r: x,/);
  const san = answer.checks.find(({name}) => name === "SAN");
  assert.ok(san.seen.some(line => line.startsWith("Volume 7 – 373")), san.seen.join());
  const outcomes = answer.checks.map(({outcome}) => outcome);
  assert.deepEqual(["finding", "not_made", "accepted", "nothing"].map(each =>
    outcomes.filter(outcome => outcome === each).length), [2, 1, 1, 6]);
  assert.equal(answer.coverage, "8 of 10 checks made");
  assert.equal(answer.uptime, 93784);
});

test("a browser gets a page about what is wrong and a program the problem", async () => {
  const {port} = await healthy();
  for (const [path, {method, host}, status, words] of cases.pages) {
    for (const accept of ["text/html,application/xhtml+xml,*/*;q=0.8", "*/*", undefined]) {
      const headers = {...accept && {accept}, ...host && {host}};
      const answer = await ask(port, path, {method, headers});
      const browses = accept?.startsWith("text/html") ?? false;
      assert.deepEqual([answer.status, answer.headers["content-type"], answer.headers.vary],
        [status, browses ? "text/html; charset=utf-8" : kProblem, "Accept"], path);
      assert.match(answer.headers["content-security-policy"], /^default-src 'none'; script-src/);
      if (browses) assert.ok(answer.body.includes(words), answer.body);
      else assert.equal(JSON.parse(answer.body).status, status);
      assert.equal(/<a href="\/">/.test(answer.body), browses);
    }
  }
});

test("previews and the gallery exist only in a demo", async () => {
  const demo = await serve("--demo"), plain = await healthy();
  for (const [path, status, words] of cases.demo) {
    const answer = await ask(demo.port, path);
    assert.equal(answer.status, status, path);
    assert.ok((answer.headers["content-type"] + answer.body).includes(words), path);
    assert.equal(await statusOf(plain.port, path), 404, path);
  }
  assert.equal(await statusOf(demo.port, "/v1/health"), 200);
});

test("files are packed for those who can unpack them, and sent once", async () => {
  const {port} = await healthy();
  const tags = new Set();
  for (const [accepted, packed] of cases.accepted) {
    const get = (path, more = {}) =>
      ask(port, path, {headers: {"accept-encoding": accepted, ...more}});
    const {bytes, headers} = await get("/style.css");
    assert.equal(headers["content-encoding"], packed ? "gzip" : undefined, accepted);
    assert.equal(bytes.length < 7000, packed, accepted);
    assert.equal(headers.vary, "Accept-Encoding");
    tags.add(headers.etag);
    const again = await get("/style.css", {"if-none-match": headers.etag});
    assert.deepEqual([again.status, again.body, again.headers.etag], [304, "", headers.etag]);
    assert.equal((await get("/widget.js", {"if-none-match": headers.etag})).status, 200);
    const told = await get("/v1/health");
    assert.equal(told.headers["content-encoding"], packed ? "gzip" : undefined, accepted);
    assert.equal(told.headers.vary, "Accept-Language, Accept-Encoding");
    const words = packed ? gunzipSync(told.bytes).toString() : told.body;
    assert.equal(JSON.parse(words).verdict, "well");
  }
  assert.equal(tags.size, 2, "each form has its own tag");
});

test("what is no request of ours is refused, and the next one served", async () => {
  const {port} = await healthy();
  const send = (...text) => exchange(port, text.join(" HTTP/1.1\n").replaceAll("\n", "\r\n"));
  for (const [line, rest, status] of cases.refused) {
    for (const first of ["", "GET / HTTP/1.1\nHost: localhost\n\n"]) {
      const answers = (await send(first + line, rest)).split("HTTP/1.1 ").slice(1);
      assert.equal(answers.length, first === "" ? 1 : 2, line + rest);
      const answer = answers.at(-1);
      assert.ok(answer.startsWith(`${status} `), line + rest + answer);
      assert.match(answer, /\r\nContent-Type: application\/problem\+json\r\n/);
      assert.match(answer, /\r\nX-Content-Type-Options: nosniff\r\n/);
      assert.equal(answer.includes("\r\nAllow: GET, HEAD\r\n"), status === 405);
    }
    assert.equal(await statusOf(port, "/healthz"), 200);
  }
  const long = `X: \t ${"y".repeat(5000)} \nContent-Length: 0\nConnection: close\n\n`;
  assert.match(await send("GET /healthz", `Host: localhost\n${long}`), /^HTTP\/1.1 200/);
});

test("only its own names are answered for", async () => {
  const local = await healthy("--host-name", "NAS.example");
  const remote = await healthy("--allow-remote");
  for (const [name, ...expected] of cases.hosts) {
    const headers = {host: name.replace("{own}", hostname())};
    const statuses = [local, remote].map(({port}) => statusOf(port, "/healthz", {headers}));
    assert.deepEqual(await Promise.all(statuses), expected, name);
  }
  const {headers, body} = await ask(local.port, "/", {headers: {host: "evil.example"}});
  assert.equal(headers["content-type"], kProblem);
  assert.match(JSON.parse(body).detail, /"evil.example".*--host-name/);
  const old = await exchange(local.port, "GET / HTTP/1.0\r\n\r\n");
  assert.match(old, /^HTTP\/1.1 200/, "only HTTP/1.0 has no Host");
});

test("what runs is finished before it stops, and the port, taken before, is free", async () => {
  for (const signal of ["SIGTERM", "SIGINT", "SIGHUP", "SIGQUIT"]) {
    const slow = await serve("--scenario", scenario("pause", {hardware: {delay: 1000}}));
    const {status, err} = run(["serve", "--scenario", "healthy", "--port", String(slow.port)]);
    assert.match(`${status} ${err}`, /^69 .*another program listens there/s);
    const idle = exchange(slow.port, "");  // an open connection does not hold it up
    const running = ask(slow.port, kGet);
    await ask(slow.port, "/healthz");  // read after it: it runs by now
    const ended = slow.stop(signal);
    assert.deepEqual([(await running).status, await ended, await idle], [200, 0, ""]);
    await assert.rejects(ask(slow.port, "/healthz"), {code: "ECONNREFUSED"});
  }
  const hung = await serve("--scenario", scenario("hung", {hardware: {delay: 100_000}}));
  ask(hung.port, kGet).catch(() => {});
  await ask(hung.port, "/healthz");
  hung.stop();
  assert.equal(await hung.stop("SIGINT"), null, "the second one ends it at once");
});

test("without descriptors it neither spins nor turns deaf", async () => {
  const {port, pid} = await healthy();
  const limit = files => spawnSync("prlimit", ["--pid", String(pid), `--nofile=${files}:`]);
  const ticks = () => Number(readFileSync(`/proc/${pid}/stat`, "utf8").split(" ")[14]);
  const open = readdirSync(`/proc/${pid}/fd`);
  const none = [...open, ""].findIndex((_, file) => !open.includes(String(file)));
  for (const files of [none, 11, 12, 13, 14]) {
    const before = ticks(), start = performance.now();
    limit(files);
    const clients = Array.from({length: 30}, () => client(port));
    await sleep(1000);
    assert.ok(ticks() - before < 15, `${ticks() - before} ticks with ${files} descriptors`);
    if (files > none) assert.equal(await statusOf(port, "/healthz"), 200, "others make room");
    clients.forEach(one => one.destroy());
    limit(files === none ? 1024 : files);
    assert.equal(await statusOf(port, "/healthz"), 200);
    assert.ok(performance.now() - start < 9000, "no deadline had to help");
  }
});

test("when more connections than it takes end while it stands still, it goes on", async () => {
  const {port, pid} = await healthy();
  for (const signal of ["SIGSTOP", "SIGCONT"]) {  // before they come, and after
    process.kill(pid, signal);
    const clients = Array.from({length: 532}, (_, i) =>
      client(port, {localAddress: `127.0.0.${2 + i % 3}`}));
    await sleep(500);
    process.kill(pid, "SIGSTOP");
    clients.forEach(one => one.destroy());
    process.kill(pid, "SIGCONT");
    assert.equal(await statusOf(port, "/healthz"), 200);
  }
});

test("half requests and readers who do not read hold up nobody, and do not stay", async () => {
  const {port} = await healthy();
  let ended = 0;
  const slow = Array.from({length: 100}, () => client(port).on("close", () => { ended += 1; }));
  const reader = client(port, {localAddress: "127.0.0.2"}).pause();
  reader.write("GET /texts/ja.json HTTP/1.1\r\nHost: localhost\r\n\r\n".repeat(500));
  for (let second = 0; second < 100 && ended < slow.length; second += 1) {
    for (const socket of slow) socket.write("G");  // of a head that never ends
    assert.equal(await statusOf(port, kGet), 200);
    await sleep(1000);
  }
  assert.equal(ended, slow.length);
  reader.destroy();
});
