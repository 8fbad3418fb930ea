/// What becomes of replayed frames: lines, a recording, a report, a trace.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "common/diverted_output.h"
#include "replay/replay_options.h"
#include "report/report_page.h"
#include "service/record_difference.h"
#include "service/trace.h"

namespace tool {

struct ReplayedFrame {
  const SourceFrame& source;
  const FrameReport& report;
  std::span<const uint8_t> planes;  ///< the pixels after the library has drawn into them
  Trace::Time read_begin;           ///< when the frame began to be fetched from its source
  StageTimes times;                 ///< the network's as recorded where a recording answers for it
};

class ReplayOutput {
 public:
  virtual ~ReplayOutput() = default;
  virtual void add(const ReplayedFrame& frame) = 0;
  /// Behind the last frame. `comparison` is empty when the records are not compared with recorded ones.
  virtual void finish(const std::optional<RecordComparison>& comparison) = 0;
};

std::unique_ptr<ReplayOutput> make_line_output(LineFormat format, bool heading, bool times,
                                               const std::string& source_name, DivertedOutput& data);
/// Throws UsageError when the folder cannot be made or is not empty.
std::unique_ptr<ReplayOutput> make_record_output(const std::string& folder,
                                                 const morvale::session::SessionInfo& info);
std::unique_ptr<ReplayOutput> make_report_output(const std::string& folder, ReportHead head);
/// One frame, annotated as `morvale analyze --out` does it. Throws UsageError when the frame does not come.
std::unique_ptr<ReplayOutput> make_picture_output(int frame, const std::string& file,
                                                  const std::string& source_name);
std::unique_ptr<ReplayOutput> make_trace_output(const std::string& file, const std::string& source_name);

}  // namespace tool
