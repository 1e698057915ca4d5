#include "host/text/texts.h"

#include "common/json_reader.h"
#include "host/text/failure.h"
#include "host/text/language.h"

namespace host {
namespace {

constexpr const char* kForm = "/";  // stands before the name of a plural form

Json::Value ReadTexts(const std::filesystem::path& file) {
  Json::Value root;
  if (!common::ReadJsonFile(file.c_str(), root) || !root.isObject()) {
    throw Failure(kUnavailable,
                  "Cannot read the texts " + file.string() +
                      ", or they are damaged. They belong beside the program: build or install it "
                      "again.");
  }
  return root;
}

}  // namespace

Texts::Texts(const std::filesystem::path& folder, const std::string& language)
    : language_(language) {
  const std::string file = language + ".json";
  Add(ReadTexts(folder / file));
  if (std::filesystem::exists(folder / "explain")) Add(ReadTexts(folder / "explain" / file));
}

void Texts::Add(const Json::Value& root) {
  for (const std::string& section : root.getMemberNames()) {
    if (!root[section].isObject()) continue;
    for (const std::string& key : root[section].getMemberNames()) {
      const Json::Value& text = root[section][key];
      if (!text.isObject()) sections_[section][key] = text.asString();
      for (auto form = text.begin(); text.isObject() && form != text.end(); ++form)
        sections_[section][key + kForm + form.name()] = form->asString();
    }
  }
}

const std::string* Texts::FindText(std::string_view section, std::string_view key) const {
  const auto found = sections_.find(section);
  if (found == sections_.end()) return nullptr;
  const auto text = found->second.find(key);
  return text == found->second.end() ? nullptr : &text->second;
}

const std::string* Texts::FindCounted(std::string_view section, std::string_view key,
                                      std::int64_t count) const {
  const std::string start = std::string(key) + kForm;
  const bool single = IsSingular(count, language_);
  const std::string* text = single ? FindText(section, start + "one") : nullptr;
  if (text == nullptr) text = FindText(section, start + "other");
  return text != nullptr ? text : FindText(section, key);
}

std::string Texts::GetText(std::string_view section, std::string_view key) const {
  const std::string* text = FindText(section, key);
  return text != nullptr ? *text : std::string(key);
}

std::string Texts::Resolve(std::string_view reference) const {
  const std::size_t colon = reference.find(':');
  if (colon != std::string_view::npos) {
    const std::string* text = FindText(reference.substr(0, colon), reference.substr(colon + 1));
    if (text != nullptr) return *text;
  }
  return std::string(reference);
}

}  // namespace host
