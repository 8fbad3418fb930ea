/// A trace of a session's stages that https://ui.perfetto.dev opens: Chrome's JSON trace events.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>

#include "service/camera_service.h"

namespace tool {

class Trace {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// `read_begin`: when the frame began to be fetched from its source.
  void add(int number, const std::string& name, Time read_begin, const FrameReport& report);

  /// Throws RunError.
  void write(const std::filesystem::path& file) const;

 private:
  void span(const char* name, Time begin, Time end, const std::string& arguments = "{}");
  void counter(const char* name, Time at, int64_t value);
  void event(const std::string& json);
  double us(Time time) const { return std::chrono::duration<double, std::micro>(time - start_).count(); }

  bool empty_ = true;
  Time start_;
  std::string events_;
};

}  // namespace tool
