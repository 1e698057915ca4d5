#include "host/answer/things.h"

#include <array>

#include "host/answer/input_lines.h"
#include "host/answer/part_words.h"

namespace host {
namespace {

// Where a check looks for parts of a kind, in the order of the kinds.
struct Place {
  const char *check, *seenIn;
};
constexpr std::array kPlaces = std::to_array<Place>({
    {"disks", "disks"},
    {"volume usage", "volumes"},
    {"storage overview", "overview"},
    {"storage overview", "overview"},
    {"SAN", "LUNs"},
    {"system status", "fan failed"},
    {"system status", "power failed"},
    {"system status", "too hot"},
    {"expansion units", "units"},
    {"UPS", "connected"},
    {"high availability", "running"},
    {"", ""},
});
static_assert(kPlaces.size() == source_status::kPartKindNames.size());

using Things = std::vector<Thing>;
using Index = std::map<std::string, std::size_t>;

Thing& FindOrAdd(Things& things, Index& index, Thing thing) {
  const auto [place, isNew] = index.try_emplace(thing.key, things.size());
  if (isNew) things.push_back(std::move(thing));
  return things[place->second];
}

Thing ToThing(const VELAPart& part, const Parts& parts, const Texts& texts) {
  const auto kind = static_cast<std::size_t>(part.kind);
  const Place& place = kPlaces[kind];
  return {source_status::kPartKindNames[kind] + ("\n" + NamePart(part, texts)),
          part.serial,
          DescribePart(part.name, parts, texts),
          FormatPlace(part, texts),
          place.check,
          place.seenIn,
          {{"", NameState(part, texts)}},
          {}};
}

void AddElement(const SeenElement& element, const std::string& check, Things& things,
                Index& index) {
  // What the SAN calls a volume has been there before.
  const std::string list = check == "SAN" && element.kind == "volume" ? "" : element.list;
  Thing& thing = FindOrAdd(things, index,
                           {element.kind + "\n" + element.name,
                            "",
                            element.title,
                            "",
                            list.empty() ? "" : check,
                            list,
                            {},
                            {}});
  thing.values.insert(element.values.begin(), element.values.end());
  for (const SeenElement::Comparison& compared : element.compared)
    thing.compared[check + "\n" + compared.unit] = {compared.low, compared.words};
}

}  // namespace

std::vector<Thing> ListThings(const SavedAnswer& answer, bool withParts, const Texts& texts) {
  Things things;
  Index index;
  if (withParts)
    for (const VELAPart& part : answer.parts)
      FindOrAdd(things, index, ToThing(part, answer.parts, texts));
  for (const CheckerResult& result : answer.checkers)
    for (const SeenElement& element : ListElements(result, answer.parts, texts))
      AddElement(element, result.name, things, index);
  return things;
}

}  // namespace host
