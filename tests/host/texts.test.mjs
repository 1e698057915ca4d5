// Whether people are told everything that can occur, in every language.
import assert from "node:assert/strict";
import {existsSync, readFileSync, readdirSync} from "node:fs";
import {join} from "node:path";
import test from "node:test";
import {languages, run, source} from "./support/program.mjs";

const read = file => readFileSync(join(source, file), "utf8");
const readJson = file => JSON.parse(read(file));
const texts = new Map(languages.map(language => [language,
  ["", "explain/"].map(folder => readJson(`host/texts/${folder}${language}.json`))]));
const expectText = (section, key) => {
  for (const [language, files] of texts)
    assert.ok(files.some(file => file[section]?.[key]), `${language} ${section}:${key}`);
};

test("every finding is told in every language", () => {
  // Those that any scenario's expected answer holds; where it names none, the healthy one.
  const found = readdirSync(join(source, "scenarios"))
    .map(name => `scenarios/${name}/expected.json`).filter(file => existsSync(join(source, file)))
    .map(file => readJson(file).rule).filter(rule => rule?.id)
    .concat(readJson("scenarios/healthy/expected.json").rule);
  assert.ok(found.length > 50);
  for (const {id, description: {description_format: format, description_params: params,
    description_use_formatted: formatted}} of found) {
    const references = formatted ? [format] : params;
    for (const reference of references) expectText(...reference.split(":"));
    for (const key of ["title", "meaning", "ignored", "do", "where"])
      expectText(`${id}/${references.at(-1).split(":")[1]}`, key);
  }
});

test("every language has the same texts with the same placeholders", () => {
  const placeholders = (key, value) => {
    const text = value.other ?? value;  // of plural forms the one that says all
    return typeof text === "string" ? (text.match(/\{\w+\}/g) ?? []).sort().join() : text;
  };
  const outline = files => JSON.parse(JSON.stringify(files, placeholders));
  for (const files of texts.values()) assert.deepEqual(outline(files), outline(texts.get("en")));
});

const findings = ([file]) => Object.entries(file).filter(([id]) => id.includes("/"));
const linesOf = text => typeof text === "string" ? [text] : Object.values(text).flatMap(linesOf);

test("two findings never read the same", () => {
  for (const [language, files] of texts) {
    const told = (section, key) => files[0][section]?.[key];
    const sentences = findings(files).map(([id, {sentence}]) => sentence ?? ["widget", "common",
      "securityscan", "externaldevice", "iscsimgr"].map(section => told(section, id.split("/")[1]))
      .find(Boolean));
    // Counted ones differ by their number; two stand behind different names.
    const words = sentences.filter(text => !text.includes("{0}"));
    const shared = words.length - new Set(words).size;
    assert.ok(words.length > 20 && shared === 2, `${language} ${words.sort().join("\n")}`);
    const titles = findings(files).map(([, {title}]) => title);
    assert.equal(new Set(titles).size, titles.length, `${language} ${titles.sort().join("\n")}`);
  }
});

test("a language keeps to its own words and marks", () => {
  const odd = {
    en: /storage manager|recycle bin|SAN manager/i,
    de: /Festplatte|Datenträger|Verbund|Akku|abgestürzt|Netzlaufwerk|Netz\b|wiederherg|Speicherverwaltung|Papierk|\b(the|is)\b/,
    fr: /grappe (?!RAID)|[^\u00a0][;!?»]|[a-zé] :|vieux|corbeille|gestionnaire|\b(the|is)\b/,
    es: /papelera|gestor|\b(El|Los|los) LUN|array|"Sano"|\b(the|is)\b/,
    ja: /ごみ箱|[}\d]\s%|マネージャー|[ぁ-ん一-龥ァ-ヶー}] ?[:,(]|\b(the|is)\b/,
    "zh-CN": /回收站|群集|[}\d]\s%|管理器|[一-龥}] ?[:,(;]|\b(the|is)\b/,
  };
  const breaks = / %|[\d}]  /;  // a figure and its unit stay on one line
  for (const [language, files] of texts)
    assert.deepEqual(linesOf(files).filter(line => odd[language].test(line) || breaks.test(line)),
      [], language);
});

const remedies = JSON.parse(run(["findings", "--json", "--lang", "en"]).out);

test("what to do is short and holds no command", () => {
  const programs = new Set(remedies.flatMap(({how}) => how).map(command => command.split(" ")[0]));
  programs.delete("du");  // French, too
  assert.ok(programs.size > 10);
  for (const [language, files] of texts) {
    for (const [id, {do: told}] of findings(files)) {
      assert.doesNotMatch(told, /[()（）`|]|\/[A-Z]|--|…/, `${language} ${id}`);
      for (const word of told.split(/[^\w-]+/)) assert.ok(!programs.has(word), `${language} ${id}`);
      assert.ok(told.match(/[.。]/g).length <= 3 && told.length <= 180, `${language} ${id}`);
    }
  }
});

test("a remedy's commands have placeholders and destroy nothing and save first", () => {
  // What they may name is on every Debian machine, or begins with capitals.
  const known = /^\/(proc\/mdstat|var\/log\/lynis-report\.dat|etc\/velainfo\.conf)$/;
  const harm = /\b(dd|mkfs|rm|wipefs|shred|fdisk|fsck|repair)\b|--(force|create|delete|zero)|-f\b|>/;
  for (const {id, text, type, how} of remedies) {
    assert.ok(id === "system_health" ? how.length === 0 : [1, 2, 3].includes(how.length), id + text);
    for (const command of how) {
      assert.ok(!harm.test(command) && command.length <= 72, command);
      for (const word of command.split(" ").filter(each => /^\/|\/$/.test(each)))
        assert.ok(known.test(word) || /^(\/dev)?\/?[A-Z][A-Z@:/-]+$/.test(word), command);
    }
    const saves = how.findIndex(command => /^(rsync|cp) .*-(a|n) \/PATH/.test(command));
    if (type === 0 && id !== "securityscan_status_danger")
      assert.ok(saves >= 0 && !how.slice(0, saves).some(each => /^(mount|mdadm)/.test(each)), id);
  }
});

test("what is counted has the plural forms of its language", () => {
  for (const [language, [{notes}, {evidence}]] of texts) {
    const forms = new Intl.PluralRules(language).resolvedOptions().pluralCategories
      .filter(form => form !== "many");  // of millions
    for (const [key, text] of Object.entries({...notes, ...evidence})
      .filter(([, text]) => typeof text !== "string"))
      assert.deepEqual(Object.keys(text).sort(), forms.sort(), language + key);
  }
});

test("every note of Linux is told, and no other", () => {
  const kinds = read("platform/linux/notes/note_kinds.h").matchAll(/NoteKind \w+ = \{\s*"(\w+)"/g);
  const keys = [...kinds].map(([, key]) => key).sort();
  for (const [language, [{notes}]] of texts)
    assert.deepEqual(Object.keys(notes).sort(), keys, language);
});

test("every cause of a recorded machine is told in words", () => {
  const machines = "tests/fixtures/linux/machines";
  const files = readdirSync(join(source, machines)).map(name => `${machines}/${name}/expected`);
  for (const file of files.filter(name => existsSync(join(source, name))))
    for (const [, key] of read(file).matchAll(/^evidence: (\S+) /gm)) expectText("evidence", key);
});

test("every source has a name for people", () => {
  const [, names] = read("common/sources.h").match(/kSourceNames = \{([^}]+)\}/);
  const all = names.match(/"[^"]+"/g).map(JSON.parse);
  assert.equal(all.length, 12);
  for (const name of [...all, "operating system"]) expectText("source", name);  // the last: a log's
});
