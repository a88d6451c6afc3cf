/// Shows what passes the seam, records it, or plays a recording.
#pragma once

#include <memory>
#include <new>
#include <string>

#include "event.h"
#include "line_file.h"
#include "options.h"
#include "recording.h"
#include "replay.h"

namespace trace {

/// Calls the callback of the client that got this indication. `number` is its place in the
/// recording.
void Deliver(const Event& indication, uint32_t number);

/// Lives from the first call until the process ends.
class Tracer {
 public:
  static Tracer& Get();

  /// Null unless a recording is played.
  Replay* replay() const { return replay_.get(); }

  Event Begin(const seam::Request& names, unsigned client) const {
    return {names.name, client, recorder_ != nullptr ? recorder_->count() : 0};
  }

  /// `answers` makes a tuple of the answers, if there are any.
  template <typename Arguments, typename Answers>
  void Report(Event event, const seam::Request& names, const Arguments& arguments,
              const Answers& answers) {
    const bool is_shown = IsShown(event);
    if (!is_shown && recorder_ == nullptr) return;
    const Unnoticed unnoticed;
    std::string arguments_text, answer_text;
    const auto describe = [&](seam::Printer::Style style) {
      arguments_text = Text(style, names.arguments, arguments);
      answer_text = event.ok ? Text(style, names.answers, answers()) : "{}";
      event.arguments.text = arguments_text;
      event.answer.text = answer_text;
    };
    try {
      if (is_shown) {
        describe(style_);
        Show(event);
      }
      if (recorder_ != nullptr) {
        describe(seam::Printer::kJson);
        recorder_->Append(event);
      }
    } catch (const std::bad_alloc&) {  // the program goes on without this line
    }
  }

  template <typename Names, typename Values>
  std::string Text(seam::Printer::Style style, const Names& names, const Values& values) const {
    std::string text;
    text.reserve(200);
    text += '{';
    seam::Printer(text, style, host_names_).Members(names, values);
    return text + '}';
  }

 private:
  explicit Tracer(const Options& options);

  bool IsShown(const Event& event) const;
  void Show(Event& event);

  const Options options_;
  const seam::Printer::Style style_;
  std::unique_ptr<LineFile> output_;
  std::unique_ptr<Recorder> recorder_;
  std::unique_ptr<Replay> replay_;
  seam::Printer::Names host_names_;
};

}  // namespace trace
