/// The module morvale.kernels: the image kernels on NumPy arrays, each behind its checks.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <cctype>
#include <optional>
#include <string>
#include <vector>

#include "arrays.h"
#include "kernel_list/on_pictures.h"
#include "kernels/processor.h"

namespace py = pybind11;

namespace {

using namespace kernel_list;
using namespace numpy;

/// What Python calls a kernel: input and output; others have the kernel's name in lower case.
struct Name {
  std::string_view kernel;
  const char* python;
  const char* note = "";  ///< behind the summary
};
constexpr Name kNames[] = {
    {"NV21toRGB", "nv21_to_rgb"},
    {"NV21toBGR", "nv21_to_bgr"},
    {"NV21toBGR_planar", "nv21_to_bgr_planes"},
    {"NV21toRGB_pad", "nv21_to_rgb_padded"},
    {"NV21toBGR_pad", "nv21_to_bgr_padded"},
    {"NV12toRGB_pad", "nv12_to_rgb_padded"},
    {"NV21toBGR_pad_lsi", "nv21_to_bgr_planes_padded"},
    {"RGBtoNV21", "rgb_to_nv21"},
    {"BGRtoNV21", "bgr_to_nv21"},
    {"BGR2GRAY", "bgr_to_gray"},
    {"BGR2HSV", "bgr_to_hsv"},
    {"resize_NV21_opt", "resize_nv21_opt", "; here they are one array"},
    {"rotate_y_opt", "rotate_y_opt", ", with a line on standard output"},
    {"GaussianBlur_Grid_Hori", "gaussian_blur_grid_hori"},
    {"GaussianBlur_Grid_Vert", "gaussian_blur_grid_vert"},
};

const Name* name_of(std::string_view kernel) {
  const Name* found = std::find_if(std::begin(kNames), std::end(kNames),
                                   [&](const Name& name) { return name.kernel == kernel; });
  return found == std::end(kNames) ? nullptr : found;
}

std::string python_name(std::string_view kernel) {
  if (const Name* name = name_of(kernel)) return name->python;
  std::string lower(kernel);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
  return lower;
}

struct LayoutText {
  const char* argument;
  const char* shape;
};
/// By Layout.
constexpr LayoutText kLayouts[] = {
    {"nv21", "uint8 (height + (height + 1) // 2, width): luma rows, then rows of V, U pairs"},
    {"nv12", "uint8 (height + (height + 1) // 2, width): luma rows, then rows of U, V pairs"},
    {"rgb", "uint8 (height, width, 3)"},
    {"bgr", "uint8 (height, width, 3)"},
    {"planes", "uint8 (3, height, width): blue, green, red"},
    {"y", "uint8 (height, width)"},
    {"hsv", "float32 (height, width, 3): hue in degrees, saturation and value 0 to 255"},
};
const LayoutText& text_of(Layout layout) { return kLayouts[static_cast<size_t>(layout)]; }

bool is_frame(Layout layout) { return layout == kNv21 || layout == kNv12; }

/// As the layout has it in an array.
std::vector<py::ssize_t> shape_for(Layout layout, Size size) {
  const py::ssize_t width = size.width, height = size.height;
  if (is_frame(layout)) return {height + (height + 1) / 2, width};
  if (layout == kY) return {height, width};
  if (layout == kPlanarBgr) return {3, height, width};
  return {height, width, 3};
}

// ---- One call ----

py::array new_array(Layout layout, const std::vector<py::ssize_t>& shape) {
  return layout == kHsv ? py::array(py::array_t<float>(shape)) : py::array(py::array_t<uint8_t>(shape));
}

/// What some kernels leave of their result is black.
void blacken(const Kernel& kernel, const Arguments& arguments, Size size, const View& target) {
  const bool odd = ((arguments.width | arguments.height | size.width | size.height) & 1) != 0;
  if (kernel.group != kPadded && !(kernel.gives == kNv21 && odd)) return;
  constexpr uint8_t kNeutralChroma = 128;
  const size_t luma = static_cast<size_t>(size.width) * static_cast<size_t>(size.height);
  std::fill_n(target.data, target.bytes, kernel.gives == kNv21 ? kNeutralChroma : uint8_t{0});
  if (kernel.gives == kNv21) std::fill_n(target.data, luma, uint8_t{0});
}

py::array target_of(const Kernel& kernel, const Arguments& arguments, const py::object& out) {
  const Size size = result_size(kernel, arguments);
  const std::vector<py::ssize_t> shape = shape_for(kernel.gives, size);
  if (out.is_none()) {
    py::array fresh = new_array(kernel.gives, shape);
    blacken(kernel, arguments, size, view_of(fresh));
    return fresh;
  }
  py::array array = array_of(out, "out");
  const bool values = kernel.gives == kHsv ? holds<float>(array) : holds<uint8_t>(array);
  const bool lies = kernel.group == kRegion ? has_rows(array) : is_packed(array);
  if (!values || !lies || !array.writeable() || shape_of(array) != shape)
    refuse("out",
           std::string(kernel.gives == kHsv ? "float32 " : "uint8 ") + shape_text(shape) +
               (kernel.group == kRegion ? ", each row contiguous" : ", contiguous") + " and writable",
           array);
  return array;
}

void check_apart(const View& source, const View& target) {
  if (source.data < target.data + target.bytes && target.data < source.data + source.bytes)
    throw py::value_error("out must not share memory with the source");
}

Status run(const Kernel& kernel, Source source, Target target, const Arguments& arguments) {
  const py::gil_scoped_release other_threads_may_run;
  const Status status = kernel.checked(source, target, arguments);
  const bool has_picture =
      static_cast<int64_t>(source.size()) >= byte_count(kernel.takes, arguments.width, arguments.height);
  if (status == Status::kDestinationTooSmall || (status == Status::kSourceTooSmall && has_picture))
    return run_with_room(kernel, source, target, arguments);
  return status;
}

/// What a kernel takes beside sizes.
const char* limits_of(const Kernel& kernel) {
  switch (kernel.group) {
    case kPadded:
      return " Margins may be as large as the frame's sides.";
    case kByFactor:
      return " The factor may be 1 to 64.";
    case kBlurred:
      return " The width may be up to 4800, bits are 8 or 14.";
    default:
      return "";
  }
}

py::value_error refusal(const Kernel& kernel, Status status, const Arguments& a) {
  std::string text = python_name(kernel.name) + ": " + morvale::checked::message(status);
  if (status == Status::kBadSize) text += limits_of(kernel);
  if (status == Status::kSourceTooSmall && is_frame(kernel.takes))
    text += " " + std::string(text_of(kernel.takes).argument) + " must be uint8 " +
            shape_text(shape_for(kernel.takes, {a.width, a.height})) + ".";
  return py::value_error(text);
}

py::array call(const Kernel& kernel, const View& source, Arguments arguments, const py::object& out) {
  const Source bytes(source.data, source.bytes);
  // Sizes that no buffer would do for are told before memory is asked for.
  if (const Status status = kernel.checked(bytes, {}, arguments); status == Status::kBadSize)
    throw refusal(kernel, status, arguments);
  py::array result = target_of(kernel, arguments, out);
  const View target = kernel.group == kRegion ? rows_of(result, arguments.out_width) : view_of(result);
  check_apart(source, target);
  const Status status = run(kernel, bytes, {target.data, target.bytes}, arguments);
  if (status != Status::kOk) throw refusal(kernel, status, arguments);
  return result;
}

/// A frame's array has its size in two dimensions, or is as many bytes in one.
View frame_view(const Kernel& kernel, const py::array& array, int width, int height) {
  const py::ssize_t rows = py::ssize_t{height} + height / 2, more = height % 2;
  const bool fits = array.ndim() == 1 || (array.ndim() == 2 && array.shape(1) == width &&
                                          (array.shape(0) == rows || array.shape(0) == rows + more));
  const bool enough = array.nbytes() >= rows * width;
  if (!holds<uint8_t>(array) || !is_packed(array) || !fits || !enough)
    refuse(text_of(kernel.takes).argument,
           "uint8 " + shape_text(shape_for(kernel.takes, {width, height})) +
               ", contiguous, or so many bytes or more in one dimension",
           array);
  return view_of(array);
}

/// A picture's array tells its size.
View picture_view(const Kernel& kernel, const py::array& array, Arguments& arguments) {
  const LayoutText& text = text_of(kernel.takes);
  const bool sides =
      array.ndim() == (kernel.takes == kY ? 2 : 3) && (kernel.takes == kY || array.shape(2) == 3);
  const bool lies = kernel.group == kRegion ? has_rows(array) : is_packed(array);
  if (!holds<uint8_t>(array) || !sides || !lies ||
      std::max(array.shape(0), array.shape(1)) >= morvale::checked::kSizeEnd)
    refuse(text.argument,
           std::string(text.shape) + (kernel.group == kRegion ? ", each row contiguous" : ", contiguous"),
           array);
  arguments.width = static_cast<int>(array.shape(1));
  arguments.height = static_cast<int>(array.shape(0));
  if (kernel.group != kRegion) return view_of(array);
  arguments.region = {0, 0, arguments.width, arguments.height};
  arguments.out_width = result_size(kernel, arguments).width;
  return rows_of(array, arguments.width);
}

// ---- The functions ----

/// Of the entry alone: in the list "the same" is the kernel above.
std::string summary_of(const Kernel& kernel) {
  constexpr std::string_view kSame = "the same";
  std::string summary = kernel.summary;
  if (summary.starts_with(kSame))
    summary = "as " + python_name((&kernel - 1)->name) + summary.substr(kSame.size());
  if (const Name* name = name_of(kernel.name)) summary += name->note;
  summary[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(summary[0])));
  return summary;
}

