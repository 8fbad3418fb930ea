/// Arrays as a kernel takes them, and what is said of others.
#pragma once

#include <pybind11/numpy.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <morvale/checked/reach.h>

namespace numpy {

namespace py = pybind11;

inline std::string shape_text(const std::vector<py::ssize_t>& shape) {
  std::string text = "(";
  for (const py::ssize_t side : shape) text += std::to_string(side) + ", ";
  return text.substr(0, text.size() - (shape.size() > 1 ? 2 : shape.empty() ? 0 : 1)) + ")";
}

inline std::vector<py::ssize_t> shape_of(const py::array& array) {
  return {array.shape(), array.shape() + array.ndim()};
}

inline bool is_packed(const py::array& array) { return (array.flags() & py::array::c_style) != 0; }

/// Throws what Python raises as ValueError: which array is meant, how it must be and how it is.
[[noreturn]] inline void refuse(const char* name, const std::string& wanted, const py::array& given) {
  std::string text = std::string(name) + " must be " + wanted + "; it is " +
                     std::string(py::str(given.dtype())) + " " + shape_text(shape_of(given));
  if (!is_packed(given)) text += ", not contiguous";
  if (!is_packed(given) && std::string_view(name) != "out") text += " (np.ascontiguousarray copies it)";
  if ((given.flags() & py::detail::npy_api::NPY_ARRAY_ALIGNED_) == 0) text += ", not aligned";
  if (!given.writeable()) text += ", read-only";
  throw py::value_error(text);
}

/// Values of this machine's byte order, where a processor wants them.
template <class T>
bool holds(const py::array& array) {
  constexpr int kAligned = py::detail::npy_api::NPY_ARRAY_ALIGNED_;
  return py::isinstance<py::array_t<T, 0>>(array) && (array.flags() & kAligned) != 0;
}

inline py::array array_of(const py::object& object, const char* name) {
  if (!py::isinstance<py::array>(object))
    throw py::type_error(std::string(name) + " must be a NumPy array, not " +
                         std::string(py::str(py::type::of(object).attr("__name__"))));
  return py::reinterpret_borrow<py::array>(object);
}

/// A kernel's source or target in an array's memory.
struct View {
  uint8_t* data = nullptr;
  size_t bytes = 0;
};

inline View view_of(const py::array& array) {
  return {static_cast<uint8_t*>(const_cast<void*>(array.data())), static_cast<size_t>(array.nbytes())};
}

/// Rows that may lie apart, each packed.
inline View rows_of(const py::array& array, int& stride) {
  const auto rows = static_cast<size_t>(array.shape(0)), columns = static_cast<size_t>(array.shape(1));
  stride = static_cast<int>(rows > 1 && columns > 0 ? array.strides(0) : array.shape(1));
  const size_t bytes = rows == 0 || columns == 0 ? 0 : (rows - 1) * static_cast<size_t>(stride) + columns;
  return {static_cast<uint8_t*>(const_cast<void*>(array.data())), bytes};
}

inline bool has_rows(const py::array& array) {
  if (!holds<uint8_t>(array) || array.ndim() != 2) return false;
  if (array.size() == 0) return true;  // whose strides mean nothing
  const bool packed = array.shape(1) < 2 || array.strides(1) == 1;
  const bool apart = array.shape(0) < 2 ||
                     (array.strides(0) >= array.shape(1) && array.strides(0) < morvale::checked::kSizeEnd);
  return packed && apart;
}

/// A whole number of Python's, NumPy's among them.
struct Whole {
  int value;
};

}  // namespace numpy

/// As pybind11 takes an int, but in a sentence of one line about what is none.
template <>
struct pybind11::detail::type_caster<numpy::Whole> {
  PYBIND11_TYPE_CASTER(numpy::Whole, const_name("int"));
  bool load(handle from, bool) {
    if (PyIndex_Check(from.ptr()) == 0)
      throw type_error("width, height and the other numbers must be whole numbers (int), not " +
                       std::string(str(type::of(from).attr("__name__"))));
    const ssize_t number = PyNumber_AsSsize_t(from.ptr(), nullptr);  // a larger one becomes the largest
    if (PyErr_Occurred() != nullptr) throw error_already_set();
    if (number < INT_MIN || number > INT_MAX)
      throw value_error("width, height and the other numbers must fit in 32 bits");
    value.value = static_cast<int>(number);
    return true;
  }
};
