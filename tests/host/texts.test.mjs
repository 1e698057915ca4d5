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