std::string doc_of(const Kernel& kernel, const std::string& notes) {
  const LayoutText &takes = text_of(kernel.takes), &gives = text_of(kernel.gives);
  std::string text = summary_of(kernel) + " (the kernel " + std::string(kernel.name) + ").\n\n" +
                     takes.argument + ": " + takes.shape +
                     (kernel.group == kRegion ? "; rows may lie apart, as in y[2:9, 4:20]" : "") + "\n";
  if (is_frame(kernel.takes)) text += "width, height: of the frame, in pixels\n";
  text += notes;
  text +=
      std::string(
          "out: an array for the result, of exactly its shape (default: a new one)\n\nReturns the result, ") +
      gives.argument + ": " + gives.shape +
      ".\nRaises ValueError for an array that is not so, and for sizes that the kernel is not made for.";
  return text;
}

/// Adds a function whose arguments between the sizes and `out` are put into the kernel's by `fill`.
template <class... Values, class... Names>
void add(py::module_& module, const Kernel& kernel, void (*fill)(const Kernel&, Arguments&, Values...),
         const std::string& notes, const Names&... names) {
  const std::string name = python_name(kernel.name), doc = doc_of(kernel, notes);
  const char* source_name = text_of(kernel.takes).argument;
  const auto out_name = py::arg("out") = py::none();
  if (is_frame(kernel.takes))
    module.def(
        name.c_str(),
        [&kernel, fill, source_name](const py::object& source, Whole width, Whole height, Values... values,
                                     const py::object& out) {
          const View view = frame_view(kernel, array_of(source, source_name), width.value, height.value);
          Arguments arguments{.width = width.value, .height = height.value};
          fill(kernel, arguments, values...);
          return call(kernel, view, arguments, out);
        },
        doc.c_str(), py::arg(source_name), py::arg("width"), py::arg("height"), names..., out_name);
  else
    module.def(
        name.c_str(),
        [&kernel, fill, source_name](const py::object& source, Values... values, const py::object& out) {
          Arguments arguments;
          const View view = picture_view(kernel, array_of(source, source_name), arguments);
          fill(kernel, arguments, values...);
          return call(kernel, view, arguments, out);
        },
        doc.c_str(), py::arg(source_name), names..., out_name);
}

