#include "record/thin_frame.h"

#include <algorithm>

#include "core/frame.h"
#include "core/frame_geometry.h"
#include "imgproc/sampled_nv21.h"
#include "session/frame_files.h"

namespace morvale::record {
namespace {

using session::ChromaPlace;
using session::ThinFrame;
using session::ThinPlane;

/// Rows past the plane's last one are it.
ThinPlane thin_plane(const SourcePlane& plane, const SampledPlane& sampled, int channels, int64_t offset) {
  ThinPlane thin;
  const ptrdiff_t bytes = plane.end - plane.data;
  if (bytes < channels) return thin;
  thin.offset = static_cast<uint32_t>(offset);
  thin.bytes = static_cast<uint32_t>(bytes);
  thin.row_bytes = static_cast<uint32_t>(plane.stride);
  const ptrdiff_t last_row = (bytes - channels) / plane.stride;
  for (const int32_t row : sampled.rows) {
    if (row > last_row && !thin.rows.empty() && thin.rows.back() == last_row) break;
    thin.rows.push_back(static_cast<uint32_t>(std::min<ptrdiff_t>(row, last_row)));
  }
  thin.columns.assign(sampled.columns.begin(), sampled.columns.end());
  return thin;
}

}  // namespace

std::optional<ThinFrame> thin_frame(const MorvaleData_t& record, const session::FrameInput& input,
                                    int32_t pad_size) {
  const std::optional<Frame> frame = usable_frame(record);
  if (!frame) return std::nullopt;
  const FrameGeometry shrunk = frame_geometry(frame->height, frame->width, pad_size);
  const SampledNv21 sampled = sampled_nv21(frame->width, frame->height, shrunk.width, shrunk.height);
  ThinFrame thin{thin_plane(frame->luma, sampled.luma, 1, 0),
                 thin_plane(frame->chroma, sampled.chroma, 2, session::chroma_offset(input)),
                 {}};
  take_samples(thin, frame->luma.data, frame->chroma.data);
  return thin;
}

std::optional<ThinFrame> thin_frame(const session::FrameInput& whole, int32_t pad_size) {
  MorvaleData_t record = whole.record;
  std::vector<uint8_t> chroma;
  // The library only reads.
  record.yPlane = record.uvPlane = const_cast<uint8_t*>(whole.nv21.data());
  const auto behind = whole.nv21.begin() + session::chroma_offset(whole);
  if (whole.chroma == ChromaPlace::kBehind) record.uvPlane = const_cast<uint8_t*>(std::to_address(behind));
  if (whole.chroma == ChromaPlace::kApart) {  // elsewhere: else it would follow the luma plane
    chroma.assign(behind, whole.nv21.end());
    record.uvPlane = chroma.data();
  }
  return thin_frame(record, whole, pad_size);
}

}  // namespace morvale::record
