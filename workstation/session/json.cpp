#include "session/json.h"

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>
#include <unordered_set>

namespace morvale::session {
namespace {

using Text = nlohmann::ordered_json;

Text text_of(const Json& json);

struct ToText {
  Text operator()(std::monostate) const { return nullptr; }
  Text operator()(const Json::Array& elements) const {
    Text text = Text::array();
    for (const Json& element : elements) text.push_back(text_of(element));
    return text;
  }
  Text operator()(const Json::Object& members) const {
    // Not one by one through [], which looks for the key first.
    Text::object_t text;
    for (const JsonMember& member : members) text.push_back({member.key, text_of(member.value)});
    return text;
  }
  Text operator()(const auto& value) const { return value; }
};

Text text_of(const Json& json) { return std::visit(ToText(), json.value()); }

template <class T>
const T& value_as(const Json& json, const char* kind) {
  const T* value = std::get_if<T>(&json.value());
  if (value == nullptr) throw JsonError(std::string("holds something else than ") + kind);
  return *value;
}

/// Builds the value while the text is read. Its functions are named and called by the JSON library.
class Builder {
 public:
  using number_integer_t = Text::number_integer_t;
  using number_unsigned_t = Text::number_unsigned_t;
  using number_float_t = Text::number_float_t;

  bool null() { return add(nullptr); }
  bool boolean(bool value) { return add(value); }
  bool number_integer(number_integer_t value) { return add(value); }
  bool number_unsigned(number_unsigned_t value) { return add(value); }
  bool number_float(number_float_t value, const std::string&) { return add(value); }
  bool string(std::string& text) { return add(text); }
  bool binary(Text::binary_t&) { return false; }
  bool key(std::string& text) {
    if (!open_.back().keys.insert(text).second) throw JsonError("holds \"" + text + "\" twice in one object");
    open_.back().key = std::move(text);
    return true;
  }
  bool start_object(size_t) { return open(Json::object()); }
  bool start_array(size_t) { return open(Json::array()); }
  bool end_object() { return close(); }
  bool end_array() { return close(); }
  bool parse_error(size_t, const std::string&, const std::exception&) { return false; }

  Json take() { return std::move(whole_); }

 private:
  /// A list or an object whose end has not been read.
  struct Open {
    Json json;
    std::string key = {};
    std::unordered_set<std::string> keys = {};
  };

  bool open(Json json) {
    constexpr size_t kDeepest = 100;  // destructors recurse
    if (open_.size() == kDeepest) throw JsonError("is nested too deep");
    open_.push_back({std::move(json)});
    return true;
  }
  bool close() {
    Json json = std::move(open_.back().json);
    open_.pop_back();
    return add(std::move(json));
  }
  bool add(Json json) {
    if (open_.empty())
      whole_ = std::move(json);
    else if (open_.back().json.is_array())
      open_.back().json.push_back(std::move(json));
    else
      open_.back().json.append(std::move(open_.back().key), std::move(json));
    return true;
  }

  Json whole_;
  std::vector<Open> open_;
};

}  // namespace

void Json::set(bool value) noexcept { value_ = value; }
void Json::set(int64_t value) noexcept { value_ = value; }
void Json::set(uint64_t value) noexcept { value_ = value; }
void Json::set(double value) noexcept { value_ = value; }

Json::Json(std::nullptr_t) {}
Json::Json(std::string_view text) : value_(std::string(text)) {}
Json::Json(const Json& other) = default;
Json::Json(Json&& other) noexcept = default;
Json& Json::operator=(const Json& other) = default;
Json& Json::operator=(Json&& other) noexcept = default;
Json::~Json() = default;
Json::Json(std::initializer_list<JsonMember> members) : value_(Object(members)) {}

Json Json::array(std::initializer_list<Json> elements) {
  Json json;
  json.value_ = Array(elements);
  return json;
}

Json Json::object() { return std::initializer_list<JsonMember>(); }

void Json::push_back(Json element) { std::get<Array>(value_).push_back(std::move(element)); }

void Json::append(std::string key, Json value) {
  std::get<Object>(value_).push_back({std::move(key), std::move(value)});
}

Json& Json::operator[](std::string_view key) {
  if (find(key) == nullptr) append(std::string(key), nullptr);
  return const_cast<Json&>(at(key));
}

// clang 14 does not come to an end with the comparison of a variant that holds its own type.
bool Json::operator==(const Json& other) const { return text_of(*this) == text_of(other); }

bool Json::boolean() const { return value_as<bool>(*this, "true or false"); }

int32_t Json::int32() const {
  using Limits = std::numeric_limits<int32_t>;
  const double value = is_integer() ? number() : std::numeric_limits<double>::quiet_NaN();
  if (!(value >= Limits::min() && value <= Limits::max()))
    throw JsonError("holds something else than a 32-bit integer");
  return static_cast<int32_t>(value);
}

double Json::number() const {
  if (const int64_t* value = std::get_if<int64_t>(&value_)) return static_cast<double>(*value);
  if (const uint64_t* value = std::get_if<uint64_t>(&value_)) return static_cast<double>(*value);
  return value_as<double>(*this, "a number");
}

const std::string& Json::text() const { return value_as<std::string>(*this, "a text"); }
const Json::Array& Json::elements() const { return value_as<Array>(*this, "a list"); }
const Json::Object& Json::members() const { return value_as<Object>(*this, "an object"); }

const Json* Json::find(std::string_view key) const {
  const Object& all = members();
  const auto found = std::find_if(all.begin(), all.end(), [&](const JsonMember& m) { return m.key == key; });
  return found == all.end() ? nullptr : &found->value;
}

const Json& Json::at(std::string_view key) const {
  const Json* value = find(key);
  if (value == nullptr) throw JsonError("lacks \"" + std::string(key) + "\"");
  return *value;
}

std::string Json::dump(int indent) const {
  const std::string text = text_of(*this).dump(indent, ' ', false, Text::error_handler_t::replace);
  // The library writes the lower control characters as escapes; the others would reach a terminal as they
  // are.
  std::string safe;
  safe.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const auto next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0u;
    const bool upper = byte == 0xc2 && next < 0xa0;  // U+0080 to U+009F
    if (byte != 0x7f && !upper) {
      safe += text[i];
      continue;
    }
    const unsigned code = upper ? next : byte;
    safe += {'\\', 'u', '0', '0', "0123456789abcdef"[code >> 4], "0123456789abcdef"[code & 15]};
    i += upper;
  }
  return safe;
}

Json parse_json(std::string_view text) {
  Builder builder;
  if (!Text::sax_parse(text.begin(), text.end(), &builder)) throw JsonError("is not JSON");
  return builder.take();
}

}  // namespace morvale::session
