#include "runtime/onnx_signature.h"

#include <limits>
#include <optional>
#include <stdexcept>

namespace morvale::runtime {
namespace {

/// One field of a protobuf message: a number, or the bytes of a string or an inner message.
struct Field {
  uint64_t id = 0;
  uint64_t number = 0;
  std::string_view bytes;
};

/// Walks the fields of a protobuf message.
class Message {
 public:
  explicit Message(std::string_view bytes) : rest_(bytes) {}

  std::optional<Field> next() {
    if (rest_.empty()) return std::nullopt;
    const uint64_t key = varint();
    Field field;
    field.id = key >> 3;
    switch (key & 7) {
      case 0:
        field.number = varint();
        break;
      case 1:
        take(8);
        break;
      case 2:
        field.bytes = take(varint());
        break;
      case 5:
        take(4);
        break;
      default:
        throw std::runtime_error("it is not an ONNX model");
    }
    return field;
  }

 private:
  std::string_view take(uint64_t count) {
    if (count > rest_.size()) throw std::runtime_error("it is not an ONNX model, or only the start of one");
    const std::string_view taken = rest_.substr(0, count);
    rest_.remove_prefix(count);
    return taken;
  }

  uint64_t varint() {
    uint64_t value = 0;
    for (unsigned shift = 0; shift < 64; shift += 7) {
      const auto byte = static_cast<unsigned char>(take(1)[0]);
      value |= static_cast<uint64_t>(byte & 0x7f) << shift;
      if (byte < 0x80) return value;
    }
    throw std::runtime_error("it is not an ONNX model");
  }

  std::string_view rest_;
};

/// Calls visit(bytes) for every field `id` of a message.
template <typename Visit>
void for_each(std::string_view message, uint64_t id, Visit visit) {
  Message fields(message);
  while (const std::optional<Field> field = fields.next()) {
    if (field->id == id) visit(*field);
  }
}

// Field numbers of the ONNX format.
constexpr uint64_t kModelGraph = 7;
constexpr uint64_t kGraphInput = 11, kGraphOutput = 12;
constexpr uint64_t kValueName = 1, kValueType = 2;
constexpr uint64_t kTypeTensor = 1, kTensorShape = 2, kShapeSize = 1, kSizeNumber = 1;

int32_t read_size(std::string_view message) {
  int32_t size = -1;
  for_each(message, kSizeNumber, [&](const Field& number) {
    if (number.number <= std::numeric_limits<int32_t>::max()) size = static_cast<int32_t>(number.number);
  });
  return size;
}

Shape read_shape(std::string_view message) {
  constexpr size_t kMostSizes = 8;
  Shape shape;
  for_each(message, kShapeSize, [&](const Field& size) {
    if (shape.size() == kMostSizes) throw std::runtime_error("it is not an ONNX model");
    shape.push_back(read_size(size.bytes));
  });
  return shape;
}

/// Fills `shape` when `message` declares a tensor of this name.
void read_tensor(std::string_view message, std::string_view wanted, std::optional<Shape>& shape) {
  std::string_view name;
  for_each(message, kValueName, [&](const Field& field) { name = field.bytes; });
  if (name != wanted) return;
  shape.emplace();
  for_each(message, kValueType, [&](const Field& type) {
    for_each(type.bytes, kTypeTensor, [&](const Field& kind) {
      for_each(kind.bytes, kTensorShape, [&](const Field& field) { shape = read_shape(field.bytes); });
    });
  });
}

}  // namespace

OnnxSignature read_onnx_signature(std::string_view file, std::string_view input_name,
                                  std::string_view output_name) {
  OnnxSignature signature;
  for_each(file, kModelGraph, [&](const Field& graph) {
    for_each(graph.bytes, kGraphInput,
             [&](const Field& value) { read_tensor(value.bytes, input_name, signature.input); });
    for_each(graph.bytes, kGraphOutput,
             [&](const Field& value) { read_tensor(value.bytes, output_name, signature.output); });
  });
  return signature;
}

}  // namespace morvale::runtime
