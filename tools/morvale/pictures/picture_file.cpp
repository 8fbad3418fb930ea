#include "pictures/picture_file.h"

#include <algorithm>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <morvale/checked.h>
#include "common/atomic_file.h"
#include "common/command.h"
#include "common/input_file.h"
#include "pictures/picture_decoder.h"

namespace tool {
namespace {

namespace fs = std::filesystem;
namespace checked = morvale::checked;

/// For calls whose buffers are sized here: only a fault of this program could fail them.
void expect_ok(checked::Status status) {
  if (status != checked::Status::kOk) throw RunError(checked::message(status));
}

FrameSize raw_size(const std::string& path, std::optional<FrameSize> size) {
  const FrameShape named = shape_from_name(path);
  const std::string ending = fs::path(path).extension().string();
  if (!size && !named.size)
    throw UsageError(path +
                     ": the size of a raw picture is unknown; pass --size WxH or name the file NAME_WxH" +
                     ending + ".");
  if (!size && named.stride && named.stride != named.size->width)
    throw UsageError(path + ": rows of " + std::to_string(*named.stride) +
                     " bytes cannot be read here; give a file of packed rows.");
  const FrameSize found = size.value_or(named.size.value_or(FrameSize{}));
  const auto usable = [](int side) { return side >= 1 && side <= kLargestSide; };
  if (!usable(found.width) || !usable(found.height))
    throw UsageError(path + ": the sides of " + text_of(found) + " must be 1 to " +
                     std::to_string(kLargestSide) + ".");
  return found;
}

Picture read_raw(const std::string& path, Layout layout, std::optional<FrameSize> size) {
  Picture picture{layout, raw_size(path, size), {}};
  const auto expected = static_cast<uint64_t>(byte_count(layout, picture.size));
  const std::optional<uint64_t> found = file_length(path);
  if (found != expected)
    throw UsageError(path + ": " + name_of(layout) + " of " + text_of(picture.size) + " takes " +
                     std::to_string(expected) + " bytes but the file has " +
                     (found ? std::to_string(*found) : "no length") + "; check the size or the file.");
  picture.bytes = read_bytes(path, expected);
  return picture;
}

std::vector<uint8_t> bytes_of(const cv::Mat& mat) {
  const cv::Mat whole = mat.isContinuous() ? mat : mat.clone();
  return {whole.data, whole.data + whole.total() * whole.elemSize()};
}

void swap_pairs(std::vector<uint8_t>& bytes, size_t from) {
  for (size_t at = from; at + 1 < bytes.size(); at += 2) std::swap(bytes[at], bytes[at + 1]);
}

Picture nv21_of(const std::string& path, const cv::Mat& bgr) {
  const FrameSize size{bgr.cols & ~1, bgr.rows & ~1};
  if (size.pixels() == 0) throw UsageError(path + ": NV21 needs at least 2x2 pixels; give a larger picture.");
  Picture picture{Layout::kNv21, size, {}};
  picture.bytes.resize(static_cast<size_t>(byte_count(Layout::kNv21, size)));
  expect_ok(checked::BGRtoNV21(bytes_of(bgr(cv::Rect(0, 0, size.width, size.height))), picture.bytes,
                               size.width, size.height));
  return picture;
}

Picture from_photograph(const std::string& path, const cv::Mat& bgr, Layout wanted) {
  Picture picture{wanted, {bgr.cols, bgr.rows}, {}};
  switch (wanted) {
    case Layout::kNv21:
      return nv21_of(path, bgr);
    case Layout::kNv12:
      picture = nv21_of(path, bgr);
      picture.layout = wanted;
      swap_pairs(picture.bytes, static_cast<size_t>(picture.size.pixels()));
      return picture;
    case Layout::kRgb: {
      cv::Mat rgb;
      cv::cvtColor(bgr, rgb, cv::COLOR_BGR2RGB);
      picture.bytes = bytes_of(rgb);
      return picture;
    }
    case Layout::kBgr:
      picture.bytes = bytes_of(bgr);
      return picture;
    case Layout::kY:
      picture.bytes.resize(bgr.total());
      expect_ok(checked::BGR2GRAY(bytes_of(bgr), picture.bytes, bgr.cols, bgr.rows));
      return picture;
    default:
      throw UsageError(path + ": a picture cannot become " + name_of(wanted) + "; give a raw file.");
  }
}

/// What an encoder takes: BGR or grey.
cv::Mat encodable(const Picture& picture) {
  const auto [width, height] = picture.size;
  auto* bytes = const_cast<uint8_t*>(picture.bytes.data());
  cv::Mat bgr(height, width, CV_8UC3);
  switch (picture.layout) {
    case Layout::kNv21: {
      const std::span<const uint8_t> luma = picture.bytes;
      std::vector<uint8_t> vu(luma.begin() + picture.size.pixels(), luma.end());
      vu.push_back(128);  // the last U of an odd width lies behind the picture: neutral
      expect_ok(checked::NV21toRGB(luma, vu, {bgr.data, bgr.total() * 3}, width, height));
      cv::cvtColor(bgr, bgr, cv::COLOR_RGB2BGR);
      return bgr;
    }
    case Layout::kRgb:
      cv::cvtColor(cv::Mat(height, width, CV_8UC3, bytes), bgr, cv::COLOR_RGB2BGR);
      return bgr;
    case Layout::kPlanarBgr: {
      std::vector<cv::Mat> planes;
      for (int k = 0; k < 3; ++k)
        planes.emplace_back(height, width, CV_8UC1, bytes + k * picture.size.pixels());
      cv::merge(planes, bgr);
      return bgr;
    }
    case Layout::kY:
      return {height, width, CV_8UC1, bytes};
    case Layout::kBgr:
      return {height, width, CV_8UC3, bytes};
    default:
      throw RunError(std::string("there is no way from ") + name_of(picture.layout) + " to a picture.");
  }
}

std::vector<uint8_t> encoded(const std::string& path, const Picture& picture) {
  std::vector<uint8_t> file;
  try {
    if (cv::imencode(fs::path(path).extension().string(), encodable(picture), file)) return file;
  } catch (const cv::Exception&) {
    // A size that the format cannot hold.
  }
  throw UsageError(path + ": a picture of " + text_of(picture.size) +
                   " cannot be encoded so; choose another ending.");
}

}  // namespace

Picture read_picture(const std::string& path, std::optional<FrameSize> size, std::optional<Layout> wanted) {
  check_readable(path);
  if (const std::optional<Layout> layout = layout_of_file(path)) {
    if (wanted && layout != wanted)
      throw UsageError(path + ": holds " + name_of(*layout) + " but " + name_of(*wanted) +
                       " is needed; give a " + endings_of(*wanted) + " file or a photograph.");
    return read_raw(path, *layout, size);
  }
  if (!cv::haveImageReader(path))
    throw UsageError(path +
                     ": neither a picture that can be read nor named like a raw file; give PNG, JPEG or "
                     "the like, or .nv21, .rgb, .y and so on.");
  const cv::Mat bgr = size ? decode_photograph(path, *size) : decode_photograph(path);
  return from_photograph(path, bgr, wanted.value_or(Layout::kBgr));
}

void check_target(const std::string& path, Layout layout) {
  std::error_code error;
  const fs::path folder = fs::path(path).parent_path();
  if (fs::is_directory(path, error)) throw UsageError(path + ": is a folder; name a file.");
  if (!folder.empty() && !fs::is_directory(folder, error))
    throw UsageError(path + ": the folder " + folder.string() + " does not exist; make it first.");
  const std::optional<Layout> named = layout_of_file(path);
  if (named == layout) return;
  const bool has_ending = fs::path(path).has_extension();
  if (!named && layout != Layout::kHsv && has_ending && cv::haveImageWriter(path)) return;
  throw UsageError(path + ": the result is " + name_of(layout) + "; name the file " + endings_of(layout) +
                   (layout == Layout::kHsv ? "." : ", or .png and the like."));
}

void write_picture(const std::string& path, const Picture& picture) {
  write_file(path, layout_of_file(path) ? picture.bytes : encoded(path, picture));
}

}  // namespace tool
