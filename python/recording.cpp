/// The module morvale._recording: what workstation/session reads of a recording, as Python values and arrays.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <memory>
#include <utility>
#include <vector>

#include "session/bundle.h"
#include "session/frame_files.h"
#include "session/metadata.h"

namespace py = pybind11;

namespace {

using morvale::session::BundleReader;
using morvale::session::ChromaPlace;
using morvale::session::FrameInput;
using morvale::session::FrameOutput;

/// The values, which the array then owns. None where there are none.
template <class T>
py::object array_of(std::vector<T> values) {
  if (values.empty()) return py::none();
  auto owned = std::make_unique<std::vector<T>>(std::move(values));
  const T* data = owned->data();
  const auto count = static_cast<py::ssize_t>(owned->size());
  const py::capsule owner(owned.release(), [](void* vector) { delete static_cast<std::vector<T>*>(vector); });
  return py::array_t<T>(count, data, owner);
}

py::dict info_of(const BundleReader& bundle) {
  const morvale::session::SessionInfo& info = bundle.info();
  using namespace py::literals;
  return py::dict("camera_type"_a = info.camera_type, "pad_size"_a = info.pad_size,
                  "net_size"_a = info.net_size, "open_result"_a = info.open_result,
                  "debug_level"_a = info.debug_level, "made_by"_a = info.made_by, "library"_a = info.library,
                  "warning"_a = bundle.warning());
}

py::bytes records_of(const BundleReader& bundle) {
  std::string bytes;
  for (int frame = 0; frame < bundle.frame_count(); ++frame)
    bytes.append(reinterpret_cast<const char*>(&bundle.record(frame)), sizeof(PersonWholeMeta));
  return bytes;
}

py::dict frame_of(const BundleReader& bundle, int index) {
  const morvale::session::FrameLine& line = bundle.line(index);
  const MorvaleData_t& record = line.input.record;
  py::list faces;
  for (int face = 0; face < record.faceCount && face < morvale::kMaxFaces; ++face) {
    const FaceRect& rect = record.faces[face];
    faces.append(py::make_tuple(rect.x, rect.y, rect.w, rect.h));
  }
  using namespace py::literals;
  return py::dict("camera_type"_a = line.input.analysed_camera_type(), "width"_a = record.width,
                  "height"_a = record.height, "stride"_a = record.stride, "gate_level"_a = record.gateLevel,
                  "faces"_a = faces, "qerm_hint"_a = record.qermHint, "is_udc"_a = record.isUDC != 0,
                  "process"_a = line.process_result, "execute"_a = line.execute_result,
                  "network_ms"_a = line.network_ms, "has_pixels"_a = bundle.has_pixels(index),
                  "is_thin"_a = bundle.is_thin(index));
}

/// The pixels as they lay in memory, and where the chroma plane begins in them.
py::tuple pixels_of(const BundleReader& bundle, int index) {
  FrameInput input;
  {
    const py::gil_scoped_release other_threads_may_run;
    input = bundle.input(index);
  }
  const int64_t chroma = morvale::session::chroma_offset(input);
  return py::make_tuple(array_of(std::move(input.nv21)), chroma);
}

/// The label map and the scores.
py::tuple output_of(const BundleReader& bundle, int index) {
  FrameOutput output;
  {
    const py::gil_scoped_release other_threads_may_run;
    output = bundle.output(index);
  }
  return py::make_tuple(array_of(std::move(output.labels)), array_of(std::move(output.logits)));
}

}  // namespace

PYBIND11_MODULE(_recording, module) {
  module.doc() = "Reads recordings for morvale.open.";
  py::register_exception<morvale::session::BundleError>(module, "RecordingError", PyExc_ValueError);
  py::class_<BundleReader>(module, "Reader")
      .def(py::init([](const std::string& path) { return std::make_unique<BundleReader>(path); }))
      .def("info", info_of)
      .def("__len__", &BundleReader::frame_count)
      .def("records", records_of)
      .def("frame", frame_of)
      .def("pixels", pixels_of)
      .def("output", output_of);
}
