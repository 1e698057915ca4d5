// The page's renderer against the table of cases that the tool's renderer passes, too.
import assert from "node:assert/strict";
import {readFileSync} from "node:fs";

const [, , renderer, casesFile] = process.argv;
// From memory, since Debian's Node.js takes a file that ends in .js for no module.
const source = encodeURIComponent(readFileSync(renderer, "utf8"));
const {noteOf, render, sanitize, textKey, verdictOf} = await import(`data:text/javascript,${source}`);
const {texts, cases, notes, sanitized} = JSON.parse(readFileSync(casesFile, "utf8"));

const describe = (description_format, description_params, description_use_formatted = false) =>
  ({description_format, description_params, description_use_formatted});
for (const {why, format, params, formatted, text} of cases)
  assert.equal(render(describe(format, params, formatted), texts), text, why);
for (const [language, note, text] of notes) assert.equal(noteOf(note, texts, language), text);
for (const [name, shown] of sanitized) assert.equal(sanitize(name), shown);
assert.ok(cases.length > 10 && sanitized.length > 10);

assert.equal(textKey(describe("{0}", ["widget:fan_fail"])), "fan_fail");
assert.equal(textKey(describe("iscsimgr:luns", ["3"], true)), "luns");
for (const [type, id, verdict] of [[0, "x", "danger"], [1, "system_health", "warning"],
  [2, "volume_usage", "notice"], [2, "system_health", "well"]])
  assert.equal(verdictOf({type, id}), verdict);
