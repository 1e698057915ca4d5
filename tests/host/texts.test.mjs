// Whether people are told everything that can occur, in every language.
import assert from "node:assert/strict";
import {existsSync, readFileSync, readdirSync} from "node:fs";
import {join} from "node:path";
import test from "node:test";
import {languages, source} from "./support/program.mjs";

const read = file => JSON.parse(readFileSync(join(source, file), "utf8"));
const texts = new Map(languages.map(language =>
  [language, [read(`host/texts/${language}.json`), read(`host/texts/explain/${language}.json`)]]));
const find = (language, section, key) => texts.get(language).map(file => file[section]?.[key]).find(text => text);

// Every finding that any scenario's expected answer holds; where it names none, the healthy one.
const found = readdirSync(join(source, "scenarios")).map(name => `scenarios/${name}/expected.json`)
  .filter(file => existsSync(join(source, file))).map(file => read(file).rule).filter(rule => rule?.id)
  .concat(read("scenarios/healthy/expected.json").rule);
const keyOf = ({description_format: format, description_params: params, description_use_formatted: formatted}) =>
  (formatted ? format : params.at(-1)).split(":")[1];

test("every finding is told in every language", () => {
  assert.ok(found.length > 50);
  for (const language of languages) {
    for (const {id, description} of found) {
      const {description_format: format, description_params: params, description_use_formatted: formatted} = description;
      for (const reference of formatted ? [format] : params)
        assert.ok(find(language, ...reference.split(":")), `${language} ${reference}`);
      for (const key of ["title", "meaning", "ignored", "do", "where"])
        assert.ok(find(language, `${id}/${keyOf(description)}`, key), `${language} ${id} ${key}`);
    }
  }
});

test("every language has the same texts with the same placeholders", () => {
  const outline = files => files.map(file => Object.entries(file).map(([section, entries]) => [section,
    Object.entries(entries).map(([key, text]) => [key, (text.match(/\{\d+\}/g) ?? []).sort().join()]).sort()]).sort());
  for (const language of languages) assert.deepEqual(outline(texts.get(language)), outline(texts.get("en")), language);
});

test("every source has a name for people", () => {
  const [, names] = readFileSync(join(source, "common/sources.h"), "utf8").match(/kSourceNames = \{([^}]+)\}/);
  const all = names.match(/"[^"]+"/g).map(name => name.slice(1, -1));
  assert.equal(all.length, 11);
  for (const name of [...all, "operating system"])  // of which only the log tells
    for (const language of languages) assert.ok(find(language, "source", name), `${language} ${name}`);
});
