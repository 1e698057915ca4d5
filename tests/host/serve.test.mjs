// `vela-health serve` on real sockets: what it answers, to whom, and what it refuses.
import assert from "node:assert/strict";
import {connect} from "node:net";
import {hostname} from "node:os";
import test from "node:test";
import {setTimeout as sleep} from "node:timers/promises";
import {ask, run, scenario, serve} from "./support/program.mjs";

const kGet = "/api/VELA.Core.System.SystemHealth/1/get";
const kProblem = "application/problem+json";
const statusOf = async (port, path, more) => (await ask(port, path, more)).status;

// Sends the text as it is; the whole answer, once the server closes.
const exchange = (port, text, from) => new Promise(resolve => {
  let answer = "";
  connect({host: "127.0.0.1", port, localAddress: from}).setEncoding("latin1")
    .on("data", data => { answer += data; }).on("error", () => {}).on("close", () => resolve(answer)).write(text);
});
const metric = async (port, name) =>
  Number((await ask(port, "/metrics")).body.split("\n").find(line => line.startsWith(`${name} `))?.slice(name.length));

test("the document is the module's, and other paths name what exists", async () => {
  const {port} = await serve("--scenario", "healthy");
  const {status, headers, body} = await ask(port, kGet);
  assert.deepEqual([status, headers["content-type"], headers["cache-control"]], [200, "application/json", "no-store"]);
  assert.equal(`${body}\n`, run(["--json", "--scenario", "healthy"]).out);
  for (const path of ["SystemHealth/2/get", "SystemHealth/1/set", "SystemHealth/x/get", "SystemHealth/1x/get", "SystemHealth/1",
    "SystemHealth/99999999999999999999/get", ""]) {
    const wrong = await ask(port, `/api/VELA.Core.System.${path}`);
    assert.deepEqual([wrong.status, wrong.headers["content-type"], JSON.parse(wrong.body).available[0]], [404, kProblem, kGet], path);
  }
});

test("metrics count each request, and seconds", async () => {
  const {port} = await serve("--scenario", scenario("slow", {hardware: {delay: 300, fanFailed: true}}));
  const first = ask(port, kGet);
  await sleep(100);
  await Promise.all([first, ...[1, 2, 3].map(() => ask(port, kGet))]);  // these wait together for the next query
  assert.equal(await metric(port, "vela_health_answers_total"), 4);
  const seconds = await metric(port, "vela_health_answer_seconds_sum");
  assert.ok(seconds >= 0.3 && seconds < 100, String(seconds));
  assert.equal(await metric(port, 'vela_health_source_state{source="web server"}'), 1);
  assert.equal(await metric(port, 'vela_health_checker_finding{checker="system status"}'), 1);
});

test("reading a source took less than the request for it", async () => {
  const {port} = await serve("--platform", "linux");
  const before = performance.now();
  const {body} = await ask(port, "/metrics");
  const took = (performance.now() - before) / 1000;
  const seconds = [...body.matchAll(/^vela_health_source_seconds\{.*\} (.*)$/gm)].map(found => Number(found[1]));
  assert.ok(Math.max(...seconds) > 0 && Math.max(...seconds) < took, body);
});

test("the page and nothing else of the disk is served, guarded", async () => {
  const {port} = await serve("--scenario", "healthy");
  for (const path of ["/", "/style.css", "/widget.js", "/render.js", "/texts/zh-CN.json", "/answer", "/healthz", "/metrics", "/nothing"]) {
    const {status, headers, body} = await ask(port, path);
    assert.equal(status, path === "/nothing" ? 404 : 200, path);
    assert.ok(headers["content-security-policy"].startsWith("default-src 'none'; script-src 'self'"), path);
    assert.deepEqual([headers["x-content-type-options"], headers["referrer-policy"], headers["cross-origin-resource-policy"]],
      ["nosniff", "no-referrer", "same-origin"], path);
    assert.notEqual(body, "", path);
  }
  for (const path of ["/texts/", "/texts/../www/index.html", "/%2e%2e/texts/en.json", "//", "/../../../../etc/passwd",
    "/texts/en.json/", "/index.html", "/healthz%00.html", "http://x/healthz", "/gallery", "/gallery.json"]) {
    assert.equal(await statusOf(port, path), 404, path);
  }
});

