// Runs the built vela-health as its users do. VELA_BUILD names the build folder.
import {spawn, spawnSync} from "node:child_process";
import {once} from "node:events";
import {mkdirSync, mkdtempSync, rmSync, writeFileSync} from "node:fs";
import {request} from "node:http";
import {tmpdir} from "node:os";
import {dirname, join} from "node:path";
import {fileURLToPath} from "node:url";

export const source = join(dirname(fileURLToPath(import.meta.url)), "../../..");
export const build = process.env.VELA_BUILD;
export const languages = ["en", "de", "fr", "es", "ja", "zh-CN"];
export const program = join(build, "host/vela-health");

// A folder of this test's own, gone when it ends.
export const folder = mkdtempSync(join(tmpdir(), "vela-health-test-"));
process.on("exit", () => rmSync(folder, {recursive: true, force: true}));

export function write(name, text) {
  const file = join(folder, name);
  mkdirSync(dirname(file), {recursive: true});
  writeFileSync(file, text);
  return file;
}

// A machine with this state beside a healthy one's; its path for --scenario.
export const scenario = (name, state) =>
  dirname(write(`${name}/state.json`, JSON.stringify({why: "a test", ...state})));

// To its end: exit status (null when a signal ended it) and both outputs.
export function run(words, environment = {}) {
  const env = {...process.env, LC_ALL: "C.UTF-8", ...environment};
  const options = {encoding: "utf8", env, maxBuffer: 2 ** 26};
  const {status, stdout, stderr, error} = spawnSync(program, words, options);
  if (error) throw error;
  return {status, out: stdout, err: stderr};
}

const serving = new Set();
process.on("exit", () => serving.forEach(child => child.kill("SIGKILL")));

// `vela-health serve`, on a free port where none is given, or what bash does with "-c" and a line,
// once it says its address; ends with this test at the latest.
export async function serve(...words) {
  const port = words.includes("--listen") ? [] : ["--port", "0"];
  const stdio = ["ignore", "pipe", "inherit"];
  const start = words[0] === "-c" ? ["bash", words] : [program, ["serve", ...port, ...words]];
  const child = spawn(...start, {stdio});
  serving.add(child);
  const ended = once(child, "exit").then(([status]) => serving.delete(child) && status);
  const [line] = await Promise.race([once(child.stdout, "data"),
    ended.then(status => { throw new Error(`vela-health serve ended with ${status}`); })]);
  child.unref();  // the test need not stop it
  child.stdout.unref();
  const stop = (signal = "SIGTERM") => child.ref() || child.kill(signal) && ended;  // its status
  const url = /http:\S+/.exec(line)[0];
  return {url, port: Number(new URL(url).port), pid: child.pid, stop};
}

// One request as it is written here: no path is made tidy, no redirect followed.
export const ask = (port, path, options = {}) =>
  new Promise((resolve, reject) => {
    request({host: "127.0.0.1", port, path, agent: false, ...options}, async answer => {
      const parts = [];
      for await (const part of answer) parts.push(part);
      const bytes = Buffer.concat(parts);
      resolve({status: answer.statusCode, headers: answer.headers, bytes, body: bytes.toString()});
    }).on("error", reject).end();
  });
