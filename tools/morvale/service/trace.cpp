#include "service/trace.h"

#include <cstdio>

#include "common/atomic_file.h"
#include "session/json.h"

namespace tool {
namespace {

std::string quoted(const std::string& text) { return morvale::session::Json(text).dump(); }

}  // namespace

void Trace::add(int number, const std::string& name, Time read_begin, const FrameReport& report) {
  if (empty_) start_ = read_begin;
  const FrameTimes& times = report.times;
  const std::string frame = "frame " + std::to_string(number);
  span(frame.c_str(), read_begin, times.done,
       "{\"input\":" + quoted(name) + ",\"process\":" + std::to_string(report.process) +
           ",\"gated\":" + (report.gated ? "true" : "false") + "}");
  span("source", read_begin, times.start);
  span("Morvale_process", times.start, times.processed);
  if (report.network) {
    span("shrink, pad, normalise", times.start, report.network->begin);
    span("network", report.network->begin, report.network->end);
    span("scale to bytes, smooth", report.network->end, times.processed);
  }
  span("Morvale_core_afterProcss", times.processed, times.analysed);
  span("Morvale_core_getresult", times.analysed, times.done);
  counter("humanRatio", times.done, report.record.humanRatio);
  counter("persons", times.done, static_cast<int64_t>(report.person_boxes.size()));
  for (const LogLine& line : report.log) {
    char text[96];
    std::snprintf(text, sizeof text, "\"ph\":\"i\",\"s\":\"t\",\"pid\":1,\"tid\":1,\"ts\":%.3f",
                  us(times.done));
    event("{\"name\":" + quoted(line.text) + "," + text + "}");
  }
}

void Trace::span(const char* name, Time begin, Time end, const std::string& arguments) {
  char text[128];
  std::snprintf(text, sizeof text, "\"ph\":\"X\",\"pid\":1,\"tid\":1,\"ts\":%.3f,\"dur\":%.3f", us(begin),
                us(end) - us(begin));
  event("{\"name\":" + quoted(name) + "," + text + ",\"args\":" + arguments + "}");
}

void Trace::counter(const char* name, Time at, int64_t value) {
  char text[160];
  std::snprintf(text, sizeof text,
                "{\"name\":\"%s\",\"ph\":\"C\",\"pid\":1,\"ts\":%.3f,\"args\":{\"value\":%lld}}", name,
                us(at), static_cast<long long>(value));
  event(text);
}

void Trace::event(const std::string& json) {
  events_ += (empty_ ? "" : ",\n") + json;
  empty_ = false;
}

void Trace::write(const std::filesystem::path& file) const {
  const std::string text =
      "{\"displayTimeUnit\":\"ms\",\"traceEvents\":[\n" + events_ + (empty_ ? "" : ",\n") +
      "{\"name\":\"process_name\",\"ph\":\"M\",\"pid\":1,\"args\":{\"name\":\"morvale\"}}\n]}\n";
  write_file(file, {text.begin(), text.end()});
}

}  // namespace tool
