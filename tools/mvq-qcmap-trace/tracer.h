/// Shows what passes the seam, records it, or plays a recording.
#pragma once

#include <atomic>
#include <memory>
#include <new>
#include <string>

#include "event.h"
#include "line_file.h"
#include "options.h"
#include "recording.h"
#include "replay.h"

namespace trace {

/// Lives from the first call until the process ends.
class Tracer {
 public:
  static Tracer& Get();

  /// Null unless a recording is played.
  Replay* replay() const { return replay_.get(); }

  IndicationCount Count() const { return {come_, returned_}; }
  /// To be called after the indication has been reported, so that a call which counts it is
  /// recorded later.
  void CountCome() { ++come_; }
  void CountReturned() { ++returned_; }

  /// `answers` makes a tuple of the answers, if there are any.
  template <typename Arguments, typename Answers>
  void Report(const Event& event, const seam::Request& names, const Arguments& arguments,
              const Answers& answers) {
    const bool is_shown = IsShown(event);
    if (!is_shown && recorder_ == nullptr) return;
    const Unnoticed unnoticed;
    const auto texts = [&](seam::Printer::Style style) {
      return Texts{Text(style, names.arguments, arguments),
                   event.ok ? Text(style, names.answers, answers()) : "{}"};
    };
    try {
      if (is_shown) Show(event, texts(style_));
      if (recorder_ != nullptr) recorder_->Append(event, texts(seam::Printer::kJson), Count());
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
  void Show(const Event& event, const Texts& texts);

  const Options options_;
  const seam::Printer::Names host_names_;
  const seam::Printer::Style style_;
  std::unique_ptr<LineFile> output_;
  std::unique_ptr<Recorder> recorder_;
  std::unique_ptr<Replay> replay_;
  std::atomic<unsigned> come_{0}, returned_{0};
};

}  // namespace trace
