#include "host/notify/state.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include "common/json_reader.h"
#include "common/json_writer.h"

namespace host {
namespace {

constexpr int kVersion = 1;

// Forgets the messages that wait for nobody.
void DropTaken(State& state) {
  std::erase_if(state.messages, [&state](const auto& message) {
    return std::ranges::none_of(state.hooks, [&message](const auto& hook) {
      return std::ranges::find(hook.second.messages, message.first) != hook.second.messages.end();
    });
  });
}

Json::Value ToJson(const KnownItem& known) {
  Json::Value object;
  object["kind"] = static_cast<int>(known.item.kind);
  object["group"] = known.item.group;
  object["part"] = known.item.part;
  object["cause"] = known.item.cause;
  object["check"] = known.item.check;
  object["line"] = known.item.line;
  object["told"] = known.told;
  object["seen"] = known.seen;
  object["missed"] = known.missed;
  object["hold"] = known.hold;
  Json::Value& unseen = object["unseen"] = Json::Value(Json::arrayValue);
  for (const std::string& source : known.unseen) unseen.append(source);
  return object;
}

// The library throws Json::Exception where a member is of another type.
int ReadCount(const Json::Value& object, const char* name, int most) {
  const int count = object[name].asInt();
  if (!object[name].isInt() || count < 0 || count > most) throw std::out_of_range(name);
  return count;
}

KnownItem ToItem(const Json::Value& object) {
  KnownItem known;
  known.item = {static_cast<ItemKind>(ReadCount(object, "kind", static_cast<int>(ItemKind::Note))),
                object["group"].asString(),
                object["part"].asString(),
                object["cause"].asString(),
                object["check"].asString(),
                object["line"].asString()};
  known.told = object["told"].asBool();
  known.seen = ReadCount(object, "seen", kSettledRounds);
  known.missed = ReadCount(object, "missed", kMostHold);
  known.hold = ReadCount(object, "hold", kMostHold);
  for (const Json::Value& source : object["unseen"]) known.unseen.insert(source.asString());
  return known;
}

Json::Value ToJson(const Message& message) {
  Json::Value object;
  object["json"] = message.json;
  Json::Value& environment = object["environment"] = Json::Value(Json::objectValue);
  for (const auto& [name, value] : message.environment) environment[name] = value;
  return object;
}

Message ToMessage(const Json::Value& object) {
  Message message;
  message.json = object["json"].asString();
  const Json::Value& environment = object["environment"];
  for (auto each = environment.begin(); each != environment.end(); ++each)
    message.environment[each.name()] = each->asString();
  return message;
}

Waiting ToWaiting(const Json::Value& object, const State& state) {
  Waiting waiting;
  waiting.leftOut = object["left_out"].asInt();
  for (const Json::Value& number : object["waiting"]) {
    waiting.messages.push_back(number.asInt64());
    if (!state.messages.contains(number.asInt64())) throw std::out_of_range("waiting");
  }
  return waiting;
}

void ReadMembers(const Json::Value& root, State& state) {
  if (root["version"].asInt() != kVersion) throw std::out_of_range("version");
  state.saved = root["saved"].asInt64();
  state.next = root["next"].asInt64();
  state.began = root["began"].asInt64();
  std::vector<KnownItem> items;
  for (const Json::Value& item : root["items"]) items.push_back(ToItem(item));
  state.memory = Memory(std::move(items));
  const Json::Value& messages = root["messages"];
  for (auto each = messages.begin(); each != messages.end(); ++each)
    state.messages[std::stoll(each.name())] = ToMessage(*each);
  const Json::Value& hooks = root["hooks"];
  for (auto each = hooks.begin(); each != hooks.end(); ++each)
    state.hooks[each.name()] = ToWaiting(*each, state);
}

}  // namespace

void AddMessage(State& state, Message message, const std::vector<std::string>& hooks) {
  const std::int64_t number = state.next++;
  message.environment["VELA_ID"] = std::to_string(state.began) + "." + std::to_string(number);
  state.messages[number] = std::move(message);
  for (const std::string& hook : hooks) {
    Waiting& waiting = state.hooks[hook];
    waiting.messages.push_back(number);
    for (; waiting.messages.size() > kMostWaiting; ++waiting.leftOut) waiting.messages.pop_front();
  }
  std::erase_if(state.hooks, [&hooks](const auto& hook) {
    return std::ranges::find(hooks, hook.first) == hooks.end();
  });
  DropTaken(state);
}

void TakeMessage(State& state, const std::string& hook) {
  const auto waiting = state.hooks.find(hook);
  waiting->second.leftOut = 0;
  waiting->second.messages.pop_front();
  if (waiting->second.messages.empty()) state.hooks.erase(waiting);
  DropTaken(state);
}

std::string WriteState(const State& state) {
  Json::Value root;
  root["version"] = kVersion;
  root["saved"] = Json::Int64{state.saved};
  root["next"] = Json::Int64{state.next};
  root["began"] = Json::Int64{state.began};
  Json::Value& items = root["items"] = Json::Value(Json::arrayValue);
  for (const KnownItem& item : state.memory.Items()) items.append(ToJson(item));
  Json::Value& messages = root["messages"] = Json::Value(Json::objectValue);
  for (const auto& [number, message] : state.messages)
    messages[std::to_string(number)] = ToJson(message);
  Json::Value& hooks = root["hooks"] = Json::Value(Json::objectValue);
  for (const auto& [name, waiting] : state.hooks) {
    Json::Value& object = hooks[name];
    object["left_out"] = waiting.leftOut;
    Json::Value& numbers = object["waiting"] = Json::Value(Json::arrayValue);
    for (const std::int64_t number : waiting.messages) numbers.append(Json::Int64{number});
  }
  return common::WriteCompact(root);
}

bool ReadState(std::string_view text, State& state) try {
  Json::Value root;
  State read;
  if (!common::ParseJson(text, root) || !root.isObject()) return false;
  ReadMembers(root, read);
  state = std::move(read);
  return true;
} catch (const Json::Exception&) {
  return false;
} catch (const std::logic_error&) {  // of a number that is none, or out of its range
  return false;
}

}  // namespace host
