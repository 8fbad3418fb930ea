#include "session/json.h"

#include <gtest/gtest.h>

#include <limits>

namespace morvale::session {
namespace {

std::string refusal(const std::string& text) {
  try {
    parse_json(text);
  } catch (const JsonError& error) {
    return error.what();
  }
  return "nothing refused";
}

TEST(Json, IsWrittenInTheOrderOfItsMembers) {
  const Json json = {{"z", 1},
                     {"a", Json::array({true, nullptr, "text", -2, 18446744073709551615u, 0.1f, 0.5})},
                     {"list", Json::list(std::vector<std::string>{"x", "y"})},
                     {"object", Json::object()}};
  EXPECT_EQ(json.dump(), R"({"z":1,"a":[true,null,"text",-2,18446744073709551615,0.10000000149011612,0.5],)"
                         R"("list":["x","y"],"object":{}})");
  EXPECT_EQ(Json::array({1, Json{{"k", 2}}}).dump(1), "[\n 1,\n {\n  \"k\": 2\n }\n]");
}

TEST(Json, WritesWhatJsonHasNoWordFor) {
  EXPECT_EQ(Json("\xff\x1b\"").dump(), "\"\xef\xbf\xbd\\u001b\\\"\"");
  EXPECT_EQ(
      Json::array({std::numeric_limits<double>::infinity(), std::numeric_limits<float>::quiet_NaN()}).dump(),
      "[null,null]");
}

TEST(Json, MembersAreMadeAndReplaced) {
  Json json = Json::object();
  json["b"] = 1;
  json["a"] = Json::array();
  json["a"].push_back("x");
  json["b"] = 2;
  EXPECT_EQ(json.dump(), R"({"b":2,"a":["x"]})");
  EXPECT_EQ(json.find("c"), nullptr);
  EXPECT_THROW(json.at("c"), JsonError);
}

TEST(Json, ReadsWhatItWrites) {
  const std::string text = R"({"a":[1,-1,1.5,"é\n",true,null,{}],"b":{"c":[[]]}})";
  EXPECT_EQ(parse_json(text).dump(), text);
}

TEST(Json, RefusesDamagedAndMisleadingTexts) {
  for (const char* text : {"", "{", "[1,]", "{\"a\":1} x", "\"\xff\"", "nan"})
    EXPECT_EQ(refusal(text), "is not JSON") << text;
  EXPECT_EQ(refusal(R"({"a":{"b":1},"c":{"b":1,"b":2}})"), "holds \"b\" twice in one object");
  EXPECT_EQ(refusal(std::string(1'000'000, '[')), "is nested too deep");
}

TEST(Json, ValuesAreTakenAsWhatTheyAre) {
  EXPECT_EQ(parse_json("-2147483648").int32(), std::numeric_limits<int32_t>::min());
  for (const char* text : {"2147483648", "-2147483649", "1.0", "\"1\"", "99999999999999999999"})
    EXPECT_THROW(parse_json(text).int32(), JsonError) << text;
  EXPECT_EQ(parse_json("7").number(), 7);
  EXPECT_THROW(parse_json("7").text(), JsonError);
  EXPECT_THROW(parse_json("[]").members(), JsonError);
  EXPECT_THROW(parse_json("{}").elements(), JsonError);
  EXPECT_THROW(parse_json("1").boolean(), JsonError);
}

}  // namespace
}  // namespace morvale::session
