/// explain: what an error code or a log line means, and what to do next.
#include <unistd.h>

#include <iostream>

#include "arguments.h"
#include "explanation.h"
#include "objects.h"

namespace qcmapctl {
namespace {

Json ExplainWord(const std::string& word) {
  const bool is_hex = word.rfind("0x", 0) == 0 && word.size() <= 10 &&
                      word.find_first_not_of("0123456789abcdefABCDEF", 2) == std::string::npos;
  const auto code = is_hex ? static_cast<uint32_t>(std::strtoul(word.c_str(), nullptr, 16))
                           : ToNumber(word, 999999999);
  if (!code) return nullptr;
  const auto known = ExplainCode(*code);
  if (!known) throw CommandFailed(Failure::NOT_EXPLAINED, "unknown code " + std::to_string(*code));
  return {{"code", *code}, {"meaning", known->meaning}, {"next", known->next}};
}

Json ExplainText(const std::string& text) {
  const auto line = ExplainLine(text);
  if (!line) return nullptr;
  Json json = {{"log", text},          {"line", line->line}, {"level", line->level},
               {"cause", line->cause}, {"next", line->next}, {"code", nullptr},
               {"meaning", nullptr}};
  if (!line->code) return json;
  const auto known = ExplainCode(*line->code);
  json["code"] = *line->code;
  json["meaning"] = known ? known->meaning : "unknown code " + std::to_string(*line->code);
  // Most of these lines only refer to the codes.
  if (known && line->next == "see the code") json["next"] = known->next;
  return json;
}

Describe DescribeLine() {
  return AsSentence("{log}\n  {level}: {cause}[\n  code {code}: {meaning}][\n  next: {next}]");
}

/// Explains each line of standard input that it knows, as soon as it comes.
Report ExplainInput(const Options& options) {
  if (::isatty(STDIN_FILENO) == 1) {
    throw CommandFailed("neither a code nor a log line is given",
                        "for example: qcmapctl explain 13, or journalctl | qcmapctl explain");
  }
  bool any = false;
  for (std::string line; std::getline(std::cin, line);) {
    const Json json = ExplainText(line);
    if (json.is_null()) continue;
    any = true;
    PrintLine({json, DescribeLine()}, options);
  }
  if (!any) throw CommandFailed(Failure::NOT_EXPLAINED, "standard input");
  return {};
}

Report Explain(const Options& options, const std::vector<std::string>& words) {
  if (words.empty()) return ExplainInput(options);
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  const Json code = ExplainWord(text);
  if (!code.is_null()) return {code, AsSentence("code {code}: {meaning}\n  next: {next}")};
  const Json line = ExplainText(text);
  if (line.is_null()) throw CommandFailed(Failure::NOT_EXPLAINED, "'" + Printable(text) + "'");
  return {line, DescribeLine()};
}

}  // namespace

void AddExplain(CommandLine& line) {
  const auto words = std::make_shared<std::vector<std::string>>();
  CLI::App* explain = line.AddObject(
      "explain", "Explain an error code or a log line, or the log lines on standard input",
      [words](Context& context) { return Explain(context.options, *words); });
  explain->footer(DescribeCodes());
  line.SetTimeLimit(explain, kNoLimit);
  explain->add_option("TEXT", *words, "a code, or a line of the log; without it, standard input")
      ->option_text(" ");
}

}  // namespace qcmapctl