/// The result must hold the picture with its margin: a kernel writes it whatever the result's size.
int side_with_margin(const char* name, std::optional<Whole> asked, int side, int margin) {
  const int needed = side + std::max(margin, 0);
  if (asked && asked->value < needed)
    throw py::value_error(std::string(name) + " must be " + std::to_string(needed) +
                          " or more, to hold the picture with its margin; it is " +
                          std::to_string(asked->value));
  return asked ? asked->value : needed;
}

void fill_padded(const Kernel& kernel, Arguments& a, Whole right_margin, Whole bottom_margin,
                 std::optional<Whole> out_width, std::optional<Whole> out_height) {
  using morvale::checked::kSizeEnd;
  if (a.width >= kSizeEnd || a.height >= kSizeEnd || right_margin.value >= kSizeEnd ||
      bottom_margin.value >= kSizeEnd)
    throw refusal(kernel, Status::kBadSize, a);
  a.right_margin = right_margin.value;
  a.bottom_margin = bottom_margin.value;
  a.out_width = side_with_margin("out_width", out_width, a.width, a.right_margin);
  a.out_height = side_with_margin("out_height", out_height, a.height, a.bottom_margin);
}

/// Marks all cells, for pictures of any size that a kernel takes.
std::span<const uint8_t> whole_grid(int height) {
  thread_local std::vector<uint8_t> marks;
  const size_t cells = static_cast<size_t>(height / morvale::kBlurCell + 1) * morvale::kBlurGridColumns;
  if (marks.size() < cells) marks.resize(cells, 1);
  return marks;
}

void fill_blur(const Kernel&, Arguments& a, const py::object& weights, const py::object& grid, Whole bits) {
  const py::array values = array_of(weights, "weights");
  if (!holds<uint16_t>(values) || values.ndim() != 1 || !is_packed(values) || values.size() % 2 == 0 ||
      values.size() > 2 * morvale::kMaxBlurRadius + 1)
    refuse("weights", "uint16, contiguous, an odd number up to 255 of them, as gaussian_weights gives them",
           values);
  a.blur = {{},
            {static_cast<const uint16_t*>(values.data()), static_cast<size_t>(values.size())},
            static_cast<int>(values.size() / 2),
            bits.value};
  if (grid.is_none()) {
    a.blur.grid = whole_grid(a.height);
    return;
  }
  const py::array cells = array_of(grid, "grid");
  const py::ssize_t rows = (a.height + morvale::kBlurCell - 1) / morvale::kBlurCell;
  if (!holds<uint8_t>(cells) || cells.ndim() != 2 || !is_packed(cells) ||
      cells.shape(1) != morvale::kBlurGridColumns || cells.shape(0) < rows)
    refuse("grid", "uint8 " + shape_text({rows, morvale::kBlurGridColumns}) + ", contiguous", cells);
  a.blur.grid = {static_cast<const uint8_t*>(cells.data()), static_cast<size_t>(cells.size())};
}

