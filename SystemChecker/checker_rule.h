// The health rule model: one finding, how urgent it is and how it is told.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <json/value.h>

namespace VELA::SystemHealth {

// A text that the client owns: (section, key), sent as section ":" key.
using TextReference = std::pair<std::string, std::string>;

// The state that a client shows. It takes no part in choosing the winner.
enum class CheckerRuleType : std::int32_t {
  Danger = 0,   // act now
  Warning = 1,  // needs attention
  Normal = 2,   // a notice, or all is well
};

// What the client is to show, as references and values; it holds no user-visible text
// of its own. Composed: `format` has placeholders "{0}", "{1}", ... that stand for the
// texts that `params` names. Formatted: `formatted_text` names one text whose own
// placeholders take the plain values `formatted_params`.
struct Description {
  std::string format;
  std::vector<TextReference> params;
  TextReference formatted_text;
  std::vector<std::string> formatted_params;
  bool use_formatted = false;

  static Description NaiveDescription(const std::string& section, const std::string& key);
  static Description FormattedDescription(const TextReference& text,
                                          const std::vector<std::string>& params);
  static Description AdditionalDescription(const std::string& format,
                                           const std::vector<TextReference>& params);

  // {"description_format", "description_params" (always an array),
  // "description_use_formatted"}
  Json::Value ToJson() const;
};

// One finding. A smaller priority is more urgent; the scale is [-20.0, 40.0].
struct CheckerRule {
  CheckerRuleType type;
  double priority;
  std::string id;
  Description description;

  CheckerRule(CheckerRuleType type, double priority, std::string id, Description description);
  // Described by the one text (section, key).
  CheckerRule(CheckerRuleType type, double priority, std::string id, const std::string& section,
              const std::string& key);

  double Clamp(double value) const;
  double GetPriority() const { return priority; }

  // Less urgent: the priority number is greater. The most urgent of several rules is
  // the greatest one.
  bool operator<(const CheckerRule& other) const { return priority > other.GetPriority(); }

  // {"type" (integer), "priority" (real), "id", "description"}
  Json::Value ToJson() const;
};

// Keeps the most urgent of the rules pushed into it, the first one on a tie.
struct TopPriorityRule {
  std::optional<CheckerRule> top;

  void Push(CheckerRule&& candidate);
  std::optional<CheckerRule> Pop();  // leaves the holder empty
};

// A fragment of a composed description, with the text that fills its placeholder.
struct FormatUnit {
  std::string text;
  std::optional<TextReference> param;
};

// Composes one description from fragments: joins them, and numbers their anonymous
// placeholders in the order in which the references came.
struct StringFormatter {
  std::string separator;
  std::string placeholder;
  std::vector<std::string> texts = {};
  std::vector<TextReference> params = {};

  void Push(std::string text);
  // Numbers the first placeholder of `text`. The reference counts even when there is none.
  void Push(std::string text, TextReference param);
  void Push(FormatUnit&& unit);

  bool Empty() const { return texts.empty() && params.empty(); }

  // The joined fragments with `closing` right behind them. Each closing reference takes
  // the next free placeholder of `closing`; one without a placeholder is logged and dropped.
  Description PopDescription(std::string closing, std::vector<TextReference> closingParams);

  // Gives the first placeholder of `text` the number of the next reference; false when
  // there is none.
  bool NumberPlaceholder(std::string& text) const;
};

}  // namespace VELA::SystemHealth
