/// JSON values, for whoever reads or writes JSON: json.cpp alone includes the library behind them, which
/// costs each file that does ten seconds of compilation.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace morvale::session {

struct JsonMember;

/// null, true or false, a number, text, a list, or an object whose members keep their order.
class Json {
 public:
  using Array = std::vector<Json>;
  using Object = std::vector<JsonMember>;

  Json(std::nullptr_t = nullptr);
  Json(std::same_as<bool> auto value) { set(value); }
  Json(std::signed_integral auto value) { set(int64_t{value}); }
  Json(std::unsigned_integral auto value) requires(!std::same_as<decltype(value), bool>) {
    set(uint64_t{value});
  }
  Json(std::floating_point auto value) { set(double{value}); }
  Json(const char* text) : Json(std::string_view(text)) {}
  Json(const std::string& text) : Json(std::string_view(text)) {}
  Json(std::string_view text);
  /// An object: {{"x", 1}, {"y", 2}}.
  Json(std::initializer_list<JsonMember> members);

  Json(const Json& other);
  Json(Json&& other) noexcept;
  Json& operator=(const Json& other);
  Json& operator=(Json&& other) noexcept;
  ~Json();

  static Json array(std::initializer_list<Json> elements = {});
  static Json object();
  /// A list of whatever `values` holds.
  static Json list(const auto& values) {
    Json json = array();
    for (const auto& value : values) json.push_back(Json(value));
    return json;
  }

  /// Of a list.
  void push_back(Json element);
  /// Of an object that has no member of this name.
  void append(std::string key, Json value);
  /// A member of an object, made where there is none.
  Json& operator[](std::string_view key);

  bool operator==(const Json& other) const;

  bool is_null() const { return holds<std::monostate>(); }
  bool is_bool() const { return holds<bool>(); }
  bool is_integer() const { return holds<int64_t>() || holds<uint64_t>(); }
  bool is_number() const { return is_integer() || holds<double>(); }
  bool is_text() const { return holds<std::string>(); }
  bool is_array() const { return holds<Array>(); }
  bool is_object() const { return holds<Object>(); }

  /// The value as what it is. Each throws JsonError when it is something else; the integer also when it does
  /// not fit.
  bool boolean() const;
  int32_t int32() const;
  double number() const;
  const std::string& text() const;
  const Array& elements() const;
  const Object& members() const;
  const Json& at(std::string_view key) const;
  /// Null where there is no such member.
  const Json* find(std::string_view key) const;

  /// `indent` below 0: in one line. What is not UTF-8 in a text (a file's name need not be) is replaced;
  /// numbers that are not finite are null.
  std::string dump(int indent = -1) const;

  using Value = std::variant<std::monostate, bool, int64_t, uint64_t, double, std::string, Array, Object>;
  const Value& value() const { return value_; }

 private:
  void set(bool value) noexcept;
  void set(int64_t value) noexcept;
  void set(uint64_t value) noexcept;
  void set(double value) noexcept;
  template <class T>
  bool holds() const {
    return std::holds_alternative<T>(value_);
  }
  Value value_;
};

struct JsonMember {
  std::string key;
  Json value;
  bool operator==(const JsonMember&) const = default;
};

/// What is wrong with a JSON text, as the end of a sentence that begins with its name: "is not JSON".
struct JsonError : std::runtime_error {
  using runtime_error::runtime_error;
};

/// Throws JsonError.
Json parse_json(std::string_view text);

}  // namespace morvale::session
