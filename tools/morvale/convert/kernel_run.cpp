#include "convert/kernel_run.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "common/command.h"
#include "common/diverted_output.h"
#include "kernel_list/on_pictures.h"
#include "pictures/opencv_module.h"

namespace tool {
namespace {

using kernel_list::Status;

Picture blank(Layout layout, FrameSize size) {
  Picture picture{layout, size, {}};
  if (layout == Layout::kNv21) picture.bytes.resize(static_cast<size_t>(size.pixels()), 0);
  constexpr uint8_t kNeutralChroma = 128;
  picture.bytes.resize(static_cast<size_t>(byte_count(layout, size)),
                       layout == Layout::kNv21 ? kNeutralChroma : uint8_t{0});
  return picture;
}

void check_result_size(const Kernel& kernel, FrameSize in, FrameSize out) {
  const std::string what =
      std::string(kernel.name) + " of " + text_of(in) + ": the result of " + text_of(out);
  if (out.width < 1 || out.height < 1) throw UsageError(what + " is empty; give a larger picture.");
  if (byte_count(kernel.gives, out) > std::numeric_limits<int32_t>::max())
    throw UsageError(what + " would take more than 2 GiB; give a smaller picture.");
}

UsageError refusal(const Kernel& kernel, FrameSize in, Status status) {
  std::string reason = morvale::checked::message(status);
  reason[0] = static_cast<char>(reason[0] | 0x20);  // goes on behind a colon
  return UsageError(std::string(kernel.name) + " of " + text_of(in) + ": " + reason);
}

/// The vectors hold what the arguments point to.
Status add_blur(kernel_list::Arguments& arguments, std::vector<uint16_t>& weights, std::vector<uint8_t>& grid,
                const KernelFlags& flags) {
  // Three standard deviations hold all but a four-hundredth of the weight.
  constexpr float kMostRadius = morvale::kMaxBlurRadius;
  const auto reach = static_cast<int>(std::min(std::ceil(3 * flags.sigma), kMostRadius));
  kernel_list::Blur& blur = arguments.blur;
  blur.radius = flags.radius.value_or(reach);
  weights.resize(2 * static_cast<size_t>(blur.radius) + 1);
  blur.weights = weights;
  const Status status = kernel_list::checked::GFilterCreation(flags.sigma, blur.radius, blur.bits, weights);
  if (status != Status::kOk) return status;
  grid = opencv().blur_grid(flags.grid, {arguments.width, arguments.height});
  blur.grid = grid;
  return status;
}

}  // namespace

Picture run_kernel(const Kernel& kernel, const Picture& in, const KernelFlags& flags) {
  kernel_list::Arguments arguments = arguments_of(kernel, in.size, flags);
  const auto [width, height] = kernel_list::result_size(kernel, arguments);
  const FrameSize size{width, height};
  check_result_size(kernel, in.size, size);
  Picture out = blank(kernel.gives, size);
  std::vector<uint16_t> weights;
  std::vector<uint8_t> grid;
  Status status = Status::kOk;
  if (kernel.group == kernel_list::Group::kBlurred) status = add_blur(arguments, weights, grid, flags);
  // One kernel prints a line on standard output by contract.
  const DivertedOutput quiet(STDOUT_FILENO);
  if (status == Status::kOk) status = run_with_room(kernel, in.bytes, out.bytes, arguments);
  if (status != Status::kOk) throw refusal(kernel, in.size, status);
  return out;
}

}  // namespace tool