test("the page learns of sources and of findings that lost, from one answer", async () => {
  const machine = scenario("two", {hardware: {fanFailed: true}, highAvailability: {running: true, status: "warning"}, ups: {fails: true}});
  const {port} = await serve("--scenario", machine);
  const {headers, body} = await ask(port, "/answer");
  const {answer, findings, sources} = JSON.parse(body);
  assert.equal(headers["cache-control"], "no-store");
  assert.deepEqual(answer, JSON.parse(run(["--json", "--scenario", machine]).out));
  assert.deepEqual(findings.map(({id}) => id), ["ha_status_warning"]);
  const ups = sources.find(({name}) => name === "UPS");
  assert.equal(ups.state, "failed");
  assert.match(ups.reason, /asking for the UPS failed/);
});

test("previews and the gallery exist only in a demo", async () => {
  const demo = await serve("--demo"), plain = await serve("--scenario", "healthy");
  for (const [path, status, words] of [
    ["/answer?scenario=overheating", 200, "temperature_warning"],
    ["/?scenario=overheating", 200, "<!doctype html>"],
    ["/gallery", 200, "<!doctype html>"],
    ["/gallery.json", 200, '"scenario":"overheating"},'],
    ["/?scenario=no-such", 404, "/gallery lists"],
    ["/answer?scenario=", 404, "/gallery lists"],
    ["/answer?scenario=../scenarios/overheating", 404, kProblem],
    ["/answer?scenario=%2e%2e%2fscenarios%2foverheating", 404, kProblem],
  ]) {
    const answer = await ask(demo.port, path);
    assert.equal(answer.status, status, path);
    assert.ok((answer.headers["content-type"] + answer.body).includes(words), path);
    assert.equal(await statusOf(plain.port, path), 404, path);
  }
  assert.equal(await statusOf(demo.port, "/answer"), 200);
});

test("files are packed for those who can unpack them, and sent once", async () => {
  const {port} = await serve("--scenario", "healthy");
  const tags = new Set();
  for (const [accepted, packed] of [["gzip, deflate, br", true], ["br;q=1, gzip;q=0.2", true], ["gzip;q=0, br", false], ["identity", false]]) {
    const headers = {"accept-encoding": accepted};
    const whole = await ask(port, "/texts/ja.json", {headers});
    assert.equal(whole.headers["content-encoding"], packed ? "gzip" : undefined, accepted);
    assert.equal(whole.bytes.length < 7000, packed, accepted);
    assert.equal(whole.headers.vary, "Accept-Encoding");
    tags.add(whole.headers.etag);
    const again = await ask(port, "/texts/ja.json", {headers: {...headers, "if-none-match": whole.headers.etag}});
    assert.deepEqual([again.status, again.body, again.headers.etag], [304, "", whole.headers.etag]);
    assert.equal(await statusOf(port, "/texts/en.json", {headers: {...headers, "if-none-match": whole.headers.etag}}), 200);
  }
  assert.equal(tags.size, 2, "each form has its own tag");
});