void add_kernel(py::module_& module, const Kernel& kernel) {
  using K = const Kernel&;
  using A = Arguments&;
  switch (kernel.group) {
    case kSized:
    case kRegion:
      return add(
          module, kernel, +[](K, A) {}, "");
    case kScaled:
      return add(
          module, kernel,
          +[](K, A a, Whole width, Whole height) { a.out_width = width.value, a.out_height = height.value; },
          "out_width, out_height: of the result, in pixels\n", py::arg("out_width"), py::arg("out_height"));
    case kPadded:
      return add(module, kernel, fill_padded,
                 "right_margin, bottom_margin: columns and rows to mirror; a negative right margin rewrites "
                 "columns\n"
                 "out_width, out_height: of the result (default: the frame and its margins)\n",
                 py::arg("right_margin") = 0, py::arg("bottom_margin") = 0, py::arg("out_width") = py::none(),
                 py::arg("out_height") = py::none());
    case kTurned:
      return add(
          module, kernel, +[](K, A a, Whole mode) { a.mode = mode.value; }, "mode: 0, 2 or another number\n",
          py::arg("mode"));
    case kByFactor:
      return add(
          module, kernel, +[](K, A a, Whole factor) { a.factor = factor.value; }, "factor: 1 to 64\n",
          py::arg("factor"));
    case kBlurred:
      return add(module, kernel, fill_blur,
                 "weights: of gaussian_weights\n"
                 "grid: uint8 ((height + 7) // 8, GRID_COLUMNS), a byte for each 8 x 8 pixels, which are "
                 "blurred where "
                 "it is not 0 (default: all)\nbits: those of the weights, 8 or 14\n",
                 py::arg("weights"), py::arg("grid") = py::none(), py::arg("bits") = 8);
  }
}

py::array_t<uint16_t> gaussian_weights(float sigma, Whole radius, Whole bits) {
  const bool sound = radius.value >= 0 && radius.value <= morvale::kMaxBlurRadius;
  py::array_t<uint16_t> weights(sound ? 2 * radius.value + 1 : 0);
  const Status status = checked::GFilterCreation(
      sigma, radius.value, bits.value, {weights.mutable_data(), static_cast<size_t>(weights.size())});
  if (status != Status::kOk)
    throw py::value_error("gaussian_weights takes a radius of 0 to 127 and 8 or 14 bits");
  return weights;
}

}  // namespace

PYBIND11_MODULE(kernels, module) {
  module.doc() =
      "The library's image kernels on NumPy arrays.\n\n"
      "Arrays in, an array out: a new one, or `out`, which is written and returned. No array is copied, but "
      "where\n"
      "a kernel reads or writes beyond the picture and the array ends with it (nv21_to_bgr of a width that "
      "is no\n"
      "multiple of 8, say). Other threads run meanwhile. An NV21 frame is one array of height + (height + 1) "
      "// 2\n"
      "rows: luma, then V, U pairs. The pixels are those of the C++ functions, whatever the processor.\n\n"
      "    rgb = morvale.kernels.nv21_to_rgb(nv21, 640, 480)\n"
      "    small = morvale.kernels.resize_nv21(nv21, 640, 480, 320, 240)\n\n"
      "ValueError says what is wrong with an array or a size, and what is wanted; TypeError, what is no "
      "array or no number.";
  for (const Kernel& kernel : kKernels) add_kernel(module, kernel);
  module.def("gaussian_weights", gaussian_weights, py::arg("sigma"), py::arg("radius"), py::arg("bits") = 8,
             "Weights of a Gaussian of standard deviation sigma (pixels) in fixed point (the kernel "
             "GFilterCreation).\n\n"
             "radius: 0 to 127\nbits: fractional bits, 8 or 14\n\nReturns uint16 (2 * radius + 1,), the sum "
             "of which is "
             "1 << bits.\nRaises ValueError for another radius or other bits.");
  module.def(
      "kernel_set", [] { return std::string(morvale::choose_kernels().name); },
      "The set of kernels in use here: 'portable', 'avx2', 'avx512' or 'neon'.");
  module.attr("GRID_COLUMNS") = morvale::kBlurGridColumns;
}
