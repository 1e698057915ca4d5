// Whether people are told everything that can occur, in every language.
import assert from "node:assert/strict";
import {existsSync, readFileSync, readdirSync} from "node:fs";
import {join} from "node:path";
import test from "node:test";
import {languages, source} from "./support/program.mjs";

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
    de: /Festplatte|Datenträger|Verbund|Akku|abgestürzt|Speicherverwaltung|Papierk|\b(the|is)\b/,
    fr: /[^\u00a0][;!?»]|[a-zé] :|vieux|corbeille|gestionnaire|\b(the|is)\b/,
    es: /papelera|gestor|"Sano"|\b(the|is)\b/,
    ja: /ごみ箱|マネージャー|[ぁ-ん一-龥ァ-ヶー}] ?[:,(]|\b(the|is)\b/,
    "zh-CN": /回收站|管理器|[一-龥}] ?[:,(;]|\b(the|is)\b/,
  };
  for (const [language, files] of texts)
    assert.deepEqual(linesOf(files).filter(line => odd[language].test(line)), [], language);
});

test("a remedy's placeholder is no name, and the same in every language", () => {
  const commands = texts => texts.match(/[\w./@-]*(\/dev\/|\/MOUNT|GROUP\/)[\w./-]*/g) ?? [];
  for (const [id, advice] of findings(texts.get("en"))) {
    for (const name of commands(advice.do + advice.where)) assert.match(name, /[A-Z]{3}/, id);
    for (const [language, [file]] of texts)
      assert.deepEqual(commands(file[id].do), commands(advice.do), `${language} ${id}`);
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

test("every source has a name for people", () => {
  const [, names] = read("common/sources.h").match(/kSourceNames = \{([^}]+)\}/);
  const all = names.match(/"[^"]+"/g).map(JSON.parse);
  assert.equal(all.length, 12);
  for (const name of [...all, "operating system"]) expectText("source", name);  // the last: a log's
});