test("what is no request of ours is refused, and the next one served", async () => {
  const {port} = await serve("--scenario", "healthy");
  const host = "Host: localhost\r\n";
  for (const [request, status] of [
    [`GET /healthz HTTP/1.1\r\n${host}${host}\r\n`, 400],
    [`GET /healthz HTTP/1.1\r\n${host}Content-Length: 3\r\n\r\nabc`, 413],
    [`GET /healthz HTTP/1.1\r\n${host}Transfer-Encoding: chunked\r\n\r\n0\r\n\r\n`, 413],
    [`POST / HTTP/1.1\r\n${host}Content-Length: 9\r\n\r\n{"a": 1}`, 405],
    [`DELETE / HTTP/1.1\r\n${host}\r\n`, 405],
    [`OPTIONS * HTTP/1.1\r\n${host}\r\n`, 405],
  ]) {
    const answer = await exchange(port, request);
    assert.ok(answer.startsWith(`HTTP/1.1 ${status}`), request + answer);
    for (const words of [`Content-Type: ${kProblem}`, "X-Content-Type-Options: nosniff", ...status === 405 ? ["Allow: GET, HEAD"] : []]) {
      assert.ok(answer.includes(`\r\n${words}\r\n`), answer);
    }
    assert.equal(await statusOf(port, "/healthz"), 200);
  }
  assert.match(await exchange(port, `GET /healthz HTTP/1.1\r\n${host}Content-Length: 0\r\nConnection: close\r\n\r\n`), /^HTTP\/1.1 200/);
});

test("only its own names are answered for", async () => {
  const local = await serve("--scenario", "healthy", "--host-name", "NAS.example"), remote = await serve("--scenario", "healthy", "--allow-remote");
  for (const [host, locally, remotely] of [
    ["localhost", 200, 200], ["LocalHost.:8480", 200, 200], ["127.0.0.1:1", 200, 200], ["127.8.8.8", 200, 200], ["[::1]:8480", 200, 200],
    ["[::1]", 200, 200], ["nas.example:443", 200, 421], ["192.0.2.7", 421, 200], ["[2001:db8::7]", 421, 200], [hostname(), 421, 200],
    [`${hostname()}.local`, 421, 200], ["evil.example", 421, 421], ["localhost.evil.example", 421, 421], ["127.0.0.1.evil.example", 421, 421],
  ]) {
    assert.deepEqual([await statusOf(local.port, "/healthz", {headers: {host}}), await statusOf(remote.port, "/healthz", {headers: {host}})],
      [locally, remotely], host);
  }
  const refused = await ask(local.port, "/", {headers: {host: "evil.example"}});
  assert.equal(refused.headers["content-type"], kProblem);
  assert.match(JSON.parse(refused.body).detail, /"evil.example".*--host-name/);
  assert.match(await exchange(local.port, "GET / HTTP/1.0\r\n\r\n"), /^HTTP\/1.1 200/, "only HTTP/1.0 has no Host");
});

test("what runs is finished before it stops, and the port is free", async () => {
  for (const signal of ["SIGTERM", "SIGINT"]) {
    const slow = await serve("--scenario", scenario("pause", {hardware: {delay: 1000}}));
    const idle = exchange(slow.port, "");  // an open connection does not hold it up
    const running = ask(slow.port, kGet);
    await ask(slow.port, "/healthz");  // read after it: it runs by now
    const ended = slow.stop(signal);
    assert.equal((await running).status, 200);
    assert.equal(await ended, 0);
    assert.equal(await idle, "");
    await assert.rejects(ask(slow.port, "/healthz"), {code: "ECONNREFUSED"});
  }
});

test("half requests and readers who do not read hold up nobody, and do not stay", async () => {
  const {port} = await serve("--scenario", "healthy");
  let ended = 0;
  const slow = Array.from({length: 100}, () => connect(port, "127.0.0.1").on("error", () => {}).on("close", () => { ended += 1; }));
  const reader = connect({host: "127.0.0.1", port, localAddress: "127.0.0.2"}).on("error", () => {}).pause();
  reader.write("GET /texts/ja.json HTTP/1.1\r\nHost: localhost\r\n\r\n".repeat(500));
  for (let second = 0; second < 100 && ended < slow.length; second += 1) {
    for (const socket of slow) socket.write("G");  // of a head that never ends
    assert.equal(await statusOf(port, kGet), 200);
    await sleep(1000);
  }
  assert.equal(ended, slow.length);
  reader.destroy();
});

test("a taken port is said", async () => {
  const {port} = await serve("--scenario", "healthy");
  const {status, err} = run(["serve", "--scenario", "healthy", "--port", String(port)]);
  assert.equal(status, 69);
  assert.match(err, /another program listens there/);
});
