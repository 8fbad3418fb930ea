#include "session/frame_parts.h"

#include <cmath>
#include <cstdio>
#include <stdexcept>
#include <utility>

#include "session/frame_files.h"
#include "session/hash.h"
#include "session/metadata.h"
#include "session/npy.h"

namespace morvale::session {
namespace {

void check(const SessionInfo& info, const FrameInput& input, const FrameOutput& output) {
  if (!input.nv21.empty() && input.nv21.size() != pixel_bytes(input))
    throw std::runtime_error(std::to_string(input.nv21.size()) + " bytes of pixels do not fit its size");
  if (!output.logits.empty() && output.logits.size() != logit_count(info))
    throw std::runtime_error(std::to_string(output.logits.size()) +
                             " scores are not those of the session's model");
  if (!output.labels.empty() && !is_label_map(info, output.labels.size()))
    throw std::runtime_error(std::to_string(output.labels.size()) +
                             " bytes are no label map of the session's model");
}

std::string six_digits(int index) {
  char digits[16];
  std::snprintf(digits, sizeof digits, "%06d", index);
  return digits;
}

std::string shape_text(const MorvaleData_t& record) {
  return "_" + std::to_string(record.width) + "x" + std::to_string(record.height) + "_s" +
         std::to_string(row_bytes(record));
}

std::string shape_text(const SessionInfo& info, size_t label_bytes) {
  const size_t columns = static_cast<size_t>(info.net_size);
  return "_" + std::to_string(columns) + "x" + std::to_string(label_bytes / columns / morvale::kLabels) +
         "x" + std::to_string(morvale::kLabels);
}

FrameLine line_of(const FrameInput& input, const FrameOutput& output) {
  FrameLine line;
  line.input = {input.record, input.chroma, input.has_planes, input.after_process, input.later, {}, {}};
  line.process_result = output.process_result;
  line.execute_result = output.execute_result;
  if (!output.logits.empty() && !line.execute_result) line.execute_result = 0;
  if (output.network_ms && std::isfinite(*output.network_ms)) line.network_ms = output.network_ms;
  line.hashes.record = hash_text(&output.result, sizeof output.result);
  return line;
}

}  // namespace

std::span<const uint8_t> FrameParts::keep(std::vector<uint8_t> bytes) {
  return memory_.emplace_back(std::move(bytes));
}

void FrameParts::store(const std::string& name, std::span<const uint8_t> bytes, std::string& name_in_line,
                       std::string& hash_in_line) {
  if (compressor_ != nullptr)
    parts_.push_back({name + kCompressedEnding, keep(compressor_->compress(bytes))});
  else
    parts_.push_back({name, bytes});
  name_in_line = parts_.back().name;
  hash_in_line = hash_text(parts_.back().bytes.data(), parts_.back().bytes.size());
}

FrameParts::FrameParts(int index, const SessionInfo& info, const FrameInput& frame, const FrameOutput& output,
                       std::span<const uint8_t> preview, Compressor* compressor)
    : compressor_(compressor) {
  check(info, frame, output);
  FrameLine line = line_of(frame, output);
  const std::string number = six_digits(index);
  const std::string picture = "frames/" + number + shape_text(frame.record);
  if (frame.thin)
    store(picture + ".thin", keep(thin_bytes(*frame.thin)), line.thin, line.hashes.thin);
  else if (!frame.nv21.empty())
    store(picture + ".nv21", frame.nv21, line.pixels, line.hashes.pixels);
  if (!output.logits.empty()) {
    const std::vector<int32_t> shape{info.net_size, info.net_size, morvale::kLabels};
    store("logits/" + number + ".npy", keep(npy_bytes(shape, output.logits)), line.logits,
          line.hashes.logits);
  }
  if (!output.labels.empty())
    store("labels/" + number + shape_text(info, output.labels.size()) + ".bin", output.labels, line.labels,
          line.hashes.labels);
  if (!preview.empty()) {
    compressor_ = nullptr;  // it is compressed
    store("previews/" + number + ".jpg", preview, line.preview, line.hashes.preview);
  }
  line_ = frame_text(index, line);
}

}  // namespace morvale::session
